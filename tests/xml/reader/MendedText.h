#ifndef VORNIC_TESTS_XML_READER_MENDED_TEXT_H
#define VORNIC_TESTS_XML_READER_MENDED_TEXT_H

#include <string>
#include <string_view>

namespace vornic::test {

/// Reads a text, which may be anything, in both modes and checks what holds for every text:
/// - a fault has a place inside the text and names it;
/// - a text that is sound in strict mode is not changed by the tolerant mode, and one that the
///   tolerant mode does not change is sound in strict mode;
/// - the mended text is sound in strict mode;
/// - edits take nothing out but what XML forbids, what they put back as a reference, the XML
///   declaration, and white space and byte order marks before it;
/// - mends and edits ascend, and places of mends are right.
/// @return the rule that was broken, in words, or "".
[[nodiscard]] std::string brokenRuleOfMending(std::string_view text);

}  // namespace vornic::test

#endif
