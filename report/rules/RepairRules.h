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
    detail::repairStep("repair-begins", "Beginning repair for file {path}...",
                       "A repair begins; a line of the log."),
    detail::repairStep("repair-start", "Starting repair for file {path}...", "A repair begins."),
    detail::repairStep("repair-making-copy", "Creating temporary file...",
                       "The file is copied; the repair works on the copy."),
    detail::repairStep("repair-waiting", "Waiting for another program that uses the file {path}...",
                       "Another repair is at work on the same file; this one goes on after it."),
    detail::repairStep("repair-brought-back",
                       "An earlier repair of the file {path} was interrupted. The file was brought "
                       "back.",
                       "A repair was killed while names were changed; nothing stood at the file's "
                       "path."),
    detail::repairStep("repair-left-in-trash",
                       "An earlier repair of the file {path} was interrupted. What it left aside "
                       "was moved to the Trash: {left}",
                       "A repair was killed while names were changed; the file is there."),
    detail::repairStep(
        "repair-left-aside",
        "An earlier repair of the file {path} was interrupted. What it left aside "
        "is {left}.",
        "A repair was killed while names were changed; what it left can't be moved."),
    detail::repairStep("repair-change-brought-back",
                       "An earlier change of the file {path} was interrupted. The file was brought "
                       "back.",
                       "A program was killed while names were changed; nothing stood at the file's "
                       "path."),
    detail::repairStep("repair-change-in-trash",
                       "An earlier change of the file {path} was interrupted. What it left aside "
                       "was moved to the Trash: {left}",
                       "A program was killed while names were changed; the file is there."),
    detail::repairStep("repair-change-left-aside",
                       "An earlier change of the file {path} was interrupted. What it left aside "
                       "is {left}.",
                       "A program was killed while names were changed; what it left can't be "
                       "moved."),
    detail::repairStep("repair-old-copy-in-trash", "The file {copy} was moved to the Trash: {left}",
                       "A file stood where the temporary file has to be; a line of the log."),
    detail::repairStep("repair-copy-left",
                       "The temporary file {copy} was replaced by another program and left there.",
                       "Another program wrote to the name of the temporary file; a line of the "
                       "log."),
    detail::repairFault(
        "repair-not-located", "Unable to locate file. The file {path} cannot be found.",
        "There is no file of that name; how a run ends.", "None.", "Look for the file."),
    detail::repairFault("repair-file-missing", "The file {path} cannot be found.",
                        "There is no file of that name.", "None.", "Look for the file."),
    detail::repairFault("repair-old-copy-stays",
                        "Error: unable to remove temporary file. Please remove {copy} manually.",
                        "A temporary file of an earlier repair can't be moved to the Trash.",
                        "None.", "Remove it."),
    detail::repairFault("repair-old-copy-in-the-way",
                        "Unable to remove temporary file. Please remove {copy} manually.",
                        "A temporary file of an earlier repair can't be moved to the Trash; how a "
                        "run ends.",
                        "None.", "Remove it."),
    detail::repairFault("repair-copy-failed", "Error: unable to create temporary file. {reason}",
                        "The file can't be copied.", "None.",
                        "Look at the rights of the file and its folder and at the free space."),
    detail::repairFault("repair-not-copied", "Unable to create temporary file. {reason}",
                        "The file can't be copied; how a run ends.", "None.",
                        "Look at the rights of the file and its folder and at the free space."),
    detail::repairStep("repair-checking-file", "Checking file...", "The copy is read."),
    detail::repairStep("repair-stripping", "Stripping invalid characters from data...",
                       "The file is no UTF-8; only its plain ASCII characters are kept."),
    detail::repairFault("repair-reason", "{reason}", "Why a step failed.",
                        "A file that can't be read here can't be read anywhere.",
                        "Mend the place that is named."),
    detail::repairFault("repair-not-loaded", "Unable to load XML data",
                        "The file can't be read, filtered or not.", "They refuse the file.",
                        "Mend the place that is named in the line before."),
    detail::repairFault("repair-critical", "Critical error - repair canceled.",
                        "Nothing of the file could be read.", "They refuse the file.",
                        "Fetch the file again."),
    detail::repairFault("repair-canceled", "Unable to load XML data. Repair has been canceled.",
                        "Nothing of the file could be read; how a run ends.",
                        "They refuse the file.", "Fetch the file again."),
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
    detail::repairStep("repair-filtering-text", "Filtering invalid characters from string...",
                       "The filter begins; a line of the log."),
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
    detail::repairFault("repair-references-refused",
                        "the audio elements of this video that lack a reference were left as they "
                        "are; with it, the file would grow beyond four times its size.",
                        "The references that are missing are so long that the file would become "
                        "useless.",
                        "They refuse the file, or play no sound.",
                        "Give the audio elements their references by hand."),
    detail::repairFault("repair-save-failed", "Unable to save file: {reason}",
                        "The repaired file can't be written.", "None.",
                        "Look at the free space and the rights of the folder."),
    detail::repairStep("repair-updating-codes", "Updating type/creator codes...",
                       "The file gets the codes of Final Cut Pro XML."),
    detail::repairFault("repair-codes-unread", "Unable to load file attributes. {reason}",
                        "The type and creator codes can't be read.", "None.", "Nothing."),
    detail::repairFault("repair-codes-unwritten", "Unable to write file attributes. {reason}",
                        "The type and creator codes can't be written.", "None.", "Nothing."),
    detail::repairStep("repair-finishing", "Finishing...", "The verdict is carried out."),
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
    detail::repairFault("repair-metadata-lost", "Something of the file {path} was not kept. {what}",
                        "The repaired file lacks an attribute or a right of the original.", "None.",
                        "Look whether you need it; the original has it."),
    detail::repairFault("repair-trash-failed",
                        "The file {path} could not be moved to the Trash. {reason} The repaired "
                        "file is {copy}.",
                        "The original is in its place, the repaired file beside it; a line of the "
                        "log.",
                        "None.", "Move the original away and give the repaired file its name."),
    detail::repairFault("repair-source-changed",
                        "The file {path} was changed by another program during the repair. It was "
                        "left as it is now.",
                        "The repaired file comes from an older state of the file.", "None.",
                        "Repair the file again."),
    detail::repairFault("repair-original-place", "The original file is {path}.",
                        "The original is not where it was.", "None.",
                        "Move it to where it should be."),
    detail::repairFault("repair-copy-place", "The repaired file is {path}.",
                        "The repaired file could not take the place of the original.", "None.",
                        "Move it to where it should be."),
    detail::repairFault("repair-copy-taken",
                        "The repaired file was overwritten or taken away by another program.",
                        "There is no repaired file any more.", "None.", "Repair the file again."),
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
    detail::repairFault("repair-no-memory", "There is not enough memory to repair the file {path}.",
                        "The file was left as it is.", "None.",
                        "Close other programs, and repair the file again."),
    detail::repairFault("repair-cancelled", "The repair was cancelled.",
                        "The user ended the repair; the temporary file stays beside the file.",
                        "None.", "Repair the file again."),
};

}  // namespace vornic::rules

#endif
