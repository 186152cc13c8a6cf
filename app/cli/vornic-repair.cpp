#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "app/cli/RepairCommand.h"
#include "app/cli/StandardStreams.h"

int main(int argc, char** argv) {
    try {
        return vornic::RepairCommand::run(std::vector<std::string>(argv, argv + argc));
    } catch (const std::bad_alloc&) {
        vornic::complainOfMemory("vornic-repair");
        return EXIT_FAILURE;
    }
}
