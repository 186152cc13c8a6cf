#ifndef VORNIC_APP_CLI_EXIT_STATUS_H
#define VORNIC_APP_CLI_EXIT_STATUS_H

#include "base/StopToken.h"

namespace vornic {

/// How a command-line program ends. Of several files the highest one counts.
inline constexpr int kNothingToSay = 0;
/// Something was found or reported, or the report could not be written.
inline constexpr int kSomethingToSay = 1;
inline constexpr int kWrongUsage = 2;
/// Something could not be read, or was not written.
inline constexpr int kNotDone = 3;

/// Of a program that a signal has ended, before the signal's number is added.
inline constexpr int kSignalStatus = 128;

/// `status`, or that of a program that a signal has asked to end. Any thread.
[[nodiscard]] int statusUnlessInterrupted(int status);

/// For a job that a signal to the program ends. Any thread.
[[nodiscard]] StopToken untilInterrupted();

}  // namespace vornic

#endif
