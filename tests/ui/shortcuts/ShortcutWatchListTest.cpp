#include <chrono>
#include <csignal>
#include <filesystem>
#include <limits>
#include <string>
#include <thread>
#include <tuple>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/FileDescriptor.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/RightsOfRoot.h"
#include "tests/support/programs/ChildProcess.h"
#include "tests/ui/shortcuts/ShortcutKeyFixture.h"
#include "ui/shortcuts/ShortcutWatchList.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using Command = ShortcutWatchList::Command;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr ShortcutKey kControlF5{.keyCode = 71, .ctrl = true};

class ShortcutWatchListTest : public test::ShortcutKeyFixture {
  protected:
    [[nodiscard]] static Command own(const char* id) {
        return {.bundleId = "com.example.Cutter", .id = id, .params = std::nullopt};
    }
    [[nodiscard]] bool assign(const Command& command, const ShortcutKey& key = kControlF5) {
        return ShortcutWatchList::assign(command, key, error);
    }
    void writeBytes(const std::string& bytes) const {
        fs::create_directories(preferences);
        test::writeBytes(watchList, bytes);
    }
    /// Visible names in the Preferences folder.
    [[nodiscard]] std::vector<std::string> visibleNames() const {
        std::vector<std::string> names = test::namesIn(preferences);
        std::erase_if(names, [](const std::string& name) { return name.front() == '.'; });
        return names;
    }

    ErrorSlot error;
};

TEST_F(ShortcutWatchListTest, liesInTheUsersPreferencesFolder) {
    EXPECT_EQ(ShortcutWatchList::path(), watchList);
}

TEST_F(ShortcutWatchListTest, isEmptyWhenItIsMissing) {
    const auto entries = ShortcutWatchList::entries(error);
    ASSERT_TRUE(entries);
    EXPECT_THAT(*entries, IsEmpty());
    EXPECT_FALSE(test::exists(preferences)) << "reading makes nothing";
}

TEST_F(ShortcutWatchListTest, isMadeWithTheFirstEntry) {
    EXPECT_TRUE(assign(own("open")));
    EXPECT_THAT(storedEntries(), ElementsAre(ownEntry("open", 71, 4096)));
    const auto entries = ShortcutWatchList::entries(error);
    ASSERT_TRUE(entries);
    EXPECT_EQ(*entries, storedEntries());
}

TEST_F(ShortcutWatchListTest, keepsWhatIsOthers) {
    const List foreign = List(Dictionary{{"bundleid", "com.example.Other"},
                                         {"commandid", "open"},
                                         {"keycode", 24},
                                         {"modifiers", 256},
                                         {"note", List(Array{"a", 0.1, true})}});
    const List params = List(Dictionary{{"bundleid", "com.example.Other"},
                                        {"commandparams", List(Array{"x", 1})},
                                        {"keycode", 25},
                                        {"modifiers", 0}});
    const Array others{foreign, params, "no entry at all", foreign};
    writeList(
        watchList,
        {{"watchlist", List(others)}, {"format", 7}, {"owner", List(Dictionary{{"a", "b"}})}});
    EXPECT_TRUE(assign(own("open")));
    EXPECT_TRUE(ShortcutWatchList::remove(own("open"), error));
    EXPECT_EQ(storedEntries(), others);
    const Dictionary root = storedList();
    EXPECT_EQ(root.at("format"), List(7));
    EXPECT_EQ(root.at("owner"), List(Dictionary{{"a", "b"}}));
}

TEST_F(ShortcutWatchListTest, keepsUnknownKeysOfItsOwnOtherEntries) {
    const List other = List(Dictionary{
        {"bundleid", "com.example.Cutter"}, {"commandid", "close"}, {"keycode", 1}, {"hint", "x"}});
    writeWatchList({other});
    EXPECT_TRUE(assign(own("open")));
    EXPECT_THAT(storedEntries(), ElementsAre(other, ownEntry("open", 71, 4096)));
}

TEST_F(ShortcutWatchListTest, keepsEveryNumberAsItIs) {
    const Dictionary numbers{{"bundleid", "com.example.Other"},
                             {"third", 1.0 / 3},
                             {"tiny", 1e-9},
                             {"large", 1e300},
                             {"least", std::numeric_limits<std::int64_t>::min()}};
    Dictionary dated = numbers;
    dated["when"] = List(List::Value(List::Date{1700000000.25}));
    for (const Dictionary& foreign : {numbers, dated}) {
        writeWatchList({List(foreign)});
        ASSERT_THAT(storedEntries(), ElementsAre(List(foreign)));
        EXPECT_TRUE(assign(own("open")));
        EXPECT_EQ(storedEntries().front(), List(foreign));
    }
}

TEST_F(ShortcutWatchListTest, isNotWrittenWhereValuesOfOthersWouldBeLost) {
    const std::string bytes =
        "<plist><dict><key>watchlist</key><array><dict><key>until</key>"
        "<date>4001-01-01T00:00:00Z</date></dict></array></dict></plist>";
    writeBytes(bytes);
    EXPECT_TRUE(ShortcutWatchList::entries(error));
    EXPECT_FALSE(assign(own("open")));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->localizedDescription(), "The file " + watchList +
                                                 " cannot be written: it holds values that would "
                                                 "be lost.");
    EXPECT_EQ(test::readBytes(watchList), bytes);
    EXPECT_THAT(visibleNames(), ElementsAre("com.quillmark.shortcutkeys.plist"));
}

TEST_F(ShortcutWatchListTest, readsTheBinaryForm) {
    const List other = entry("com.example.Other", "open", 24, 256);
    const List list(Dictionary{{"watchlist", List(Array{other})}, {"format", 7}});
    writeBytes(list.toBinary());
    EXPECT_TRUE(assign(own("open")));
    EXPECT_THAT(storedEntries(), ElementsAre(other, ownEntry("open", 71, 4096)));
    EXPECT_EQ(storedList().at("format"), List(7));
}

TEST_F(ShortcutWatchListTest, replacesEveryEntryOfTheCommand) {
    writeWatchList({ownEntry("open", 1, 0), ownEntry("close", 2, 0), ownEntry("open", 3, 0)});
    EXPECT_TRUE(assign(own("open")));
    EXPECT_THAT(storedEntries(), ElementsAre(ownEntry("close", 2, 0), ownEntry("open", 71, 4096)));
}

TEST_F(ShortcutWatchListTest, reportsCommandsWithoutAnIdByTheirParameters) {
    const auto command = [](const char* first) {
        return Command{
            .bundleId = "com.example.Cutter", .id = std::nullopt, .params = Array{first, 2}};
    };
    EXPECT_TRUE(assign(command("a")));
    EXPECT_TRUE(assign(command("b")));
    EXPECT_TRUE(assign(command("a"), {.keyCode = 24}));
    const auto entryOf = [](const char* first, int keycode, int modifiers) {
        return List(Dictionary{{"bundleid", "com.example.Cutter"},
                               {"commandparams", List(Array{first, 2})},
                               {"keycode", keycode},
                               {"modifiers", modifiers}});
    };
    EXPECT_THAT(storedEntries(), ElementsAre(entryOf("b", 71, 4096), entryOf("a", 24, 0)));
}

TEST_F(ShortcutWatchListTest, storesIdAndParametersWhereBothAreGiven) {
    writeWatchList({ownEntry("open", 1, 0)});
    Command command = own("open");
    command.params = Array{"x"};
    EXPECT_TRUE(assign(command));
    const Array entries = storedEntries();
    ASSERT_EQ(entries.size(), 1U) << "the id alone tells the command";
    EXPECT_EQ(*entries.front().find("commandid"), List("open"));
    EXPECT_EQ(*entries.front().find("commandparams"), List(Array{"x"}));
}

TEST_F(ShortcutWatchListTest, takesAllEntriesOfACommandAway) {
    writeWatchList({ownEntry("open", 1, 0), ownEntry("close", 2, 0), ownEntry("open", 3, 0)});
    EXPECT_TRUE(ShortcutWatchList::remove(own("open"), error));
    EXPECT_THAT(storedEntries(), ElementsAre(ownEntry("close", 2, 0)));
}

TEST_F(ShortcutWatchListTest, isNotWrittenForAnApplicationWithoutAnIdentifier) {
    EXPECT_FALSE(assign({.bundleId = "", .id = "open", .params = std::nullopt}));
    EXPECT_TRUE(error);
    EXPECT_FALSE(test::exists(watchList));
}

TEST_F(ShortcutWatchListTest, takesAnEmptyFileForAnEmptyList) {
    writeBytes("");
    EXPECT_TRUE(ShortcutWatchList::entries(error));
    EXPECT_TRUE(assign(own("open")));
    EXPECT_THAT(visibleNames(), ElementsAre("com.quillmark.shortcutkeys.plist"));
}

TEST_F(ShortcutWatchListTest, reportsThatItIsDamagedAndLeavesItAlone) {
    for (const std::string bytes :
         {"<plist><dict><key>watchl", "no list", "<plist><array/></plist>",
          "<plist><dict><key>watchlist</key><string>x</string></dict></plist>"}) {
        writeBytes(bytes);
        ErrorSlot slot;
        EXPECT_FALSE(ShortcutWatchList::entries(slot)) << bytes;
        ASSERT_TRUE(slot);
        EXPECT_EQ(slot->localizedDescription(),
                  "The file " + watchList + " cannot be read: it is no list of shortcut keys.");
        EXPECT_EQ(test::readBytes(watchList), bytes);
    }
}

TEST_F(ShortcutWatchListTest, keepsADamagedListBesideANewOne) {
    const std::string copy = preferences + "/com.quillmark.shortcutkeys-damaged.plist";
    writeBytes("<plist><dict><key>watchl");
    test::ConsoleCapture console;
    EXPECT_TRUE(assign(own("open")));
    EXPECT_THAT(console.lines(),
                ElementsAre("The list of shortcut keys " + watchList +
                            " was damaged. It is kept as " + copy + " and a new one was begun."));
    EXPECT_EQ(test::readBytes(copy), "<plist><dict><key>watchl");
    EXPECT_THAT(storedEntries(), ElementsAre(ownEntry("open", 71, 4096)));
    writeBytes("damaged again");
    EXPECT_TRUE(assign(own("close")));
    EXPECT_EQ(test::readBytes(copy), "<plist><dict><key>watchl");
    EXPECT_EQ(test::readBytes(preferences + "/com.quillmark.shortcutkeys-damaged-2.plist"),
              "damaged again");
}

TEST_F(ShortcutWatchListTest, keepsWhatIsSoundOfADamagedList) {
    writeList(watchList, {{"watchlist", "no array"}, {"format", 7}});
    EXPECT_TRUE(assign(own("open")));
    EXPECT_EQ(storedList().at("format"), List(7));
    EXPECT_TRUE(test::exists(preferences + "/com.quillmark.shortcutkeys-damaged.plist"));
}

TEST_F(ShortcutWatchListTest, isLeftAloneWhereItCannotBeRead) {
    writeWatchList({ownEntry("close", 2, 0)});
    ASSERT_EQ(chmod(watchList.c_str(), 0), 0);
    EXPECT_FALSE(ShortcutWatchList::entries(error));
    EXPECT_FALSE(assign(own("open")));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EACCES);
    ASSERT_EQ(chmod(watchList.c_str(), 0600), 0);
    EXPECT_THAT(storedEntries(), ElementsAre(ownEntry("close", 2, 0)));
}

TEST_F(ShortcutWatchListTest, isLeftAloneWhereItIsNoFile) {
    fs::create_directories(watchList);
    EXPECT_FALSE(ShortcutWatchList::entries(error));
    EXPECT_FALSE(assign(own("open")));
    EXPECT_TRUE(fs::is_directory(watchList));
    fs::remove(watchList);
    ASSERT_EQ(mkfifo(watchList.c_str(), 0600), 0);
    EXPECT_FALSE(ShortcutWatchList::entries(error));
    EXPECT_FALSE(assign(own("open")));
    EXPECT_TRUE(fs::is_fifo(watchList));
}

TEST_F(ShortcutWatchListTest, staysAsItIsInAFolderThatCannotBeWritten) {
    writeWatchList({ownEntry("close", 2, 0)});
    const std::string before = test::readBytes(watchList);
    fs::permissions(preferences, fs::perms(0500));
    EXPECT_FALSE(assign(own("open")));
    fs::permissions(preferences, fs::perms(0700));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EACCES);
    EXPECT_THAT(error->localizedDescription(), ::testing::EndsWith("permission denied."));
    EXPECT_EQ(test::readBytes(watchList), before);
    EXPECT_THAT(test::namesIn(preferences), ElementsAre("com.quillmark.shortcutkeys.plist"));
}

TEST_F(ShortcutWatchListTest, keepsItsModeAndStaysALink) {
    writeWatchList({});
    const std::string elsewhere = sandbox.path("shared.plist");
    fs::rename(watchList, elsewhere);
    fs::permissions(elsewhere, fs::perms(0640));
    fs::create_symlink(elsewhere, watchList);
    EXPECT_TRUE(assign(own("open")));
    EXPECT_TRUE(fs::is_symlink(watchList));
    EXPECT_EQ(fs::status(elsewhere).permissions(), fs::perms(0640));
    EXPECT_THAT(storedEntries(), ElementsAre(ownEntry("open", 71, 4096)));
}

TEST_F(ShortcutWatchListTest, waitsForAnotherWriterButNotForLong) {
    writeWatchList({});
    const platform::FileDescriptor held(
        open((preferences + "/.com.quillmark.shortcutkeys.plist.lock").c_str(),
             O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    ASSERT_EQ(flock(held.get(), LOCK_EX), 0);
    const auto before = std::chrono::steady_clock::now();
    EXPECT_FALSE(assign(own("open")));
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(5));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EAGAIN);
    EXPECT_THAT(storedEntries(), IsEmpty());
}

TEST_F(ShortcutWatchListTest, losesNoEntryWhenProgramsWriteAtOnce) {
    constexpr int kPrograms = 4;
    constexpr int kCommands = 25;
    const auto write = [](int program) {
        for (int command = 0; command < kCommands; ++command) {
            ErrorSlot slot;
            EXPECT_TRUE(ShortcutWatchList::assign(
                {.bundleId = "com.example.Cutter" + std::to_string(program),
                 .id = std::to_string(command),
                 .params = std::nullopt},
                kControlF5, slot));
        }
    };
    QMLog::finishWriting();
    std::vector<std::unique_ptr<test::ChildProcess>> programs;
    for (int program = 0; program < kPrograms; ++program) {
        programs.push_back(std::make_unique<test::ChildProcess>([&] { write(program); }));
    }
    for (const auto& program : programs) {
        EXPECT_EQ(program->wait(), 0);
    }
    EXPECT_EQ(storedEntries().size(), std::size_t{kPrograms} * kCommands);
}

TEST_F(ShortcutWatchListTest, isWholeWheneverAWriterIsKilled) {
    const List foreign = entry("com.example.Other", "open", 1, 2);
    writeWatchList({foreign});
    for (int attempt = 0; attempt < 30; ++attempt) {
        test::ChildProcess writer([] {
            for (int command = 0;; ++command) {
                ErrorSlot slot;
                std::ignore = ShortcutWatchList::assign(own(command % 2 == 0 ? "open" : "close"),
                                                        kControlF5, slot);
            }
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(3 + attempt % 7));
        kill(writer.id(), SIGKILL);
        writer.wait();
        const Array entries = storedEntries();
        ASSERT_FALSE(entries.empty());
        EXPECT_EQ(entries.front(), foreign);
        EXPECT_LE(entries.size(), 3U);
    }
    EXPECT_TRUE(assign(own("open"))) << "a killed writer leaves no lock behind";
}

class FullDiskWatchListTest : public test::OwnMounts, public ShortcutWatchListTest {
  protected:
    void SetUp() override {
        fs::create_directories(preferences);
        const test::RightsOfRoot root;
        if (!root.available() || !mounts.isAvailable() ||
            !mounts.mountVolume(preferences, "tmpfs", "size=16k,mode=0777")) {
            GTEST_SKIP() << "needs root and the right to mount";
        }
    }
};

TEST_F(FullDiskWatchListTest, staysAsItIsOnAFullDisk) {
    writeWatchList({ownEntry("close", 2, 0)});
    const std::string before = test::readBytes(watchList);
    const platform::FileDescriptor filler(
        open((preferences + "/filler").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    const std::string page(4096, 'x');
    while (write(filler.get(), page.data(), page.size()) > 0) {
    }
    EXPECT_FALSE(assign(own("open")));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOSPC);
    EXPECT_EQ(test::readBytes(watchList), before);
    EXPECT_THAT(visibleNames(), ElementsAre("com.quillmark.shortcutkeys.plist", "filler"));
}

TEST_F(FullDiskWatchListTest, isNotReplacedWhereADamagedOneCannotBeKept) {
    const std::string damaged(12 * 1024, 'x');
    writeBytes(damaged);
    EXPECT_FALSE(assign(own("open")));
    EXPECT_TRUE(error);
    EXPECT_EQ(test::readBytes(watchList), damaged);
}

}  // namespace
}  // namespace vornic
