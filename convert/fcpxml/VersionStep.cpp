#include "convert/fcpxml/VersionStep.h"

#include <algorithm>
#include <string>
#include <utility>

#include "convert/fcpxml/Renames.h"
#include "formats/fcpxml/IndexedNames.h"
#include "report/RuleTable.h"
#include "xml/text/AttributeValue.h"

namespace vornic::fcpxml {

namespace {

// Takes one more child into a state of the content.
bool accept(const ElementDefinition& parent, ContentModel::State& state, ElementId child) {
    if (!parent.content) {
        return parent.allowsInText(child);
    }
    const ContentModel::State next = parent.content->next(state, child);
    if (next != ContentModel::kRefused) {
        state = next;
    }
    return next != ContentModel::kRefused;
}

bool isLoss(const Change& change) {
    return ruleOf(change.rule).severity == Severity::warning;
}

}  // namespace

VersionStep::VersionStep(const ElementIndex& index, Version from, Version to)
    : from_(Definition::of(from)),
      to_(Definition::of(to)),
      state_(index, from, to),
      attributes_(state_),
      media_(state_),
      root_(state_, attributes_) {
    for (std::size_t number = 0; number < index.nameCount(); ++number) {
        ids_.push_back(Catalogue::shared().idOf(index.nameNumbered(number)));
    }
}

void VersionStep::run() {
    do {
        walk();
    } while (!state_.missing && findLostIds());
}

void VersionStep::walk() {
    state_.takeBack({});
    open_.clear();
    gaps_.clear();
    placedAs_.clear();
    root_.forget();
    const auto size = static_cast<ElementNumber>(state_.index.size());
    ElementNumber at = 0;
    while (at < size || !open_.empty()) {
        const bool isBehind = !open_.empty() && at >= state_.index.endOf(open_.back().element);
        at = isBehind ? leave() : visit(at);
        if (state_.missing) {
            return;
        }
    }
}

ElementId VersionStep::idOf(ElementNumber element) const {
    const std::size_t number = state_.index.nameNumberOf(element);
    return number < ids_.size() ? ids_[number]
                                : Catalogue::shared().idOf(state_.index.nameOf(element));
}

ElementNumber VersionStep::visit(ElementNumber element) {
    const ElementId id = idOf(element);
    const ElementDefinition* const from = from_.element(id);
    if (open_.empty()) {
        return enter(element, *from, *to_.element(id));
    }
    if (root_.isMoving()) {
        root_.beforeChild(element);
    }
    if (gaps_.contains(element) && from != nullptr) {
        return enterAsGap(element, *from);
    }
    Frame& parent = open_.back();
    if (parent.to == nullptr) {
        return drop(lossOf(element));
    }
    if (from == nullptr) {
        parent.isExcused = true;
        return state_.index.endOf(element);
    }
    const bool hadPlace = accept(*parent.from, parent.fromState, id);
    stateBefore_ = parent.toState;
    return parent.from->name == "asset" && media_.convertChild(element)
               ? state_.index.endOf(element)
               : place(element, *from, hadPlace);
}

// @param hadPlace whether it stood where the old version wants it
ElementNumber VersionStep::place(ElementNumber element, const ElementDefinition& from,
                                 bool hadPlace) {
    Frame& parent = open_.back();
    const std::string_view name =
        renamed(state_.index, element, parent.from->name, state_.from, state_.to);
    const ElementDefinition* const to =
        name == from.name ? to_.element(from.id) : to_.element(name);
    if (hadPlace && movesOut(name)) {
        parent.isExcused = true;
        return enter(element, from, *to);
    }
    if (to != nullptr && accept(*parent.to, parent.toState, to->id)) {
        parent.isExcused = parent.isExcused || !hadPlace;
        return enter(element, from, *to);
    }
    // A fault of the file stays one.
    const bool mayStay = to != nullptr && !hadPlace &&
                         (parent.to->mentions(to->id) || !parent.from->mentions(from.id));
    if (mayStay) {
        parent.isExcused = true;
        return enter(element, from, *to);
    }
    return drop(lossOf(element));
}

// True for the root's project, and for what stands in it and gets a place around it.
bool VersionStep::movesOut(std::string_view name) const {
    if (!root_.isMoving()) {
        return false;
    }
    return root_.project() == vornic::kNoElement ? name == "project" && open_.size() == 1
                                                 : open_.back().element == root_.project() &&
                                                       root_.movesOut(name, *to_.element("event"));
}

Change VersionStep::lossOf(ElementNumber element) const {
    return {"conversion-element-lost"_rule, element, state_.index.spanOf(element), {}, {}};
}

ElementNumber VersionStep::enter(ElementNumber element, const ElementDefinition& from,
                                 const ElementDefinition& to) {
    Frame frame{.element = element, .from = &from, .to = &to, .mark = state_.mark()};
    frame.stateBefore = stateBefore_;
    frame.isRenamed = from.id != to.id;
    if (root_.isMoving() && from.name == "project" && root_.project() == vornic::kNoElement) {
        frame.isExcused = state_.index.childOf(element, "sequence") == vornic::kNoElement;
        root_.convertProject(element, from, frame.isExcused ? *to_.element("event") : to);
        open_.push_back(frame);
        return element + 1;
    }
    if (frame.isRenamed) {
        state_.edits.renameStartTag(element, to.name);
        state_.changes.push_back(
            {"conversion-renamed"_rule, element, state_.index.startTagOf(element), {}, to.name});
    }
    if (open_.empty()) {
        state_.edits.writeVersion(state_.to.text());
    } else if (const std::optional<Change> why = attributes_.convert(element, from, to)) {
        state_.takeBack(frame.mark);
        open_.back().toState = frame.stateBefore;
        return drop(*why);
    }
    moveReferences(frame);
    open_.push_back(frame);
    return element + 1;
}

// The path of an asset's media and the effect of a transition get another place.
void VersionStep::moveReferences(Frame& frame) {
    if (frame.from->name == "asset" && (state_.crossesUpTo(9) || state_.crossesDownFrom(9))) {
        media_.convertStartTag(frame.element);
        if (state_.crossesUpTo(9)) {
            static_cast<void>(
                accept(*frame.to, frame.toState, Catalogue::shared().idOf("media-rep")));
        }
    }
    if (frame.from->name == "transition" && state_.crossesUpTo(3)) {
        moveTransitionReference(frame.element);
        static_cast<void>(
            accept(*frame.to, frame.toState, Catalogue::shared().idOf("filter-video")));
    }
}

// From 1.3 on the effect of a transition is the one of a filter in it.
void VersionStep::moveTransitionReference(ElementNumber transition) {
    const ElementIndex& index = state_.index;
    StartTag tag(index.text(), index.spanOf(transition).offset);
    while (tag.next()) {
        if (tag.name() != "ref") {
            continue;
        }
        const TextSpan value = tag.value();
        const char quote = state_.edits.quoteOf(value);
        std::string filter = "<filter-video ref=";
        filter.append(1, quote).append(value.of(index.text())).append(1, quote).append("/>");
        state_.edits.removeAttribute(tag.attribute());
        state_.edits.insertFirstChild(transition, filter);
        state_.changes.push_back(
            {"conversion-transition-effect"_rule, transition, value, "ref", {}});
        return;
    }
}

// The gap that may stand in a storyline in place of an item; null where none can.
const ElementDefinition* VersionStep::gapFor(ElementNumber element) const {
    if (open_.empty() || open_.back().to == nullptr) {
        return nullptr;
    }
    const Frame& parent = open_.back();
    const ElementIndex& index = state_.index;
    const bool isStoryline = parent.to->name == "spine" || parent.to->name == "mc-angle";
    const ElementDefinition* const gap = to_.element("gap");
    const ElementNumber timed =
        index.isNamed(element, "audition") ? index.firstChildOf(element) : element;
    const bool isTimed = timed != vornic::kNoElement && index.attributeOf(timed, "duration") &&
                         !index.isNamed(timed, "audition") && !index.isNamed(timed, "transition") &&
                         from_.element(idOf(timed)) != nullptr;
    return isStoryline && isTimed && gap != nullptr ? gap : nullptr;
}

ElementNumber VersionStep::drop(const Change& why) {
    const ElementNumber element = why.element;
    const ElementDefinition* const gap = gapFor(element);
    if (gap == nullptr || gaps_.contains(element) ||
        !accept(*open_.back().to, open_.back().toState, gap->id)) {
        takeOut(why);
        return state_.index.endOf(element);
    }
    gaps_.emplace(element, why);
    return enterAsGap(element, *from_.element(idOf(element)));
}

ElementNumber VersionStep::enterAsGap(ElementNumber element, const ElementDefinition& from) {
    if (state_.index.isNamed(element, "audition")) {
        return enterAuditionAsGap(element);
    }
    const ElementDefinition& gap = *to_.element("gap");
    Frame frame{.element = element, .from = &from, .to = &gap, .mark = state_.mark()};
    frame.isExcused = true;
    frame.isRenamed = true;
    state_.changes.push_back(
        {"conversion-gap"_rule, element, state_.index.startTagOf(element), {}, {}});
    state_.edits.renameStartTag(element, gap.name);
    static_cast<void>(attributes_.convert(element, from, gap));
    if (const auto place = placedAs_.find(element); place != placedAs_.end()) {
        takeOffsetOf(place->second, element);
    }
    open_.push_back(frame);
    return element + 1;
}

// Items of an audition may have offsets, but it is the audition's that counts.
void VersionStep::takeOffsetOf(ElementNumber audition, ElementNumber item) {
    const ElementIndex& index = state_.index;
    const auto offset = index.attributeOf(audition, "offset");
    const auto own = index.attributeOf(item, "offset");
    if (!offset) {
        return;
    }
    if (!own) {
        return state_.edits.insertAttribute(item, "offset", offset->of(index.text()),
                                            state_.edits.quoteOf(*offset));
    }
    state_.edits.add(own->offset, own->length, offset->of(index.text()));
}

// The gap is made of the item that the audition shows, which is its first one.
ElementNumber VersionStep::enterAuditionAsGap(ElementNumber audition) {
    Frame frame{.element = audition, .mark = state_.mark()};
    const ElementNumber item = state_.index.firstChildOf(audition);
    state_.edits.remove(state_.index.startTagOf(audition));
    state_.changes.push_back(
        {"conversion-incomplete"_rule, audition, state_.index.startTagOf(audition), {}, {}});
    gaps_.emplace(item, Change{"conversion-gap"_rule, item, {}, {}, {}});
    placedAs_.emplace(item, audition);
    open_.push_back(frame);
    return item;
}

// Why an element goes that has lost something; nothing when it may stay.
std::optional<Change> VersionStep::whyItGoes(const Frame& frame) const {
    const auto because = [&](RuleId rule) {
        return Change{rule, frame.element, state_.index.spanOf(frame.element), {}, {}};
    };
    if (frame.to->name == "smart-collection") {
        const auto first = state_.changes.begin() + static_cast<std::ptrdiff_t>(frame.mark.changes);
        if (std::any_of(first, state_.changes.end(), isLoss)) {
            return because("conversion-collection"_rule);
        }
    }
    const bool isIncomplete =
        frame.to->content && !frame.isExcused && !frame.to->content->mayEnd(frame.toState) &&
        (!frame.from->content || frame.from->content->mayEnd(frame.fromState));
    return isIncomplete ? std::optional(because("conversion-incomplete"_rule)) : std::nullopt;
}

ElementNumber VersionStep::leave() {
    const Frame frame = open_.back();
    open_.pop_back();
    const ElementNumber end = state_.index.endOf(frame.element);
    if (frame.to == nullptr) {
        state_.edits.remove(state_.edits.endTagOf(frame.element));
        return end;
    }
    if (frame.element == root_.project() && root_.isMoving()) {
        const bool isWhole = frame.to->content->mayEnd(frame.toState) ||
                             (frame.from->content && !frame.from->content->mayEnd(frame.fromState));
        root_.endProject(isWhole);
        return end;
    }
    if (const std::optional<Change> why = open_.empty() ? std::nullopt : whyItGoes(frame)) {
        state_.takeBack(frame.mark);
        open_.back().toState = frame.stateBefore;
        return drop(*why);
    }
    convertEnd(frame);
    return end;
}

void VersionStep::convertEnd(const Frame& frame) {
    // White space is content, too.
    const bool becomesEmpty =
        frame.to->kind == ContentKind::empty && frame.from->kind != ContentKind::empty;
    if (becomesEmpty && !state_.index.isEmpty(frame.element)) {
        state_.edits.removeInside(state_.index.contentOf(frame.element));
    }
    if (frame.isRenamed) {
        state_.edits.renameEndTag(frame.element, frame.to->name);
    }
}

// The state of what is around it is not touched: it is as if the element had not been there.
void VersionStep::takeOut(const Change& why) {
    const bool isInText = open_.back().to != nullptr && open_.back().to->kind == ContentKind::mixed;
    const TextSpan whole = state_.index.spanOf(why.element);
    if (isInText) {
        state_.edits.removeInText(whole);
    } else {
        state_.edits.remove(whole);
    }
    state_.changes.push_back(why);
    state_.removed.emplace_back(why.element, state_.index.endOf(why.element));
}

bool VersionStep::isRemoved(ElementNumber element) const {
    const auto next = std::upper_bound(
        state_.removed.begin(), state_.removed.end(), element,
        [](ElementNumber number, const auto& range) { return number < range.first; });
    return next != state_.removed.begin() && element < std::prev(next)->second;
}

// @return whether something that stays refers to an id that has gone unnoticed so far.
bool VersionStep::findLostIds() {
    std::unordered_set<std::string> lost = newlyLostIds();
    const bool isReferred =
        !lost.empty() &&
        std::any_of(kIndexedAttributes.begin(), kIndexedAttributes.end(), [&](auto name) {
            const auto& elements = state_.index.elementsWithAttribute(name);
            return std::any_of(elements.begin(), elements.end(), [&](ElementNumber element) {
                return refersTo(lost, element, name);
            });
        });
    state_.lostIds.merge(lost);
    return isReferred;
}

std::unordered_set<std::string> VersionStep::newlyLostIds() const {
    std::unordered_set<std::string> lost;
    for (const auto& [first, end] : state_.removed) {
        for (ElementNumber element = first; element < end; ++element) {
            if (const auto id = state_.index.attributeOf(element, "id")) {
                std::string value = normalisedAttributeValue(id->of(state_.index.text()), true);
                if (!state_.lostIds.contains(value)) {
                    lost.insert(std::move(value));
                }
            }
        }
    }
    return lost;
}

// True for an element that stays and names one of the ids in a reference.
bool VersionStep::refersTo(const std::unordered_set<std::string>& ids, ElementNumber element,
                           std::string_view name) const {
    const ElementDefinition* const from = from_.element(idOf(element));
    const AttributeDefinition* const attribute = from == nullptr ? nullptr : from->attribute(name);
    return attribute != nullptr && attribute->type == AttributeType::reference &&
           ids.contains(
               normalisedAttributeValue(state_.index.attributeTextOf(element, name), true)) &&
           !isRemoved(element);
}

}  // namespace vornic::fcpxml
