#ifndef VORNIC_CHECK_URL_MEND_H
#define VORNIC_CHECK_URL_MEND_H

#include <string_view>

#include "report/Mend.h"
#include "xml/text/TextSpan.h"

namespace vornic {

/// Writes a URL in place of the one that stands at a place of the text, an attribute's value or an
/// element's content. What both begin and end with stays, and so do quotes that need no reference
/// there.
[[nodiscard]] Edit urlEdit(std::string_view text, TextSpan place, std::string_view url);

}  // namespace vornic

#endif
