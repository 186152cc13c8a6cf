#ifndef VORNIC_PLATFORM_SETTINGS_BUNDLE_H
#define VORNIC_PLATFORM_SETTINGS_BUNDLE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vornic::platform {

/// An application bundle: a folder with `Contents/Info.plist`, `Contents/Resources` and
/// `Contents/MacOS`. Nothing is cached: information and resources are read from disk on every use.
/// Any thread.
class Bundle {
  public:
    /// A bundle at a path, which need not exist, with further folders in which resources are
    /// searched after its own.
    explicit Bundle(std::string path, std::vector<std::string> furtherResourceFolders = {});

    /// The bundle of the running program: `Vornic.app` in the library folder of the install prefix
    /// (`../lib/vornic`), else in the executable's own folder or one of the four above it (build
    /// tree), with the installed data folder (`../share/vornic`) as further resource folder.
    [[nodiscard]] static Bundle mainBundle();
    /// Makes `mainBundle` answer with this bundle from now on (for programs that embed the library
    /// and for tests), or with the running program's own again when there is none given.
    static void setMainBundle(const std::optional<Bundle>& bundle);

    /// The bundle's folder, without a trailing slash.
    [[nodiscard]] const std::string& path() const { return path_; }
    /// True when the bundle's folder is there.
    [[nodiscard]] bool exists() const;
    /// A string of the information property list, or nothing.
    [[nodiscard]] std::optional<std::string> infoString(std::string_view key) const;
    /// The executable file in `Contents/MacOS` that the information names as "CFBundleExecutable",
    /// or else has the bundle's name without its extension. @return nothing when it is not there or
    /// cannot be run.
    [[nodiscard]] std::optional<std::string> executablePath() const;
    /// The path of a resource `name.type`, or nothing when there is none.
    [[nodiscard]] std::optional<std::string> pathForResource(std::string_view name,
                                                             std::string_view type) const;

  private:
    std::string path_;
    std::vector<std::string> furtherResourceFolders_;
};

/// The application's name, "Vornic" for each of its programs, whatever the file on disk is called.
/// It is also what stands for the file name of the main executable.
[[nodiscard]] std::string applicationName();
/// The path of the running executable, links resolved; "" when the system does not say.
[[nodiscard]] std::string executablePath();

}  // namespace vornic::platform

#endif
