#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "app/cli/ConvertCommand.h"
#include "app/cli/DesktopHandOff.h"
#include "app/cli/StandardStreams.h"

int main(int argc, char** argv) {
    try {
        const std::vector<std::string> arguments(argv, argv + argc);
        if (!vornic::ConvertCommand::isWanted(arguments)) {
            return vornic::runDesktopProgram(argv);
        }
        return vornic::ConvertCommand::run(arguments);
    } catch (const std::bad_alloc&) {
        vornic::complainOfMemory("vornic");
        return EXIT_FAILURE;
    }
}
