#ifndef VORNIC_BASE_TERMINAL_TEXT_H
#define VORNIC_BASE_TERMINAL_TEXT_H

#include <string>
#include <string_view>

namespace vornic {

/// The text with everything that could steer a terminal, reorder what a reader sees or hide from
/// him written out as `<U+202E>`: control characters (line breaks and tabs too), the marks and
/// embeddings of bidirectional text, invisible format characters, line and paragraph separators. A
/// byte that is no UTF-8 is written as `<0xFF>`. Any thread.
[[nodiscard]] std::string escapedForTerminal(std::string_view text);

/// The text as it is to be written to a stream: escaped for a terminal, for a file or a pipe as it
/// stands. Any thread.
/// @param descriptor of the stream
[[nodiscard]] std::string textForStream(std::string_view text, int descriptor);

}  // namespace vornic

#endif
