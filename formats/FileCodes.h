#ifndef VORNIC_FORMATS_FILE_CODES_H
#define VORNIC_FORMATS_FILE_CODES_H

#include <string>
#include <string_view>

#include "base/Error.h"

namespace vornic {

/// The classic type code of Final Cut Pro XML, and the creator code of the application that opens
/// it.
inline constexpr std::string_view kFinalCutTypeCode = "XML ";
inline constexpr std::string_view kFinalCutCreatorCode = "KeyG";

/// What came of giving a file its codes.
enum class FileCodes {
    set,
    /// Its attributes could not be read.
    unread,
    /// Its attributes could not be written.
    unwritten,
};

/// Gives a file both codes. Its other attributes are kept. Any thread.
/// @param error says what failed. An error that it holds already counts as one of the reading.
[[nodiscard]] FileCodes setFinalCutFileCodes(const std::string& path, ErrorSlot& error);

}  // namespace vornic

#endif
