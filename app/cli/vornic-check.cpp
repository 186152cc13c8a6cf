#include <string>
#include <vector>

#include "app/cli/CheckCommand.h"

int main(int argc, char** argv) {
    return vornic::CheckCommand::run(std::vector<std::string>(argv, argv + argc));
}
