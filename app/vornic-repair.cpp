#include <string>
#include <vector>

#include "app/RepairCommand.h"

int main(int argc, char** argv) {
    return vornic::RepairCommand::run(std::vector<std::string>(argv, argv + argc));
}
