#include <algorithm>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "app/cli/ExitStatus.h"
#include "app/cli/RepairCommand.h"
#include "app/cli/StandardStreams.h"

namespace {

// Without memory for anything: neither salvaging nor taking back has begun then, and both say so by
// their own status.
int statusWithoutMemory(int argc, char** argv) {
    const bool isRepair = std::none_of(argv, argv + argc, [](std::string_view argument) {
        return argument == "--salvage" || argument == "--undo";
    });
    return isRepair ? vornic::kSomethingToSay : vornic::kNotDone;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return vornic::RepairCommand::run(std::vector<std::string>(argv, argv + argc));
    } catch (const std::bad_alloc&) {
        vornic::complainOfMemory("vornic-repair");
        return statusWithoutMemory(argc, argv);
    }
}
