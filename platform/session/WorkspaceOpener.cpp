#include "platform/session/WorkspaceOpener.h"

#include <utility>

#include "base/Replaceable.h"
#include "platform/session/LinuxWorkspaceOpener.h"

namespace vornic::platform {
namespace {

Replaceable<std::shared_ptr<WorkspaceOpener>>& chosenOpener() {
    static Replaceable<std::shared_ptr<WorkspaceOpener>> chosen;
    return chosen;
}

}  // namespace

std::shared_ptr<WorkspaceOpener> WorkspaceOpener::shared() {
    std::shared_ptr<WorkspaceOpener> chosen = chosenOpener().value();
    return chosen ? chosen : std::make_shared<LinuxWorkspaceOpener>();
}

void WorkspaceOpener::setShared(std::shared_ptr<WorkspaceOpener> opener) {
    chosenOpener().set(std::move(opener));
}

}  // namespace vornic::platform
