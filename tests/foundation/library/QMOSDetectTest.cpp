#include <filesystem>
#include <functional>
#include <string>

#include <sys/mount.h>
#include <unistd.h>

#include "foundation/library/QMOSDetect.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/programs/CapturedChild.h"

namespace vornic {
namespace {

/// Runs a function in a process that finds the given operating-system version.
class QMOSDetectTest : public test::SandboxTest {
  protected:
    void withVersion(const std::string& version, const std::function<void()>& function) const {
        const std::string release =
            sandbox.write("os-release", "ID=linux\nVERSION_ID=\"" + version + "\"\n");
        const std::string place = std::filesystem::canonical("/etc/os-release").string();
        const test::ChildOutcome outcome = test::runInChild([&] {
            const test::PrivateMounts mounts;
            if (!mounts.isAvailable() ||
                mount(release.c_str(), place.c_str(), nullptr, MS_BIND, nullptr) != 0) {
                _exit(test::kChildSkipped);
            }
            function();
        });
        if (outcome.status == test::kChildSkipped) {
            GTEST_SKIP() << "needs the right to mount";
        }
        EXPECT_EQ(outcome.status, 0) << outcome.output << outcome.errors;
    }

    /// How many of the named checks hold, all of which are ordered.
    static int namedChecks() {
        return static_cast<int>(QMOSDetect::isLeopardOrHigher()) +
               static_cast<int>(QMOSDetect::isSnowLeopardOrHigher()) +
               static_cast<int>(QMOSDetect::isLionOrHigher()) +
               static_cast<int>(QMOSDetect::isMountainLionOrHigher()) +
               static_cast<int>(QMOSDetect::isMavericksOrHigher()) +
               static_cast<int>(QMOSDetect::isYosemiteOrHigher()) +
               static_cast<int>(QMOSDetect::isElCapitanOrHigher()) +
               static_cast<int>(QMOSDetect::isSierraOrHigher());
    }
};

TEST_F(QMOSDetectTest, reportsThePlatformsVersion) {
    EXPECT_EQ(QMOSDetect::version(), platform::operatingSystemVersion());
    withVersion("10.15.7", [] {
        EXPECT_EQ(QMOSDetect::version(), (platform::OperatingSystemVersion{10, 15, 7}));
    });
}

TEST_F(QMOSDetectTest, writesAllThreeNumbersOfTheVersion) {
    withVersion("10.15", [] {
        EXPECT_EQ(QMOSDetect::osVersionString(), "10.15.0");
        EXPECT_EQ(QMOSDetect::osxVersion(), "10.15.0");
    });
}

TEST_F(QMOSDetectTest, reportsZerosWhenThePlatformGivesNoVersion) {
    withVersion("", [] {
        EXPECT_EQ(QMOSDetect::osVersionString(), "0.0.0");
        EXPECT_TRUE(QMOSDetect::isOSVersionAtLeast(0, 0, 0));
        EXPECT_FALSE(QMOSDetect::isOSVersionAtLeast(0, 0, 1));
    });
}

TEST_F(QMOSDetectTest, comparesMajorThenMinorThenPatch) {
    withVersion("10.6.8", [] {
        EXPECT_TRUE(QMOSDetect::isOSVersionAtLeast(10, 6, 8));
        EXPECT_TRUE(QMOSDetect::isOSVersionAtLeast(10, 6, 7));
        EXPECT_TRUE(QMOSDetect::isOSVersionAtLeast(10, 5, 9));
        EXPECT_TRUE(QMOSDetect::isOSVersionAtLeast(9, 9, 9));
        EXPECT_FALSE(QMOSDetect::isOSVersionAtLeast(10, 6, 9));
        EXPECT_FALSE(QMOSDetect::isOSVersionAtLeast(10, 7, 0));
        EXPECT_FALSE(QMOSDetect::isOSVersionAtLeast(11, 0, 0));
        EXPECT_TRUE(QMOSDetect::isOSVersionAtLeast(10, 6, -1));
    });
}

struct NamedVersion {
    const char* version;
    int checks;
};

class QMOSDetectNamesTest : public QMOSDetectTest,
                            public ::testing::WithParamInterface<NamedVersion> {};

TEST_P(QMOSDetectNamesTest, holdTheNamedChecksUpToTheVersion) {
    withVersion(GetParam().version, [] { EXPECT_EQ(namedChecks(), GetParam().checks); });
}

INSTANTIATE_TEST_SUITE_P(Versions, QMOSDetectNamesTest,
                         ::testing::Values(NamedVersion{"10.4.11", 0}, NamedVersion{"10.5", 1},
                                           NamedVersion{"10.6", 2}, NamedVersion{"10.7", 3},
                                           NamedVersion{"10.8", 4}, NamedVersion{"10.9", 5},
                                           NamedVersion{"10.10", 6}, NamedVersion{"10.11", 7},
                                           NamedVersion{"10.11.6", 7}, NamedVersion{"10.12", 8},
                                           NamedVersion{"11", 8}));

TEST_F(QMOSDetectTest, holdsEachNamedCheckFromItsOwnVersionOn) {
    withVersion("10.5", [] { EXPECT_TRUE(QMOSDetect::isLeopardOrHigher()); });
    withVersion("10.6", [] { EXPECT_TRUE(QMOSDetect::isSnowLeopardOrHigher()); });
    withVersion("10.7", [] { EXPECT_TRUE(QMOSDetect::isLionOrHigher()); });
    withVersion("10.8", [] { EXPECT_TRUE(QMOSDetect::isMountainLionOrHigher()); });
    withVersion("10.9", [] { EXPECT_TRUE(QMOSDetect::isMavericksOrHigher()); });
    withVersion("10.10", [] { EXPECT_TRUE(QMOSDetect::isYosemiteOrHigher()); });
    withVersion("10.11", [] { EXPECT_TRUE(QMOSDetect::isElCapitanOrHigher()); });
    withVersion("10.12.0", [] { EXPECT_TRUE(QMOSDetect::isSierraOrHigher()); });
}

}  // namespace
}  // namespace vornic
