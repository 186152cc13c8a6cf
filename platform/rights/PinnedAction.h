#ifndef VORNIC_PLATFORM_RIGHTS_PINNED_ACTION_H
#define VORNIC_PLATFORM_RIGHTS_PINNED_ACTION_H

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/rights/PinnedRun.h"

namespace vornic::platform {

/// Runs a tool to its end. The folders are its descriptors from 3 on.
/// @return whether it ended with status 0.
using ToolRunner =
    std::function<bool(const std::string& tool, const std::vector<std::string>& arguments,
                       std::vector<FileDescriptor> folders)>;

/// The tool in a session of its own, so that no terminal interrupts it half-way, with a fixed
/// environment and without input and output.
[[nodiscard]] bool runSystemTool(const std::string& tool, const std::vector<std::string>& arguments,
                                 std::vector<FileDescriptor> folders);

/// Does what a checked run asks for. Names are changed by this process itself, which can tell what
/// it has changed and takes it back when that is not what was checked. What a tool removes or makes
/// lies in a folder that root alone can look into, so that nobody can put a link or anything else
/// in its way, and takes its place by a change of name. As with every tool that is only started,
/// nobody learns of a failure; it leaves things as they were.
class PinnedAction {
  public:
    explicit PinnedAction(PinnedRun run, ToolRunner runTool = runSystemTool)
        : run_(std::move(run)), runTool_(std::move(runTool)) {}

    /// Does what takes no time.
    /// @return a denial when something else has taken the place of what was checked.
    [[nodiscard]] AuthorizationStatus begin();
    /// Does the rest, which may take long: removing folders, copying.
    void finish();

  private:
    /// A folder of root's alone in a folder that is held, which goes with the object when nothing
    /// is left in it.
    class HiddenFolder;

    AuthorizationStatus takeAside();
    AuthorizationStatus rename();
    AuthorizationStatus replaceByRenaming();
    AuthorizationStatus makeFolders();
    AuthorizationStatus touch();
    bool copyInto(const HiddenFolder& hidden);
    bool copyToDestination();
    void removeAside();

    PinnedRun run_;
    ToolRunner runTool_;
    std::shared_ptr<HiddenFolder> aside_;
    bool removesInPlace_ = false;
    bool copies_ = false;
    bool removesAfterwards_ = false;
};

}  // namespace vornic::platform

#endif
