#ifndef VORNIC_CONVERT_FCPXML_PROJECT_ROOT_H
#define VORNIC_CONVERT_FCPXML_PROJECT_ROOT_H

#include <string>
#include <string_view>

#include "convert/fcpxml/AttributeStep.h"
#include "convert/fcpxml/StepState.h"

namespace vornic::fcpxml {

/// Up to 1.3 the root holds a project, and that its resources and a sequence, or clips in place of
/// one. From 1.4 on resources stand in the root, and the project in an event of a library; clips
/// without a sequence stand in the event itself.
class ProjectRoot {
  public:
    /// Both must outlive this.
    ProjectRoot(StepState& state, AttributeStep& attributes)
        : state_(state), attributes_(attributes) {}

    /// True for the step that moves them.
    [[nodiscard]] bool isMoving() const { return state_.crossesUpTo(4); }
    /// True for what may stand in a project only because it is moved out of it.
    [[nodiscard]] bool movesOut(std::string_view child, const ElementDefinition& event) const;

    /// Takes the start tag of the root's project away, to be written behind the resources.
    void convertProject(ElementNumber project, const ElementDefinition& from,
                        const ElementDefinition& to);
    /// To be called before anything that stands in the project, and before its end.
    void beforeChild(ElementNumber child);
    /// @param isWhole false when it has lost its sequence
    void endProject(bool isWhole);
    [[nodiscard]] ElementNumber project() const { return project_; }
    void forget() { project_ = vornic::kNoElement; }

  private:
    void writeStart(std::size_t offset);

    StepState& state_;
    AttributeStep& attributes_;
    ElementNumber project_ = vornic::kNoElement;
    // What begins library, event and project; "" when it is written.
    std::string start_;
    // The edit that wrote it.
    std::size_t startEdit_ = 0;
    bool hasSequence_ = false;
};

}  // namespace vornic::fcpxml

#endif
