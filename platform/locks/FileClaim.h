#ifndef VORNIC_PLATFORM_LOCKS_FILE_CLAIM_H
#define VORNIC_PLATFORM_LOCKS_FILE_CLAIM_H

#include "base/ErrnoOr.h"

namespace vornic::platform {

/// What came of the attempt to claim a file.
enum class Claim {
    /// This descriptor has the file for itself.
    held,
    /// Another descriptor, of this process or of another one, has it.
    busy,
    /// The volume knows no locks: nobody can claim a file there.
    unavailable,
};

/// Claims an open file, whatever name it has or gets later, without waiting (flock(2)). The claim
/// ends when the descriptor is closed, with the process at the latest. It binds only those who ask.
/// A descriptor that the volume cannot claim with because it is open for reading alone gets a claim
/// that others who read may share. Any thread.
/// @return the errno value when it failed.
[[nodiscard]] ErrnoOr<Claim> claimFile(int descriptor);

}  // namespace vornic::platform

#endif
