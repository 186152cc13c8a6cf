#include "xml/XMLOutput.h"

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

}  // namespace

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

void XMLOutput::putInParts(std::string_view piece) {
    while (piece.size() > kSize - used_) {
        const std::size_t part = kSize - used_;
        std::memcpy(buffer_.data() + used_, piece.data(), part);
        used_ += part;
        piece.remove_prefix(part);
        flush();
    }
    std::memcpy(buffer_.data() + used_, piece.data(), piece.size());
    used_ += piece.size();
}

void XMLOutput::flush() {
    if (used_ != 0 && !stopped_) {
        stopped_ = !sink_({buffer_.data(), used_});
    }
    used_ = 0;
}

}  // namespace vornic
