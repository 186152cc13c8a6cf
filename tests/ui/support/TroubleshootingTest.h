#ifndef VORNIC_TESTS_UI_SUPPORT_TROUBLESHOOTING_TEST_H
#define VORNIC_TESTS_UI_SUPPORT_TROUBLESHOOTING_TEST_H

#include <filesystem>
#include <map>
#include <string>
#include <string_view>

#include "tests/foundation/files/FileManagerTest.h"
#include "tests/support/machine/FileState.h"

namespace vornic::test {

/// Paths with what stands there: a file's bytes, or "-> TARGET" for a link.
using Contents = std::map<std::string, std::string>;

/// All files and links in a folder and the folders below it, with their paths from the folder on.
inline Contents contentsOf(const std::string& folder) {
    Contents contents;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        const std::string path = entry.path().string();
        const std::string place = path.substr(folder.size());
        if (entry.is_symlink()) {
            contents[place] = "-> " + std::filesystem::read_symlink(entry.path()).string();
        } else if (!entry.is_directory()) {
            contents[place] = readBytes(path);
        }
    }
    return contents;
}

/// Tests on the logs, crash reports and preference files of an application "Reel" in the test's own
/// home folder. Each file holds its own name unless the test says otherwise.
class TroubleshootingTest : public FileManagerTest {
  protected:
    [[nodiscard]] std::string library() const { return sandbox.home() + "/.local/share/quillmark"; }
    [[nodiscard]] std::string logs() const { return library() + "/Logs/Quillmark"; }
    [[nodiscard]] std::string diagnosticReports() const {
        return library() + "/Logs/DiagnosticReports";
    }
    [[nodiscard]] std::string preferences() const { return library() + "/Preferences"; }

    /// Makes a file, with the folders above it, that holds its own name.
    static std::string make(const std::string& folder, const std::string& name) {
        std::filesystem::create_directories(folder);
        std::string path = folder + "/" + name;
        writeBytes(path, name);
        return path;
    }
    /// Makes the file unreadable for the test's user.
    static void close(const std::string& path) {
        std::filesystem::permissions(path, std::filesystem::perms::none);
    }
};

}  // namespace vornic::test

#endif
