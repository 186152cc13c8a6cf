#ifndef VORNIC_CHECK_FCPXML_REPEATED_IDS_H
#define VORNIC_CHECK_FCPXML_REPEATED_IDS_H

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "check/FreshIds.h"
#include "formats/ElementIndex.h"
#include "report/Mend.h"

namespace vornic {

/// Gives elements whose id another one has an id of their own, where each reference to the id says
/// by its kind or by its place which of them it means. Linear in the elements and references of the
/// ids that are asked for.
class RepeatedIds {
  public:
    explicit RepeatedIds(const ElementIndex& index) : index_(index), freshIds_(index) {}

    /// @param element any but the first one with its id.
    /// @return nothing where a reference may mean this element or another one.
    [[nodiscard]] std::optional<Mend> mendOf(ElementNumber element);

  private:
    struct Reference {
        ElementNumber element = kNoElement;
        std::string_view attribute;
        TextSpan value;
    };
    // The elements that share an id.
    struct Owners {
        std::unordered_map<std::string_view, std::vector<ElementNumber>> byKind;
        // Kinds of which all are written alike, so that it does not matter which one is meant.
        std::unordered_set<std::string_view> alike;
        // Those whose parents have no second one: titles hold the styles of their texts.
        std::unordered_map<ElementNumber, ElementNumber> byParent;
        std::unordered_map<ElementNumber, std::vector<TextSpan>> references;
        // The names of elements that a reference may mean without saying which.
        std::unordered_set<std::string_view> unclear;
    };

    void gatherReferences();
    void addReference(ElementNumber element, std::string_view attribute);
    Owners& ownersOf(std::string_view id);
    void resolve(Owners& owners, const Reference& reference) const;
    [[nodiscard]] ElementNumber styleOf(const Owners& owners, ElementNumber text) const;
    [[nodiscard]] bool areAlike(const std::vector<ElementNumber>& elements) const;

    const ElementIndex& index_;
    bool isGathered_ = false;
    // A value that is not written as it is meant may name anything.
    bool isUnclear_ = false;
    std::unordered_map<std::string_view, std::vector<Reference>> references_;
    std::unordered_map<std::string_view, Owners> owners_;
    FreshIds freshIds_;
};

}  // namespace vornic

#endif
