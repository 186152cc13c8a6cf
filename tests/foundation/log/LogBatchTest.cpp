#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "foundation/log/LogBatch.h"
#include "tests/support/texts/LogText.h"

namespace vornic {
namespace {

constexpr std::size_t kFrame = std::string_view("2026-11-21 07:05:00 +0000 - \n").size();

std::vector<LogQueue::Entry> entriesOf(const std::vector<std::string>& texts) {
    std::vector<LogQueue::Entry> entries;
    for (const std::string& text : texts) {
        entries.push_back({.text = text, .units = text.size()});
    }
    return entries;
}

TEST(LogBatch, writesEachEntryWithItsDateOnALineOfItsOwn) {
    const std::vector<std::string> texts{"one", "two\nlines", "three"};
    const LogBatch batch(entriesOf(texts), 1000);
    EXPECT_EQ(test::logMessages(batch.bytes()), texts);
}

TEST(LogBatch, reportsWhichEntriesLieWhollyWithinSomeBytes) {
    const std::vector<std::string> texts{"12345", "1234567890"};
    const LogBatch batch(entriesOf(texts), 1000);
    EXPECT_EQ(batch.bytes().size(), 15 + 2 * kFrame);
    EXPECT_EQ(batch.entriesWithin(0), 0U);
    EXPECT_EQ(batch.entriesWithin(4 + kFrame), 0U);
    EXPECT_EQ(batch.entriesWithin(5 + kFrame), 1U);
    EXPECT_EQ(batch.entriesWithin(14 + 2 * kFrame), 1U);
    EXPECT_EQ(batch.entriesWithin(15 + 2 * kFrame), 2U);
    EXPECT_EQ(batch.bytesOf(0), 0U);
    EXPECT_EQ(batch.bytesOf(1), 5 + kFrame);
    EXPECT_EQ(batch.bytesOf(2), 15 + 2 * kFrame);
}

TEST(LogBatch, endsWithTheEntryThatReachesTheRoom) {
    const std::vector<std::string> texts(10, "12345");
    EXPECT_EQ(LogBatch(entriesOf(texts), 3 * (kFrame + 5)).bytes().size(), 3 * (kFrame + 5));
    EXPECT_EQ(LogBatch(entriesOf(texts), 3 * (kFrame + 5) + 1).bytes().size(), 4 * (kFrame + 5));
    EXPECT_EQ(LogBatch(entriesOf(texts), 0).bytes().size(), kFrame + 5);
}

TEST(LogBatch, doesNotGrowWithoutEnd) {
    const std::vector<std::string> texts(10, std::string(30'000, 'x'));
    EXPECT_EQ(LogBatch(entriesOf(texts), 5'000'000).bytes().size(), 3 * (kFrame + 30'000));
}

TEST(LogBatch, countsTheBytesThatAreWrittenNotThoseOfTheText) {
    const std::vector<std::string> texts{"\xFF", "a"};
    const LogBatch batch(entriesOf(texts), kFrame + 3);
    EXPECT_EQ(test::logMessages(batch.bytes()), std::vector<std::string>{"\uFFFD"});
    EXPECT_EQ(batch.bytesOf(1), kFrame + 3);
}

}  // namespace
}  // namespace vornic
