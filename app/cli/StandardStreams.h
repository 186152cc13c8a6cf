#ifndef VORNIC_APP_CLI_STANDARD_STREAMS_H
#define VORNIC_APP_CLI_STANDARD_STREAMS_H

#include <string_view>

#include "base/Error.h"

namespace vornic {

/// Makes standard output and standard error safe to write to, however the program was started. A
/// stream that it was started without leads nowhere, instead of into the next file that is opened.
/// A pipe that nobody reads any more, or a file that may not grow further, makes a write fail,
/// instead of ending the program halfway through a file. Call it before anything else is opened.
void secureStandardStreams();

/// Writes to standard output through the C library's buffer. What cannot be written is lost, and
/// `standardOutputError` reports it. One thread at a time.
/// @param flushes true to hand over at once what the buffer holds
void writeToStandardOutput(std::string_view text, bool flushes);

/// Hands over what the buffer of standard output holds.
/// @return why something, now or earlier, could not be written there; nothing when all was.
[[nodiscard]] ErrorSlot standardOutputError();

/// Says on standard error that memory has run out, without needing any.
/// @param program the name that the line begins with
void complainOfMemory(std::string_view program) noexcept;

}  // namespace vornic

#endif
