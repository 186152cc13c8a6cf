#include "app/window/SourceText.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <utility>

#include "app/window/MarkupState.h"
#include "base/ASCII.h"

namespace vornic {

namespace {

constexpr unsigned kStateShift = 56;
// The longest reference that gets a colour of its own.
constexpr std::size_t kLongestReference = 12;

bool beginsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

// The bytes that end a line or what a place is inside of; most of a file are others.
constexpr auto kMayMatter = [] {
    std::array<bool, 256> matters{};
    for (const char byte : {'<', '>', '"', '\'', ' ', '\t', '\n', '\r', '[', ']'}) {
        matters[static_cast<unsigned char>(byte)] = true;
    }
    return matters;
}();

SourceText::Kind kindOf(MarkupState state) {
    switch (state) {
        case MarkupState::tagName:
            return SourceText::Kind::tag;
        case MarkupState::tag:
            return SourceText::Kind::attributeName;
        case MarkupState::doubleQuoted:
        case MarkupState::singleQuoted:
            return SourceText::Kind::attributeValue;
        case MarkupState::comment:
            return SourceText::Kind::comment;
        case MarkupState::cdata:
            return SourceText::Kind::cdata;
        case MarkupState::instruction:
            return SourceText::Kind::instruction;
        case MarkupState::declaration:
        case MarkupState::subset:
            return SourceText::Kind::declaration;
        case MarkupState::text:
            break;
    }
    return SourceText::Kind::text;
}

// What a byte itself is: the signs that begin and end something belong to it.
SourceText::Kind kindOfByte(char byte, MarkupState before, MarkupState behind) {
    if (before == MarkupState::text) {
        return kindOf(behind);
    }
    const bool endsTag = before == MarkupState::tag && (byte == '>' || byte == '/');
    if (endsTag || behind == MarkupState::tagName) {
        return SourceText::Kind::tag;
    }
    const bool beginsValue =
        behind == MarkupState::doubleQuoted || behind == MarkupState::singleQuoted;
    return kindOf(beginsValue ? behind : before);
}

// The length of a reference such as "&amp;" at an offset, or 0.
std::size_t referenceAt(std::string_view row, std::size_t at) {
    const std::size_t end = row.find(';', at);
    if (row[at] != '&' || end == std::string_view::npos || end - at >= kLongestReference) {
        return 0;
    }
    const std::string_view name = row.substr(at + 1, end - at - 1);
    const bool isName = !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
        return c == '#' || isDigit(c) || isLetter(c);
    });
    return isName ? end - at + 1 : 0;
}

void add(std::vector<SourceText::Piece>& pieces, std::size_t at, std::size_t length,
         SourceText::Kind kind) {
    if (!pieces.empty() && pieces.back().kind == kind) {
        pieces.back().length += length;
    } else {
        pieces.push_back({at, length, kind});
    }
}

char lowered(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isSameLetter(char left, char right) {
    return lowered(left) == lowered(right);
}

}  // namespace

std::shared_ptr<const SourceText> SourceText::of(std::string bytes) {
    ErrorSlot error;
    std::optional<DecodedText> decoded = decodeXMLText(bytes, error);
    const bool isDecoded = decoded.has_value();
    DecodedText source =
        isDecoded ? std::move(*decoded) : DecodedText{std::move(bytes), TextDecoding()};
    return std::shared_ptr<const SourceText>(new SourceText(std::move(source), isDecoded));
}

SourceText::SourceText(DecodedText source, bool isDecoded)
    : source_(std::move(source)), isDecoded_(isDecoded) {
    findRows();
}

void SourceText::findRows() {
    const std::string_view text = source_.text;
    MarkupState state = MarkupState::text;
    rows_.push_back(0);
    std::size_t rowStart = 0;
    const auto begin = [&](std::size_t offset) {
        rows_.push_back(offset | (std::uint64_t{static_cast<std::uint8_t>(state)} << kStateShift));
        rowStart = offset;
    };
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char byte = text[at];
        if (!kMayMatter[static_cast<unsigned char>(byte)] && at - rowStart < kLongestRow) {
            continue;
        }
        if (at - rowStart >= kLongestRow && beginsCharacter(byte) && byte != '\n' && byte != '\r') {
            continued_.push_back(rows_.size());
            begin(at);
        }
        state = stateBehind(text, at, state);
        const bool endsLine =
            byte == '\n' || (byte == '\r' && (at + 1 == text.size() || text[at + 1] != '\n'));
        if (endsLine) {
            begin(at + 1);
        }
    }
}

std::size_t SourceText::endOf(std::size_t row) const {
    return row + 1 < rows_.size() ? offsetOf(row + 1) : source_.text.size();
}

std::string_view SourceText::row(std::size_t row) const {
    std::string_view bytes = text().substr(offsetOf(row), endOf(row) - offsetOf(row));
    if (row + 1 == rows_.size() || beginsLine(row + 1)) {
        if (bytes.ends_with('\n')) {
            bytes.remove_suffix(1);
        }
        if (bytes.ends_with('\r')) {
            bytes.remove_suffix(1);
        }
    }
    return bytes;
}

std::size_t SourceText::lineOf(std::size_t row) const {
    const auto end = std::upper_bound(continued_.begin(), continued_.end(), row);
    return row + 1 - static_cast<std::size_t>(end - continued_.begin());
}

bool SourceText::beginsLine(std::size_t row) const {
    return !std::binary_search(continued_.begin(), continued_.end(), row);
}

std::size_t SourceText::rowOfLine(std::size_t line) const {
    if (line > lineCount()) {
        return rows_.size() - 1;
    }
    std::size_t low = 0;
    std::size_t high = rows_.size();
    // The first row whose line is not before the wanted one.
    while (low < high) {
        const std::size_t middle = low + (high - low) / 2;
        if (lineOf(middle) < line) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return std::min(low, rows_.size() - 1);
}

std::size_t SourceText::rowAt(std::size_t offset) const {
    const auto next = std::upper_bound(
        rows_.begin(), rows_.end(), offset,
        [](std::size_t wanted, std::uint64_t row) { return wanted < (row & kOffset); });
    return static_cast<std::size_t>(next - rows_.begin()) - 1;
}

std::string_view SourceText::line(std::size_t line) const {
    const std::size_t first = rowOfLine(line);
    std::size_t last = first;
    while (last + 1 < rows_.size() && !beginsLine(last + 1)) {
        ++last;
    }
    const std::string_view end = row(last);
    return text().substr(offsetOf(first), offsetOf(last) + end.size() - offsetOf(first));
}

std::vector<SourceText::Piece> SourceText::piecesOf(std::size_t row) const {
    std::vector<Piece> pieces;
    const std::string_view bytes = this->row(row);
    const std::size_t start = offsetOf(row);
    auto state = static_cast<MarkupState>(rows_[row] >> kStateShift);
    for (std::size_t at = 0; at < bytes.size();) {
        const bool mayRefer = state == MarkupState::text || state == MarkupState::doubleQuoted ||
                              state == MarkupState::singleQuoted;
        if (const std::size_t length = mayRefer ? referenceAt(bytes, at) : 0; length != 0) {
            add(pieces, at, length, Kind::reference);
            at += length;
            continue;
        }
        const MarkupState behind = stateBehind(text(), start + at, state);
        add(pieces, at, 1, kindOfByte(bytes[at], state, behind));
        state = behind;
        ++at;
    }
    return pieces;
}

std::size_t SourceText::find(std::string_view wanted, std::size_t from) const {
    const std::string_view text = source_.text;
    if (wanted.empty() || from > text.size()) {
        return std::string_view::npos;
    }
    const auto found = std::search(text.begin() + static_cast<std::ptrdiff_t>(from), text.end(),
                                   wanted.begin(), wanted.end(), isSameLetter);
    return found == text.end() ? std::string_view::npos
                               : static_cast<std::size_t>(found - text.begin());
}

std::size_t SourceText::findBefore(std::string_view wanted, std::size_t before) const {
    const std::string_view text = source_.text;
    if (wanted.empty()) {
        return std::string_view::npos;
    }
    const std::size_t end = std::min(text.size(), before + wanted.size() - (before > 0 ? 1 : 0));
    const auto part = text.substr(0, before == 0 ? 0 : end);
    const auto found =
        std::find_end(part.begin(), part.end(), wanted.begin(), wanted.end(), isSameLetter);
    return found == part.end() ? std::string_view::npos
                               : static_cast<std::size_t>(found - part.begin());
}

}  // namespace vornic
