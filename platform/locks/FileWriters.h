#ifndef VORNIC_PLATFORM_LOCKS_FILE_WRITERS_H
#define VORNIC_PLATFORM_LOCKS_FILE_WRITERS_H

namespace vornic::platform {

/// Whether a program, this one included, has the file open for writing right now. Asks for a lease
/// (fcntl(2), F_SETLEASE) and gives it back at once. Any thread.
/// @param descriptor opened for reading alone
/// @return false also where the system cannot tell: on volumes without leases and for files of
///     other users.
[[nodiscard]] bool isOpenForWriting(int descriptor);

}  // namespace vornic::platform

#endif
