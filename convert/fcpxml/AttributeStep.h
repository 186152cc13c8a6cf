#ifndef VORNIC_CONVERT_FCPXML_ATTRIBUTE_STEP_H
#define VORNIC_CONVERT_FCPXML_ATTRIBUTE_STEP_H

#include <cstdint>
#include <optional>
#include <vector>

#include "convert/fcpxml/AttributeChanges.h"
#include "convert/fcpxml/StepState.h"
#include "formats/StartTag.h"

namespace vornic::fcpxml {

/// Converts the attributes of elements. An attribute with the value that holds without it goes
/// unsaid; one that the old version does not have stays, since it is a fault of the file.
class AttributeStep {
  public:
    /// @param state must outlive this.
    explicit AttributeStep(StepState& state) : state_(state) {}

    /// Converts all attributes of an element but those that `AssetMedia` and its like take care of.
    /// @return why the whole element has to go; nothing when it may stay. Its edits are then to be
    ///     taken back.
    [[nodiscard]] std::optional<Change> convert(ElementNumber element,
                                                const ElementDefinition& from,
                                                const ElementDefinition& to);
    /// Drops one that is there, and reports it.
    void drop(ElementNumber element, std::string_view name);

  private:
    using Changes = std::vector<AttributeChange>;
    struct KnownChanges {
        const ElementDefinition* to;
        Changes changes;
    };

    [[nodiscard]] const Changes& changesOf(const ElementDefinition& from,
                                           const ElementDefinition& to);
    [[nodiscard]] std::optional<Change> convertPresent(const AttributeChange& change,
                                                       const StartTag& tag);
    [[nodiscard]] std::optional<Change> dropPresent(const AttributeChange& change,
                                                    const StartTag& tag);
    [[nodiscard]] std::optional<Change> convertReference(const AttributeDefinition& to,
                                                         const StartTag& tag);
    [[nodiscard]] std::optional<Change> convertAbsent(const AttributeChange& change);
    [[nodiscard]] Change reason(RuleId rule, const AttributeDefinition& attribute) const;
    [[nodiscard]] bool isTakenCareOf(std::string_view attribute) const;
    void tell(RuleId rule, TextSpan content, const AttributeDefinition& attribute,
              std::string_view instead = {});

    StepState& state_;
    ElementNumber element_ = vornic::kNoElement;
    // By the number of the old element; it becomes one of few.
    std::vector<std::vector<KnownChanges>> known_;
};

}  // namespace vornic::fcpxml

#endif
