#ifndef VORNIC_PLATFORM_ITEMS_FILE_METADATA_H
#define VORNIC_PLATFORM_ITEMS_FILE_METADATA_H

#include <string>

#include <sys/stat.h>

namespace vornic::platform {

/// Gives the open file or folder `to` what `from` has: owner, extended attributes with access
/// control lists, and mode. What cannot be kept is left out; without the owner, the set-user-id and
/// set-group-id bits are left out too, for they would speak for another user.
/// @param status of `from`
/// @return 0, or the errno value for which the mode could not be kept; an owner or attribute that
/// cannot be kept is no failure.
int copyOwnerAttributesAndMode(int from, const struct stat& status, int to);

/// The same for a copy that the original will be removed for: what a broken disk or a lack of
/// memory keeps from being read or written is a failure, and what the volume or the user's rights
/// cannot keep is none. @return 0 or the errno value.
[[nodiscard]] int moveOwnerAttributesAndMode(int from, const struct stat& status, int to);

/// The same, and reports everything that was lost and could have been kept.
/// @return empty, or a sentence for each loss: "The mode cannot be kept: input/output error.". An
///     owner that this user cannot give away and a volume without attributes are no loss.
[[nodiscard]] std::string copyMetadata(int from, const struct stat& status, int to);

/// Sets access and modification times as in `status`. @return 0 or the errno value.
int copyTimes(const struct stat& status, int to);

}  // namespace vornic::platform

#endif
