#include "report/RulePage.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "base/FormatString.h"
#include "report/RuleTable.h"
#include "report/rules/Requirements.h"

namespace vornic {

namespace {

constexpr std::size_t kLineLength = 80;

constexpr std::pair<RuleGroup, std::string_view> kGroups[] = {
    {RuleGroup::xml, "The file as XML: markup, encoding, an end that is missing. In both formats."},
    {RuleGroup::structure, "What the definition of the declared version asks for."},
    {RuleGroup::references, "Ids, and what refers to them."},
    {RuleGroup::timing, "Times, and how clips lie beside each other and in their media."},
    {RuleGroup::values, "The form of single values."},
    {RuleGroup::versions, "What a receiver of an older version cannot read."},
    {RuleGroup::characters, "Characters that programs take out or stumble over."},
    {RuleGroup::media, "The media files that the project names."},
    {RuleGroup::salvage,
     "What a salvage guesses (vornic-repair --salvage). No check looks for it."},
    {RuleGroup::conversion,
     "What a conversion drops, which is a warning, or gives another form (vornic-convert). No "
     "check "
     "looks for it."}};

constexpr std::pair<RuleGroup, std::string_view> kReports[] = {
    {RuleGroup::repair,
     "What `vornic-repair` says, in the order of a run. The window shows the same lines; those of "
     "the log "
     "are in its log alone."},
    {RuleGroup::salvage,
     "What `vornic-repair --salvage` says of a copy: each guess, and what is lost."},
    {RuleGroup::conversion, "What `vornic-convert` says that it has done."}};

bool isOfACheck(const Rule& rule) {
    return vornic::isOfACheck(rule.group);
}

bool hasRules(RuleGroup group) {
    return std::any_of(kRuleTable.begin(), kRuleTable.end(),
                       [group](const Rule& rule) { return rule.group == group; });
}

// The text in lines that begin with an indent and break between words.
std::string wrapped(std::string_view text, std::string_view indent) {
    std::string lines(indent);
    std::size_t column = indent.size();
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        const bool isFirst = column == indent.size();
        if (!isFirst && column + 1 + word.size() > kLineLength) {
            lines.append("\n").append(indent);
            column = indent.size();
        } else if (!isFirst) {
            lines += ' ';
            ++column;
        }
        lines += word;
        column += word.size();
    }
    return lines + "\n";
}

// Text of the table for Markdown, in which nothing of it is markup.
std::string inMarkdown(std::string_view text) {
    std::string result;
    for (const char character : text) {
        if (std::string_view("\\`*_[]<>|").find(character) != std::string_view::npos) {
            result += '\\';
        }
        result += character;
    }
    return result;
}

std::string inRoff(std::string_view text) {
    std::string result = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
    for (const char character : text) {
        if (character == '\\') {
            result += "\\e";
        } else if (character == '-') {
            result += "\\-";
        } else {
            result += character;
        }
    }
    return result;
}

std::string codeList(std::string_view ids) {
    std::string list;
    while (!ids.empty()) {
        const std::string_view id = ids.substr(0, ids.find(' '));
        ids.remove_prefix(std::min(id.size() + 1, ids.size()));
        list += formatString("%@[`%@`](#%@)", list.empty() ? "" : ", ", id, id);
    }
    return list;
}

std::string ruleInMarkdown(const Rule& rule) {
    return formatString("### %@\n\n%@: %@\n\n%@ %@\n\n*To mend it by hand:* %@\n\n*Source:* %@\n\n",
                        rule.id, nameOf(rule.severity), inMarkdown(rule.message),
                        inMarkdown(rule.meaning), inMarkdown(rule.effect), inMarkdown(rule.remedy),
                        inMarkdown(rule.source));
}

std::string ruleInRoff(const Rule& rule) {
    return formatString(
        ".SS %@\n%@: %@\n.PP\n%@\n%@\n.PP\nTo mend it by hand: %@\n.PP\nSource: %@\n",
        inRoff(rule.id), nameOf(rule.severity), inRoff(rule.message), inRoff(rule.meaning),
        inRoff(rule.effect), inRoff(rule.remedy), inRoff(rule.source));
}

std::string lineInMarkdown(const Rule& rule) {
    const bool isDone = rule.remedy == "Nothing.";
    const bool hasEffect = rule.effect != "None.";
    return formatString("**%@**\n\n%@%@%@\n\n", inMarkdown(rule.message), inMarkdown(rule.meaning),
                        hasEffect ? " *Editing programs:* " + inMarkdown(rule.effect) : "",
                        isDone ? "" : " *What to do:* " + inMarkdown(rule.remedy));
}

constexpr std::string_view kMarkdownHead =
    "# Rules\n"
    "\n"
    "What `vornic-check`, `vornic-repair --salvage` and `vornic-convert` say about files. Made "
    "from "
    "the table of\n"
    "rules (`report/rules/`) by `scripts/refresh-rules`; `vornic-check --explain RULE` and "
    "vornic-rules(7) tell\n"
    "the same. Ids are never renamed. `{names}` in a message stand for what is in the file. An "
    "error is\n"
    "refused, dropped or broken by an editing program; with a warning the file is read, but "
    "perhaps not as it\n"
    "is meant; an info is worth knowing and no more. A single finding may weigh otherwise than its "
    "rule.\n"
    "\n";

constexpr std::string_view kRoffHead =
    ".SH NAME\n"
    "vornic\\-rules \\- what is said about project files, and what it means\n"
    ".SH DESCRIPTION\n"
    "Each finding of\n"
    ".BR vornic\\-check (1),\n"
    ".B vornic\\-repair \\-\\-salvage\n"
    "and\n"
    ".BR vornic\\-convert (1)\n"
    "has the id of a rule, which is never renamed.\n"
    "Names in braces stand for what is in the file.\n"
    "A single finding may weigh otherwise than its rule.\n";

}  // namespace

std::string pageOf(const Rule& rule) {
    std::string page = formatString("%@ (%@, group %@)\n\n%@", rule.id, nameOf(rule.severity),
                                    nameOf(rule.group), wrapped(rule.message, ""));
    const std::pair<std::string_view, std::string_view> parts[] = {
        {"What it means", rule.meaning},
        {"What editing programs do", rule.effect},
        {"How to mend it", rule.remedy},
        {"Source", rule.source}};
    for (const auto& [heading, text] : parts) {
        page += formatString("\n%@\n%@", heading, wrapped(text, "    "));
    }
    return page;
}

std::string listOfRules() {
    std::size_t longest = 0;
    for (const Rule& rule : kRuleTable) {
        longest = std::max(longest, isOfACheck(rule) ? rule.id.size() : 0);
    }
    std::string list;
    for (const Rule& rule : kRuleTable) {
        if (isOfACheck(rule)) {
            std::string id(rule.id);
            id.resize(longest, ' ');
            std::string severity(nameOf(rule.severity));
            severity.resize(nameOf(Severity::warning).size(), ' ');
            list += formatString("%@  %@  %@\n", id, severity,
                                 rule.message.substr(0, rule.message.rfind("; ")));
        }
    }
    return list;
}

std::string rulesInMarkdown() {
    std::string page(kMarkdownHead);
    page += "## What the formats ask for, and the rules that hold it\n\n| | |\n|---|---|\n";
    for (const rules::Requirement& requirement : rules::kRequirements) {
        page += formatString("| %@ | %@ |\n", inMarkdown(requirement.text),
                             codeList(requirement.rules));
    }
    page += "\n";
    for (const auto& [group, about] : kGroups) {
        if (!hasRules(group)) {
            continue;
        }
        page += formatString("## Group %@\n\n%@\n\n", nameOf(group), about);
        for (const Rule& rule : kRuleTable) {
            page += rule.group == group ? ruleInMarkdown(rule) : "";
        }
    }
    page.pop_back();
    return page;
}

std::string reportLinesInMarkdown() {
    std::string page =
        "# Every line of a report\n\n"
        "Names in braces stand for what is in the file. What `vornic-check` finds is in the "
        "chapter\n\"Rules\", and in `vornic-check --explain`.\n\n";
    for (const auto& [group, about] : kReports) {
        page += formatString("## The %@\n\n%@\n\n", nameOf(group), about);
        for (const Rule& rule : kRuleTable) {
            page += rule.group == group ? lineInMarkdown(rule) : "";
        }
    }
    page.pop_back();
    return page;
}

std::string rulesInRoff(const std::string& date) {
    std::string page =
        formatString(".TH VORNIC\\-RULES 7 %@ Vornic \"Miscellaneous\"\n%@", date, kRoffHead);
    for (const auto& [group, about] : kGroups) {
        if (!hasRules(group)) {
            continue;
        }
        page += formatString(".SH \"GROUP %@\"\n%@\n", nameOf(group), inRoff(about));
        for (const Rule& rule : kRuleTable) {
            page += rule.group == group ? ruleInRoff(rule) : "";
        }
    }
    return page +
           ".SH \"SEE ALSO\"\n.BR vornic\\-check (1),\n.BR vornic\\-convert (1),\n"
           ".BR vornic\\-repair (1)\n";
}

}  // namespace vornic
