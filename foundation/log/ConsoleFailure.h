#ifndef VORNIC_FOUNDATION_LOG_CONSOLE_FAILURE_H
#define VORNIC_FOUNDATION_LOG_CONSOLE_FAILURE_H

#include <string_view>

#include "base/Error.h"

namespace vornic {

/// Tells a failure on the console, in one step with giving up. Any thread.
/// @param message a format whose one argument is the error's description
/// @return false
bool failOnConsole(std::string_view message, const ErrorSlot& error);

}  // namespace vornic

#endif
