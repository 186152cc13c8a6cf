#ifndef VORNIC_PLATFORM_CRASH_BACKTRACE_H
#define VORNIC_PLATFORM_CRASH_BACKTRACE_H

#include "platform/crash/SignalSafeWriter.h"

namespace vornic::platform {

/// How many frames are written at most, so that a recursion without end makes no endless report.
inline constexpr unsigned kMostCrashFrames = 256;

/// For a handler of a fatal signal: writes who called whom when the signal came, innermost first,
/// one frame a line: number, address, module, offset in the module and, when known, the function's
/// name as the linker knows it. Each line is handed to the system before the next frame is looked
/// for, since that may fail for good on a broken stack. Walks by the compiler's unwinder. The names
/// come from the module's own symbol table: `dladdr`, which `backtrace_symbols_fd` calls, may wait
/// for a lock of the loader that the broken thread holds, and names exported functions alone.
/// @param signalContext what the handler got as its third argument
void writeCrashBacktrace(SignalSafeWriter& writer, const void* signalContext);

}  // namespace vornic::platform

#endif
