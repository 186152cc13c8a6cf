#include "platform/session/DesktopEntry.h"

#include <algorithm>
#include <utility>

#include "base/PathText.h"
#include "base/PercentEncoding.h"
#include "platform/files/FileSystem.h"
#include "platform/settings/Directories.h"

namespace vornic::platform {
namespace {

constexpr std::string_view kMainGroup = "[Desktop Entry]";

std::string_view withoutBlanks(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Resolves \s, \n, \t, \r and \\, the escapes of every string value; others stay for "Exec".
std::string unescaped(std::string_view value) {
    constexpr std::string_view kLetters = "sntr\\";
    constexpr std::string_view kMeanings = " \n\t\r\\";
    std::string text;
    for (std::size_t index = 0; index < value.size(); ++index) {
        const std::size_t kind = value[index] == '\\' && index + 1 < value.size()
                                     ? kLetters.find(value[index + 1])
                                     : std::string_view::npos;
        text += kind == std::string_view::npos ? value[index] : kMeanings[kind];
        index += kind == std::string_view::npos ? 0 : 1;
    }
    return text;
}

/// What the lines of the main group say, as far as it matters here.
struct Fields {
    std::string type;
    bool isHidden = false;
    DesktopEntry entry;
};

void readField(std::string_view key, std::string_view value, Fields& fields) {
    if (key == "Type") {
        fields.type = value;
    } else if (key == "Hidden") {
        fields.isHidden = value == "true";
    } else if (key == "Name") {
        fields.entry.name = unescaped(value);
    } else if (key == "Icon") {
        fields.entry.icon = unescaped(value);
    } else if (key == "Exec") {
        fields.entry.exec = unescaped(value);
    }
}

// Command lines -----------------------------------------------------------------------------------

/// An argument as it stands in "Exec"; in a quoted one no percent sign has a meaning.
struct Word {
    std::string text;
    bool isQuoted = false;
};

/// Reads from the opening quotation mark to the closing one. @return false when there is none.
bool readQuoted(std::string_view exec, std::size_t& position, Word& word) {
    word.isQuoted = true;
    for (++position; position < exec.size() && exec[position] != '"'; ++position) {
        if (exec[position] == '\\' && position + 1 < exec.size()) {
            ++position;
        }
        word.text += exec[position];
    }
    return position++ < exec.size();
}

/// Cuts "Exec" into its arguments. @return nothing when a quotation mark is never closed.
std::optional<std::vector<Word>> wordsOf(std::string_view exec) {
    std::vector<Word> words;
    std::size_t position = 0;
    while ((position = exec.find_first_not_of(' ', position)) != std::string_view::npos) {
        Word word;
        while (position < exec.size() && exec[position] != ' ') {
            if (exec[position] != '"') {
                word.text += exec[position++];
            } else if (!readQuoted(exec, position, word)) {
                return std::nullopt;
            }
        }
        words.push_back(std::move(word));
    }
    return words;
}

std::vector<std::string> fileURLs(const std::vector<std::string>& files) {
    std::vector<std::string> addresses;
    std::transform(files.begin(), files.end(), std::back_inserter(addresses), fileURL);
    return addresses;
}

/// What an argument that is nothing but a field code stands for, several arguments or none.
std::vector<std::string> listFor(char code, const DesktopEntry& entry,
                                 const std::vector<std::string>& files) {
    switch (code) {
        case 'F':
        case 'f':
            return files;
        case 'U':
        case 'u':
            return fileURLs(files);
        case 'i':
            return entry.icon.empty() ? std::vector<std::string>()
                                      : std::vector<std::string>{"--icon", entry.icon};
        case 'c':
            return {entry.name};
        case 'k':
            return {entry.path};
        case '%':
            return {"%"};
        default:
            return {};
    }
}

/// An argument in which field codes stand among other text.
std::string expanded(std::string_view text, const DesktopEntry& entry,
                     const std::vector<std::string>& files) {
    std::string result;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] != '%' || index + 1 == text.size()) {
            result += text[index];
            continue;
        }
        const char code = text[++index];
        if (code != 'F' && code != 'U' && code != 'i') {
            const std::vector<std::string> values = listFor(code, entry, files);
            result += values.empty() ? std::string() : values.front();
        }
    }
    return result;
}

std::vector<std::string> commandLine(const std::vector<Word>& words, const DesktopEntry& entry,
                                     const std::vector<std::string>& files) {
    std::vector<std::string> command;
    for (const Word& word : words) {
        const bool isCode = !word.isQuoted && word.text.size() == 2 && word.text[0] == '%';
        if (isCode) {
            const std::vector<std::string> values = listFor(word.text[1], entry, files);
            command.insert(command.end(), values.begin(), values.end());
        } else {
            command.push_back(word.isQuoted ? word.text : expanded(word.text, entry, files));
        }
    }
    return command;
}

/// Whether one of the field codes stands in the arguments.
bool hasCode(const std::vector<Word>& words, std::string_view codes) {
    return std::any_of(words.begin(), words.end(), [&](const Word& word) {
        for (std::size_t index = 0; !word.isQuoted && index + 1 < word.text.size(); ++index) {
            if (word.text[index] == '%' && codes.find(word.text[++index]) != codes.npos) {
                return true;
            }
        }
        return false;
    });
}

}  // namespace

std::optional<DesktopEntry> parseDesktopEntry(std::string_view text, const std::string& path) {
    Fields fields;
    fields.entry.path = path;
    bool isInMainGroup = false;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = withoutBlanks(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::size_t equals = line.find('=');
        if (line.starts_with('[')) {
            isInMainGroup = line == kMainGroup;
        } else if (isInMainGroup && !line.starts_with('#') && equals != std::string_view::npos) {
            readField(withoutBlanks(line.substr(0, equals)), withoutBlanks(line.substr(equals + 1)),
                      fields);
        }
    }
    if (fields.type != "Application" || fields.isHidden || fields.entry.exec.empty()) {
        return std::nullopt;
    }
    return fields.entry;
}

std::optional<DesktopEntry> findDesktopEntry(const std::string& identifier) {
    if (!isPlainName(identifier)) {
        return std::nullopt;
    }
    for (const std::string& folder : sharedDataDirectories()) {
        const std::string path =
            joinPath(joinPath(folder, "applications"), identifier + ".desktop");
        ErrorSlot ignored;
        if (const std::optional<std::string> text = readFile(path, ignored)) {
            return parseDesktopEntry(*text, path);
        }
    }
    return std::nullopt;
}

std::vector<std::vector<std::string>> commandLines(const DesktopEntry& entry,
                                                   const std::vector<std::string>& files) {
    std::optional<std::vector<Word>> words = wordsOf(entry.exec);
    if (!words || words->empty()) {
        return {};
    }
    if (!hasCode(*words, "fFuU")) {
        words->push_back({.text = "%F", .isQuoted = false});
    }
    std::vector<std::vector<std::string>> commands;
    if (hasCode(*words, "fu") && files.size() > 1) {
        for (const std::string& file : files) {
            commands.push_back(commandLine(*words, entry, {file}));
        }
    } else {
        commands.push_back(commandLine(*words, entry, files));
    }
    return commands;
}

std::string fileURL(std::string_view path) {
    return "file://" + percentEncoded(path, "/");
}

}  // namespace vornic::platform
