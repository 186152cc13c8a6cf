#ifndef VORNIC_PLATFORM_SESSION_WORKSPACE_OPENER_H
#define VORNIC_PLATFORM_SESSION_WORKSPACE_OPENER_H

#include <memory>
#include <string>
#include <vector>

#include "base/Error.h"

namespace vornic::platform {

/// Opens things for the user in programs of their own. What is started runs on by itself: it shares
/// neither session nor standard streams with this program, nobody waits for it, and how it fares is
/// not told. An operation returns true when the program was started; otherwise false, with the slot
/// filled. Paths are taken from the working folder when they are relative. Any thread.
class WorkspaceOpener {
  public:
    WorkspaceOpener() = default;
    virtual ~WorkspaceOpener() = default;
    WorkspaceOpener(const WorkspaceOpener&) = delete;
    WorkspaceOpener& operator=(const WorkspaceOpener&) = delete;

    /// Opens an address ("https://…") in the user's program for its scheme.
    [[nodiscard]] virtual bool openURL(const std::string& url, ErrorSlot& error) = 0;
    /// Opens a file, or shows a folder, in the user's program for its type.
    [[nodiscard]] virtual bool openFile(const std::string& path, ErrorSlot& error) = 0;
    /// Opens files in the application whose bundle lies at a path: its executable is started with
    /// the files' paths as arguments.
    [[nodiscard]] virtual bool openFiles(const std::vector<std::string>& paths,
                                         const std::string& withApplication, ErrorSlot& error) = 0;
    /// Opens files in the installed application that has the bundle identifier
    /// ("com.example.Viewer").
    [[nodiscard]] virtual bool openFilesWithIdentifier(const std::vector<std::string>& paths,
                                                       const std::string& bundleIdentifier,
                                                       ErrorSlot& error) = 0;
    /// Starts the application whose bundle lies at a path.
    [[nodiscard]] virtual bool openApplication(const std::string& bundlePath, ErrorSlot& error) = 0;

    /// The opener of this program: the system's own unless another was put in place.
    [[nodiscard]] static std::shared_ptr<WorkspaceOpener> shared();
    /// Puts another opener in place (for tests); null brings the system's own back.
    static void setShared(std::shared_ptr<WorkspaceOpener> opener);
};

}  // namespace vornic::platform

#endif
