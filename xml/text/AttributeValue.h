#ifndef VORNIC_XML_TEXT_ATTRIBUTE_VALUE_H
#define VORNIC_XML_TEXT_ATTRIBUTE_VALUE_H

#include <string>
#include <string_view>

namespace vornic {

/// The value of an attribute as a program sees it: references replaced, white space made blanks
/// (XML 1.0, section 3.3.3). What is no well-formed reference stays as it is.
/// @param rawValue what stands between the quotes, UTF-8.
/// @param isToken true for every type but CDATA: blanks at both ends go, and several in a row
/// become
///     one.
[[nodiscard]] std::string normalisedAttributeValue(std::string_view rawValue, bool isToken);

/// A text as it stands between the quotes of an attribute, whichever they are, or between two tags.
[[nodiscard]] std::string escapedAttributeValue(std::string_view text);

}  // namespace vornic

#endif
