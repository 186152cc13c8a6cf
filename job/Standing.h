#ifndef VORNIC_JOB_STANDING_H
#define VORNIC_JOB_STANDING_H

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
    /// It cannot be read.
    unknown,
};

}  // namespace vornic

#endif
