#ifndef VORNIC_PLATFORM_SESSION_LINUX_WORKSPACE_OPENER_H
#define VORNIC_PLATFORM_SESSION_LINUX_WORKSPACE_OPENER_H

#include "platform/session/WorkspaceOpener.h"

namespace vornic::platform {

/// Opens with what the freedesktop standards give: `xdg-open` from the search path for addresses
/// and files, desktop entries (`com.example.Viewer.desktop`) for bundle identifiers. Bundles are
/// started by their executables.
class LinuxWorkspaceOpener : public WorkspaceOpener {
  public:
    [[nodiscard]] bool openURL(const std::string& url, ErrorSlot& error) override;
    [[nodiscard]] bool openFile(const std::string& path, ErrorSlot& error) override;
    [[nodiscard]] bool openFiles(const std::vector<std::string>& paths,
                                 const std::string& withApplication, ErrorSlot& error) override;
    [[nodiscard]] bool openFilesWithIdentifier(const std::vector<std::string>& paths,
                                               const std::string& bundleIdentifier,
                                               ErrorSlot& error) override;
    [[nodiscard]] bool openApplication(const std::string& bundlePath, ErrorSlot& error) override;
};

}  // namespace vornic::platform

#endif
