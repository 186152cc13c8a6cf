#ifndef VORNIC_CHECK_CHARACTERS_H
#define VORNIC_CHECK_CHARACTERS_H

#include <string_view>

#include "report/Findings.h"

namespace vornic {

/// The characters of a project file, of either format, that are legal and yet do not survive
/// everywhere: what a repair's character filter takes out or writes otherwise (in the same places
/// as it: sections of CDATA are spared, comments are not), and control characters. Counts each
/// character. One quick pass over a text without any, two over others.
/// @param text that was read, well-formed UTF-8. @param root the offset of its root element.
/// @return `hasOddCharacters` of the text.
bool checkCharacters(std::string_view text, std::size_t root, Findings& findings);

/// Whether a text holds anything that could be such a character: bytes that begin one, or the two
/// that begin a reference to one. Where it has none, nothing is found. Quick.
[[nodiscard]] bool hasOddCharacters(std::string_view text);

}  // namespace vornic

#endif
