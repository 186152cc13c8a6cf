#include "xml/writer/XMLOutput.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace vornic {

namespace {

// The bytes that end a run which is written as it is: those to escape, those to leave out, and NUL.
using StopTable = std::array<bool, 256>;

consteval StopTable stopTable(std::string_view escaped, std::string_view plain) {
    StopTable table{};
    for (std::size_t byte = 0; byte < 0x20; ++byte) {
        table[byte] = true;
    }
    for (const char c : plain) {
        table[static_cast<unsigned char>(c)] = false;
    }
    for (const char c : escaped) {
        table[static_cast<unsigned char>(c)] = true;
    }
    return table;
}

constexpr StopTable kTextStops = stopTable("&<>", "\t\n");
constexpr StopTable kValueStops = stopTable("&<>\"", "");

const char* runEnd(const char* at, const StopTable& stops) {
    while (!stops[static_cast<unsigned char>(*at)]) {
        ++at;
    }
    return at;
}

constexpr std::size_t kBlanksPerLevel = 4;
constexpr std::size_t kDeepestIndentation = 64;
// So many bytes of indentation are always written, and so many for each byte of the rest.
constexpr std::size_t kFreeBlanks = std::size_t{64} << 20U;
constexpr std::size_t kMostBlanksForOthers = 4;

constexpr auto kLineBeginning = [] {
    std::array<char, 1 + kDeepestIndentation * kBlanksPerLevel> text{};
    text.fill(' ');
    text[0] = '\n';
    return text;
}();

}  // namespace

std::string_view XMLOutput::lineBeginning(std::size_t depth, std::size_t unwritten) {
    if (!indents_) {
        return {kLineBeginning.data(), 1};
    }
    const std::size_t blanks = std::min(depth, kDeepestIndentation) * kBlanksPerLevel;
    if (blanks_ + blanks > kFreeBlanks) {
        const std::size_t others = handedOver_ + used_ + unwritten - blanks_;
        if ((blanks_ + blanks) / kMostBlanksForOthers >= others) {
            indents_ = false;
            return {kLineBeginning.data(), 1};
        }
    }
    blanks_ += blanks;
    return {kLineBeginning.data(), 1 + blanks};
}

void XMLOutput::putText(const char* text) {
    for (;;) {
        const char* const end = runEnd(text, kTextStops);
        put(std::string_view(text, static_cast<std::size_t>(end - text)));
        if (*end == '\0') {
            return;
        }
        putEscape(*end);
        text = end + 1;
    }
}

void XMLOutput::putValue(const char* value) {
    for (;;) {
        const char* const end = runEnd(value, kValueStops);
        put(std::string_view(value, static_cast<std::size_t>(end - value)));
        if (*end == '\0') {
            return;
        }
        putEscape(*end);
        value = end + 1;
    }
}

void XMLOutput::putReference(char space) {
    if (space == ' ') {
        put("&#32;");
    } else {
        putEscape(space);
    }
}

void XMLOutput::putEscape(char c) {
    switch (c) {
        case '&':
            put("&amp;");
            break;
        case '<':
            put("&lt;");
            break;
        case '>':
            put("&gt;");
            break;
        case '"':
            put("&quot;");
            break;
        case '\t':
            put("&#9;");
            break;
        case '\n':
            put("&#10;");
            break;
        case '\r':
            put("&#13;");
            break;
        default:
            break;
    }
}

// What would fill the buffer several times is handed over where it stands.
void XMLOutput::putLong(std::string_view piece) {
    const std::size_t part = kSize - used_;
    std::memcpy(buffer_.get() + used_, piece.data(), part);
    used_ = kSize;
    flush();
    for (piece.remove_prefix(part); piece.size() >= kSize; piece.remove_prefix(kSize)) {
        handedOver_ += kSize;
        stopped_ = stopped_ || !sink_(piece.substr(0, kSize));
    }
    std::memcpy(buffer_.get(), piece.data(), piece.size());
    used_ = piece.size();
}

void XMLOutput::flush() {
    if (used_ != 0 && !stopped_) {
        stopped_ = !sink_({buffer_.get(), used_});
    }
    handedOver_ += used_;
    used_ = 0;
}

}  // namespace vornic
