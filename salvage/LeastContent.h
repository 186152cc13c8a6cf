#ifndef VORNIC_SALVAGE_LEAST_CONTENT_H
#define VORNIC_SALVAGE_LEAST_CONTENT_H

#include <optional>
#include <string>
#include <string_view>

#include "formats/ElementIndex.h"
#include "formats/fcpxml/Definition.h"

namespace vornic::salvage {

/// The least that completes elements of FCPXML by the definition of its version, made of nothing
/// that the file does not tell: children without required attributes, and sequences where the file
/// has one format alone.
class LeastContent {
  public:
    /// @param definition of the file's version. Both must outlive this.
    LeastContent(const ElementIndex& file, const fcpxml::Definition& definition);

    struct Children {
        std::string text;
        /// The name of the first one.
        std::string_view first;
    };
    /// What an element lacks behind its last child; nothing for one that lacks nothing, for one
    /// that is wrong, and where nothing helps.
    [[nodiscard]] std::optional<Children> missingIn(ElementNumber element) const;

  private:
    using State = fcpxml::ContentModel::State;

    [[nodiscard]] std::optional<Children> completion(const fcpxml::ContentModel& model, State from,
                                                     int depth) const;
    [[nodiscard]] std::optional<std::string> least(fcpxml::ElementId element, int depth) const;
    [[nodiscard]] std::optional<std::string> attributesOf(
        const fcpxml::ElementDefinition& element) const;

    const ElementIndex& file_;
    const fcpxml::Definition& definition_;
    // The id of the only one; "" where there is none, or several.
    std::string_view format_;
};

}  // namespace vornic::salvage

#endif
