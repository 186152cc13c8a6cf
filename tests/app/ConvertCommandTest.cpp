// What the converter does when something fails inside it.

#include <new>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "app/cli/ConvertCommand.h"
#include "platform/files/FileReplacement.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic {
namespace {

constexpr const char* kVersion5 = "<xmeml version=\"5\"><sequence/></xmeml>";

/// Converts two files in a child process of its own; something goes wrong in the first one.
class FailingConversion : public test::SandboxTest {
  public:
    void TestBody() override {
        const std::string first = sandbox.write("first.xml", kVersion5);
        const std::string second = sandbox.write("second.xml", kVersion5);
        EXPECT_EQ(ConvertCommand::run({"vornic", "-convertxmeml", "3", first, second}), 0);
        EXPECT_EQ(test::readBytes(first), kVersion5);
        EXPECT_NE(test::readBytes(second).find("<xmeml version=\"3\">"), std::string::npos);
    }
};

// Suites of this name run first, while there is no other thread that a child would lack.
TEST(ConvertCommandDeathTest, anExceptionEndsTheFileAndNotTheRun) {
    EXPECT_TRUE(test::passesInChild([] {
        platform::FileReplacement::setHook([](platform::FileReplacement::Moment) {
            platform::FileReplacement::setHook(nullptr);
            throw std::runtime_error("inside");
        });
        FailingConversion().TestBody();
    }));
}

TEST(ConvertCommandDeathTest, aLackOfMemoryEndsTheFileAndNotTheRun) {
    EXPECT_TRUE(test::passesInChild([] {
        platform::FileReplacement::setHook([](platform::FileReplacement::Moment) {
            platform::FileReplacement::setHook(nullptr);
            throw std::bad_alloc();
        });
        FailingConversion().TestBody();
    }));
}

}  // namespace
}  // namespace vornic
