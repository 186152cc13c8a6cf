#include <string>

#include <gmock/gmock.h>

#include "base/Exception.h"
#include "foundation/log/QMException.h"
#include "tests/foundation/log/LogTest.h"

namespace vornic {
namespace {

class QMExceptionTest : public test::LogTest {};

TEST_F(QMExceptionTest, logsAndPrintsMethodNameAndReason) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        const platform::RangeException exception("index 5 beyond the end");
        EXPECT_EQ(QMException::logException(exception, "-[Document startRepair:]"),
                  "Exception in -[Document startRepair:]. NSRangeException - index 5 beyond the "
                  "end.");
        QMLog::finishWriting();
    });
    EXPECT_THAT(entries(), ::testing::ElementsAre("Exception in -[Document startRepair:]. "
                                                  "NSRangeException - index 5 beyond the end."));
    EXPECT_EQ(outcome.output,
              "Exception in -[Document startRepair:]. NSRangeException - index 5 beyond the "
              "end.\n");
}

TEST_F(QMExceptionTest, logsTheReasonAsItIs) {
    const test::ChildOutcome outcome = inChild([] {
        QMLog::createNewLog();
        const platform::Exception exception("Name", "100% of %@ and %d");
        EXPECT_EQ(QMException::logException(exception, "m"),
                  "Exception in m. Name - 100% of %@ and %d.");
        QMLog::finishWriting();
    });
    EXPECT_THAT(entries(), ::testing::ElementsAre("Exception in m. Name - 100% of %@ and %d."));
    EXPECT_EQ(outcome.output, "Exception in m. Name - 100%% of  and %%d.\n");
}

TEST_F(QMExceptionTest, reportsATimeoutByItsName) {
    EXPECT_TRUE(QMException::didTimeout(platform::Exception("NSPortTimeoutException", "")));
    EXPECT_FALSE(
        QMException::didTimeout(platform::Exception("NSRangeException", "NSPortTimeoutException")));
    EXPECT_FALSE(QMException::didTimeout(platform::Exception("nsporttimeoutexception", "")));
}

}  // namespace
}  // namespace vornic
