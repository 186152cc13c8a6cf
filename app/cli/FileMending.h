#ifndef VORNIC_APP_CLI_FILE_MENDING_H
#define VORNIC_APP_CLI_FILE_MENDING_H

#include <optional>
#include <string>
#include <vector>

#include "check/Check.h"

namespace vornic {

/// How `--fix` is asked for.
struct FixSettings {
    /// Rules whose mends are made although they ask.
    std::vector<RuleId> asked;
    /// Whether the file becomes UTF-8.
    bool toUTF8 = false;
    /// Whether the result is a copy with the ending that the contents ask for.
    bool renames = false;
    /// Show what would be done; write nothing.
    bool isDryRun = false;
    /// The file or folder that takes the result; nothing for the file's own place.
    std::optional<std::string> output;
};

/// How the mending of one file ended.
struct FixedFile {
    /// Of the file as it is afterwards, with what was mended.
    Report report;
    /// Why the file was refused or not written; "" otherwise.
    std::string refusal;
    /// For standard error, a sentence each.
    std::vector<std::string> lines;
    /// What a dry run would do.
    std::string difference;
};

/// Reads a file, makes the mends that are asked for, and writes what came of it: into its place,
/// the original to the Trash and into the journal, or as a new file. Any thread.
[[nodiscard]] FixedFile fixFile(const std::string& path, const CheckOptions& options,
                                const FixSettings& settings);

}  // namespace vornic

#endif
