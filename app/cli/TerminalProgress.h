#ifndef VORNIC_APP_CLI_TERMINAL_PROGRESS_H
#define VORNIC_APP_CLI_TERMINAL_PROGRESS_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "app/cli/TerminalBar.h"
#include "repair/document/Document.h"

namespace vornic {

/// Draws a document's progress as a bar in the last line of the terminal on standard error, and
/// takes it away before a line of text is written. Does nothing when standard error is no terminal.
class TerminalProgress {
  public:
    explicit TerminalProgress(const std::shared_ptr<const Document>& document);

    /// Writes a line to standard output with no bar in its way, and where that is a terminal with
    /// control characters written out. Any thread.
    void printLine(std::string_view line);

    /// The bar for a value of a maximum (0: indeterminate), without the control characters that put
    /// it in place.
    [[nodiscard]] static std::string bar(std::int64_t value, std::int64_t maximum);

  private:
    // Whoever reads along (a terminal, a pipe) sees each line at once; a file is written in blocks.
    bool stdoutIsFile_;
    bool stdoutIsTerminal_;
    TerminalBar bar_;
};

}  // namespace vornic

#endif
