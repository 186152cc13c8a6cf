#include <string>
#include <vector>

#include "app/ConvertCommand.h"
#include "app/DesktopHandOff.h"

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv, argv + argc);
    if (!vornic::ConvertCommand::isWanted(arguments)) {
        return vornic::runDesktopProgram(argv);
    }
    return vornic::ConvertCommand::run(arguments);
}
