#ifndef VORNIC_PLATFORM_CRASH_EXCEPTION_REASON_H
#define VORNIC_PLATFORM_CRASH_EXCEPTION_REASON_H

#include <exception>
#include <string>

namespace vornic::platform {

/// Why a program that an exception ends has ended, in words: the exception's reason, or a text that
/// says that there is no exception or none that has a reason.
[[nodiscard]] std::string reasonOf(const std::exception_ptr& exception);

}  // namespace vornic::platform

#endif
