#include <gtest/gtest.h>

#include "base/Exception.h"

namespace vornic::platform {
namespace {

TEST(ExceptionTest, carriesNameAndReason) {
    const Exception exception("NSGenericException", "the reason");
    EXPECT_EQ(exception.name(), "NSGenericException");
    EXPECT_EQ(exception.reason(), "the reason");
    EXPECT_STREQ(exception.what(), "the reason");
}

TEST(ExceptionTest, namesARangeErrorAndIsCaughtAsAnException) {
    try {
        throw RangeException("index 7 beyond 3");
    } catch (const Exception& exception) {
        EXPECT_EQ(exception.name(), "NSRangeException");
        EXPECT_EQ(exception.reason(), "index 7 beyond 3");
        return;
    }
}

}  // namespace
}  // namespace vornic::platform
