#ifndef VORNIC_PLATFORM_ARCHIVES_BENEATH_FOLDER_H
#define VORNIC_PLATFORM_ARCHIVES_BENEATH_FOLDER_H

#include <functional>
#include <string>

#include <sys/types.h>

#include "platform/files/FileDescriptor.h"

/// Reaching what lies below an open folder, such that no link on the way is followed and nothing
/// outside is reached, whatever others rename or link meanwhile. Names are relative paths without
/// "..", such as `nameInsideFolder` gives. Any thread.
namespace vornic::platform {

/// Opens what lies below a folder; a link at the end of the name is not followed either.
/// @param flags of `open`; O_NOFOLLOW and O_CLOEXEC are added
/// @return an empty object with `errno` set on failure: ELOOP or ENOTDIR where a link stands.
[[nodiscard]] FileDescriptor openBeneath(int folder, const std::string& name, int flags,
                                         mode_t mode = 0);

/// The same without the system call that does it in one step, for kernels that do not have it:
/// component by component.
[[nodiscard]] FileDescriptor openBeneathStepwise(int folder, const std::string& name, int flags,
                                                 mode_t mode = 0);

/// Makes a folder with all folders above it, with the process's usual mode. Folders that are there
/// are no failure, links are.
/// @param whenMade called for each folder that is made; false from it ends the making with EFBIG
/// @return the folder, open as a place (O_PATH); an empty object with `errno` set on failure.
[[nodiscard]] FileDescriptor makeFoldersBeneath(int folder, const std::string& name,
                                                const std::function<bool()>& whenMade);

}  // namespace vornic::platform

#endif
