#include <string>
#include <vector>

#include "app/cli/MediaCommand.h"

int main(int argc, char** argv) {
    return vornic::MediaCommand::run(std::vector<std::string>(argv, argv + argc));
}
