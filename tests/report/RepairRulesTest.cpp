#include <map>
#include <string_view>

#include <gtest/gtest.h>

#include "report/RuleTable.h"

namespace vornic {
namespace {

// People and scripts read these: not a letter changes without a reason.
const std::map<std::string_view, std::string_view> kSentences = {
    {"repair-begins", "Beginning repair for file {path}..."},
    {"repair-start", "Starting repair for file {path}..."},
    {"repair-making-copy", "Creating temporary file..."},
    {"repair-waiting", "Waiting for another program that uses the file {path}..."},
    {"repair-brought-back",
     "An earlier repair of the file {path} was interrupted. The file was brought back."},
    {"repair-left-in-trash",
     "An earlier repair of the file {path} was interrupted. What it left aside was moved to the "
     "Trash: {left}"},
    {"repair-left-aside",
     "An earlier repair of the file {path} was interrupted. What it left aside is {left}."},
    {"repair-change-brought-back",
     "An earlier change of the file {path} was interrupted. The file was brought back."},
    {"repair-change-in-trash",
     "An earlier change of the file {path} was interrupted. What it left aside was moved to the "
     "Trash: {left}"},
    {"repair-change-left-aside",
     "An earlier change of the file {path} was interrupted. What it left aside is {left}."},
    {"repair-old-copy-in-trash", "The file {copy} was moved to the Trash: {left}"},
    {"repair-copy-left",
     "The temporary file {copy} was replaced by another program and left there."},
    {"repair-not-located", "Unable to locate file. The file {path} cannot be found."},
    {"repair-file-missing", "The file {path} cannot be found."},
    {"repair-old-copy-stays",
     "Error: unable to remove temporary file. Please remove {copy} manually."},
    {"repair-old-copy-in-the-way",
     "Unable to remove temporary file. Please remove {copy} manually."},
    {"repair-copy-failed", "Error: unable to create temporary file. {reason}"},
    {"repair-not-copied", "Unable to create temporary file. {reason}"},
    {"repair-checking-file", "Checking file..."},
    {"repair-stripping", "Stripping invalid characters from data..."},
    {"repair-reason", "{reason}"},
    {"repair-not-loaded", "Unable to load XML data"},
    {"repair-critical", "Critical error - repair canceled."},
    {"repair-canceled", "Unable to load XML data. Repair has been canceled."},
    {"repair-loaded", "File loaded successfully."},
    {"repair-mended-markup", "Line {line}, column {column}: {what}"},
    {"repair-beginning-repair", "File did not load successfully - beginning repair..."},
    {"repair-filtering", "Filtering invalid characters..."},
    {"repair-filtering-text", "Filtering invalid characters from string..."},
    {"repair-character-removed", "Invalid character at byte {index} removed."},
    {"repair-checking-header", "Checking header tags..."},
    {"repair-document-type", "Invalid DTD... repairing"},
    {"repair-root-element", "Root element should be <{name}> node"},
    {"repair-no-sequence", "No sequences found in file"},
    {"repair-no-project", "No project node found in file"},
    {"repair-no-resources", "No resource node found in file"},
    {"repair-checking-version", "Checking version tags..."},
    {"repair-version-missing", "Unable to locate XML Interchange version information"},
    {"repair-version-empty", "Unable to determine XML Interchange version"},
    {"repair-catalogue-missing",
     "Unable to load XML version information. Please reinstall Brindle Tools."},
    {"repair-version-unknown", "Unrecognized XML Interchange version {version}."},
    {"repair-newer-element",
     "Warning: Invalid element {element}> for XML Interchange version {version}. Go to Tools > "
     "Convert XML Interchange Version to convert this to the proper format."},
    {"repair-checking-events", "Checking for FCPX-specific errors..."},
    {"repair-references-refused",
     "the audio elements of this video that lack a reference were left as they are; with it, the "
     "file would grow beyond four times its size."},
    {"repair-save-failed", "Unable to save file: {reason}"},
    {"repair-updating-codes", "Updating type/creator codes..."},
    {"repair-codes-unread", "Unable to load file attributes. {reason}"},
    {"repair-codes-unwritten", "Unable to write file attributes. {reason}"},
    {"repair-finishing", "Finishing..."},
    {"repair-sound", "No repair was necessary. No critical errors were found in the file."},
    {"repair-unable",
     "Unable to repair file. Errors were found in the file and Vornic was unable to fix them."},
    {"repair-done",
     "The file was repaired successfully. Errors were found in the file and were successfully "
     "repaired."},
    {"repair-metadata-lost", "Something of the file {path} was not kept. {what}"},
    {"repair-trash-failed",
     "The file {path} could not be moved to the Trash. {reason} The repaired file is {copy}."},
    {"repair-source-changed",
     "The file {path} was changed by another program during the repair. It was left as it is now."},
    {"repair-original-place", "The original file is {path}."},
    {"repair-copy-place", "The repaired file is {path}."},
    {"repair-copy-taken", "The repaired file was overwritten or taken away by another program."},
    {"repair-copy-foreign",
     "The temporary file {copy} was replaced by another program. The file {path} was left as it "
     "is."},
    {"repair-copy-unsaved",
     "No repaired file was saved as {copy}. The file {path} was left as it is."},
    {"repair-copy-unremoved", "Unable to remove temporary file {copy}. {reason}."},
    {"repair-no-memory", "There is not enough memory to repair the file {path}."},
    {"repair-cancelled", "The repair was cancelled."},
};

TEST(RepairRules, areLetterExact) {
    for (const Rule& rule : kRuleTable) {
        if (rule.group == RuleGroup::repair) {
            const auto sentence = kSentences.find(rule.id);
            ASSERT_NE(sentence, kSentences.end()) << rule.id;
            EXPECT_EQ(rule.message, sentence->second) << rule.id;
        }
    }
}

TEST(RepairRules, noneIsMissing) {
    for (const auto& [id, sentence] : kSentences) {
        EXPECT_TRUE(findRule(id).has_value()) << id << ": " << sentence;
    }
}

}  // namespace
}  // namespace vornic
