#include "app/cli/MediaSettings.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "foundation/places/PathLook.h"
#include "platform/files/FileSystem.h"

namespace vornic {

namespace {

constexpr std::pair<std::string_view, MediaAction> kActions[] = {{"list", MediaAction::list},
                                                                 {"missing", MediaAction::missing},
                                                                 {"relink", MediaAction::relink}};
constexpr std::pair<std::string_view, PathForm> kForms[] = {{"localhost", PathForm::localhost},
                                                            {"triple-slash", PathForm::tripleSlash},
                                                            {"windows", PathForm::windows}};
constexpr std::pair<std::string_view, Pick> kPicks[] = {{"newest", Pick::newest},
                                                        {"longest-tail", Pick::longestTail}};
// What goes with relink alone.
constexpr std::string_view kOfRelink[] = {"--map",     "--search",   "--pick", "--form",
                                          "--dry-run", "--in-place", "-o"};
constexpr std::pair<std::string_view, MediaFormat> kFormats[] = {
    {"text", MediaFormat::text}, {"json", MediaFormat::json}, {"csv", MediaFormat::csv}};

template <typename Value, std::size_t Size>
std::optional<Value> valueNamed(const std::pair<std::string_view, Value> (&known)[Size],
                                std::string_view name) {
    const auto* const found =
        std::find_if(std::begin(known), std::end(known),
                     [name](const auto& entry) { return entry.first == name; });
    return found == std::end(known) ? std::nullopt : std::optional(found->second);
}

class SettingsReader {
  public:
    SettingsReader(const CommandLine& line, MediaSettings& settings)
        : line_(line), settings_(settings) {}

    std::string read() {
        settings_.reportPath = line_.value("--report");
        settings_.onlyUnused = line_.has("--unused");
        readAction();
        readFormat();
        if (settings_.action == MediaAction::relink) {
            readRelink();
        } else {
            refuseOthers();
        }
        return fault_;
    }

  private:
    void readAction() {
        const std::vector<std::string>& words = line_.files();
        const auto action =
            words.empty() ? std::nullopt : valueNamed(kActions, std::string_view(words[0]));
        if (!action) {
            fault_ = words.empty()
                         ? "nothing to do is named"
                         : "there is no command " + words[0] + "; list, missing and relink are";
            return;
        }
        settings_.action = *action;
        settings_.files.assign(words.begin() + 1, words.end());
        if (settings_.onlyUnused && settings_.action != MediaAction::list) {
            fault_ = "--unused goes with list";
        } else if (settings_.files.empty()) {
            fault_ = "no file named";
        }
    }

    void complain(const std::string& fault) { fault_ = fault_.empty() ? fault : fault_; }

    void refuseOthers() {
        for (const std::string_view option : kOfRelink) {
            if (line_.has(option)) {
                complain(std::string(option) + " goes with relink");
            }
        }
    }

    void readRelink() {
        for (const std::string& rule : line_.values("--map")) {
            complain(settings_.relink.map.add(rule));
        }
        for (const std::string& folder : line_.values("--search")) {
            readFolder(folder);
        }
        settings_.relink.form = choice("--form", kForms, "localhost, triple-slash or windows");
        settings_.relink.pick = choice("--pick", kPicks, "newest or longest-tail");
        settings_.isDryRun = line_.has("--dry-run");
        settings_.isInPlace = line_.has("--in-place");
        settings_.output = line_.value("-o");
        if (settings_.relink.map.isEmpty() && settings_.relink.folders.empty() &&
            !settings_.relink.form) {
            complain("relink wants --map, --search or --form");
        } else if (settings_.isInPlace && settings_.output) {
            complain("--in-place and -o do not go together");
        } else if (settings_.relink.pick && settings_.relink.folders.empty()) {
            complain("--pick goes with --search");
        }
    }

    void readFolder(const std::string& folder) {
        const std::string path = platform::absolutePath(folder).value_or("");
        const PathSight sight = PathLook().lookAt({path})[0];
        if (sight.kind == PathSight::Kind::noAnswer) {
            complain("the folder " + folder + " does not answer");
        } else if (sight.kind != PathSight::Kind::folder) {
            complain("--search wants a folder, and " + folder + " is none");
        } else {
            // New paths lead through no "..", and else the way that the user has named.
            const MediaPath named = localPath(path);
            const bool leadsUp =
                std::count(named.components.begin(), named.components.end(), "..") != 0;
            settings_.relink.folders.push_back(leadsUp ? sight.path : named.text());
        }
    }

    template <typename Value, std::size_t Size>
    std::optional<Value> choice(std::string_view option,
                                const std::pair<std::string_view, Value> (&known)[Size],
                                const std::string& names) {
        const std::optional<std::string> name = line_.value(option);
        if (!name) {
            return std::nullopt;
        }
        const std::optional<Value> value = valueNamed(known, std::string_view(*name));
        if (!value) {
            complain(std::string(option) + " wants " + names + ", not " + *name);
        }
        return value;
    }

    void readFormat() {
        const std::string name = line_.value("--format").value_or("text");
        const std::optional<MediaFormat> format = valueNamed(kFormats, std::string_view(name));
        if (!format) {
            fault_ = fault_.empty() ? "there is no format " + name : fault_;
        } else {
            settings_.format = line_.has("--quiet") ? MediaFormat::none : *format;
        }
    }

    const CommandLine& line_;
    MediaSettings& settings_;
    std::string fault_;
};

}  // namespace

std::string readMediaSettings(const CommandLine& line, MediaSettings& settings) {
    return SettingsReader(line, settings).read();
}

}  // namespace vornic
