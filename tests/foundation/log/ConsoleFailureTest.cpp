#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/log/ConsoleFailure.h"
#include "tests/support/programs/ConsoleCapture.h"

namespace vornic {
namespace {

using ::testing::ElementsAre;

TEST(ConsoleFailure, reportsTheErrorsDescription) {
    const ErrorSlot error = Error{.domain = "Test", .description = "The disk is 100% full."};
    test::ConsoleCapture console;
    EXPECT_FALSE(failOnConsole("Unable to copy log: %@", error));
    EXPECT_THAT(console.lines(), ElementsAre("Unable to copy log: The disk is 100% full."));
}

TEST(ConsoleFailure, reportsAFailureWithoutAnError) {
    test::ConsoleCapture console;
    EXPECT_FALSE(failOnConsole("Unable to copy log: %@", std::nullopt));
    EXPECT_THAT(console.lines(), ElementsAre("Unable to copy log: "));
}

}  // namespace
}  // namespace vornic
