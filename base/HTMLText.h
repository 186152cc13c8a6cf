#ifndef VORNIC_BASE_HTML_TEXT_H
#define VORNIC_BASE_HTML_TEXT_H

#include <string>
#include <string_view>

namespace vornic {

/// The text as content or attribute value of an HTML or XML document: marks of markup become
/// entities, and what `escapedForTerminal` writes out is written out. Any thread.
[[nodiscard]] std::string escapedForHTML(std::string_view text);

}  // namespace vornic

#endif
