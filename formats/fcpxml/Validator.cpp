#include "formats/fcpxml/Validator.h"

#include <algorithm>
#include <utility>

#include "xml/text/AttributeValue.h"
#include "xml/text/XMLCharacters.h"

namespace vornic::fcpxml {

namespace {

using xmlchars::is;

bool isBlank(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return is(c, xmlchars::kSpace); });
}

bool isName(std::string_view text) {
    return !text.empty() &&
           xmlchars::nameLength(text.data(), text.data() + text.size()) == text.size();
}

}  // namespace

std::vector<ElementId> ValidityFault::expected() const {
    if (holder == nullptr) {
        return {};
    }
    return holder->content ? holder->content->possible(state) : holder->mixedNames;
}

Validator::Validator(const Definition& definition, bool standalone, FaultSink sink)
    : definition_(definition),
      catalogue_(Catalogue::shared()),
      standalone_(standalone),
      sink_(std::move(sink)) {}

void Validator::documentType(std::string_view name, std::string_view /*rawDeclaration*/) {
    documentTypeName_ = name;
    documentTypePlace_ = place();
}

void Validator::startElement(std::string_view name) {
    const ElementId id = idOf(name);
    const bool isJudged = open_.empty() || open_.back().definition != nullptr;
    if (isJudged) {
        judgeChild(name, id);
    }
    open_.push_back({isJudged ? definition_.element(id) : nullptr, name, place()});
    inStartTag_ = true;
    seenAttributes_ = 0;
    nextAttribute_ = 0;
}

// A file has few names, and the same ones follow each other.
ElementId Validator::idOf(std::string_view name) {
    const std::size_t hash = static_cast<unsigned char>(name.front()) * 7U +
                             static_cast<unsigned char>(name.back()) * 31U + name.size();
    RecentName& recent = recent_[hash % recent_.size()];
    if (recent.name != name) {
        const ElementId id = catalogue_.idOf(name);
        // The names of the catalogue outlive the text that is read.
        recent = id == kNoElement ? RecentName() : RecentName{catalogue_.element(id).name, id};
    }
    return recent.id;
}

void Validator::judgeChild(std::string_view name, ElementId id) {
    using Kind = ValidityFaultKind;
    OpenElement* const parent = open_.empty() ? nullptr : &open_.back();
    if (parent == nullptr && !documentTypeName_.empty() && documentTypeName_ != name) {
        refuse({Kind::rootElementType, documentTypePlace_, name, {}, {}, documentTypeName_});
    }
    if (definition_.element(id) == nullptr) {
        const bool isKnown = id != kNoElement && !catalogue_.element(id).models.empty();
        return refuseChild(isKnown ? Kind::elementOfOtherVersion : Kind::unknownElement, name);
    }
    if (parent != nullptr) {
        judgePlace(*parent, name, id);
    }
}

void Validator::judgePlace(OpenElement& parent, std::string_view name, ElementId id) {
    using Kind = ValidityFaultKind;
    const ElementDefinition& definition = *parent.definition;
    if (definition.kind == ContentKind::empty) {
        return refuseChild(Kind::misplacedElement, name);
    }
    if (definition.kind == ContentKind::mixed) {
        return definition.allowsInText(id) ? void() : refuseChild(Kind::misplacedElement, name);
    }
    const ContentModel& model = *definition.content;
    const ContentModel::State next = model.next(parent.state, id);
    if (next != ContentModel::kRefused) {
        parent.state = next;
        parent.children |= model.bitOf(id);
        return;
    }
    if (!model.mentions(id)) {
        return refuseChild(Kind::misplacedElement, name);
    }
    if (const ContentModel::State later = model.reach(parent.state, id);
        later != ContentModel::kRefused) {
        parent.isFaulty = true;
        refuse({.kind = Kind::missingElement,
                .where = place(),
                .element = parent.name,
                .parent = grandparentName(),
                .holder = parent.definition,
                .state = parent.state,
                .start = parent.startTag.offset});
        parent.state = later;
        return;
    }
    const ElementId previous = model.nameOf(parent.state);
    const bool isSurplus =
        previous == id || ((parent.children & model.bitOf(id)) != 0 && !model.mayRepeat(id));
    refuseChild(isSurplus ? Kind::surplusElement : Kind::elementOutOfOrder, name, previous);
}

void Validator::refuseChild(ValidityFaultKind kind, std::string_view name, ElementId previous) {
    ValidityFault fault{kind, place(), name, parentName()};
    fault.previous = previous;
    if (!open_.empty()) {
        OpenElement& parent = open_.back();
        parent.isFaulty = true;
        fault.holder = parent.definition;
        fault.state = parent.state;
    }
    refuse(fault);
}

void Validator::attribute(std::string_view name, std::string_view rawValue) {
    const ElementDefinition* const element = open_.back().definition;
    if (element == nullptr) {
        if (name == "id") {
            doubtfulIds_.insert(normalisedAttributeValue(rawValue, true));
        }
        return;
    }
    const AttributeDefinition* const definition = element->attribute(name, nextAttribute_);
    if (definition == nullptr) {
        const bool isKnown = catalogue_.element(element->id).spanOfAttribute(name).has_value();
        return refuseAttribute(isKnown ? ValidityFaultKind::attributeOfOtherVersion
                                       : ValidityFaultKind::unknownAttribute,
                               place(), name);
    }
    const auto index = static_cast<unsigned>(definition - element->attributes.data());
    seenAttributes_ |= std::uint64_t{1} << index;
    nextAttribute_ = index + 1;
    if (definition->type != AttributeType::text ||
        definition->defaultKind == AttributeDefault::fixed) {
        judgeValue(*definition, rawValue);
    }
}

void Validator::judgeValue(const AttributeDefinition& definition, std::string_view rawValue) {
    const bool isToken = definition.type != AttributeType::text;
    const bool isPlain = std::none_of(rawValue.begin(), rawValue.end(),
                                      [](char c) { return c == '&' || is(c, xmlchars::kSpace); });
    std::string normalised;
    std::string_view value = rawValue;
    if (!isPlain) {
        normalised = normalisedAttributeValue(rawValue, isToken);
        value = normalised;
        if (isToken && standalone_ && normalisedAttributeValue(rawValue, false) != normalised) {
            refuseStandalone();
        }
    }
    if (definition.type == AttributeType::id || definition.type == AttributeType::reference) {
        return judgeIdentity(definition, value);
    }
    if (!definition.allows(value)) {
        refuseAttribute(definition.defaultKind == AttributeDefault::fixed
                            ? ValidityFaultKind::valueNotFixed
                            : ValidityFaultKind::valueNotListed,
                        valuePlace(), definition.name, value, &definition);
    }
}

void Validator::judgeIdentity(const AttributeDefinition& definition, std::string_view value) {
    if (!isName(value)) {
        // The same id with each reference to it is one fault.
        const bool isTold = definition.type == AttributeType::id
                                ? !doubtfulIds_.emplace(value).second
                                : doubtfulIds_.contains(std::string(value));
        if (!isTold) {
            return refuseAttribute(ValidityFaultKind::malformedId, valuePlace(), definition.name,
                                   value, &definition);
        }
        isValid_ = false;
        return;
    }
    if (definition.type == AttributeType::reference) {
        if (!ids_.contains(value)) {
            pending_[std::string(value)].push_back(
                {valuePlace(), open_.back().definition, &definition});
        }
        return;
    }
    if (!pending_.empty()) {
        pending_.erase(std::string(value));
    }
    if (!ids_.insert(value)) {
        refuseAttribute(ValidityFaultKind::repeatedId, valuePlace(), definition.name, value,
                        &definition);
    }
}

void Validator::finishStartTag() {
    if (!std::exchange(inStartTag_, false)) {
        return;
    }
    const OpenElement& element = open_.back();
    if (element.definition == nullptr) {
        return;
    }
    std::uint64_t bit = 1;
    for (const AttributeDefinition& attribute : element.definition->attributes) {
        const bool isSeen = (seenAttributes_ & bit) != 0;
        bit <<= 1U;
        if (isSeen) {
            continue;
        }
        if (attribute.defaultKind == AttributeDefault::required) {
            withoutId_ += attribute.type == AttributeType::id ? 1 : 0;
            refuseAttribute(ValidityFaultKind::missingAttribute, element.startTag, attribute.name,
                            {}, &attribute);
        } else if (standalone_ && attribute.defaultKind != AttributeDefault::none) {
            refuseStandalone();
        }
    }
}

void Validator::endElement(std::string_view /*name*/, bool /*selfClosed*/) {
    finishStartTag();
    const OpenElement& element = open_.back();
    if (element.definition != nullptr && !element.isFaulty) {
        judgeEnd(element);
    }
    open_.pop_back();
}

void Validator::judgeEnd(const OpenElement& element) {
    const std::optional<ContentModel>& model = element.definition->content;
    if (model && !model->mayEnd(element.state)) {
        refuse({.kind = ValidityFaultKind::missingElement,
                .where = element.startTag,
                .element = element.name,
                .parent = grandparentName(),
                .holder = element.definition,
                .state = element.state,
                .start = element.startTag.offset});
    }
    if (element.content.length != 0) {
        refuse({ValidityFaultKind::contentInEmptyElement, element.content, element.name,
                grandparentName()});
    }
}

void Validator::text(std::string_view rawText) {
    judgeContent(rawText, true);
}

void Validator::cdata(std::string_view content) {
    judgeContent(content, false);
}

void Validator::judgeContent(std::string_view content, bool isText) {
    if (open_.empty() || open_.back().definition == nullptr) {
        return;
    }
    OpenElement& element = open_.back();
    if (element.definition->kind == ContentKind::mixed) {
        return;
    }
    if (element.definition->kind == ContentKind::empty) {
        return noteContent(element);
    }
    if (isText && isBlank(content)) {
        if (standalone_) {
            refuseStandalone();
        }
        return;
    }
    if (!std::exchange(element.isFaulty, true)) {
        refuse({ValidityFaultKind::misplacedText, place(), element.name, grandparentName()});
    } else {
        isValid_ = false;
    }
}

// Told at the end of the element, unless it has a child: that is the fault then.
void Validator::noteContent(OpenElement& element) {
    isValid_ = false;
    if (element.content.length == 0) {
        element.content = place();
    }
}

void Validator::comment(std::string_view /*content*/) {
    processingInstruction({}, {});
}

// Neither is content, but an element that has to be empty may hold none (XML 1.0, section 3).
void Validator::processingInstruction(std::string_view /*target*/, std::string_view /*data*/) {
    if (!open_.empty() && open_.back().definition != nullptr &&
        open_.back().definition->kind == ContentKind::empty) {
        noteContent(open_.back());
    }
}

void Validator::finish(bool tellsConsequences) {
    using Entry = std::pair<std::string_view, Reference>;
    std::vector<Entry> dangling;
    if (!tellsConsequences) {
        leaveOutConsequences();
    }
    for (const auto& [name, references] : pending_) {
        for (const Reference& reference : references) {
            dangling.emplace_back(name, reference);
        }
    }
    std::sort(dangling.begin(), dangling.end(), [](const Entry& a, const Entry& b) {
        return a.second.where.offset < b.second.where.offset;
    });
    for (const auto& [name, reference] : dangling) {
        refuse({ValidityFaultKind::danglingReference,
                reference.where,
                reference.element->name,
                {},
                reference.attribute->name,
                name,
                reference.attribute});
    }
    pending_.clear();
}

// References whose target is there, with an id that is malformed or missing.
void Validator::leaveOutConsequences() {
    std::erase_if(pending_,
                  [this](const auto& entry) { return doubtfulIds_.contains(entry.first); });
    if (pending_.size() <= withoutId_) {
        pending_.clear();
    }
}

void Validator::refuse(const ValidityFault& fault) {
    isValid_ = false;
    if (sink_) {
        sink_(fault);
    }
}

void Validator::refuseAttribute(ValidityFaultKind kind, TextSpan where, std::string_view name,
                                std::string_view value, const AttributeDefinition* definition) {
    const OpenElement& element = open_.back();
    refuse({.kind = kind,
            .where = where,
            .element = element.name,
            .parent = grandparentName(),
            .attribute = name,
            .value = value,
            .definition = definition,
            .start = element.startTag.offset});
}

void Validator::refuseStandalone() {
    standalone_ = false;
    refuse({ValidityFaultKind::notStandalone, place(), open_.back().name});
}

std::string_view Validator::parentName() const {
    return open_.empty() ? std::string_view() : open_.back().name;
}

std::string_view Validator::grandparentName() const {
    return open_.size() < 2 ? std::string_view() : open_[open_.size() - 2].name;
}

}  // namespace vornic::fcpxml
