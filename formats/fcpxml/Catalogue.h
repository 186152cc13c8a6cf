#ifndef VORNIC_FORMATS_FCPXML_CATALOGUE_H
#define VORNIC_FORMATS_FCPXML_CATALOGUE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "formats/fcpxml/Version.h"

namespace vornic::fcpxml {

/// The number of an element name, the same in every version. Names that some content model mentions
/// count, also where no version declares them.
using ElementId = std::uint16_t;
inline constexpr ElementId kNoElement = 0xFFFF;

/// A content model and the versions in which it holds.
struct CatalogueModel {
    VersionRun versions;
    /// As in an element type declaration (XML 1.0, section 3.2): `EMPTY`, `(#PCDATA)`, `(a, b?)*`.
    std::string_view model;
};

/// A declaration of an attribute and the versions in which it holds.
struct CatalogueAttribute {
    VersionRun versions;
    std::string_view name;
    /// As in an attribute-list declaration (XML 1.0, section 3.3): `CDATA`, `IDREF`, `(0|1)`.
    std::string_view type;
    /// `#REQUIRED`, `#IMPLIED`, `#FIXED "1.0"` or a quoted value.
    std::string_view defaultText;
};

/// All that the catalogue says of an element name. An attribute stands once for each run of
/// versions with the same declaration.
struct CatalogueElement {
    std::string_view name;
    std::vector<CatalogueModel> models;
    std::vector<CatalogueAttribute> attributes;

    /// True when the version declares the element.
    [[nodiscard]] bool isIn(Version version) const;
    /// The first and the last version that declare it; nothing when none does.
    [[nodiscard]] std::optional<VersionRun> span() const;
    /// The first and the last version in which it has the attribute; nothing when none does.
    [[nodiscard]] std::optional<VersionRun> spanOfAttribute(std::string_view attribute) const;
};

/// The elements, content models and attributes of FCPXML 1.0 to 1.14. Made once, on first use; it
/// never changes and may be read from any thread.
class Catalogue {
  public:
    [[nodiscard]] static const Catalogue& shared();

    /// @return `kNoElement` for a name that no version has.
    [[nodiscard]] ElementId idOf(std::string_view name) const;
    [[nodiscard]] const CatalogueElement& element(ElementId id) const { return elements_[id]; }
    /// Element names have the numbers from 0 to this one.
    [[nodiscard]] std::size_t size() const { return elements_.size(); }

  private:
    explicit Catalogue(std::string_view text);
    ElementId add(std::string_view name);
    void addNamesOf(std::string_view model);

    std::vector<CatalogueElement> elements_;
    std::unordered_map<std::string_view, ElementId> ids_;
};

/// The text that the catalogue is made from, which is part of the program.
[[nodiscard]] std::string_view catalogueText();

}  // namespace vornic::fcpxml

#endif
