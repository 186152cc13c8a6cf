#include "base/TerminalText.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include <unistd.h>

#include "base/FormatString.h"
#include "base/Utf8.h"

namespace vornic {

namespace {

struct CodeRange {
    char32_t first;
    char32_t last;
};

// Control characters; the soft hyphen; marks, embeddings, overrides and isolates of bidirectional
// text; zero-width characters; separators; interlinear annotations; tags; what is no character.
constexpr std::array<CodeRange, 14> kEscaped = {{{0x00, 0x1F},
                                                 {0x7F, 0x9F},
                                                 {0xAD, 0xAD},
                                                 {0x61C, 0x61C},
                                                 {0x180E, 0x180E},
                                                 {0x200B, 0x200F},
                                                 {0x2028, 0x202E},
                                                 {0x2060, 0x206F},
                                                 {0xD800, 0xDFFF},
                                                 {0xFEFF, 0xFEFF},
                                                 {0xFFF9, 0xFFFB},
                                                 {0xFFFE, 0xFFFF},
                                                 {0x1D173, 0x1D17A},
                                                 {0xE0000, 0xE007F}}};

bool isEscaped(char32_t code) {
    return std::any_of(kEscaped.begin(), kEscaped.end(), [code](const CodeRange& range) {
        return code >= range.first && code <= range.last;
    });
}

}  // namespace

std::string escapedForTerminal(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const Utf8Character character = utf8CharacterAt(text, at);
        if (!character.isValid) {
            result += formatString("<0x%02X>", static_cast<unsigned char>(text[at]));
        } else if (isEscaped(character.code)) {
            result += formatString("<U+%04X>", static_cast<std::uint32_t>(character.code));
        } else {
            result += text.substr(at, character.length);
        }
        at += character.length;
    }
    return result;
}

std::string textForStream(std::string_view text, int descriptor) {
    return isatty(descriptor) != 0 ? escapedForTerminal(text) : std::string(text);
}

}  // namespace vornic
