#ifndef VORNIC_APP_CLI_MEDIA_SETTINGS_H
#define VORNIC_APP_CLI_MEDIA_SETTINGS_H

#include <optional>
#include <string>
#include <vector>

#include "app/cli/CommandLine.h"
#include "job/Relink.h"

namespace vornic {

enum class MediaAction { list, missing, relink };

/// None for --quiet.
enum class MediaFormat { text, json, csv, none };

/// What a command line of `vornic-media` asks for.
struct MediaSettings {
    MediaAction action = MediaAction::list;
    MediaFormat format = MediaFormat::text;
    /// Nothing, and "-", for standard output.
    std::optional<std::string> reportPath;
    /// Whether only media that no sequence uses are listed.
    bool onlyUnused = false;
    /// What relinking is asked for.
    RelinkRequest relink;
    /// Show what would be done; write nothing.
    bool isDryRun = false;
    /// Whether the results take the places of the files.
    bool isInPlace = false;
    /// The file or folder that takes the result; nothing for one beside each file.
    std::optional<std::string> output;
    /// The arguments behind the action.
    std::vector<std::string> files;
};

/// Reads the action and the values of options.
/// @return what is wrong with them, as a sentence without a full stop; "" when nothing is.
[[nodiscard]] std::string readMediaSettings(const CommandLine& line, MediaSettings& settings);

}  // namespace vornic

#endif
