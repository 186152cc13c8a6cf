// What holds for the other files that are read: journals, property lists, archives, rich text.

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <stdlib.h>

#include "base/Utf8.h"
#include "job/JournalText.h"
#include "platform/archives/Archive.h"
#include "platform/settings/PropertyList.h"
#include "tests/fuzz/Rules.h"
#include "ui/about/RichTextReader.h"

namespace vornic::test {

namespace fs = std::filesystem;

namespace {

// A folder that goes with the object.
class Scratch {
  public:
    Scratch() {
        std::string form = (fs::temp_directory_path() / "vornic-rule-XXXXXX").string();
        folder_ = mkdtemp(form.data()) != nullptr ? form : "";
    }
    ~Scratch() {
        std::error_code ignored;
        // Folders out of an archive may have no rights.
        for (fs::recursive_directory_iterator
                 item(folder_, fs::directory_options::skip_permission_denied, ignored),
             end;
             !ignored && item != end; item.increment(ignored)) {
            if (item->is_directory() && !item->is_symlink()) {
                fs::permissions(item->path(), fs::perms::owner_all, ignored);
            }
        }
        fs::remove_all(folder_, ignored);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    [[nodiscard]] std::string path(const char* name) const { return folder_ + "/" + name; }
    [[nodiscard]] std::size_t items() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_), {}));
    }

  private:
    std::string folder_;
};

bool leadsOut(const fs::path& link, const fs::path& folder) {
    const fs::path target = fs::weakly_canonical(link);
    const auto [end, rest] =
        std::mismatch(folder.begin(), folder.end(), target.begin(), target.end());
    static_cast<void>(rest);
    return end != folder.end();
}

std::string brokenRuleOfExtracted(const fs::path& folder) {
    for (const fs::directory_entry& item :
         fs::recursive_directory_iterator(folder, fs::directory_options::skip_permission_denied)) {
        std::error_code ignored;
        if (item.is_symlink() && leadsOut(item.path(), folder)) {
            return "a link leads out: " + item.path().string();
        }
        const auto mode = item.symlink_status(ignored).permissions();
        if ((mode & (fs::perms::set_uid | fs::perms::set_gid)) != fs::perms::none &&
            item.is_regular_file(ignored)) {
            return "a file runs as somebody else: " + item.path().string();
        }
    }
    return "";
}

bool isUtf8(const std::string& text) {
    std::string valid;
    appendAsValidUtf8(valid, text);
    return valid == text;
}

std::string written(const std::vector<JournalEntry>& entries) {
    std::string text;
    for (const JournalEntry& entry : entries) {
        text += beginLine(entry);
        if (entry.state != JournalEntry::State::begun) {
            text += endLine(entry);
        }
    }
    return text;
}

}  // namespace

std::string brokenRuleOfJournal(std::string_view text) {
    const JournalContents contents = parseJournal(text);
    if (contents.settled > text.size()) {
        return "more is settled than there is";
    }
    return parseJournal(written(contents.entries)).entries == contents.entries
               ? ""
               : "the entries are others when they are read again";
}

std::string brokenRuleOfPropertyLists(std::string_view bytes) {
    using platform::PropertyList;
    const std::optional<PropertyList> list = PropertyList::parse(bytes);
    if (!list) {
        return PropertyList::canBeWrittenAgain(bytes) ? "what is no property list can be written"
                                                      : "";
    }
    // What has no place in the forms is refused in time.
    const std::string binary = list->toBinary();
    const std::string xml = list->toXML();
    if (!PropertyList::canBeWrittenAgain(bytes)) {
        return "";
    }
    if (!binary.empty() && !PropertyList::parse(binary)) {
        return "the binary form cannot be read";
    }
    return PropertyList::parse(xml) ? "" : "the XML form cannot be read";
}

std::string brokenRuleOfArchives(std::string_view bytes) {
    const Scratch scratch;
    const std::string archive = scratch.path("archive.zip");
    const std::string folder = scratch.path("extracted");
    std::ofstream(archive, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    ErrorSlot error;
    const platform::ArchiveLimits limits{.entries = 200, .bytes = 1U << 20U, .timesItsSize = 2};
    if (!platform::extractArchive(archive, folder, error, limits)) {
        return scratch.items() == 1 ? "" : "a refused archive leaves something";
    }
    return scratch.items() == 2 ? brokenRuleOfExtracted(fs::canonical(folder))
                                : "there is something beside the folder";
}

std::string brokenRuleOfRichText(std::string_view bytes) {
    const std::optional<std::vector<StyledRun>> runs = readRichText(bytes);
    if (!runs) {
        return "";
    }
    const StyledRun* previous = nullptr;
    for (const StyledRun& run : *runs) {
        if (run.text.empty()) {
            return "a run is empty";
        }
        if (!isUtf8(run.text)) {
            return "a run is no UTF-8";
        }
        if (previous != nullptr && previous->isBold == run.isBold &&
            previous->pointSize == run.pointSize) {
            return "two neighbours have one style";
        }
        previous = &run;
    }
    return "";
}

}  // namespace vornic::test
