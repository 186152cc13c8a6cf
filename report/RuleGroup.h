#ifndef VORNIC_REPORT_RULE_GROUP_H
#define VORNIC_REPORT_RULE_GROUP_H

#include <array>
#include <cstddef>
#include <string_view>

namespace vornic {

/// What a rule is about. A check runs or leaves out whole groups and says why.
enum class RuleGroup {
    /// The file as XML: markup, encoding, an end that is missing.
    xml,
    /// What the definition of the format asks for.
    structure,
    /// Ids, and what refers to them.
    references,
    timing,
    /// The form of single values.
    values,
    /// What a receiver of an older version cannot read.
    versions,
    /// Characters that programs take out or stumble over.
    characters,
    /// The media files that the project names.
    media,
    /// The lines of a repair's report. No check runs them.
    repair,
    /// What a salvage guesses. No check runs them.
    salvage,
    /// What a conversion to another version drops, or gives another form. No check runs them.
    conversion,
};

/// The groups that a check runs, in the order in which reports list them.
inline constexpr std::array<RuleGroup, 8> kCheckedGroups = {
    RuleGroup::xml,    RuleGroup::structure, RuleGroup::references, RuleGroup::timing,
    RuleGroup::values, RuleGroup::versions,  RuleGroup::characters, RuleGroup::media};

/// The group's name in reports and options.
[[nodiscard]] constexpr std::string_view nameOf(RuleGroup group) {
    constexpr std::array<std::string_view, 11> kNames = {
        "xml",        "structure", "references", "timing",  "values",    "versions",
        "characters", "media",     "repair",     "salvage", "conversion"};
    return kNames[static_cast<std::size_t>(group)];
}

/// Whether a check can find what the group's rules are about.
[[nodiscard]] constexpr bool isOfACheck(RuleGroup group) {
    return group != RuleGroup::repair && group != RuleGroup::salvage &&
           group != RuleGroup::conversion;
}

}  // namespace vornic

#endif
