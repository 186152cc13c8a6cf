#include "job/JournalText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <ctime>
#include <map>
#include <optional>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "base/PercentEncoding.h"

namespace vornic {
namespace {

constexpr std::pair<JournalEntry::Action, std::string_view> kActions[] = {
    {JournalEntry::Action::repair, "repair"}, {JournalEntry::Action::mend, "mend"},
    {JournalEntry::Action::relink, "relink"}, {JournalEntry::Action::convert, "convert"},
    {JournalEntry::Action::undo, "undo"},
};

std::optional<JournalEntry::Action> actionNamed(std::string_view name) {
    for (const auto& [action, itsName] : kActions) {
        if (itsName == name) {
            return action;
        }
    }
    return std::nullopt;
}

std::string nameOf(JournalEntry::Action action) {
    for (const auto& [known, name] : kActions) {
        if (known == action) {
            return std::string(name);
        }
    }
    return "";
}

constexpr int kHexadecimal = 16;
constexpr std::size_t kWordDigits = 16;
constexpr std::string_view kBegin = "begin";
constexpr std::string_view kEnd = "end";

using Fields = std::map<std::string, std::string, std::less<>>;

std::string hexadecimal(std::uint64_t value) {
    std::array<char, kWordDigits> digits{};
    const auto [end, error] =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, kHexadecimal);
    static_cast<void>(error);  // sixteen digits always suffice
    const std::string text(digits.data(), end);
    return std::string(kWordDigits - text.size(), '0') + text;
}

template <typename Number>
std::optional<Number> number(std::string_view text, int base) {
    Number value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(value)
                                                                    : std::nullopt;
}

std::string dateText(std::int64_t date) {
    const auto time = static_cast<std::time_t>(date);
    struct tm parts {};
    std::array<char, 32> text{};
    gmtime_r(&time, &parts);
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

std::optional<std::int64_t> dateFrom(const std::string& text) {
    struct tm parts {};
    const char* end = strptime(text.c_str(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    return end != nullptr && *end == '\0' ? std::optional<std::int64_t>(timegm(&parts))
                                          : std::nullopt;
}

/// Splits at a character, which stands between the parts alone.
std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = std::min(text.find(separator, at), text.size());
        parts.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return parts;
}

/// "link:66306:1234:5000:<64 digits>", or "file:…".
std::string fileText(const JournalFile& file) {
    std::string text = file.isLink ? "link" : "file";
    for (const std::uint64_t value : {file.identity.device, file.identity.inode, file.size}) {
        text += ":" + std::to_string(value);
    }
    text += ":";
    for (const std::uint64_t word : file.digest) {
        text += hexadecimal(word);
    }
    return text;
}

std::optional<JournalFile> fileFrom(std::string_view text) {
    constexpr std::size_t kParts = 5;
    const std::vector<std::string_view> parts = split(text, ':');
    JournalFile file;
    if (parts.size() != kParts || parts[4].size() != kWordDigits * file.digest.size() ||
        (parts[0] != "link" && parts[0] != "file")) {
        return std::nullopt;
    }
    file.isLink = parts[0] == "link";
    const auto device = number<std::uint64_t>(parts[1], 10);
    const auto inode = number<std::uint64_t>(parts[2], 10);
    const auto size = number<std::uint64_t>(parts[3], 10);
    for (std::size_t word = 0; word < file.digest.size(); ++word) {
        const auto value =
            number<std::uint64_t>(parts[4].substr(word * kWordDigits, kWordDigits), kHexadecimal);
        if (!value) {
            return std::nullopt;
        }
        file.digest[word] = *value;
    }
    if (!device || !inode || !size) {
        return std::nullopt;
    }
    file.identity = {.device = *device, .inode = *inode};
    file.size = *size;
    return file;
}

std::string field(std::string_view name, std::string_view value) {
    return " " + std::string(name) + "=" + platform::percentEncoded(value, "/:");
}

std::string linkField(std::string_view name, const JournalFile& file) {
    return file.linkText.empty() ? "" : field(name, file.linkText);
}

std::optional<Fields> fieldsFrom(const std::vector<std::string_view>& words) {
    Fields fields;
    for (std::size_t index = 2; index < words.size(); ++index) {
        const std::size_t equals = words[index].find('=');
        if (equals == std::string_view::npos) {
            fields.emplace(words[index], "");
            continue;
        }
        std::optional<std::string> value =
            platform::percentDecoded(words[index].substr(equals + 1));
        if (!value) {
            return std::nullopt;
        }
        fields.emplace(words[index].substr(0, equals), std::move(*value));
    }
    return fields;
}

std::string valueOf(const Fields& fields, std::string_view name) {
    const auto found = fields.find(name);
    return found == fields.end() ? "" : found->second;
}

std::optional<JournalEntry> entryFrom(std::uint64_t id, const Fields& fields) {
    JournalEntry entry;
    const std::optional<std::int64_t> date = dateFrom(valueOf(fields, "date"));
    const std::optional<JournalFile> before = fileFrom(valueOf(fields, "before"));
    const std::optional<JournalFile> after = fileFrom(valueOf(fields, "after"));
    const std::string action = valueOf(fields, "action");
    entry.file = valueOf(fields, "file");
    if (!date || !before || !after || entry.file.empty() || !actionNamed(action)) {
        return std::nullopt;
    }
    entry.id = id;
    entry.date = *date;
    entry.program = valueOf(fields, "program");
    entry.version = valueOf(fields, "version");
    entry.action = *actionNamed(action);
    entry.workingCopy = valueOf(fields, "copy");
    entry.before = *before;
    entry.before.linkText = valueOf(fields, "beforelink");
    entry.after = *after;
    entry.after.linkText = valueOf(fields, "afterlink");
    entry.undoes = number<std::uint64_t>(valueOf(fields, "undoes"), kHexadecimal).value_or(0);
    return entry;
}

/// The entries of a text that is read from its beginning to its end.
class Parser {
  public:
    void takeLine(std::string_view line, std::size_t begin) {
        const std::vector<std::string_view> words = split(line, ' ');
        const auto id = words.size() > 2 ? number<std::uint64_t>(words[1], kHexadecimal)
                                         : std::optional<std::uint64_t>();
        const std::optional<Fields> fields = id ? fieldsFrom(words) : std::nullopt;
        if (!fields || *id == 0) {
            return;
        }
        if (words[0] == kBegin) {
            if (std::optional<JournalEntry> entry = entryFrom(*id, *fields)) {
                open_.insert_or_assign(*id, Place{.index = entries_.size(), .begin = begin});
                entries_.push_back(std::move(*entry));
            }
        } else if (words[0] == kEnd) {
            takeEnd(*id, *fields);
        }
    }
    JournalContents finish(std::size_t end) && {
        std::size_t settled = end;
        for (const auto& [id, place] : open_) {
            settled = std::min(settled, place.begin);
        }
        return {.entries = std::move(entries_), .settled = settled};
    }

  private:
    struct Place {
        std::size_t index = 0;
        std::size_t begin = 0;
    };

    // A line that tells neither end is a damaged one: what it was to tell, the files themselves do.
    void takeEnd(std::uint64_t id, const Fields& fields) {
        const auto found = open_.find(id);
        const bool isDone = fields.contains("done");
        if (found == open_.end() || isDone == fields.contains("back")) {
            return;
        }
        JournalEntry& entry = entries_[found->second.index];
        entry.state = isDone ? JournalEntry::State::done : JournalEntry::State::takenBack;
        entry.original = isDone ? valueOf(fields, "original") : "";
        open_.erase(found);
    }

    std::vector<JournalEntry> entries_;
    // The entries without an end.
    std::unordered_map<std::uint64_t, Place> open_;
};

}  // namespace

std::string beginLine(const JournalEntry& entry) {
    std::string line = std::string(kBegin) + " " + hexadecimal(entry.id);
    line += field("date", dateText(entry.date));
    line += field("program", entry.program);
    line += field("version", entry.version);
    line += field("action", nameOf(entry.action));
    line += field("file", entry.file);
    line += field("copy", entry.workingCopy);
    line += field("before", fileText(entry.before));
    line += field("after", fileText(entry.after));
    line += linkField("beforelink", entry.before) + linkField("afterlink", entry.after);
    if (entry.undoes != 0) {
        line += field("undoes", hexadecimal(entry.undoes));
    }
    return line + "\n";
}

std::string endLine(const JournalEntry& entry) {
    const bool isDone = entry.state == JournalEntry::State::done;
    return std::string(kEnd) + " " + hexadecimal(entry.id) +
           (isDone ? " done" + field("original", entry.original) : " back") + "\n";
}

JournalContents parseJournal(std::string_view text) {
    Parser parser;
    std::size_t begin = 0;
    for (std::size_t end = text.find('\n'); end != std::string_view::npos;
         end = text.find('\n', begin)) {
        parser.takeLine(text.substr(begin, end - begin), begin);
        begin = end + 1;
    }
    return std::move(parser).finish(begin);
}

}  // namespace vornic
