#ifndef VORNIC_APP_CLI_MEDIA_COMMAND_H
#define VORNIC_APP_CLI_MEDIA_COMMAND_H

#include <string>
#include <vector>

namespace vornic {

/// The media of project files: `vornic-media list|missing|relink [options] [--] FILE|FOLDER...`.
class MediaCommand {
  public:
    /// Main thread.
    /// @param arguments the program's path first.
    /// @return 0 when there is nothing to say, 1 when something is missing or left, 2 for wrong
    /// usage, 3
    ///     when a file could not be read to its end or the report not be written, 128 and the
    ///     number of a signal that asked the program to end.
    static int run(const std::vector<std::string>& arguments);
};

}  // namespace vornic

#endif
