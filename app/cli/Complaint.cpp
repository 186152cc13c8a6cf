#include "app/cli/Complaint.h"

#include <cstdio>
#include <string>

#include <unistd.h>

#include "base/FormatString.h"
#include "base/TerminalText.h"

namespace vornic {

void printErrorLine(std::string_view line) {
    const std::string text = textForStream(line, STDERR_FILENO) + "\n";
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stderr));
}

void complain(std::string_view program, std::string_view text) {
    printErrorLine(formatString("%@: %@", program, text));
}

}  // namespace vornic
