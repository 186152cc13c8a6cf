#include "platform/session/MimeDatabase.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <set>
#include <tuple>

#include <fnmatch.h>

#include "base/PathText.h"
#include "base/Text.h"
#include "platform/files/FileSystem.h"
#include "platform/settings/Directories.h"

namespace vornic::platform {
namespace {

/// One line of a globs2 file: weight:type:pattern, and perhaps :flags.
struct Glob {
    int weight = 0;
    std::string_view type;
    std::string_view pattern;
    bool isCaseSensitive = false;
};

/// Takes what stands before the separator, or everything, from the front of a text.
std::string_view takeUpTo(std::string_view& text, char separator) {
    const std::size_t end = std::min(text.find(separator), text.size());
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return taken;
}

bool hasCaseFlag(std::string_view flags) {
    while (!flags.empty()) {
        if (takeUpTo(flags, ',') == "cs") {
            return true;
        }
    }
    return false;
}

/// @return nothing for a comment, and for a line of another form.
std::optional<Glob> globInLine(std::string_view line) {
    const std::string_view weight = takeUpTo(line, ':');
    Glob glob;
    const char* end = weight.data() + weight.size();
    const auto [last, fault] = std::from_chars(weight.data(), end, glob.weight);
    glob.type = takeUpTo(line, ':');
    glob.pattern = takeUpTo(line, ':');
    glob.isCaseSensitive = hasCaseFlag(takeUpTo(line, ':'));
    const bool isWhole = fault == std::errc() && last == end && !glob.type.empty();
    return isWhole && !glob.pattern.empty() ? std::optional(glob) : std::nullopt;
}

bool fits(const std::string& pattern, const std::string& extension) {
    return pattern == extension || (pattern.find_first_of("*?[") != std::string::npos &&
                                    fnmatch(pattern.c_str(), extension.c_str(), 0) == 0);
}

/// Looks for the pattern that suits an extension best.
class Search {
  public:
    explicit Search(std::string_view extension)
        : asWritten_(extension), lowercase_(lowercased(extension)) {}

    void consider(const Glob& glob) {
        constexpr std::string_view kAnyName = "*.";
        if (!glob.pattern.starts_with(kAnyName)) {
            return;
        }
        const std::string pattern(glob.pattern.substr(kAnyName.size()));
        const bool isExact = fits(pattern, asWritten_);
        if (!isExact && (glob.isCaseSensitive || !fits(lowercased(pattern), lowercase_))) {
            return;
        }
        const Rank rank{isExact, glob.weight, pattern.size()};
        if (!type_ || rank > rank_) {
            type_ = glob.type;
            rank_ = rank;
        }
    }
    [[nodiscard]] const std::optional<std::string>& type() const { return type_; }

  private:
    using Rank = std::tuple<bool, int, std::size_t>;
    std::string asWritten_;
    std::string lowercase_;
    std::optional<std::string> type_;
    Rank rank_;
};

}  // namespace

std::optional<std::string> mimeTypeInGlobs(const std::vector<std::string>& texts,
                                           std::string_view extension) {
    Search search(extension);
    // Types whose patterns in less important files do not count.
    std::set<std::string, std::less<>> replaced;
    for (const std::string& text : texts) {
        std::set<std::string, std::less<>> replacedHere;
        for (std::string_view rest = text; !rest.empty();) {
            const std::optional<Glob> glob = globInLine(takeUpTo(rest, '\n'));
            if (glob && glob->pattern == "__NOGLOBS__") {
                replacedHere.emplace(glob->type);
            } else if (glob && !replaced.contains(glob->type)) {
                search.consider(*glob);
            }
        }
        replaced.merge(replacedHere);
    }
    return search.type();
}

std::optional<std::string> mimeTypeForExtension(std::string_view extension) {
    std::vector<std::string> texts;
    for (const std::string& folder : sharedDataDirectories()) {
        ErrorSlot missing;
        if (std::optional<std::string> text = readFile(joinPath(folder, "mime/globs2"), missing)) {
            texts.push_back(std::move(*text));
        }
    }
    return extension.empty() ? std::nullopt : mimeTypeInGlobs(texts, extension);
}

}  // namespace vornic::platform
