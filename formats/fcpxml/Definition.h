#ifndef VORNIC_FORMATS_FCPXML_DEFINITION_H
#define VORNIC_FORMATS_FCPXML_DEFINITION_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/fcpxml/Catalogue.h"
#include "formats/fcpxml/ContentModel.h"
#include "formats/fcpxml/Version.h"

namespace vornic::fcpxml {

/// The attribute types that FCPXML uses (XML 1.0, section 3.3.1).
enum class AttributeType { text, id, reference, enumerated };

/// What holds when an attribute is left out (XML 1.0, section 3.3.2).
enum class AttributeDefault { required, none, value, fixed };

struct AttributeDefinition {
    std::string_view name;
    AttributeType type = AttributeType::text;
    AttributeDefault defaultKind = AttributeDefault::none;
    /// The value that holds when it is left out, or the only one that it may have; else empty.
    std::string_view defaultValue;
    /// The values of an enumerated attribute, in the order of their declaration.
    std::vector<std::string_view> values;

    /// True for a value, normalised, that an enumerated or fixed attribute may have, and for every
    /// value of another.
    [[nodiscard]] bool allows(std::string_view value) const;
};

/// What an element may hold (XML 1.0, section 3.2).
enum class ContentKind {
    /// Nothing at all.
    empty,
    /// Text, and the names of `mixedNames` in any number and order.
    mixed,
    /// Elements as the model says, and white space between them.
    elements,
};

/// The definition of an element in one version.
struct ElementDefinition {
    ElementId id = kNoElement;
    std::string_view name;
    ContentKind kind = ContentKind::empty;
    /// As the catalogue has it.
    std::string_view model;
    std::vector<ElementId> mixedNames;
    /// Set for `ContentKind::elements` alone.
    std::optional<ContentModel> content;
    std::vector<AttributeDefinition> attributes;

    /// @param expected the number of the attribute that is looked at first; the others follow in
    ///     their order.
    /// @return null when the element has no such attribute.
    [[nodiscard]] const AttributeDefinition* attribute(std::string_view attributeName,
                                                       std::size_t expected = 0) const;
    [[nodiscard]] bool allowsInText(ElementId child) const;
    /// True when the element may stand somewhere inside this one.
    [[nodiscard]] bool mentions(ElementId child) const;
};

/// What the document type definition of one version asks of a file. Made once for each version, on
/// first use; it never changes and may be read from any thread.
class Definition {
  public:
    [[nodiscard]] static const Definition& of(Version version);

    [[nodiscard]] Version version() const { return version_; }
    /// @return null for an element that the version does not declare.
    [[nodiscard]] const ElementDefinition* element(ElementId id) const;
    [[nodiscard]] const ElementDefinition* element(std::string_view name) const;

  private:
    explicit Definition(Version version);

    Version version_;
    // By element; those that the version does not declare have no id.
    std::vector<ElementDefinition> elements_;
};

}  // namespace vornic::fcpxml

#endif
