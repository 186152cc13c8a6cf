#ifndef VORNIC_JOB_RESULT_FILE_H
#define VORNIC_JOB_RESULT_FILE_H

#include <optional>
#include <string>
#include <string_view>

#include "base/Error.h"
#include "job/WorkingCopy.h"

namespace vornic {

/// What a job has made of a user's file, as a new file of its own.
struct ResultFile {
    /// Where it stands: the wanted path, or one with a number ("Cut 2.xml") where that was taken.
    std::string path;
    /// What of the user's file's mode, owner and attributes it could not be given, in words.
    std::string lostMetadata;
};

/// Writes a new file; what stands at the path stays. It appears whole, synced and with mode, owner
/// and attributes of the file that it was made from, or not at all. Links at the path are not
/// followed. What a killed run has left half written in the folder goes first. Any thread.
/// @param from the user's file, links followed; "" when that has gone, for those of a new file
/// @return nothing, with the slot filled
[[nodiscard]] std::optional<ResultFile> writeResultFile(const std::string& path,
                                                        std::string_view bytes,
                                                        const std::string& from, ErrorSlot& error);

/// The same with bytes that are handed over piece by piece.
[[nodiscard]] std::optional<ResultFile> writeResultFile(const std::string& path,
                                                        const WorkingCopy::Writer& write,
                                                        const std::string& from, ErrorSlot& error);

}  // namespace vornic

#endif
