#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "app/cli/TerminalProgress.h"

namespace vornic {
namespace {

TEST(TerminalProgressBar, isAWordWithoutAMaximum) {
    EXPECT_EQ(TerminalProgress::bar(0, 0), "Repairing...");
    EXPECT_EQ(TerminalProgress::bar(17, 0), "Repairing...");
    EXPECT_EQ(TerminalProgress::bar(17, -1), "Repairing...");
}

TEST(TerminalProgressBar, fillsFromLeftToRight) {
    EXPECT_EQ(TerminalProgress::bar(0, 600000), "[" + std::string(40, '.') + "]   0%");
    EXPECT_EQ(TerminalProgress::bar(300000, 600000),
              "[" + std::string(20, '#') + std::string(20, '.') + "]  50%");
    EXPECT_EQ(TerminalProgress::bar(599999, 600000), "[" + std::string(39, '#') + "." + "]  99%");
    EXPECT_EQ(TerminalProgress::bar(600000, 600000), "[" + std::string(40, '#') + "] 100%");
}

TEST(TerminalProgressBar, staysWithinItsBounds) {
    EXPECT_EQ(TerminalProgress::bar(-5, 10), TerminalProgress::bar(0, 10));
    EXPECT_EQ(TerminalProgress::bar(15, 10), TerminalProgress::bar(10, 10));
}

TEST(TerminalProgressBar, takesTheLengthOfAnyText) {
    constexpr std::int64_t kLarge = std::int64_t{1} << 40;
    EXPECT_EQ(TerminalProgress::bar(kLarge / 4, kLarge),
              "[" + std::string(10, '#') + std::string(30, '.') + "]  25%");
}

TEST(TerminalProgressLines, arePrintedWhole) {
    const std::shared_ptr<Document> document = Document::create();
    ::testing::internal::CaptureStdout();
    {
        TerminalProgress progress(document);
        progress.printLine("50% %d");
        progress.printLine("");
        progress.printLine("two\nlines");
    }
    std::fflush(stdout);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "50% %d\n\ntwo\nlines\n");
}

TEST(TerminalProgressLines, ofSeveralThreadsAreNotMixed) {
    const std::shared_ptr<Document> document = Document::create();
    ::testing::internal::CaptureStdout();
    {
        TerminalProgress progress(document);
        std::vector<std::thread> threads;
        for (const char letter : {'a', 'b', 'c'}) {
            threads.emplace_back([&progress, letter] {
                for (int time = 0; time < 50; ++time) {
                    progress.printLine(std::string(30, letter));
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    std::fflush(stdout);
    const std::string printed = ::testing::internal::GetCapturedStdout();
    ASSERT_EQ(printed.size(), 150U * 31U);
    for (std::size_t line = 0; line < 150; ++line) {
        const std::string text = printed.substr(line * 31, 31);
        EXPECT_EQ(text, std::string(30, text[0]) + "\n");
    }
}

}  // namespace
}  // namespace vornic
