#include <stdexcept>

#include <gtest/gtest.h>

#include "base/Exception.h"
#include "platform/crash/ExceptionReason.h"

namespace vornic::platform {
namespace {

TEST(ExceptionReasonTest, isWhatTheExceptionSays) {
    EXPECT_EQ(reasonOf(std::make_exception_ptr(Exception("Name", "the reason"))), "the reason");
    EXPECT_EQ(reasonOf(std::make_exception_ptr(std::runtime_error("an error"))), "an error");
}

TEST(ExceptionReasonTest, saysThatThereIsNone) {
    EXPECT_EQ(reasonOf(std::make_exception_ptr(5)), "exception of an unknown type");
    EXPECT_EQ(reasonOf(nullptr), "terminated without an exception");
}

}  // namespace
}  // namespace vornic::platform
