#ifndef VORNIC_JOB_STANDING_H
#define VORNIC_JOB_STANDING_H

#include <optional>

#include "base/ErrnoOr.h"
#include "platform/files/ContentDigest.h"

namespace vornic {

/// What stands at a path where a job expects a certain file.
enum class Standing {
    /// The very file, with the bytes that the job knows.
    asExpected,
    /// The very file with other bytes: another program has written into it.
    written,
    /// Another file, which another program has put there.
    another,
    nothing,
};

/// Whether an open file has the bytes that the job knows. Reads all of it, a second time where the
/// first reading fails.
/// @return the errno value when it cannot be read.
[[nodiscard]] ErrnoOr<Standing> standingOfContents(
    int descriptor, const std::optional<platform::ContentDigest::Value>& expected);

/// The answer where a path cannot be looked at: `nothing` for ENOENT, else the errno value.
[[nodiscard]] ErrnoOr<Standing> standingUnseen(int errorNumber);

}  // namespace vornic

#endif
