#include <cstdlib>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "app/cli/ConvertCommand.h"
#include "app/cli/DesktopHandOff.h"
#include "app/cli/StandardStreams.h"
#include "app/cli/WindowHelp.h"

int main(int argc, char** argv) {
    try {
        const std::vector<std::string> arguments(argv, argv + argc);
        if (vornic::ConvertCommand::isWanted(arguments)) {
            return vornic::ConvertCommand::run(arguments);
        }
        const std::optional<int> answer = vornic::answerWithoutWindow(arguments, "vornic");
        return answer ? *answer : vornic::runDesktopProgram(argv);
    } catch (const std::bad_alloc&) {
        vornic::complainOfMemory("vornic");
        return EXIT_FAILURE;
    }
}
