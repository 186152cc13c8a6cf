#ifndef VORNIC_CHECK_XMEML_WHITE_SPACE_H
#define VORNIC_CHECK_XMEML_WHITE_SPACE_H

#include <string_view>

#include "xml/text/TextSpan.h"

namespace vornic::xmeml {

/// True for two pieces of XML that differ, if at all, in white space beside tags.
[[nodiscard]] bool equalButForWhiteSpace(std::string_view left, std::string_view right);

/// The span with the white space in front of it, so that an element goes with its line.
[[nodiscard]] TextSpan withSpaceBefore(std::string_view text, TextSpan span);

}  // namespace vornic::xmeml

#endif
