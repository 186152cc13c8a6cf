#ifndef VORNIC_UI_ABOUT_RICH_TEXT_READER_H
#define VORNIC_UI_ABOUT_RICH_TEXT_READER_H

#include <optional>
#include <string_view>
#include <vector>

#include "ui/about/StyledRun.h"

namespace vornic {

/// Reads the part of rich text (RTF) that a credits file uses: text in a code page of Windows, in
/// Mac Roman or in Unicode escapes, paragraphs, lines and tabs, bold, italic and font sizes.
/// Everything else is passed over: font, colour and style tables, pictures, headers, what is marked
/// as ignorable or hidden. Damaged text yields what can be read of it; bytes that decode to nothing
/// become U+FFFD. Takes linear time, without recursion. Any thread.
/// @return runs of which no two neighbours have the same style; nothing when the bytes do not begin
/// as rich text does.
[[nodiscard]] std::optional<std::vector<StyledRun>> readRichText(std::string_view rtf);

}  // namespace vornic

#endif
