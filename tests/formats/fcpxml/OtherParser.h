#ifndef VORNIC_TESTS_FORMATS_FCPXML_OTHER_PARSER_H
#define VORNIC_TESTS_FORMATS_FCPXML_OTHER_PARSER_H

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "formats/fcpxml/Version.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::test {

/// A text that is to be valid by the definition of a version.
struct VersionedText {
    fcpxml::Version version;
    std::string text;
};

/// A validating parser of other people's, xmllint, that reads definitions written from the
/// catalogue.
class OtherParser {
  public:
    [[nodiscard]] static bool isThere();

    /// Writes the definitions.
    /// @param sandbox where the parser works; must outlive this.
    explicit OtherParser(const Sandbox& sandbox);

    /// Judges all texts in one run.
    /// @return what it says of those that it refuses, by their numbers.
    [[nodiscard]] std::map<std::size_t, std::string> refusals(
        const std::vector<VersionedText>& texts) const;

  private:
    const Sandbox& sandbox_;
};

/// The text with a declaration that names the definition of the version in the place of its own.
[[nodiscard]] std::string withDefinition(const VersionedText& text);

}  // namespace vornic::test

#endif
