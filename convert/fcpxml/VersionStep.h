#ifndef VORNIC_CONVERT_FCPXML_VERSION_STEP_H
#define VORNIC_CONVERT_FCPXML_VERSION_STEP_H

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "convert/fcpxml/AssetMedia.h"
#include "convert/fcpxml/AttributeStep.h"
#include "convert/fcpxml/ProjectRoot.h"
#include "convert/fcpxml/StepState.h"

namespace vornic::fcpxml {

/// Converts a text from one version to another: between 1.6 and 1.14 in one step, whichever these
/// are, below from a version to the next one. Goes through the elements once with both versions'
/// content models side by side: what had its place and has none any more goes, what never had one
/// is a fault of the file and stays. What goes may take ids along; then the text is gone through
/// again, until nothing is left that refers to one of them. One thread.
class VersionStep {
  public:
    /// @param index of the whole text, well-formed; must outlive this.
    VersionStep(const ElementIndex& index, Version from, Version to);

    void run();

    /// What makes the new text of the old one.
    [[nodiscard]] EditList takeEdits() { return state_.edits.take(); }
    /// What was dropped or changed, in the order of the text. Lives as long as this.
    [[nodiscard]] const std::vector<Change>& changes() const { return state_.changes; }
    /// A value that the new version asks for and the text does not have.
    [[nodiscard]] const std::optional<MissingValue>& missing() const { return state_.missing; }

  private:
    struct Frame {
        ElementNumber element = vornic::kNoElement;
        // Null for an audition of which a gap stays: its content then belongs to what is around it.
        const ElementDefinition* from = nullptr;
        const ElementDefinition* to = nullptr;
        ContentModel::State fromState = ContentModel::kStart;
        ContentModel::State toState = ContentModel::kStart;
        // Of what is around it, before this element.
        ContentModel::State stateBefore = ContentModel::kStart;
        StepState::Mark mark = {};
        // It holds something that it should not, or need not hold what it should.
        bool isExcused = false;
        bool isRenamed = false;
    };

    void walk();
    [[nodiscard]] ElementNumber visit(ElementNumber element);
    [[nodiscard]] ElementNumber place(ElementNumber element, const ElementDefinition& from,
                                      bool hadPlace);
    [[nodiscard]] bool movesOut(std::string_view name) const;
    [[nodiscard]] Change lossOf(ElementNumber element) const;
    [[nodiscard]] ElementNumber enter(ElementNumber element, const ElementDefinition& from,
                                      const ElementDefinition& to);
    void moveReferences(Frame& frame);
    [[nodiscard]] ElementNumber enterAsGap(ElementNumber element, const ElementDefinition& from);
    [[nodiscard]] ElementNumber enterAuditionAsGap(ElementNumber audition);
    [[nodiscard]] ElementNumber leave();
    void convertEnd(const Frame& frame);
    [[nodiscard]] std::optional<Change> whyItGoes(const Frame& frame) const;
    [[nodiscard]] ElementNumber drop(const Change& why);
    void takeOut(const Change& why);
    [[nodiscard]] const ElementDefinition* gapFor(ElementNumber element) const;
    void takeOffsetOf(ElementNumber audition, ElementNumber item);
    void moveTransitionReference(ElementNumber transition);
    [[nodiscard]] bool findLostIds();
    [[nodiscard]] std::unordered_set<std::string> newlyLostIds() const;
    [[nodiscard]] bool refersTo(const std::unordered_set<std::string>& ids, ElementNumber element,
                                std::string_view name) const;
    [[nodiscard]] bool isRemoved(ElementNumber element) const;
    [[nodiscard]] ElementId idOf(ElementNumber element) const;

    const Definition& from_;
    const Definition& to_;
    StepState state_;
    AttributeStep attributes_;
    AssetMedia media_;
    ProjectRoot root_;
    std::vector<Frame> open_;
    ContentModel::State stateBefore_ = ContentModel::kStart;
    // By the number of the name.
    std::vector<ElementId> ids_;
    // Items of storylines that become gaps, and why.
    std::map<ElementNumber, Change> gaps_;
    // An item of an audition that becomes a gap stands where the audition stood.
    std::map<ElementNumber, ElementNumber> placedAs_;
};

}  // namespace vornic::fcpxml

#endif
