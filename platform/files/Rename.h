#ifndef VORNIC_PLATFORM_FILES_RENAME_H
#define VORNIC_PLATFORM_FILES_RENAME_H

#include <string>

#include "base/ErrnoOr.h"

/// Changes of names within a volume that take no file away. Paths are byte strings; links at their
/// ends are not followed, they are what is renamed. Any thread.
namespace vornic::platform {

/// What became of an exchange.
enum class Exchange {
    /// Each of the two names leads to what the other one led to.
    done,
    /// The kernel or the volume knows no exchange; nothing was changed.
    unavailable,
};

/// Exchanges what stands at two paths in one step: at no moment does either name lead to nothing,
/// and nothing is replaced (renameat2, RENAME_EXCHANGE).
/// @return the errno value when it failed for another reason, a name that leads to nothing say;
///     nothing was changed then.
[[nodiscard]] ErrnoOr<Exchange> exchangeNames(const std::string& first, const std::string& second);

/// Renames, never replacing what stands at the destination: in one step where the kernel and the
/// volume can (renameat2, RENAME_NOREPLACE), else by a second link, of which the first name is then
/// taken, and for folders and on volumes without links after a look at the destination.
/// @return 0, or the errno value (EEXIST: the destination is taken; EXDEV: another volume).
[[nodiscard]] int renameWithoutReplacing(const std::string& source, const std::string& destination);

/// Gives an open file that still has a name another one, beside it, at which nothing may stand.
/// Nothing but the very file behind the descriptor comes to have that name.
/// @return 0, or the errno value (EEXIST: the name is taken; ENOENT: the file has no name any more;
///     others also where a volume knows no second names).
[[nodiscard]] int linkOpenFile(int descriptor, const std::string& path);

}  // namespace vornic::platform

#endif
