#include <thread>

#include <gtest/gtest.h>

#include "platform/crash/CrashReporter.h"
#include "platform/crash/CrashStack.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic::platform {
namespace {

stack_t stackInPlace() {
    stack_t stack{};
    EXPECT_EQ(sigaltstack(nullptr, &stack), 0);
    return stack;
}

class CrashStackTest : public test::SandboxTest {};

TEST_F(CrashStackTest, isLeftOutInAProgramThatReportsNoCrashes) {
    const stack_t before = stackInPlace();
    const CrashStack stack;
    EXPECT_EQ(stackInPlace().ss_sp, before.ss_sp);
}

TEST_F(CrashStackTest, isTheThreadsSignalStackWhileItLives) {
    EXPECT_TRUE(test::passesInChild([&] {
        installCrashReporter(
            {.program = "probe", .version = "1", .folder = sandbox.path("reports"), .log = ""});
        const stack_t mainThreads = stackInPlace();
        std::thread([&] {
            const stack_t before = stackInPlace();
            EXPECT_NE(before.ss_sp, mainThreads.ss_sp);
            {
                const CrashStack stack;
                EXPECT_NE(stackInPlace().ss_sp, before.ss_sp);
                EXPECT_EQ(stackInPlace().ss_size, kCrashStackSize);
                EXPECT_EQ(stackInPlace().ss_flags, 0);
            }
            EXPECT_EQ(stackInPlace().ss_sp, before.ss_sp);
            EXPECT_EQ(stackInPlace().ss_flags, before.ss_flags);
        }).join();
        EXPECT_EQ(stackInPlace().ss_sp, mainThreads.ss_sp);
    }));
}

}  // namespace
}  // namespace vornic::platform
