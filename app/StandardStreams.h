#ifndef VORNIC_APP_STANDARD_STREAMS_H
#define VORNIC_APP_STANDARD_STREAMS_H

namespace vornic {

/// Makes standard output and standard error safe to write to, however the program was started. A
/// stream that it was started without leads nowhere, instead of into the next file that is opened.
/// A pipe that nobody reads any more, or a file that may not grow further, makes a write fail,
/// instead of ending the program halfway through a file. Call it before anything else is opened.
void secureStandardStreams();

}  // namespace vornic

#endif
