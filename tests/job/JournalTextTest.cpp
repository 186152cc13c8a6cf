#include <gtest/gtest.h>

#include "job/JournalText.h"

namespace vornic {
namespace {

JournalEntry someEntry() {
    JournalEntry entry{.id = 0x1234,
                       .date = 1'700'000'000,
                       .program = "vornic-repair",
                       .version = "0.1.0",
                       .file = "/home/anna/My Cut \xC3\xA9\xFF\n=.xml",
                       .workingCopy = "/home/anna/My Cut-backup.xml"};
    entry.before = {.identity = {.device = 7, .inode = 8}, .size = 9, .digest = {1, 2, 3, 4}};
    entry.after = {.identity = {.device = 7, .inode = 10},
                   .size = 11,
                   .digest = {5, 6, 7, 0xFFFF'FFFF'FFFF'FFFFU},
                   .isLink = true};
    return entry;
}

TEST(JournalText, holdsAnEntryInOneLineOfPlainCharacters) {
    EXPECT_EQ(beginLine(someEntry()),
              "begin 0000000000001234 date=2023-11-14T22:13:20Z program=vornic-repair "
              "version=0.1.0 action=repair file=/home/anna/My%20Cut%20%C3%A9%FF%0A%3D.xml "
              "copy=/home/anna/My%20Cut-backup.xml "
              "before=file:7:8:9:0000000000000001000000000000000200000000000000030000000000000004 "
              "after=link:7:10:11:"
              "000000000000000500000000000000060000000000000007ffffffffffffffff\n");
}

TEST(JournalText, readsWhatItWrites) {
    JournalEntry entry = someEntry();
    entry.action = JournalEntry::Action::undo;
    entry.undoes = 0x77;
    entry.before.isLink = true;
    entry.before.linkText = "../a b:c";
    EXPECT_EQ(parseJournal(beginLine(entry)).entries, std::vector<JournalEntry>{entry});
    entry.state = JournalEntry::State::done;
    entry.original = "/home/anna/.Trash/My Cut 2.xml";
    EXPECT_EQ(parseJournal(beginLine(entry) + endLine(entry)).entries,
              std::vector<JournalEntry>{entry});
    entry.state = JournalEntry::State::takenBack;
    entry.original = "";
    EXPECT_EQ(parseJournal(beginLine(entry) + endLine(entry)).entries,
              std::vector<JournalEntry>{entry});
}

TEST(JournalText, ignoresATornLastLine) {
    JournalEntry entry = someEntry();
    const std::string begin = beginLine(entry);
    entry.state = JournalEntry::State::done;
    entry.original = "/x";
    const std::string end = endLine(entry);
    for (std::size_t length = 0; length < end.size(); ++length) {
        const JournalContents contents = parseJournal(begin + end.substr(0, length));
        ASSERT_EQ(contents.entries.size(), 1U) << length;
        EXPECT_EQ(contents.entries[0].state, JournalEntry::State::begun) << length;
        EXPECT_EQ(contents.settled, 0U);
    }
    for (std::size_t length = 0; length < begin.size(); ++length) {
        EXPECT_TRUE(parseJournal(begin.substr(0, length)).entries.empty()) << length;
    }
}

TEST(JournalText, ignoresLinesThatAreNone) {
    const std::string line = beginLine(someEntry());
    const std::string text = "\n \nbegin\nbegin x\nbegin 12\nend 1234 done original=%zz\n" +
                             std::string(40, '\0') + "\nend 99 done original=/a\n" +
                             line.substr(0, 80) + "\n" + line;
    EXPECT_EQ(parseJournal(text).entries, std::vector<JournalEntry>{someEntry()});
}

TEST(JournalText, takesNoEndThatSaysNeitherOrBoth) {
    JournalEntry entry = someEntry();
    entry.state = JournalEntry::State::done;
    const std::string begin = beginLine(entry);
    const std::string end = endLine(entry);
    for (const char* words : {" do2e original=/x", " original=/x", " done back"}) {
        const std::string damaged = end.substr(0, end.find(" done")) + words + "\n";
        const JournalContents contents = parseJournal(begin + damaged);
        ASSERT_EQ(contents.entries.size(), 1U) << words;
        EXPECT_EQ(contents.entries[0].state, JournalEntry::State::begun) << words;
        EXPECT_EQ(contents.settled, 0U) << words;
    }
}

TEST(JournalText, reportsHowFarAllIsSettled) {
    JournalEntry first = someEntry();
    JournalEntry second = someEntry();
    second.id = 2;
    first.state = JournalEntry::State::takenBack;
    const std::string begun = beginLine(first) + endLine(first);
    EXPECT_EQ(parseJournal(begun).settled, begun.size());
    EXPECT_EQ(parseJournal(begun + beginLine(second)).settled, begun.size());
    second.state = JournalEntry::State::takenBack;
    const std::string all = begun + beginLine(second) + endLine(second);
    EXPECT_EQ(parseJournal(all).settled, all.size());
    EXPECT_EQ(parseJournal(all + "torn").settled, all.size());
}

}  // namespace
}  // namespace vornic
