#ifndef VORNIC_PLATFORM_FILES_TEMPORARY_NAME_H
#define VORNIC_PLATFORM_FILES_TEMPORARY_NAME_H

#include <string>
#include <string_view>

/// Names of files that stand beside another one for a while. Any thread.
namespace vornic::platform {

/// A new unpredictable name for a temporary file beside one called `name`:
/// ".<name>.vornic-<10 letters and digits>", the name shortened so that it always fits.
[[nodiscard]] std::string temporaryName(std::string_view name);

/// True for a name that `temporaryName` may have given.
[[nodiscard]] bool isTemporaryName(std::string_view name);

}  // namespace vornic::platform

#endif
