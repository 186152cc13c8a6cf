#ifndef VORNIC_REPORT_REPORT_H
#define VORNIC_REPORT_REPORT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "report/Findings.h"
#include "report/MediaRecord.h"
#include "report/MendRecord.h"
#include "report/RuleGroup.h"

namespace vornic {

/// The reason of a group that is looked at only when a user asks for it.
inline constexpr std::string_view kNotAskedFor = "not asked for";

/// Whether a group of rules was looked at.
struct GroupRun {
    RuleGroup group = RuleGroup::xml;
    bool ran = false;
    /// Why not, in words that follow "did not run: "; "" when it ran.
    std::string why;
};

/// What a conversion to another version has made of a file.
struct ConversionRecord {
    /// The versions, such as "1.13". `to` is empty where only the lowest was asked for.
    std::string from;
    std::string to;
    /// The new file; empty where none was written.
    std::string result;
    /// The lowest version that loses nothing, where that was asked for; empty when there is none.
    std::optional<std::string> lowest;
};

/// What was found in one file.
struct Report {
    /// As the user gave it; any bytes.
    std::string path;
    /// "xmeml", "fcpxml", "other" for another root element, "none" when there is none.
    std::string kind = "none";
    /// The version that the root element declares, "" for none.
    std::string version;
    /// The encoding that the file was read in, such as "UTF-8"; "" when it could not be.
    std::string encoding;
    /// The length of the file.
    std::uint64_t bytes = 0;
    /// The definition that the file was compared with, such as "fcpxml 1.10"; "" for none.
    std::string definition;
    /// Whether the file is valid by it; nothing where that can't be said.
    std::optional<bool> valid;
    /// One entry for each of `kCheckedGroups`, in their order.
    std::vector<GroupRun> groups;
    Findings findings;
    /// What was mended, and what was found before and not mended; nothing when nobody asked for
    /// mends. The rest of the report is about the file as it is afterwards.
    std::optional<std::vector<MendRecord>> mends;
    /// The media files that the project names; nothing when nobody asked for them.
    std::optional<std::vector<MediaRecord>> media;
    /// The files that a salvage made of it; nothing when nobody asked for one.
    std::optional<std::vector<std::string>> copies;
    /// Nothing when nobody asked for a conversion. The rest is about the file as it was.
    std::optional<ConversionRecord> conversion = {};
};

}  // namespace vornic

#endif
