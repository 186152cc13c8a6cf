#ifndef VORNIC_FORMATS_FCPXML_VALIDATOR_H
#define VORNIC_FORMATS_FCPXML_VALIDATOR_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "formats/fcpxml/Definition.h"
#include "formats/fcpxml/NameSet.h"
#include "xml/reader/XMLReader.h"
#include "xml/text/TextSpan.h"

namespace vornic::fcpxml {

/// What can be wrong with a well-formed file by the definition of its version; each is one of the
/// validity constraints of XML 1.0, named behind it.
enum class ValidityFaultKind {
    /// The document type declaration names another element than the root (2.8, Root Element Type).
    rootElementType,
    /// No version has an element of that name (3, Element Valid).
    unknownElement,
    /// Other versions have the element, this one has not (3, Element Valid).
    elementOfOtherVersion,
    /// The element has no place in the one around it (3, Element Valid).
    misplacedElement,
    /// The element has a place in the one around it, but not behind what stands there already (3,
    /// Element Valid).
    elementOutOfOrder,
    /// The element has been in the one around it before, and may be there no more often (3, Element
    /// Valid).
    surplusElement,
    /// An element ends before all that it needs is there (3, Element Valid).
    missingElement,
    /// Text, or a CDATA section, in an element that may hold elements alone (3, Element Valid).
    misplacedText,
    /// Text or a comment in an element that has to be empty (3, Element Valid). White space and
    /// comments beside a child that has no place there are part of that fault.
    contentInEmptyElement,
    /// No version has the attribute at this element (3.1, Attribute Value Type).
    unknownAttribute,
    /// Other versions have the attribute at this element (3.1, Attribute Value Type).
    attributeOfOtherVersion,
    /// 3.3.2, Required Attribute.
    missingAttribute,
    /// 3.3.1, Enumeration.
    valueNotListed,
    /// 3.3.2, Fixed Attribute Default.
    valueNotFixed,
    /// An id or reference that is no name (3.3.1, ID, IDREF).
    malformedId,
    /// 3.3.1, ID.
    repeatedId,
    /// 3.3.1, IDREF.
    danglingReference,
    /// `standalone="yes"` although the definition gives attributes their values, or makes white
    /// space meaningless (2.9, Standalone Document Declaration). Told once.
    notStandalone,
};

/// One thing that is wrong. Views live during the call only.
struct ValidityFault {
    ValidityFaultKind kind;
    /// The start tag, attribute, value or text that is wrong, in the text that is read.
    TextSpan where;
    /// The element that is wrong, or the owner of the attribute.
    std::string_view element;
    /// The element around it; empty for the root.
    std::string_view parent = {};
    /// The attribute concerned, or empty.
    std::string_view attribute = {};
    /// Its value with references replaced, where that is what is wrong; for `rootElementType` the
    /// name in the declaration.
    std::string_view value = {};
    /// The declaration of the attribute; null when there is none.
    const AttributeDefinition* definition = nullptr;
    /// The element that something is wrong in, and what it had before; null where nothing can be
    /// said about its content.
    const ElementDefinition* holder = nullptr;
    ContentModel::State state = ContentModel::kStart;
    /// For `elementOutOfOrder`: what stands before it and should come behind it.
    ElementId previous = kNoElement;
    /// Where `element` begins; set for attributes and for `missingElement`.
    std::size_t start = 0;

    /// The names that may stand at the place instead, or that are missing there.
    [[nodiscard]] std::vector<ElementId> expected() const;
};

/// Judges what `readXML` reads by the definition of one version: one pass, memory for the open
/// elements and the ids alone. A fault is reported once; what an unknown element holds is not
/// judged, and an element that holds something wrong is not said to lack something. References to
/// what has an id that was not judged, or one that is no name, or to what seems to have lost its
/// id, are not told. One thread.
class Validator final : public XMLReaderEvents {
  public:
    using FaultSink = std::function<void(const ValidityFault& fault)>;

    /// @param standalone whether the XML declaration says `standalone="yes"`.
    Validator(const Definition& definition, bool standalone, FaultSink sink);

    /// Tells the references that found no target. To be called behind the reading.
    void finish(bool tellsConsequences = false);
    /// True when nothing was wrong.
    [[nodiscard]] bool isValid() const { return isValid_; }

    void startElement(std::string_view name) override;
    void attribute(std::string_view name, std::string_view rawValue) override;
    void finishStartTag() override;
    void endElement(std::string_view name, bool selfClosed) override;
    void text(std::string_view rawText) override;
    void cdata(std::string_view content) override;
    void comment(std::string_view content) override;
    void processingInstruction(std::string_view target, std::string_view data) override;
    void documentType(std::string_view name, std::string_view rawDeclaration) override;

  private:
    struct OpenElement {
        // Null for one that is unknown, or inside an unknown one.
        const ElementDefinition* definition;
        std::string_view name;
        TextSpan startTag;
        ContentModel::State state = ContentModel::kStart;
        // The bits of the children that it has had.
        std::uint64_t children = 0;
        // Something in it was told already.
        bool isFaulty = false;
        // Of one that has to be empty: the first thing in it that is no child.
        TextSpan content = {};
    };
    struct Reference {
        TextSpan where;
        const ElementDefinition* element;
        const AttributeDefinition* attribute;
    };

    struct RecentName {
        std::string_view name;
        ElementId id = kNoElement;
    };

    [[nodiscard]] ElementId idOf(std::string_view name);
    void judgeChild(std::string_view name, ElementId id);
    void judgePlace(OpenElement& parent, std::string_view name, ElementId id);
    void refuseChild(ValidityFaultKind kind, std::string_view name,
                     ElementId previous = kNoElement);
    void judgeContent(std::string_view content, bool isText);
    void noteContent(OpenElement& element);
    void judgeEnd(const OpenElement& element);
    void judgeValue(const AttributeDefinition& definition, std::string_view rawValue);
    void judgeIdentity(const AttributeDefinition& definition, std::string_view value);
    void leaveOutConsequences();
    void refuse(const ValidityFault& fault);
    void refuseAttribute(ValidityFaultKind kind, TextSpan where, std::string_view name,
                         std::string_view value = {},
                         const AttributeDefinition* definition = nullptr);
    void refuseStandalone();
    // The element that a child is about to be opened in, and the one around that which is open.
    [[nodiscard]] std::string_view parentName() const;
    [[nodiscard]] std::string_view grandparentName() const;

    const Definition& definition_;
    const Catalogue& catalogue_;
    bool standalone_;
    FaultSink sink_;
    bool isValid_ = true;
    std::vector<OpenElement> open_;
    bool inStartTag_ = false;
    // One bit for each attribute of the open start tag's element.
    std::uint64_t seenAttributes_ = 0;
    // Attributes are mostly written in the order in which they are declared.
    std::size_t nextAttribute_ = 0;
    std::array<RecentName, 64> recent_;
    std::string documentTypeName_;
    TextSpan documentTypePlace_;
    NameSet ids_;
    // References whose target has not come yet, by the target's name.
    std::unordered_map<std::string, std::vector<Reference>> pending_;
    // Ids of unknown elements, and those that are no names.
    std::unordered_set<std::string> doubtfulIds_;
    // How many elements have no id and should have one.
    std::size_t withoutId_ = 0;
};

}  // namespace vornic::fcpxml

#endif
