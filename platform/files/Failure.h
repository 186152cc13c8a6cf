#ifndef VORNIC_PLATFORM_FILES_FAILURE_H
#define VORNIC_PLATFORM_FILES_FAILURE_H

#include <string>
#include <string_view>

#include "base/Error.h"

/// Filling an error slot and returning false in one step, for the files of this folder.
namespace vornic::platform {

/// "The file /a/b.xml cannot be opened: permission denied." for the verb "opened".
inline bool failFile(ErrorSlot& error, const std::string& path, std::string_view verb,
                     int errorNumber) {
    error = posixError("The file " + path + " cannot be " + std::string(verb), errorNumber);
    return false;
}

/// The same for a folder.
inline bool failFolder(ErrorSlot& error, const std::string& path, std::string_view verb,
                       int errorNumber) {
    error = posixError("The folder " + path + " cannot be " + std::string(verb), errorNumber);
    return false;
}

/// The same with a reason in words, without a full stop.
inline bool failFileBecause(ErrorSlot& error, const std::string& path, std::string_view verb,
                            int errorNumber, std::string_view reason) {
    error = Error{.domain = std::string(kPosixErrorDomain),
                  .code = errorNumber,
                  .description = "The file " + path + " cannot be " + std::string(verb) + ": " +
                                 std::string(reason) + "."};
    return false;
}

}  // namespace vornic::platform

#endif
