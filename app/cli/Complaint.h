#ifndef VORNIC_APP_CLI_COMPLAINT_H
#define VORNIC_APP_CLI_COMPLAINT_H

#include <string_view>

namespace vornic {

/// Writes a line to standard error with the program's name in front, escaped for a terminal.
void complain(std::string_view program, std::string_view text);

/// Writes a line to standard error, escaped for a terminal.
void printErrorLine(std::string_view line);

}  // namespace vornic

#endif
