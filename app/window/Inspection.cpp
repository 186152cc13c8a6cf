#include "app/window/Inspection.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "base/FormatString.h"
#include "base/PathText.h"
#include "check/Check.h"
#include "platform/files/FileSystem.h"
#include "xml/text/XMLCharacters.h"

namespace vornic {

namespace {

constexpr unsigned char kFirstBeyondASCII = 0x80;

InspectedFile inspectFile(const std::string& path,
                          const std::function<void(std::shared_ptr<const SourceText>)>& read) {
    InspectedFile file;
    file.path = path;
    std::optional<std::string> bytes = platform::readFile(path, file.error);
    if (!bytes) {
        return file;
    }
    file.digest = platform::ContentDigest::of(*bytes);
    file.source = SourceText::of(*bytes);
    if (read) {
        read(file.source);
    }
    CheckOptions options;
    options.mostOfARule = kMostListedOfARule;
    options.fileName = lastComponent(path);
    file.report = checkFile(*bytes, options);
    file.report.path = path;
    return file;
}

// Calls for each character beyond ASCII; a byte that is no UTF-8 counts as U+FFFD.
template <typename Take>
void forEachBeyondASCII(std::string_view text, Take take) {
    for (std::size_t at = 0; at < text.size();) {
        if (static_cast<unsigned char>(text[at]) < kFirstBeyondASCII) {
            ++at;
            continue;
        }
        const xmlchars::Decoded decoded =
            xmlchars::decode(text.data() + at, text.data() + text.size());
        constexpr char32_t kReplacement = 0xFFFD;
        take(decoded.length == 0 ? kReplacement : decoded.character, at);
        at += std::max<std::size_t>(decoded.length, 1);
    }
}

bool tellsName(std::string_view line) {
    return line.find("name>") != std::string_view::npos ||
           line.find(" name=") != std::string_view::npos ||
           line.find("title>") != std::string_view::npos;
}

}  // namespace

RemovedCharacters removedCharacters(const SourceText& original, const SourceText& file) {
    std::unordered_map<char32_t, std::int64_t> balance;
    forEachBeyondASCII(original.text(), [&](char32_t it, std::size_t) { ++balance[it]; });
    if (balance.empty()) {
        return {};
    }
    forEachBeyondASCII(file.text(), [&](char32_t it, std::size_t) { --balance[it]; });
    RemovedCharacters removed;
    for (const auto& [character, count] : balance) {
        if (count > 0 && (!original.isDecoded() || xmlchars::isAllowed(character))) {
            removed.count += static_cast<std::uint64_t>(count);
        }
    }
    if (removed.count == 0) {
        return removed;
    }
    std::set<std::string_view> lines;
    removed.areNames = true;
    forEachBeyondASCII(original.text(), [&](char32_t it, std::size_t at) {
        if (balance[it] <= 0) {
            return;
        }
        const std::size_t number = original.lineOf(original.rowAt(at));
        removed.firstLine = removed.firstLine == 0 ? number : removed.firstLine;
        const std::string_view line = original.line(number);
        lines.insert(line);
        removed.areNames = removed.areNames && tellsName(line);
    });
    removed.lines = lines.size();
    return removed;
}

std::vector<std::string_view> linesOf(const SourceText& source) {
    std::vector<std::string_view> lines;
    lines.reserve(source.lineCount());
    for (std::size_t row = 0; row < source.rowCount();) {
        const std::size_t first = row;
        while (row + 1 < source.rowCount() && !source.beginsLine(row + 1)) {
            ++row;
        }
        const std::size_t start = source.offsetOf(first);
        const std::size_t end = source.offsetOf(row) + source.row(row).size();
        lines.push_back(source.text().substr(start, end - start));
        ++row;
    }
    return lines;
}

std::shared_ptr<const Inspection> inspect(
    const std::string& path, const std::string& original,
    const std::function<void(std::shared_ptr<const SourceText>)>& read) {
    auto inspection = std::make_shared<Inspection>();
    inspection->file = inspectFile(path, read);
    if (original.empty() || original == path) {
        return inspection;
    }
    InspectedFile before = inspectFile(original, {});
    if (!before.isRead() || !inspection->file.isRead()) {
        return inspection;
    }
    inspection->changes =
        lineDifference(linesOf(*before.source), linesOf(*inspection->file.source), true);
    inspection->removed = removedCharacters(*before.source, *inspection->file.source);
    inspection->original = std::move(before);
    return inspection;
}

}  // namespace vornic
