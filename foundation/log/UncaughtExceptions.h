#ifndef VORNIC_FOUNDATION_LOG_UNCAUGHT_EXCEPTIONS_H
#define VORNIC_FOUNDATION_LOG_UNCAUGHT_EXCEPTIONS_H

namespace vornic {

/// Has the reason of an exception that nobody catches logged and printed, and the log written out,
/// before the process goes on to die as it did without this. Calling it again changes nothing.
void logUncaughtExceptions();

}  // namespace vornic

#endif
