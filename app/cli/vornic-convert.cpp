#include <string>
#include <vector>

#include "app/cli/ConversionCommand.h"

int main(int argc, char** argv) {
    return vornic::ConversionCommand::run(std::vector<std::string>(argv, argv + argc));
}
