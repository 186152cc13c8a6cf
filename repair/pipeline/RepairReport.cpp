#include "repair/pipeline/RepairReport.h"

#include <algorithm>
#include <array>

#include "report/RuleTable.h"
#include "report/XMLRuleOf.h"
#include "xml/text/TextPlace.h"

namespace vornic {

namespace {

// What begins and ends a report, or ends a step.
constexpr std::array kBoldRules = {
    "repair-start"_rule,
    "repair-old-copy-stays"_rule,
    "repair-copy-failed"_rule,
    "repair-critical"_rule,
    "repair-catalogue-missing"_rule,
    "repair-version-unknown"_rule,
    "repair-save-failed"_rule,
    "repair-codes-unread"_rule,
    "repair-codes-unwritten"_rule,
    "repair-sound"_rule,
    "repair-unable"_rule,
    "repair-done"_rule,
    "repair-no-memory"_rule,
};

bool isBold(RuleId rule) {
    return std::find(kBoldRules.begin(), kBoldRules.end(), rule) != kBoldRules.end();
}

bool isError(RuleId rule) {
    return ruleOf(rule).severity == Severity::error;
}

Severity severityOf(FindingEffect effect) {
    return effect == FindingEffect::warning ? Severity::warning : Severity::error;
}

}  // namespace

void RepairReport::line(RuleId rule, std::string_view text, bool isError) {
    events_.line({rule, text, isError, isBold(rule)});
}

void RepairReport::say(RuleId rule, ArgumentList arguments) {
    line(rule, messageOf(rule, arguments), isError(rule));
}

void RepairReport::sayAsError(RuleId rule, ArgumentList arguments) {
    line(rule, messageOf(rule, arguments), true);
}

void RepairReport::log(RuleId rule, ArgumentList arguments) {
    events_.logLine(messageOf(rule, arguments));
}

void RepairReport::label(RuleId rule, ArgumentList arguments) {
    events_.label(messageOf(rule, arguments));
}

void RepairReport::say(const Note& note) {
    line(note.rule, note.text(), isError(note.rule));
}

void RepairReport::sayMend(const XMLMend& mend) {
    const RuleId rule = "repair-mended-markup"_rule;
    line(xmlRuleOf(mend.code).value_or(rule),
         messageOf(rule, {{"line", mend.line}, {"column", mend.column}, {"what", mend.what}}),
         isError(rule));
}

void RepairReport::sayReason(const ErrorSlot& error) {
    say("repair-reason"_rule,
        {{"reason", error ? std::string_view(error->localizedDescription()) : std::string_view()}});
}

void RepairReport::sayAndLabel(RuleId rule) {
    say(rule);
    label(rule);
}

void RepairReport::add(const RepairFinding& finding) {
    if (Finding* const kept = findings_.add(finding.rule, severityOf(finding.effect), {})) {
        kept->arguments = finding.arguments;
        kept->where = finding.where;
    }
    say(finding);
}

void RepairReport::say(const RepairFinding& finding) {
    const std::string text = formatMessage(ruleOf(finding.rule).message, finding.arguments);
    takeEffect(finding.effect);
    if (isFirstObstacle(finding.effect)) {
        obstacle_ = text;
    }
    const Place& where = finding.where;
    line(finding.rule, where.line == 0 ? text : sentenceWithPlace(where.line, where.column, text),
         isError(finding.rule));
}

void RepairReport::add(RuleId rule, FindingEffect effect, TextSpan where, SourcePlaces& places,
                       ArgumentList arguments) {
    if (Finding* const kept = findings_.add(rule, severityOf(effect), where, arguments)) {
        kept->where = places.of(where);
    }
    takeEffect(effect);
    if (isFirstObstacle(effect)) {
        obstacle_ = messageOf(rule, arguments);
    }
    say(rule, arguments);
}

void RepairReport::count(Findings found, SourcePlaces places) {
    found.sort();
    for (Finding& finding : found.kept()) {
        const std::size_t offset = finding.where.offset;
        finding.where = places.of({offset, finding.where.length});
        if (!places.areKnown()) {
            finding.mend.reset();
        } else if (finding.mend) {
            for (Edit& edit : finding.mend->edits) {
                edit.offset += finding.where.offset - offset;
            }
        }
    }
    if (found.kept().size() == 1 && knows(found.kept().front())) {
        return;
    }
    findings_.append(std::move(found));
    findings_.keepFirst(kKeptFindings);
}

bool RepairReport::knows(const Finding& finding) const {
    const auto& kept = findings_.kept();
    return std::any_of(kept.begin(), kept.end(), [&](const Finding& known) {
        return known.rule == finding.rule && known.where == finding.where;
    });
}

void RepairReport::setVerdict(const Verdict& verdict) {
    verdict_ = verdict;
    events_.verdict(verdict_);
}

bool RepairReport::isFirstObstacle(FindingEffect effect) const {
    return effect == FindingEffect::unmended && obstacle_.empty();
}

void RepairReport::takeEffect(FindingEffect effect) {
    switch (effect) {
        case FindingEffect::warning:
            return;
        case FindingEffect::mended:
            return noteErrors();
        case FindingEffect::unmended:
            return giveUp();
        case FindingEffect::removed:
            return setVerdict({true, true});
    }
}

}  // namespace vornic
