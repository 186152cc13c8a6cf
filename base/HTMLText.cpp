#include "base/HTMLText.h"

#include "base/TerminalText.h"

namespace vornic {

std::string escapedForHTML(std::string_view text) {
    std::string escaped;
    for (const char byte : escapedForTerminal(text)) {
        switch (byte) {
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '&':
                escaped += "&amp;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                escaped += byte;
                break;
        }
    }
    return escaped;
}

}  // namespace vornic
