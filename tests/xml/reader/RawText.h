#ifndef VORNIC_TESTS_XML_READER_RAW_TEXT_H
#define VORNIC_TESTS_XML_READER_RAW_TEXT_H

#include <string>
#include <string_view>

/// What raw pieces of a well-formed document stand for, found out in the plainest way.
namespace vornic::test {

/// With every reference replaced.
[[nodiscard]] std::string withoutReferences(const std::string& raw);
/// With every line end as a line feed.
[[nodiscard]] std::string withLineFeeds(std::string_view raw);
/// The value of an attribute: white space as blanks, references replaced.
[[nodiscard]] std::string attributeValue(std::string_view raw);

}  // namespace vornic::test

#endif
