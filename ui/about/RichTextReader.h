#ifndef VORNIC_UI_ABOUT_RICH_TEXT_READER_H
#define VORNIC_UI_ABOUT_RICH_TEXT_READER_H

#include <optional>
#include <string_view>
#include <vector>

#include "ui/about/StyledRun.h"

namespace vornic {

/// Reads the rich text (RTF) that the application's credits are written in: ASCII with Unicode
/// escapes (`\u8211-`, one character standing for it), escaped braces and backslashes, line ends
/// as a backslash before the end of a line, `\b`, `\b0` and `\fs`. Passes over the font table, what
/// `\*` marks, and every other word; bytes outside ASCII become U+FFFD. Damaged text yields what
/// can be read of it. Linear time, without recursion. Any thread.
/// @return runs of which no two neighbours have the same style; nothing when the bytes do not begin
/// as rich text does.
[[nodiscard]] std::optional<std::vector<StyledRun>> readRichText(std::string_view rtf);

}  // namespace vornic

#endif
