#include "report/XMLFindings.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <string>
#include <utility>

#include "base/Text.h"
#include "base/Utf8.h"
#include "report/XMLRuleOf.h"
#include "xml/text/NumberReference.h"
#include "xml/text/TextPlace.h"

namespace vornic {

namespace {

// What is done: mostly what the rule tells a user to do.
std::string descriptionOf(RuleId rule) {
    if (rule == "xml-attribute-without-value"_rule) {
        return "give it an empty value";
    }
    if (rule == "xml-undefined-entity"_rule || rule == "characters-forbidden-reference"_rule) {
        return "write &amp; for its ampersand, so that it is read as text";
    }
    std::string description = lowercased(ruleOf(rule).remedy.substr(0, 1));
    description += ruleOf(rule).remedy.substr(1);
    if (description.ends_with('.')) {
        description.pop_back();
    }
    return description;
}

Mend safeMend(RuleId rule, std::vector<Edit> edits) {
    return {Confidence::safe, descriptionOf(rule), std::move(edits)};
}

// By number, so that it can be written in every encoding.
std::string referenceTo(char32_t character) {
    std::array<char, 8> digits{};
    char* const end =
        std::to_chars(digits.data(), digits.data() + digits.size(), std::uint32_t{character}, 16)
            .ptr;
    return "&#x" + std::string(digits.data(), end) + ";";
}

std::string codeAt(std::string_view text, std::size_t offset) {
    return offset < text.size() ? codePointName(utf8CharacterAt(text, offset).code) : "";
}

}  // namespace

void XMLFindings::addHalfPair(std::size_t offset) {
    if (offset < endOfPair_) {
        return;
    }
    const NumberReference half = numberReferenceAt(text_.substr(offset));
    const NumberReference next = numberReferenceAt(text_.substr(offset + half.length));
    const bool isPair = half.isFirstHalf() && next.isSecondHalf();
    const std::size_t length = half.length + (isPair ? next.length : 0);
    endOfPair_ = offset + length;
    last_ = findings_.add("characters-half-pair"_rule, {offset, length});
    if (last_ == nullptr) {
        return;
    }
    const std::string right = isPair ? referenceTo(characterOf(half, next)) : "";
    last_->arguments = {{"reference", std::string(text_.substr(offset, length))},
                        {"right", isPair ? "be " + right : "go, or be the whole character"}};
    last_->mend = Mend{isPair ? Confidence::safe : Confidence::ask,
                       isPair ? "write the number of the character" : "take the half out",
                       {{offset, length, right}}};
}

void XMLFindings::addPending() {
    if (!pending_) {
        return;
    }
    const Pending& mend = *pending_;
    last_ = findings_.add(mend.rule, {mend.offset, 1}, {{"name", mend.name}});
    if (last_ != nullptr) {
        last_->mend = safeMend(mend.rule, {});
    }
    lastMade_ = {mend.rule, mend.offset};
    pending_.reset();
}

bool XMLFindings::tells(RuleId rule) {
    return ruleOf(rule).group == RuleGroup::xml || rule == "characters-forbidden-reference"_rule ||
           rule == "characters-half-pair"_rule;
}

void XMLFindings::mend(const XMLMend& mend, std::string_view name) {
    addPending();
    last_ = nullptr;
    lastMade_.reset();
    hasMends_ = true;
    const NumberReference reference = mend.code == XMLErrorCode::malformedReference
                                          ? numberReferenceAt(text_.substr(mend.offset))
                                          : NumberReference();
    hasOwnEdits_ = reference.isFirstHalf() || reference.isSecondHalf();
    if (hasOwnEdits_) {
        return addHalfPair(mend.offset);
    }
    if (reference.length != 0) {
        const std::string_view written = text_.substr(mend.offset, reference.length);
        pending_ = {"characters-forbidden-reference"_rule, mend.offset, std::string(written)};
    } else if (const std::optional<RuleId> rule = xmlRuleOf(mend.code)) {
        pending_ = {*rule, mend.offset, excerpt(name)};
    }
}

void XMLFindings::edit(const XMLEdit& edit) {
    addPending();
    if (last_ != nullptr && !hasOwnEdits_) {
        last_->mend->edits.push_back({edit.offset, edit.length, std::string(edit.replacement)});
    }
}

void XMLFindings::dropped(TextSpan characters) {
    hasMends_ = true;
    const RuleId rule = "xml-forbidden-character"_rule;
    if (Finding* const finding =
            findings_.add(rule, characters, {{"code", codeAt(text_, characters.offset)}})) {
        finding->mend = safeMend(rule, {{characters.offset, characters.length, ""}});
    }
}

Finding* XMLFindings::addFault(const XMLReading& reading) {
    if (!reading.faultParts) {
        addPending();
        return nullptr;
    }
    return addFault(*reading.faultParts);
}

Finding* XMLFindings::addFault(const XMLFault& fault) {
    pending_.reset();
    const std::optional<RuleId> rule = xmlRuleOf(fault.code);
    if (!rule) {
        return nullptr;
    }
    // The reader gave up in the middle of a mend.
    if (lastMade_ == std::pair(*rule, fault.offset)) {
        if (last_ != nullptr) {
            last_->mend.reset();
        }
        return last_;
    }
    TextPlace start(text_);
    start.moveTo(fault.otherOffset);
    const std::string line = std::to_string(start.line());
    const std::string name = excerpt(fault.name);
    const TextSpan place{fault.offset, fault.offset < text_.size() ? std::size_t{1} : 0};
    if (fault.code == XMLErrorCode::unclosedElement) {
        return findings_.add(*rule, place,
                             {{"ends", "ends"},
                              {"open", "<" + name + "> (line " + line + ") is"},
                              {"closing", "</" + name + ">"}});
    }
    if (fault.code == XMLErrorCode::forbiddenCharacter) {
        return findings_.add(*rule, place, {{"code", codeAt(text_, fault.offset)}});
    }
    return findings_.add(*rule, place,
                         {{"name", name}, {"other", excerpt(fault.other)}, {"line", line}});
}

}  // namespace vornic
