#ifndef VORNIC_REPORT_RULES_REPAIR_RULES_H
#define VORNIC_REPORT_RULES_REPAIR_RULES_H

#include "report/Rule.h"

namespace vornic::rules {

namespace detail {

inline constexpr std::string_view kRepairSource = "the order of a repair";
inline constexpr std::string_view kNoEffect = "None.";

/// A line that says how far a repair is.
[[nodiscard]] constexpr Rule repairStep(std::string_view id, std::string_view message,
                                        std::string_view meaning) {
    return {id,      RuleGroup::repair, Severity::info, message,
            meaning, kNoEffect,         "Nothing.",     kRepairSource};
}

/// A line that says what the repair found or could not do.
[[nodiscard]] constexpr Rule repairFault(std::string_view id, std::string_view message,
                                         std::string_view meaning, std::string_view effect,
                                         std::string_view remedy) {
    return {id,     RuleGroup::repair, Severity::error, message, meaning, effect,
            remedy, kRepairSource};
}

}  // namespace detail

/// The lines of a repair's report, in the order of a run. They are letter-exact: people and scripts
/// read them.
inline constexpr Rule kRepairRules[] = {
    detail::repairStep("repair-start", "Starting repair for file {path}...", "A repair begins."),
    detail::repairStep("repair-making-copy", "Creating temporary file...",
                       "The file is copied; the repair works on the copy."),
    detail::repairFault("repair-file-missing", "The file {path} cannot be found.",
                        "There is no file of that name.", "None.", "Look for the file."),
    detail::repairFault("repair-old-copy-stays",
                        "Error: unable to remove temporary file. Please remove {copy} manually.",
                        "A temporary file of an earlier repair can't be moved to the Trash.",
                        "None.", "Remove it."),
    detail::repairFault("repair-copy-failed", "Error: unable to create temporary file. {reason}",
                        "The file can't be copied.", "None.",
                        "Look at the rights of the file and its folder and at the free space."),
    detail::repairStep("repair-checking-file", "Checking file...", "The copy is read."),
    detail::repairFault("repair-reason", "{reason}", "Why a step failed.",
                        "A file that can't be read here can't be read anywhere.",
                        "Mend the place that is named."),
    detail::repairFault("repair-not-loaded", "Unable to load XML data",
                        "The file can't be read, filtered or not.", "They refuse the file.",
                        "Mend the place that is named in the line before."),
    detail::repairFault("repair-critical", "Critical error - repair canceled.",
                        "Nothing of the file could be read.", "They refuse the file.",
                        "Fetch the file again."),
    detail::repairStep("repair-loaded", "File loaded successfully.",
                       "The file is XML, perhaps after mends."),
    detail::repairFault("repair-mended-markup", "Line {line}, column {column}: {what}",
                        "Markup that was not well-formed was mended.",
                        "They refuse a file with such a fault.", "Nothing: it was mended."),
    detail::repairFault("repair-beginning-repair",
                        "File did not load successfully - beginning repair...",
                        "The file is no XML as it stands; it is filtered and read again.",
                        "They refuse the file.", "Mend the place that is named."),
    detail::repairStep("repair-filtering", "Filtering invalid characters...",
                       "Characters that XML does not allow are taken out, others are escaped."),
    detail::repairFault("repair-character-removed", "Invalid character at byte {index} removed.",
                        "A control character, or a character from U+E000 up, was taken out. The "
                        "number counts UTF-16 units from 0.",
                        "They refuse a file with control characters.", "Nothing: it was removed."),
    detail::repairStep("repair-checking-header", "Checking header tags...",
                       "The document type and the root element are looked at."),
    detail::repairFault("repair-document-type", "Invalid DTD... repairing",
                        "The document type declaration was missing or had another name.",
                        "Some refuse the file.", "Nothing: it was written."),
    detail::repairFault("repair-root-element", "Root element should be <{name}> node",
                        "The file is of another kind than its extension says, or no project.",
                        "They refuse the file.", "Give the file its right extension."),
    detail::repairFault("repair-no-sequence", "No sequences found in file",
                        "There is nothing to edit in the file.", "They import nothing.",
                        "Export the sequence again."),
    detail::repairFault(
        "repair-no-project", "No project node found in file", "There is no project in the file.",
        "They import media and events alone, or nothing.", "Export the project again."),
    detail::repairFault("repair-no-resources", "No resource node found in file",
                        "The media and formats that the project uses are not in the file.",
                        "They find no media.", "Export the project again."),
    detail::repairStep("repair-checking-version", "Checking version tags...",
                       "The elements are compared with the version that the file declares."),
    detail::repairFault("repair-version-missing",
                        "Unable to locate XML Interchange version information",
                        "The root element has no version, or is no xmeml.", "Some refuse the file.",
                        "Write version=\"5\" into the root element."),
    detail::repairFault("repair-version-empty", "Unable to determine XML Interchange version",
                        "The version has no value.", "Some refuse the file.",
                        "Write version=\"5\" into the root element."),
    detail::repairFault("repair-catalogue-missing",
                        "Unable to load XML version information. Please reinstall Brindle Tools.",
                        "The program's own list of versions is missing.", "None.",
                        "Install the program again."),
    detail::repairFault("repair-version-unknown", "Unrecognized XML Interchange version {version}.",
                        "There is no such version.", "Some refuse the file.",
                        "Write a version from 1 to 5 into the root element."),
    detail::repairFault("repair-newer-element",
                        "Warning: Invalid element {element}> for XML Interchange version "
                        "{version}. Go to Tools > Convert XML Interchange Version to convert this "
                        "to the proper format.",
                        "The element came with a later version than the file declares.",
                        "Programs of the declared version refuse the file or drop the element.",
                        "Convert the file to the later version."),
    detail::repairStep("repair-checking-events", "Checking for FCPX-specific errors...",
                       "Audio of video clips without a reference gets that of its neighbours."),
    detail::repairFault("repair-save-failed", "Unable to save file: {reason}",
                        "The repaired file can't be written.", "None.",
                        "Look at the free space and the rights of the folder."),
    detail::repairStep("repair-updating-codes", "Updating type/creator codes...",
                       "The file gets the codes of Final Cut Pro XML."),
    detail::repairFault("repair-codes-unread", "Unable to load file attributes. {reason}",
                        "The type and creator codes can't be read.", "None.", "Nothing."),
    detail::repairFault("repair-codes-unwritten", "Unable to write file attributes. {reason}",
                        "The type and creator codes can't be written.", "None.", "Nothing."),
    detail::repairStep("repair-sound",
                       "No repair was necessary. No critical errors were found in the file.",
                       "The file was left as it is."),
    detail::repairFault("repair-unable",
                        "Unable to repair file. Errors were found in the file and Vornic was "
                        "unable to fix them.",
                        "The file was left as it is.",
                        "They refuse the file, or import too little.",
                        "Mend the places that are named."),
    detail::repairStep("repair-done",
                       "The file was repaired successfully. Errors were found in the file and "
                       "were successfully repaired.",
                       "The repaired file took the place of the original, which is in the Trash."),
    detail::repairFault("repair-copy-foreign",
                        "The temporary file {copy} was replaced by another program. The file "
                        "{path} was left as it is.",
                        "Another program wrote to the name of the temporary file.", "None.",
                        "Repair the file again."),
    detail::repairFault("repair-copy-unsaved",
                        "No repaired file was saved as {copy}. The file {path} was left as it is.",
                        "There is no repaired file that could take the place of the original.",
                        "None.", "Repair the file again."),
    detail::repairFault("repair-copy-unremoved",
                        "Unable to remove temporary file {copy}. {reason}.",
                        "The temporary file stays beside the file.", "None.", "Remove it."),
    detail::repairFault("repair-cancelled", "The repair was cancelled.",
                        "The user ended the repair; the temporary file stays beside the file.",
                        "None.", "Repair the file again."),
};

}  // namespace vornic::rules

#endif
