#ifndef VORNIC_TESTS_XML_READER_XML_SIDE_BY_SIDE_H
#define VORNIC_TESTS_XML_READER_XML_SIDE_BY_SIDE_H

#include <string>
#include <string_view>
#include <vector>

#include "xml/tree/XMLNode.h"

namespace vornic::test {

/// What a document consists of, one line for each start, attribute, end, text, comment and so on,
/// with references replaced and line ends as XML takes them. Text that is only white space is left
/// out. Two texts with equal lines have equal content.
using ContentLines = std::vector<std::string>;

/// As the reader tells it, after a byte order mark. Empty when the reader refuses the text in
/// strict mode.
[[nodiscard]] ContentLines contentLinesOfReader(std::string_view text);
/// As the tree below a document node has it.
[[nodiscard]] ContentLines contentLinesOfTree(XMLNode document);

/// The first difference between the two for a text that is well-formed, in words; "" when there is
/// none or the text is refused.
[[nodiscard]] std::string differenceOfReaderAndTree(const std::string& text);

/// What is wrong with reading a text in strict mode, writing it, and reading and writing that
/// again: content that differs, or a second writing that does, or one from the tree. "" when
/// nothing is, or when the text is refused.
[[nodiscard]] std::string differenceAfterWriting(const std::string& text);

}  // namespace vornic::test

#endif
