#ifndef VORNIC_TESTS_CONVERT_FCPXML_DOCUMENT_MEANING_H
#define VORNIC_TESTS_CONVERT_FCPXML_DOCUMENT_MEANING_H

#include <string>
#include <string_view>

#include "tests/convert/fcpxml/ConvertedText.h"

namespace vornic::test {

/// What a text says by the definition of a version, a line for each tag, text and comment:
/// attributes by their names, with the values that hold where none is written, and without the
/// white space between elements.
[[nodiscard]] std::string meaningOf(std::string_view text, fcpxml::Version version);

/// What is left of that after a conversion to another version and one back to this, by what the two
/// have told alone.
/// @param there of the text. @param back of what that made of it.
[[nodiscard]] std::string meaningByWhatWasTold(std::string_view text, fcpxml::Version version,
                                               const ConvertedText& there,
                                               const ConvertedText& back);

}  // namespace vornic::test

#endif
