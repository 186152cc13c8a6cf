#include "platform/crash/CrashStack.h"

#include <new>

#include "platform/crash/CrashReporter.h"

namespace vornic::platform {

CrashStack::CrashStack() {
    if (!isCrashReporterInstalled()) {
        return;
    }
    memory_.reset(new (std::nothrow) std::byte[kCrashStackSize]);
    const stack_t stack{.ss_sp = memory_.get(), .ss_flags = 0, .ss_size = kCrashStackSize};
    if (memory_ && sigaltstack(&stack, &previous_) != 0) {
        memory_.reset();
    }
}

CrashStack::~CrashStack() {
    if (memory_) {
        sigaltstack(&previous_, nullptr);
    }
}

}  // namespace vornic::platform
