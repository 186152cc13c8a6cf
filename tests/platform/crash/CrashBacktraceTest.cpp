#include <csignal>
#include <string>

#include <gmock/gmock.h>

#include "platform/crash/CrashBacktrace.h"
#include "tests/platform/crash/CrashTest.h"

namespace vornic::platform {
namespace {

using test::callerOfTheCrashingFunction;
using test::depthWanted;
using test::endlessRecursion;
using test::jumpToNowhere;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

using CrashBacktraceTest = test::CrashTest;

TEST_F(CrashBacktraceTest, followsTheStackToTheProgramsStart) {
    crash(callerOfTheCrashingFunction);
    EXPECT_THAT(report(), ContainsRegex("\n[0-9]+  0x[0-9a-f]{16}  /.*/test-crashes \\+ "
                                        "0x[0-9a-f]+  main\n"));
    EXPECT_THAT(report(), HasSubstr("libc.so.6 + 0x"));
    EXPECT_THAT(report(), Not(HasSubstr("Further frames")));
}

TEST_F(CrashBacktraceTest, leavesOutTheOuterFramesOfAFullStack) {
    EXPECT_EQ(crash([] { depthWanted = endlessRecursion(0); }), SIGSEGV);
    const std::string text = report();
    EXPECT_THAT(text, HasSubstr("\n" + std::to_string(kMostCrashFrames - 1) + "  0x"));
    EXPECT_THAT(text, Not(HasSubstr("\n" + std::to_string(kMostCrashFrames) + "  0x")));
    EXPECT_TRUE(text.ends_with("  endlessRecursion\nFurther frames are left out.\n"));
}

TEST_F(CrashBacktraceTest, reportsWhoJumpedToNowhere) {
    EXPECT_EQ(crash(jumpToNowhere), SIGSEGV);
    EXPECT_THAT(report(), ContainsRegex("\nBacktrace:\n0  0x0000000000000008\n"
                                        "1  0x[0-9a-f]{16}  /.*/test-crashes \\+ 0x[0-9a-f]+  "
                                        "jumpToNowhere\n$"));
}

#if defined(__x86_64__)
TEST_F(CrashBacktraceTest, keepsWhatItKnowsOfAThreadWhoseStackIsLost) {
    EXPECT_EQ(crash([] {
                  asm volatile(
                      "movq $16, %%rbp\n"
                      "movq $16, %%rsp\n"
                      "movq $0, 8\n"
                      :
                      :
                      : "memory");
              }),
              SIGSEGV);
    EXPECT_THAT(report(), ContainsRegex("Faulting address: 0x8\n.*\n\nBacktrace:\n"
                                        "0  0x[0-9a-f]{16}  /.*/test-crashes \\+ "));
}
#endif

}  // namespace
}  // namespace vornic::platform
