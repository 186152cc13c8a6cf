#include "job/ProjectFiles.h"

#include <set>
#include <string_view>
#include <utility>

#include "base/PathText.h"
#include "base/Text.h"
#include "formats/fcpxml/Bundle.h"
#include "platform/files/FileSystem.h"

namespace vornic {

namespace {

bool isWorkingCopy(std::string_view name) {
    return name.ends_with("-backup.xml") || name.ends_with("-backup.fcpxml");
}

// Looks through folders without calling itself, so that depth costs no stack.
class FolderSearch {
  public:
    FolderSearch(ProjectFiles& files, const StopToken& stop) : files_(files), stop_(stop) {}

    void search(const std::string& folder) {
        // A folder's entries come before those that were met earlier.
        std::vector<std::string> open{folder};
        while (!open.empty() && !stop_.stopRequested()) {
            const std::string path = std::move(open.back());
            open.pop_back();
            if (!platform::isDirectory(path)) {
                files_.paths.push_back(path);
            } else if (fcpxml::isBundleName(path)) {
                files_.paths.push_back(fcpxml::contentOfBundle(path));
            } else {
                enter(path, open);
            }
        }
    }

  private:
    void enter(const std::string& folder, std::vector<std::string>& open) {
        ErrorSlot error;
        const auto identity = platform::fileIdentity(joinPath(folder, "."));
        if (identity && !entered_.emplace(identity->device, identity->inode).second) {
            return;
        }
        const auto names = platform::namesInFolder(folder, error);
        if (!names) {
            files_.refused.push_back({folder, error ? error->localizedDescription() : ""});
            return;
        }
        for (auto name = names->rbegin(); name != names->rend(); ++name) {
            const std::string path = joinPath(folder, *name);
            const std::string extension = lowercased(pathExtension(*name));
            const bool isProject = (extension == "xml" || extension == "fcpxml") &&
                                   !isWorkingCopy(*name) && !platform::isDirectory(path);
            if (!name->starts_with('.') && (isProject || platform::isDirectory(path))) {
                open.push_back(path);
            }
        }
    }

    ProjectFiles& files_;
    const StopToken& stop_;
    std::set<std::pair<std::uint64_t, std::uint64_t>> entered_;
};

}  // namespace

ProjectFiles findProjectFiles(const std::vector<std::string>& arguments, bool descends,
                              const StopToken& stop) {
    ProjectFiles files;
    for (const std::string& argument : arguments) {
        if (argument == "-" || !platform::isDirectory(argument)) {
            files.paths.push_back(argument);
        } else if (fcpxml::isBundleName(argument)) {
            files.paths.push_back(fcpxml::contentOfBundle(argument));
        } else if (descends) {
            FolderSearch(files, stop).search(argument);
        } else {
            files.refused.push_back({argument, "It is a folder; -r looks into folders."});
        }
    }
    return files;
}

}  // namespace vornic
