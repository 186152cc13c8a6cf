#include "mend/UnifiedDifference.h"

#include <algorithm>
#include <vector>

#include "base/FormatString.h"

namespace vornic {

namespace {

constexpr std::size_t kContext = 3;

// A part of the text from the beginning of a line to the end of one, and what becomes of it.
struct Change {
    std::size_t start = 0;
    std::size_t end = 0;
    std::string replacement;
};

// A text that is read forward, line by line.
class Lines {
  public:
    explicit Lines(std::string_view text) : text_(text) {}

    [[nodiscard]] std::size_t beginOfLine(std::size_t offset) const {
        const std::size_t end =
            offset == 0 ? std::string_view::npos : text_.rfind('\n', offset - 1);
        return end == std::string_view::npos ? 0 : end + 1;
    }
    // Behind the line's end.
    [[nodiscard]] std::size_t endOfLine(std::size_t offset) const {
        const std::size_t end = text_.find('\n', offset);
        return end == std::string_view::npos ? text_.size() : end + 1;
    }
    [[nodiscard]] static std::size_t count(std::string_view text) {
        const auto ends = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
        return ends + (text.empty() || text.back() == '\n' ? 0 : 1);
    }
    [[nodiscard]] std::string_view between(std::size_t start, std::size_t end) const {
        return text_.substr(start, end - start);
    }
    // The beginning of the line that is `count` lines above, or of the text.
    [[nodiscard]] std::size_t above(std::size_t lineStart, std::size_t count) const {
        for (; count != 0 && lineStart != 0; --count) {
            lineStart = beginOfLine(lineStart - 1);
        }
        return lineStart;
    }
    // The end of the line that is `count` lines below, or of the text.
    [[nodiscard]] std::size_t below(std::size_t lineEnd, std::size_t count) const {
        for (; count != 0 && lineEnd != text_.size(); --count) {
            lineEnd = endOfLine(lineEnd);
        }
        return lineEnd;
    }

  private:
    std::string_view text_;
};

// The edits as changes of whole lines; those that share a line are one.
std::vector<Change> lineChanges(std::string_view text, const EditList& edits) {
    const Lines lines(text);
    std::vector<Change> changes;
    std::size_t copied = 0;
    const auto finish = [&] {
        if (!changes.empty()) {
            changes.back().replacement += text.substr(copied, changes.back().end - copied);
        }
    };
    for (const Edit& edit : edits) {
        if (changes.empty() || edit.offset >= changes.back().end) {
            finish();
            changes.push_back({lines.beginOfLine(edit.offset), 0, ""});
            copied = changes.back().start;
        }
        Change& change = changes.back();
        change.replacement += text.substr(copied, edit.offset - copied);
        change.replacement += edit.text;
        copied = edit.offset + edit.length;
        const bool isAtLine = copied == 0 || text[copied - 1] == '\n';
        // A line that loses its end is joined with the next one.
        const bool keepsEnd =
            isAtLine && (change.replacement.empty() || change.replacement.ends_with('\n'));
        change.end = std::max(change.end, keepsEnd ? copied : lines.endOfLine(copied));
    }
    finish();
    return changes;
}

// Writes hunks one after the other.
class Writer {
  public:
    Writer(std::string_view text, std::string& output)
        : text_(text), lines_(text), output_(output) {}

    void hunk(const std::vector<Change>& changes, std::size_t first, std::size_t last) {
        const std::size_t start = lines_.above(changes[first].start, kContext);
        const std::size_t end = lines_.below(changes[last - 1].end, kContext);
        oldLine_ += Lines::count(lines_.between(counted_, start));
        counted_ = start;
        std::string body;
        std::size_t at = start;
        const std::size_t oldCount = Lines::count(lines_.between(start, end));
        std::size_t newCount = oldCount;
        for (std::size_t index = first; index < last; ++index) {
            const Change& change = changes[index];
            append(body, ' ', lines_.between(at, change.start));
            append(body, '-', lines_.between(change.start, change.end));
            append(body, '+', change.replacement);
            newCount += Lines::count(change.replacement);
            newCount -= Lines::count(lines_.between(change.start, change.end));
            at = change.end;
        }
        append(body, ' ', lines_.between(at, end));
        output_ += formatString("@@ -%@ +%@ @@\n", range(oldLine_, oldCount),
                                range(oldLine_ + added_, newCount));
        output_ += body;
        added_ += newCount - oldCount;
    }

  private:
    // An empty range stands behind the line that it names.
    static std::string range(std::size_t linesBefore, std::size_t count) {
        return formatString("%zu,%zu", count == 0 ? linesBefore : linesBefore + 1, count);
    }

    static void append(std::string& body, char sign, std::string_view lines) {
        while (!lines.empty()) {
            const std::size_t end = std::min(lines.find('\n'), lines.size() - 1) + 1;
            body += sign;
            body += lines.substr(0, end);
            lines.remove_prefix(end);
        }
        if (body.empty() || body.back() != '\n') {
            body += body.empty() ? "" : "\n\\ No newline at end of file\n";
        }
    }

    std::string_view text_;
    Lines lines_;
    std::string& output_;
    // Lines before `counted_`, and how many the new text has more up to there; wraps around.
    std::size_t oldLine_ = 0;
    std::size_t counted_ = 0;
    std::size_t added_ = 0;
};

// A name as `diff -u` writes it: programs end one at the first blank unless a tab comes behind it,
// and take one in quotes for a string of C.
std::string headerName(std::string_view name) {
    constexpr unsigned char kFirstPrintable = 0x20;
    constexpr unsigned char kDelete = 0x7F;
    const auto isControl = [](char byte) {
        const auto code = static_cast<unsigned char>(byte);
        return code < kFirstPrintable || code == kDelete;
    };
    if (name.find('"') == std::string_view::npos &&
        std::none_of(name.begin(), name.end(), isControl)) {
        return std::string(name) + (name.find(' ') == std::string_view::npos ? "" : "\t");
    }
    std::string quoted = "\"";
    for (const char byte : name) {
        if (isControl(byte)) {
            quoted += formatString("\\%03o", static_cast<unsigned char>(byte));
        } else {
            quoted += byte == '"' || byte == '\\' ? "\\" : "";
            quoted += byte;
        }
    }
    return quoted + "\"";
}

}  // namespace

std::string unifiedDifference(std::string_view text, const EditList& edits,
                              std::string_view oldName, std::string_view newName) {
    std::vector<Change> changes = lineChanges(text, edits);
    const Lines lines(text);
    std::erase_if(changes, [&](const Change& change) {
        return lines.between(change.start, change.end) == change.replacement;
    });
    if (changes.empty()) {
        return "";
    }
    std::string output = formatString("--- %@\n+++ %@\n", headerName(oldName), headerName(newName));
    Writer writer(text, output);
    for (std::size_t first = 0; first < changes.size();) {
        std::size_t last = first + 1;
        while (last < changes.size() &&
               lines.below(changes[last - 1].end, 2 * kContext) >= changes[last].start) {
            ++last;
        }
        writer.hunk(changes, first, last);
        first = last;
    }
    return output;
}

}  // namespace vornic
