#include "convert/fcpxml/ProjectRoot.h"

#include <utility>

#include "report/RuleTable.h"

namespace vornic::fcpxml {

bool ProjectRoot::movesOut(std::string_view child, const ElementDefinition& event) const {
    const ElementId id = Catalogue::shared().idOf(child);
    return child == "resources" || (!hasSequence_ && child != "project" && event.mentions(id));
}

void ProjectRoot::convertProject(ElementNumber project, const ElementDefinition& from,
                                 const ElementDefinition& to) {
    const ElementIndex& index = state_.index;
    project_ = project;
    hasSequence_ = index.childOf(project, "sequence") != vornic::kNoElement;
    const TextSpan tag = index.startTagOf(project);
    const std::size_t before = state_.edits.size();
    static_cast<void>(attributes_.convert(project, from, to));
    if (!hasSequence_) {
        attributes_.drop(project, "uid");
    }
    const std::string text = state_.edits.takeTag(tag, before);
    start_ = hasSequence_ ? "<library><event>" + text
                          : "<library><event" + text.substr(std::string_view("<project").size());
    state_.changes.push_back({"conversion-root"_rule, project, tag, {}, {}});
    if (state_.edits.isClosedAtOnce(project)) {
        state_.edits.add(tag.offset, tag.length, start_ + "</library>");
        start_.clear();
    } else {
        state_.edits.remove(tag);
    }
}

void ProjectRoot::writeStart(std::size_t offset) {
    startEdit_ = state_.edits.size();
    state_.edits.add(offset, 0, std::exchange(start_, ""));
}

void ProjectRoot::beforeChild(ElementNumber child) {
    const bool isBehindResources =
        state_.index.parentOf(child) == project_ && !state_.index.isNamed(child, "resources");
    if (!start_.empty() && isBehindResources) {
        writeStart(state_.index.spanOf(child).offset);
    }
}

void ProjectRoot::endProject(bool isWhole) {
    if (!isWhole && hasSequence_ && start_.empty()) {
        // Its sequence is left out, and it goes with it.
        state_.edits.replaceText(startEdit_, "<library><event>");
        state_.changes.push_back(
            {"conversion-incomplete"_rule, project_, state_.index.startTagOf(project_), {}, {}});
        hasSequence_ = false;
    }
    const TextSpan tag = state_.edits.endTagOf(project_);
    if (tag.length == 0) {
        return;
    }
    if (!start_.empty()) {
        writeStart(tag.offset);
    }
    if (hasSequence_) {
        state_.edits.add(tag.end(), 0, "</event></library>");
    } else {
        state_.edits.add(tag.offset, tag.length, "</event></library>");
    }
}

}  // namespace vornic::fcpxml
