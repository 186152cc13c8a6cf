#ifndef VORNIC_FORMATS_FILE_CODES_H
#define VORNIC_FORMATS_FILE_CODES_H

#include <string>

#include "platform/Error.h"

namespace vornic {

/// What came of giving a file its codes.
enum class FileCodes {
    set,
    /// Its attributes could not be read.
    unread,
    /// Its attributes could not be written.
    unwritten,
};

/// Gives a file the classic codes of Final Cut Pro XML: the type "XML " and, of the application
/// that opens it, the creator "KeyG". Its other attributes are kept. Any thread.
/// @param error says what failed. An error that it holds already counts as one of the reading.
[[nodiscard]] FileCodes setFinalCutFileCodes(const std::string& path, ErrorSlot& error);

}  // namespace vornic

#endif
