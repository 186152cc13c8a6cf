#include "check/URLMend.h"

#include <algorithm>
#include <string>

namespace vornic {

namespace {

bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

std::string escaped(std::string_view url, char quote) {
    std::string text;
    for (const char c : url) {
        if (c == '&') {
            text += "&amp;";
        } else if (c == '<') {
            text += "&lt;";
        } else if (c == quote) {
            text += c == '"' ? "&quot;" : "&apos;";
        } else {
            text += c;
        }
    }
    return text;
}

}  // namespace

Edit urlEdit(std::string_view text, TextSpan place, std::string_view url) {
    const char before = place.offset == 0 ? '\0' : text[place.offset - 1];
    const std::string wanted = escaped(url, before == '"' || before == '\'' ? before : '\0');
    const std::string_view raw = place.of(text);
    const std::size_t shorter = std::min(raw.size(), wanted.size());
    std::size_t start = 0;
    while (start < shorter && raw[start] == wanted[start]) {
        ++start;
    }
    while (start > 0 && start < raw.size() && continuesCharacter(raw[start])) {
        --start;
    }
    std::size_t end = 0;
    while (end < shorter - start && raw[raw.size() - 1 - end] == wanted[wanted.size() - 1 - end]) {
        ++end;
    }
    while (end > 0 && continuesCharacter(raw[raw.size() - end])) {
        --end;
    }
    return {place.offset + start, raw.size() - start - end,
            wanted.substr(start, wanted.size() - start - end)};
}

}  // namespace vornic
