#ifndef VORNIC_JOB_COPY_TURN_H
#define VORNIC_JOB_COPY_TURN_H

#include <string>

#include "base/Error.h"
#include "job/Waiting.h"
#include "platform/files/FileDescriptor.h"

namespace vornic {

/// What stands at a path at which a running job has a file that it has claimed.
struct FoundCopy {
    enum class State {
        /// Nothing stands there.
        absent,
        /// Something that no running job has claimed. A regular file is claimed by `file` now, so
        /// that no other job takes it.
        left,
        /// The waiting was cancelled.
        cancelled,
        /// It cannot be determined whether a running job has claimed it; the slot says why.
        unknown,
    };
    State state = State::absent;
    platform::FileDescriptor file;
};

/// Waits while a job of any process has claimed what stands at the path, and says what is there
/// then. The user's folder is never locked for it.
/// @param followLinks whether what a link at the path leads to counts; without, a link is nothing
///     that a job has claimed
[[nodiscard]] FoundCopy awaitTurn(const std::string& path, bool followLinks, const Waiting& waiting,
                                  ErrorSlot& error);

}  // namespace vornic

#endif
