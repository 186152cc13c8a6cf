#include <thread>

#include <gtest/gtest.h>

#include "repair/document/ConversionRun.h"

namespace vornic {
namespace {

TEST(ConversionRunTest, knowsWhatItWasMadeFor) {
    const ConversionRun conversion(7, "/Cut.xml", "4");
    EXPECT_EQ(conversion.number(), 7U);
    EXPECT_EQ(conversion.path(), "/Cut.xml");
    EXPECT_EQ(conversion.version(), "4");
    EXPECT_EQ(ConversionRun(8, "/Cut.xml").version(), std::nullopt);
}

TEST(ConversionRunTest, writesNothingOnceItIsStopped) {
    ConversionRun run(1, "/Cut.xml", "4");
    EXPECT_TRUE(run.mayWrite());
    run.stop();
    EXPECT_TRUE(run.isStopped());
    EXPECT_FALSE(run.mayWrite());
    EXPECT_FALSE(run.beginWriting());
}

TEST(ConversionRunTest, finishesWhatItWrites) {
    ConversionRun run(1, "/Cut.xml", "4");
    ASSERT_TRUE(run.beginWriting());
    run.stop();
    EXPECT_TRUE(run.isStopped());
    EXPECT_TRUE(run.mayWrite());
    run.endWriting();
    EXPECT_FALSE(run.mayWrite());
}

TEST(ConversionRunTest, mayWriteUntilItsEnd) {
    ConversionRun run(1, "/Cut.xml", "4");
    run.end();
    EXPECT_FALSE(run.mayWrite());
}

TEST(ConversionRunTest, letsOthersWaitUntilNothingIsWritten) {
    ConversionRun run(1, "/Cut.xml", "4");
    run.waitUntilWritten();
    ASSERT_TRUE(run.beginWriting());
    std::thread writer([&run] { run.endWriting(); });
    run.waitUntilWritten();
    run.end();
    EXPECT_FALSE(run.mayWrite());
    writer.join();
}

}  // namespace
}  // namespace vornic
