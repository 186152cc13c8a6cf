#ifndef VORNIC_TESTS_SUPPORT_FAKES_RECORDING_WORKSPACE_OPENER_H
#define VORNIC_TESTS_SUPPORT_FAKES_RECORDING_WORKSPACE_OPENER_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/session/WorkspaceOpener.h"

namespace vornic::test {

/// Opens nothing and writes down what was asked for, one line each: "URL ADDRESS", "file PATH",
/// "files PATH… with BUNDLE", "files PATH… with identifier IDENTIFIER", "application BUNDLE".
/// One thread at a time.
class RecordingWorkspaceOpener : public platform::WorkspaceOpener {
  public:
    /// The answer to everything; with false the error slot is filled.
    bool answer = true;
    /// What was asked for, in order.
    std::vector<std::string> opened;

    bool openURL(const std::string& url, ErrorSlot& error) override {
        return record("URL " + url, error);
    }
    bool openFile(const std::string& path, ErrorSlot& error) override {
        return record("file " + path, error);
    }
    bool openFiles(const std::vector<std::string>& paths, const std::string& withApplication,
                   ErrorSlot& error) override {
        return record("files" + listed(paths) + " with " + withApplication, error);
    }
    bool openFilesWithIdentifier(const std::vector<std::string>& paths,
                                 const std::string& bundleIdentifier, ErrorSlot& error) override {
        return record("files" + listed(paths) + " with identifier " + bundleIdentifier, error);
    }
    bool openApplication(const std::string& bundlePath, ErrorSlot& error) override {
        return record("application " + bundlePath, error);
    }

  private:
    static std::string listed(const std::vector<std::string>& paths) {
        std::string list;
        for (const std::string& path : paths) {
            list += " " + path;
        }
        return list;
    }
    bool record(std::string request, ErrorSlot& error) {
        opened.push_back(std::move(request));
        if (!answer) {
            error = Error{.domain = "Test", .code = 1, .description = "Nothing can be opened."};
        }
        return answer;
    }
};

/// Puts a recording opener in place while it lives.
class InstalledWorkspaceOpener {
  public:
    InstalledWorkspaceOpener() : opener_(std::make_shared<RecordingWorkspaceOpener>()) {
        platform::WorkspaceOpener::setShared(opener_);
    }
    ~InstalledWorkspaceOpener() { platform::WorkspaceOpener::setShared(nullptr); }
    InstalledWorkspaceOpener(const InstalledWorkspaceOpener&) = delete;
    InstalledWorkspaceOpener& operator=(const InstalledWorkspaceOpener&) = delete;

    RecordingWorkspaceOpener* operator->() const { return opener_.get(); }

  private:
    std::shared_ptr<RecordingWorkspaceOpener> opener_;
};

}  // namespace vornic::test

#endif
