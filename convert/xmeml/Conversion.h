#ifndef VORNIC_CONVERT_XMEML_CONVERSION_H
#define VORNIC_CONVERT_XMEML_CONVERSION_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "formats/ElementIndex.h"
#include "mend/EditList.h"
#include "report/Findings.h"

namespace vornic::xmeml {

/// Which version introduced an element, by the catalogue that the dialog of the desktop program
/// reads, too, and that users may extend.
class VersionElements {
  public:
    /// Reads the catalogue. @return nothing when it is missing.
    [[nodiscard]] static std::optional<VersionElements> load();

    /// True when the element came with a version behind the other one in the order of the
    /// catalogue.
    [[nodiscard]] bool isNewer(std::string_view element, const std::string& version) const;
    /// The version that introduced it; "1" for what no version lists.
    [[nodiscard]] std::string since(std::string_view element) const;
    /// The lowest version that has all elements of a text.
    [[nodiscard]] std::string lowestVersion(const ElementIndex& index) const;

  private:
    // By element, the place of its version in the sorted catalogue.
    std::map<std::string, std::size_t, std::less<>> places_;
    std::vector<std::string> versions_;
};

/// How a text becomes one of another version.
struct Conversion {
    EditList edits;
    /// How many elements go.
    std::uint64_t losses = 0;
};

/// Takes out the elements, with all that is in them, that came with versions above the target, and
/// writes the target's number. All other bytes stay. Linear; any thread.
/// @param index of the whole text, whose root is `xmeml`
/// @param findings takes what is reported, with offsets in the text
[[nodiscard]] Conversion convert(const ElementIndex& index, const std::string& to,
                                 const VersionElements& elements, Findings& findings);

}  // namespace vornic::xmeml

#endif
