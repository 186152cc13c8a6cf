#ifndef VORNIC_TESTS_APP_CONTENT_OF_H
#define VORNIC_TESTS_APP_CONTENT_OF_H

#include <string>
#include <string_view>

namespace vornic::test {

/// What of a damaged file a repair must keep, in a form in which the damaged and the repaired file
/// are equal: without the XML declaration and the document type declaration, which may be replaced,
/// without the characters that a repair takes out (in bytes that are no UTF-8, all that is not
/// printable ASCII), with the references to characters replaced by the characters, and without the
/// white space, quotes and equals signs, which may be written otherwise.
[[nodiscard]] std::string contentOf(std::string_view file);

}  // namespace vornic::test

#endif
