#include "app/cli/DesktopHandOff.h"

#include <cerrno>
#include <cstdio>
#include <string>
#include <vector>

#include <unistd.h>

#include "base/Error.h"
#include "base/PathText.h"
#include "platform/files/FileSystem.h"
#include "platform/settings/Bundle.h"
#include "platform/settings/InstallFolders.h"

namespace vornic {

int runDesktopProgram(char* const* arguments) {
    std::vector<std::string> folders{parentFolder(platform::executablePath())};
    const auto helpers = platform::installFolders(platform::InstallFolder::helpers);
    folders.insert(folders.end(), helpers.begin(), helpers.end());
    for (const std::string& folder : folders) {
        const std::string program = folder + "/vornic-desktop";
        if (platform::fileExists(program)) {
            execv(program.c_str(), arguments);
            const Error error = posixError("The program " + program + " cannot be started", errno);
            static_cast<void>(std::fprintf(stderr, "vornic: %s\n", error.description.c_str()));
            return 1;
        }
    }
    static_cast<void>(
        std::fputs("vornic: The desktop program (vornic-desktop) is not installed.\n"
                   "To convert files without it: vornic -convertxmeml VERSION FILE...\n"
                   "To repair files without it: vornic-repair FILE...\n",
                   stderr));
    return 1;
}

}  // namespace vornic
