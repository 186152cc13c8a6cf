#include "platform/session/LinuxWorkspaceOpener.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "base/Exception.h"
#include "base/PathText.h"
#include "base/PercentEncoding.h"
#include "platform/files/Failure.h"
#include "platform/files/FileSystem.h"
#include "platform/processes/Process.h"
#include "platform/session/DesktopEntry.h"
#include "platform/settings/Bundle.h"

namespace vornic::platform {
namespace {

using CommandLine = std::vector<std::string>;

/// The program as the shell would find it: a path as it is, a name in the search path.
std::optional<std::string> findProgram(const std::string& name) {
    if (name.find('/') != std::string::npos) {
        return isExecutableFile(name) ? std::optional(name) : std::nullopt;
    }
    const char* variable = std::getenv("PATH");
    std::string_view folders = variable != nullptr ? variable : "/usr/local/bin:/usr/bin:/bin";
    while (!folders.empty()) {
        const std::size_t end = std::min(folders.find(':'), folders.size());
        const std::string candidate = joinPath(folders.substr(0, end), name);
        // A relative entry would run whatever lies in the working folder.
        if (candidate.starts_with('/') && isExecutableFile(candidate)) {
            return candidate;
        }
        folders.remove_prefix(std::min(end + 1, folders.size()));
    }
    return std::nullopt;
}

bool fail(ErrorSlot& error, int code, std::string description) {
    error = Error{.domain = std::string(kPosixErrorDomain),
                  .code = code,
                  .description = std::move(description)};
    return false;
}

/// Starts a program, the first item of the command line, that lives on by itself.
bool start(CommandLine command, ErrorSlot& error) {
    const std::optional<std::string> program = findProgram(command.front());
    if (!program) {
        return fail(error, ENOENT, "The program " + command.front() + " is not installed.");
    }
    command.erase(command.begin());
    try {
        Process process;
        process.setLaunchPath(*program);
        process.setArguments(std::move(command));
        process.setOwnSession(true);
        process.setNullDevice(StandardStream::input);
        process.setNullDevice(StandardStream::output);
        process.setNullDevice(StandardStream::error);
        process.launch();
    } catch (const Exception& exception) {
        return fail(error, ENOEXEC, exception.reason());
    }
    return true;
}

/// A scheme of RFC 3986, then a colon; so no address is taken for an option or a path.
bool hasScheme(std::string_view url) {
    const std::string_view scheme = url.substr(0, std::min(url.find(':'), url.size()));
    return scheme.size() < url.size() && isURLScheme(scheme);
}

/// The absolute paths of files that are there; nothing, with the slot filled, when one is not.
std::optional<std::vector<std::string>> existingFiles(const std::vector<std::string>& paths,
                                                      ErrorSlot& error) {
    std::vector<std::string> files;
    for (const std::string& path : paths) {
        std::optional<std::string> file = absolutePath(path);
        if (!file || !fileExists(*file)) {
            failFile(error, path, "opened", ENOENT);
            return std::nullopt;
        }
        files.push_back(std::move(*file));
    }
    return files;
}

bool startBundle(const std::string& bundlePath, const std::vector<std::string>& files,
                 ErrorSlot& error) {
    const std::optional<std::string> path = absolutePath(bundlePath);
    const std::optional<std::string> executable =
        path ? Bundle(*path).executablePath() : std::nullopt;
    if (!executable) {
        return fail(error, ENOENT,
                    "There is no application that can be started at " + bundlePath + ".");
    }
    CommandLine command{*executable};
    command.insert(command.end(), files.begin(), files.end());
    return start(std::move(command), error);
}

}  // namespace

bool LinuxWorkspaceOpener::openURL(const std::string& url, ErrorSlot& error) {
    if (!hasScheme(url)) {
        return fail(error, EINVAL, "The address " + url + " cannot be opened: it has no scheme.");
    }
    return start({"xdg-open", url}, error);
}

bool LinuxWorkspaceOpener::openFile(const std::string& path, ErrorSlot& error) {
    const std::optional<std::vector<std::string>> files = existingFiles({path}, error);
    return files && start({"xdg-open", files->front()}, error);
}

bool LinuxWorkspaceOpener::openFiles(const std::vector<std::string>& paths,
                                     const std::string& withApplication, ErrorSlot& error) {
    const std::optional<std::vector<std::string>> files = existingFiles(paths, error);
    return files && startBundle(withApplication, *files, error);
}

bool LinuxWorkspaceOpener::openFilesWithIdentifier(const std::vector<std::string>& paths,
                                                   const std::string& bundleIdentifier,
                                                   ErrorSlot& error) {
    const std::optional<std::vector<std::string>> files = existingFiles(paths, error);
    if (!files) {
        return false;
    }
    const std::optional<DesktopEntry> entry = findDesktopEntry(bundleIdentifier);
    if (!entry) {
        return fail(error, ENOENT, "The application " + bundleIdentifier + " is not installed.");
    }
    const std::vector<CommandLine> commands = commandLines(*entry, *files);
    if (commands.empty()) {
        return failFileBecause(error, entry->path, "used", EINVAL, "its command line is malformed");
    }
    return std::all_of(commands.begin(), commands.end(),
                       [&](const CommandLine& command) { return start(command, error); });
}

bool LinuxWorkspaceOpener::openApplication(const std::string& bundlePath, ErrorSlot& error) {
    return startBundle(bundlePath, {}, error);
}

}  // namespace vornic::platform
