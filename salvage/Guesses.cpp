#include "salvage/Guesses.h"

#include <algorithm>
#include <string>

#include "formats/fcpxml/Definition.h"
#include "xml/text/TextPlace.h"
#include "xml/text/XMLCharacters.h"

namespace vornic::salvage {

namespace {

struct RawAttribute {
    std::string_view name;
    std::string_view value;
};

// The attribute at the beginning of a text, which may begin with white space.
RawAttribute attributeIn(std::string_view text) {
    const auto* const at = xmlchars::afterSpace(text.data(), text.data() + text.size());
    text.remove_prefix(static_cast<std::size_t>(at - text.data()));
    RawAttribute attribute;
    attribute.name = text.substr(0, xmlchars::nameLength(text.data(), text.data() + text.size()));
    const std::size_t quote = text.find_first_of("\"'");
    if (quote != std::string_view::npos) {
        const std::size_t end = text.find(text[quote], quote + 1);
        attribute.value =
            text.substr(quote + 1, end == std::string_view::npos ? end : end - quote - 1);
    }
    return attribute;
}

std::string inQuotes(std::string_view text) {
    return "\"" + excerpt(text) + "\"";
}

// "id", "id and ref", "id, ref and offset".
std::string requiredAttributes(std::string_view element, fcpxml::Version version) {
    const fcpxml::ElementDefinition* const definition =
        fcpxml::Definition::of(version).element(element);
    std::vector<std::string_view> names;
    for (std::size_t i = 0; definition != nullptr && i < definition->attributes.size(); ++i) {
        if (definition->attributes[i].defaultKind == fcpxml::AttributeDefault::required) {
            names.push_back(definition->attributes[i].name);
        }
    }
    std::string list;
    for (std::size_t i = 0; i < names.size(); ++i) {
        list += i == 0 ? "" : i + 1 == names.size() ? " and " : ", ";
        list += names[i];
    }
    return list;
}

}  // namespace

Guesses::Guesses(std::string_view text, const Structure& structure, Findings& findings)
    : text_(text), structure_(structure), findings_(findings) {}

std::string_view Guesses::textAt(std::size_t offset, std::size_t length) const {
    return text_.substr(offset, length);
}

void Guesses::made(const Change& change, std::size_t copyOffset) {
    const TextSpan where{change.offset, change.length};
    if (Finding* const finding = findingOf(change, where)) {
        finding->inCopy.emplace();
        finding->inCopy->offset = copyOffset;
    }
    if (change.kind == ChangeKind::insertStartTag) {
        tellLostAttributes(change, where, copyOffset);
    }
}

Finding* Guesses::findingOf(const Change& change, TextSpan where) {
    const std::string_view element = structure_.names.textOf(change.name);
    const std::string_view raw = textAt(change.offset, change.length);
    switch (change.kind) {
        case ChangeKind::insertEndTag:
            return findings_.add("salvage-end-tag-lost"_rule, where, {{"element", element}});
        case ChangeKind::removeEndTag:
            return findings_.add("salvage-end-tag-stray"_rule, where, {{"element", element}});
        case ChangeKind::renameEndTag:
            return findings_.add("salvage-end-tag-misspelt"_rule, where,
                                 {{"was", raw}, {"element", element}});
        case ChangeKind::insertStartTag:
            return findings_.add("salvage-start-tag-lost"_rule, where, {{"element", element}});
        case ChangeKind::removeStartTag:
            return findings_.add("salvage-start-tag-twice"_rule, where, {{"element", element}});
        case ChangeKind::renameStartTag:
            return findings_.add("salvage-start-tag-misspelt"_rule, where,
                                 {{"was", raw}, {"element", element}});
        case ChangeKind::closeTag:
            return findings_.add("salvage-tag-not-closed"_rule, where);
        case ChangeKind::removeAttribute:
        case ChangeKind::removeEqualAttribute:
            return attributeTwice(change, where);
        case ChangeKind::removeJunk:
            return findings_.add("salvage-characters-in-tag"_rule, where,
                                 {{"text", inQuotes(raw)}});
        case ChangeKind::closeValue:
        case ChangeKind::openValue:
            return findings_.add("salvage-value-not-closed"_rule, where);
        case ChangeKind::closeComment:
            return findings_.add("salvage-comment-not-closed"_rule, where);
        case ChangeKind::closeCDATA:
            return findings_.add("salvage-cdata-not-closed"_rule, where);
        case ChangeKind::closeInstruction:
            return findings_.add("salvage-instruction-not-closed"_rule, where);
        case ChangeKind::closeDocumentType:
            return findings_.add("salvage-document-type-not-closed"_rule, where);
        case ChangeKind::dropCutTag:
            return findings_.add("salvage-cut-tag"_rule, where, {{"text", inQuotes(raw)}});
        case ChangeKind::escapeLessThan:
            return findings_.add("salvage-less-than"_rule, where);
        case ChangeKind::commentText:
            return findings_.add("salvage-text-outside-root"_rule, where);
        case ChangeKind::removeDeclaration:
            return findings_.add("salvage-declaration-misplaced"_rule, where);
        case ChangeKind::closeAtEnd:
            if (++open_ > 1) {
                if (end_ != nullptr) {
                    end_->arguments.front().value = std::to_string(open_);
                }
                return nullptr;
            }
            end_ = findings_.add("salvage-cut-off"_rule, where,
                                 {{"count", open_}, {"element", element}});
            return end_;
    }
    return nullptr;
}

Finding* Guesses::attributeTwice(const Change& change, TextSpan where) {
    const RawAttribute dropped = attributeIn(textAt(change.offset, change.length));
    if (change.kind == ChangeKind::removeEqualAttribute) {
        return findings_.add("salvage-attribute-twice"_rule, where,
                             {{"attribute", excerpt(dropped.name)}});
    }
    const RawAttribute kept = attributeIn(text_.substr(change.other));
    return findings_.add("salvage-attribute-conflict"_rule, where,
                         {{"attribute", excerpt(dropped.name)},
                          {"kept", inQuotes(kept.value)},
                          {"dropped", inQuotes(dropped.value)}});
}

// XMEML needs no attributes but ids, which nothing else tells.
void Guesses::tellLostAttributes(const Change& change, TextSpan where, std::size_t copyOffset) {
    if (structure_.kind != FileKind::fcpxml) {
        return;
    }
    const std::string_view element = structure_.names.textOf(change.name);
    const std::string attributes = requiredAttributes(element, structure_.version);
    if (attributes.empty()) {
        return;
    }
    Finding* const finding = findings_.add("salvage-attributes-lost"_rule, where,
                                           {{"element", element}, {"attributes", attributes}});
    if (finding != nullptr) {
        finding->inCopy.emplace();
        finding->inCopy->offset = copyOffset;
    }
}

}  // namespace vornic::salvage
