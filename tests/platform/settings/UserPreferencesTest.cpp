#include <cerrno>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"
#include "platform/settings/UserPreferences.h"
#include "tests/support/fakes/OwnMachineLibrary.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/ChildProcess.h"
#include "tests/support/programs/ConsoleCapture.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class UserPreferencesTest : public test::SandboxTest {
  protected:
    std::string folder = sandbox.home() + "/.local/share/quillmark/Preferences";
    ErrorSlot error;
};

class UserPreferencesPermissionTest : public ::testing::Test {
  protected:
    test::Unprivileged user;
    test::Sandbox sandbox;
    ErrorSlot error;
};

TEST_F(UserPreferencesTest, liesInTheUsersPreferencesFolder) {
    EXPECT_EQ(UserPreferences().path(), folder + "/com.quillmark.Vornic.plist");
    EXPECT_EQ(UserPreferences("com.quillmark.global").path(),
              folder + "/com.quillmark.global.plist");
}

TEST_F(UserPreferencesTest, hasNoFileForADomainThatIsAPath) {
    EXPECT_EQ(UserPreferences("../other").path(), std::nullopt);
    EXPECT_EQ(UserPreferences("").path(), std::nullopt);
    EXPECT_FALSE(UserPreferences("../other").setValue("key", 1, error));
    EXPECT_TRUE(error);
}

TEST_F(UserPreferencesTest, readsNothingBeforeAnythingIsStored) {
    EXPECT_EQ(UserPreferences().value("key"), std::nullopt);
    EXPECT_FALSE(test::exists(folder));
}

TEST_F(UserPreferencesTest, storesAtOnceAndMakesItsFolder) {
    EXPECT_TRUE(UserPreferences().setValue("filepath", "/a/b.xml", error));
    EXPECT_EQ(UserPreferences().value("filepath"), PropertyList("/a/b.xml"));
    const auto list = PropertyList::readFile(*UserPreferences().path(), error);
    ASSERT_TRUE(list);
    EXPECT_EQ(*list->find("filepath"), PropertyList("/a/b.xml"));
}

TEST_F(UserPreferencesTest, keepsAllOtherKeys) {
    const UserPreferences preferences;
    EXPECT_TRUE(preferences.setValue("a", 1, error));
    EXPECT_TRUE(preferences.setValue("b", PropertyList(PropertyList::Value(true)), error));
    EXPECT_TRUE(preferences.setValue("a", "new", error));
    EXPECT_EQ(preferences.value("a"), PropertyList("new"));
    EXPECT_EQ(preferences.value("b"), PropertyList(PropertyList::Value(true)));
}

TEST_F(UserPreferencesTest, writesNothingWhenTheValueIsThereAlready) {
    const UserPreferences preferences;
    ASSERT_TRUE(preferences.setValue("key", "value", error));
    const auto before = fileIdentity(*preferences.path());
    EXPECT_TRUE(preferences.setValue("key", "value", error));
    EXPECT_EQ(fileIdentity(*preferences.path()), before);
    EXPECT_TRUE(preferences.setValue("key", "other", error));
    EXPECT_NE(fileIdentity(*preferences.path()), before);
    EXPECT_EQ(preferences.value("key"), PropertyList("other"));
}

TEST_F(UserPreferencesTest, keepACopyOfADamagedFileBeforeItIsWrittenAnew) {
    const UserPreferences preferences;
    ASSERT_TRUE(preferences.setValue("a", 1, error));
    test::writeBytes(*preferences.path(), "<plist><dict><key>a");
    EXPECT_EQ(preferences.value("a"), std::nullopt);
    const std::string copy = folder + "/com.quillmark.Vornic-damaged.plist";
    EXPECT_FALSE(test::exists(copy)) << "reading keeps nothing";
    test::ConsoleCapture console;
    EXPECT_TRUE(preferences.setValue("b", 2, error));
    EXPECT_EQ(test::readBytes(copy), "<plist><dict><key>a");
    EXPECT_THAT(console.lines(), ElementsAre(HasSubstr("They are kept as " + copy)));
    EXPECT_EQ(preferences.value("b"), PropertyList(2));
}

TEST_F(UserPreferencesTest, takeAnEmptyFileForNoDamage) {
    const UserPreferences preferences;
    ASSERT_TRUE(preferences.setValue("a", 1, error));
    test::writeBytes(*preferences.path(), "");
    EXPECT_TRUE(preferences.setValue("b", 2, error));
    EXPECT_FALSE(test::exists(folder + "/com.quillmark.Vornic-damaged.plist"));
}

TEST_F(UserPreferencesTest, keepsDomainsApart) {
    EXPECT_TRUE(UserPreferences("one").setValue("a", 1, error));
    EXPECT_EQ(UserPreferences("two").value("a"), std::nullopt);
}

TEST_F(UserPreferencesTest, readsTheFileAgainOnEveryUse) {
    const UserPreferences preferences;
    EXPECT_TRUE(preferences.setValue("a", 1, error));
    fs::remove(*preferences.path());
    EXPECT_EQ(preferences.value("a"), std::nullopt);
}

TEST_F(UserPreferencesTest, beginsAnewWhereTheFileHoldsNoPreferences) {
    fs::create_directories(folder);
    const UserPreferences preferences;
    for (const char* bytes : {"", "no property list", "<plist><string>text</string></plist>"}) {
        std::ofstream(*preferences.path(), std::ios::trunc) << bytes;
        EXPECT_EQ(preferences.value("a"), std::nullopt);
        EXPECT_TRUE(preferences.setValue("a", 1, error)) << bytes;
        EXPECT_EQ(preferences.value("a"), PropertyList(1));
    }
}

TEST_F(UserPreferencesTest, losesNoKeyWhenManyThreadsWrite) {
    constexpr int kThreads = 4;
    constexpr int kKeys = 25;
    std::vector<std::thread> writers;
    writers.reserve(kThreads);
    for (int writer = 0; writer < kThreads; ++writer) {
        writers.emplace_back([writer] {
            for (int key = 0; key < kKeys; ++key) {
                ErrorSlot own;
                EXPECT_TRUE(UserPreferences().setValue(
                    std::to_string(writer) + "." + std::to_string(key), key, own));
            }
        });
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    const auto list = PropertyList::readFile(*UserPreferences().path(), error);
    ASSERT_TRUE(list);
    EXPECT_EQ(list->dictionary()->size(), std::size_t{kThreads} * kKeys);
}

TEST_F(UserPreferencesTest, losesNoKeyWhenTwoProgramsWrite) {
    const auto write = [](const std::string& prefix) {
        for (int key = 0; key < 50; ++key) {
            ErrorSlot own;
            EXPECT_TRUE(UserPreferences().setValue(prefix + std::to_string(key), key, own));
        }
    };
    {
        test::ChildProcess first([&] { write("a"); });
        test::ChildProcess second([&] { write("b"); });
        EXPECT_EQ(first.wait(), 0);
        EXPECT_EQ(second.wait(), 0);
    }
    const auto list = PropertyList::readFile(*UserPreferences().path(), error);
    ASSERT_TRUE(list);
    EXPECT_EQ(list->dictionary()->size(), 100U);
}

TEST_F(UserPreferencesTest, waitsForAnotherProgramButNotForEver) {
    ASSERT_TRUE(UserPreferences().setValue("a", 1, error));
    const FileDescriptor held(
        ::open((folder + "/.com.quillmark.Vornic.plist.lock").c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_TRUE(held);
    ASSERT_EQ(flock(held.get(), LOCK_EX), 0);
    EXPECT_FALSE(UserPreferences().setValue("b", 2, error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EAGAIN);
    EXPECT_EQ(UserPreferences().value("a"), PropertyList(1));
    ASSERT_EQ(flock(held.get(), LOCK_UN), 0);
    EXPECT_TRUE(UserPreferences().setValue("b", 2, error));
}

TEST_F(UserPreferencesTest, failsWhereNoFolderCanBeMade) {
    std::ofstream(sandbox.home() + "/.local") << "a file";
    EXPECT_FALSE(UserPreferences().setValue("a", 1, error));
    EXPECT_TRUE(error);
}

TEST_F(UserPreferencesPermissionTest, keepsAFileThatItCannotRead) {
    const UserPreferences preferences;
    ASSERT_TRUE(preferences.setValue("a", 1, error));
    ASSERT_EQ(chmod(preferences.path()->c_str(), 0), 0);
    EXPECT_FALSE(preferences.setValue("b", 2, error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EACCES);
    ASSERT_EQ(chmod(preferences.path()->c_str(), 0600), 0);
    EXPECT_EQ(preferences.value("a"), PropertyList(1));
}

TEST_F(UserPreferencesTest, fallsBackOnTheDefaultThatIsRegistered) {
    const UserPreferences preferences("com.example.Defaults");
    preferences.registerDefaults({{"a", 1}, {"b", 2}});
    EXPECT_EQ(preferences.value("a"), PropertyList(1));
    EXPECT_FALSE(test::exists(folder)) << "a default is not stored";
    ASSERT_TRUE(preferences.setValue("a", 5, error));
    EXPECT_EQ(preferences.value("a"), PropertyList(5));
    EXPECT_EQ(preferences.value("b"), PropertyList(2));
}

TEST_F(UserPreferencesTest, keepsOtherDefaultsWhenMoreAreRegistered) {
    const UserPreferences preferences("com.example.MoreDefaults");
    preferences.registerDefaults({{"a", 1}, {"b", 2}});
    preferences.registerDefaults({{"b", 3}});
    EXPECT_EQ(preferences.value("a"), PropertyList(1));
    EXPECT_EQ(preferences.value("b"), PropertyList(3));
    EXPECT_EQ(UserPreferences("com.example.Without").value("a"), std::nullopt);
}

TEST_F(UserPreferencesTest, keepsAnyUsersValuesInTheMachinesPreferencesFolder) {
    EXPECT_EQ(UserPreferences().anyUserPath(),
              "/var/lib/quillmark/Preferences/com.quillmark.Vornic.plist");
    EXPECT_EQ(UserPreferences("a/b").anyUserPath(), std::nullopt);
}

TEST_F(UserPreferencesTest, storesNothingForAnyUserOfADomainThatIsAPath) {
    EXPECT_FALSE(UserPreferences("a/b").setValueForAnyUser("a", 1, error));
    EXPECT_TRUE(error);
}

/// The values of any user, on a machine whose Library everybody may write.
class AnyUserPreferencesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!machine.isMounted()) {
            GTEST_SKIP() << "needs root and the right to mount";
        }
    }

    /// What stands in a file of preferences under the key.
    [[nodiscard]] static std::optional<PropertyList> storedIn(
        const std::optional<std::string>& path, const std::string& key) {
        ErrorSlot ignored;
        const auto list = PropertyList::readFile(path.value_or(""), ignored);
        const PropertyList* found = list ? list->find(key) : nullptr;
        return found != nullptr ? std::optional(*found) : std::nullopt;
    }

    test::OwnMachineLibrary machine;
    test::Unprivileged user;
    test::Sandbox sandbox;
    UserPreferences preferences;
    ErrorSlot error;
};

TEST_F(AnyUserPreferencesTest, storesInTheMachinesFolderWhereItCanBeWritten) {
    EXPECT_TRUE(preferences.setValueForAnyUser("lock", 1, error));
    EXPECT_EQ(storedIn(preferences.anyUserPath(), "lock"), PropertyList(1));
    EXPECT_FALSE(test::exists(*preferences.path()));
    EXPECT_EQ(preferences.value("lock"), PropertyList(1));
}

TEST_F(AnyUserPreferencesTest, readsTheUsersOwnValueFirst) {
    ASSERT_TRUE(preferences.setValueForAnyUser("lock", 1, error));
    ASSERT_TRUE(preferences.setValue("lock", 0, error));
    EXPECT_EQ(preferences.value("lock"), PropertyList(0));
}

TEST_F(AnyUserPreferencesTest, readsAnyUsersValueBeforeTheDefault) {
    const UserPreferences own("com.example.Order");
    own.registerDefaults({{"a", 1}});
    ASSERT_TRUE(own.setValueForAnyUser("a", 2, error));
    EXPECT_EQ(own.value("a"), PropertyList(2));
}

TEST_F(AnyUserPreferencesTest, takesTheUsersOwnValueAwayThatWouldHideIt) {
    ASSERT_TRUE(preferences.setValue("lock", 0, error));
    ASSERT_TRUE(preferences.setValue("other", "kept", error));
    EXPECT_TRUE(preferences.setValueForAnyUser("lock", 1, error));
    EXPECT_EQ(preferences.value("lock"), PropertyList(1));
    EXPECT_EQ(storedIn(preferences.path(), "lock"), std::nullopt);
    EXPECT_EQ(preferences.value("other"), PropertyList("kept"));
}

TEST_F(AnyUserPreferencesTest, storesForTheUserWhereTheMachinesFolderCannotBeWritten) {
    ASSERT_TRUE(preferences.setValueForAnyUser("lock", 1, error));
    const std::string machines = fs::path(*preferences.anyUserPath()).parent_path();
    ASSERT_EQ(chmod(preferences.anyUserPath()->c_str(), 0444), 0);
    ASSERT_EQ(chmod(machines.c_str(), 0555), 0);
    ASSERT_EQ(chmod((machines + "/.com.quillmark.Vornic.plist.lock").c_str(), 0400), 0);
    EXPECT_TRUE(preferences.setValueForAnyUser("lock", 0, error));
    EXPECT_FALSE(error);
    EXPECT_EQ(storedIn(preferences.anyUserPath(), "lock"), PropertyList(1));
    EXPECT_EQ(storedIn(preferences.path(), "lock"), PropertyList(0));
    EXPECT_EQ(preferences.value("lock"), PropertyList(0));
    ASSERT_EQ(chmod(machines.c_str(), 0755), 0);
}

TEST_F(AnyUserPreferencesTest, keepsOtherKeysOfTheMachine) {
    ASSERT_TRUE(preferences.setValueForAnyUser("a", 1, error));
    ASSERT_TRUE(preferences.setValueForAnyUser("b", 2, error));
    EXPECT_EQ(preferences.value("a"), PropertyList(1));
    EXPECT_EQ(preferences.value("b"), PropertyList(2));
}

}  // namespace
}  // namespace vornic::platform
