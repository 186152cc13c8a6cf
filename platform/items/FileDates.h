#ifndef VORNIC_PLATFORM_ITEMS_FILE_DATES_H
#define VORNIC_PLATFORM_ITEMS_FILE_DATES_H

#include <chrono>
#include <optional>
#include <string>

#include "base/Error.h"

/// The dates of files. No volume of this platform lets a program choose when a file was created;
/// a date that was chosen is kept in an extended attribute, which goes along when the file is
/// copied. Any thread.
namespace vornic::platform {

using FileDate = std::chrono::system_clock::time_point;

/// The extended attribute that holds a chosen creation date: whole seconds since 1970-01-01 UTC, a
/// dot and nine digits.
inline constexpr const char* kCreationDateAttribute = "user.com.quillmark.creationDate";

/// The creation date that was chosen for the file (links followed).
/// @return nothing when there is none, or it cannot be read.
[[nodiscard]] std::optional<FileDate> chosenCreationDate(const std::string& path);

/// Chooses the creation date of a file (links followed). A file whose mode forbids it is made
/// writable for the moment. @return false, with the slot filled, on failure, as on a volume without
/// extended attributes.
[[nodiscard]] bool setCreationDate(const std::string& path, FileDate date, ErrorSlot& error);

/// The date of the last change of a file's contents (a link is asked for its own).
/// @return nothing when there is no such file.
[[nodiscard]] std::optional<FileDate> modificationDate(const std::string& path);

/// Sets the date of the last change of a file's contents (links followed); the date of the last
/// reading stays. @return false, with the slot filled, on failure.
[[nodiscard]] bool setModificationDate(const std::string& path, FileDate date, ErrorSlot& error);

}  // namespace vornic::platform

#endif
