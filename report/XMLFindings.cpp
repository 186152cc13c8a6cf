#include "report/XMLFindings.h"

#include <string>
#include <utility>

#include "report/XMLRuleOf.h"
#include "xml/TextPlace.h"

namespace vornic {

namespace {

// What is done, as the rule tells a user to do it.
Mend safeMend(RuleId rule, std::vector<Edit> edits) {
    std::string description(ruleOf(rule).remedy);
    if (description.ends_with('.')) {
        description.pop_back();
    }
    return {Confidence::safe, std::move(description), std::move(edits)};
}

}  // namespace

void XMLFindings::mend(const XMLMend& mend, std::string_view name) {
    last_ = nullptr;
    hasMends_ = true;
    if (const std::optional<RuleId> rule = xmlRuleOf(mend.code)) {
        last_ = findings_.add(*rule, {mend.offset, 1}, {{"name", excerpt(name)}});
        if (last_ != nullptr) {
            last_->mend = safeMend(*rule, {});
        }
    }
}

void XMLFindings::edit(const XMLEdit& edit) {
    if (last_ != nullptr) {
        last_->mend->edits.push_back({edit.offset, edit.length, std::string(edit.replacement)});
    }
}

void XMLFindings::dropped(TextSpan characters) {
    hasMends_ = true;
    const RuleId rule = "xml-forbidden-character"_rule;
    if (Finding* const finding = findings_.add(rule, characters)) {
        finding->mend = safeMend(rule, {{characters.offset, characters.length, ""}});
    }
}

void XMLFindings::addFault(const XMLReading& reading) {
    if (!reading.faultParts) {
        return;
    }
    const XMLFault& fault = *reading.faultParts;
    const std::optional<RuleId> rule = xmlRuleOf(fault.code);
    if (!rule) {
        return;
    }
    TextPlace start(text_);
    start.moveTo(fault.otherOffset);
    findings_.add(
        *rule, {fault.offset, fault.offset < text_.size() ? std::size_t{1} : 0},
        {{"name", excerpt(fault.name)}, {"other", excerpt(fault.other)}, {"line", start.line()}});
}

}  // namespace vornic
