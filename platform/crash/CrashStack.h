#ifndef VORNIC_PLATFORM_CRASH_STACK_H
#define VORNIC_PLATFORM_CRASH_STACK_H

#include <csignal>
#include <cstddef>
#include <memory>

namespace vornic::platform {

/// Room for the handler of a fatal signal to work in, for a handler that writes a report.
inline constexpr std::size_t kCrashStackSize = std::size_t{64} << 10U;

/// Gives the thread that makes it a stack of its own for signal handlers while it lives, so that
/// the crash of a thread whose stack is full is reported too. Does nothing in a program that
/// reports no crashes. It is made and destroyed on the same thread, first and last in its function.
class CrashStack {
  public:
    CrashStack();
    ~CrashStack();
    CrashStack(const CrashStack&) = delete;
    CrashStack& operator=(const CrashStack&) = delete;

  private:
    std::unique_ptr<std::byte[]> memory_;
    stack_t previous_{};
};

}  // namespace vornic::platform

#endif
