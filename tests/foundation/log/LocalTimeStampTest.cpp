#include <chrono>
#include <cstdlib>
#include <ctime>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/log/LocalTimeStamp.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic {
namespace {

using ::testing::MatchesRegex;

class LocalTimeStampTest : public test::SandboxTest {
  protected:
    ~LocalTimeStampTest() override { setZone(nullptr); }

    static void setZone(const char* zone) {
        if (zone == nullptr) {
            unsetenv("TZ");
        } else {
            setenv("TZ", zone, 1);
        }
        tzset();
    }
    [[nodiscard]] std::string stampedPath() const { return sandbox.path(localTimeStamp()); }
};

TEST_F(LocalTimeStampTest, hasFourteenDigits) {
    EXPECT_THAT(localTimeStamp(), MatchesRegex("20[0-9]{12}"));
}

TEST_F(LocalTimeStampTest, reportsTheLocalTime) {
    setZone("UTC0");
    const std::string utc = localTimeStamp();
    setZone("Far-13");
    EXPECT_GT(localTimeStamp(), utc);
    EXPECT_NE(localTimeStamp().substr(8, 2), utc.substr(8, 2));
}

TEST_F(LocalTimeStampTest, takesAFreePathAtOnce) {
    int asked = 0;
    EXPECT_EQ(freeStampedPath([&] {
                  ++asked;
                  return sandbox.path("free");
              }),
              sandbox.path("free"));
    EXPECT_EQ(asked, 1);
}

TEST_F(LocalTimeStampTest, waitsForTheNextSecondWhereAStampIsTaken) {
    const std::string first = freeStampedPath([&] { return stampedPath(); });
    sandbox.write(first.substr(sandbox.folder().size() + 1), "");
    const std::string second = freeStampedPath([&] { return stampedPath(); });
    EXPECT_GT(second, first);
    EXPECT_FALSE(test::exists(second));
}

TEST_F(LocalTimeStampTest, waitsNoLongerThanTwoSecondsOrSo) {
    const std::string taken = sandbox.write("taken", "");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(freeStampedPath([&] { return taken; }), taken);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1500));
}

}  // namespace
}  // namespace vornic
