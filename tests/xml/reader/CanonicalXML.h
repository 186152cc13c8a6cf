#ifndef VORNIC_TESTS_XML_READER_CANONICAL_XML_H
#define VORNIC_TESTS_XML_READER_CANONICAL_XML_H

#include <string>
#include <string_view>

namespace vornic::test {

/// What the reader tells of a well-formed text in strict mode, in the first canonical form of the
/// conformance test suite: no declarations and comments, attributes sorted by name, every element
/// with an end tag, and markup characters, tabs and line ends as references.
[[nodiscard]] std::string canonicalXML(std::string_view text);

}  // namespace vornic::test

#endif
