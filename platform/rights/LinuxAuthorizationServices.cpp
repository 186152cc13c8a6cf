#include "platform/rights/LinuxAuthorizationServices.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <mutex>
#include <utility>

#include "base/Exception.h"
#include "base/PathText.h"
#include "platform/processes/Pipe.h"
#include "platform/processes/Process.h"
#include "platform/rights/AuthorizationHelperLink.h"
#include "platform/settings/Bundle.h"
#include "platform/settings/Directories.h"
#include "platform/settings/InstallFolders.h"

namespace vornic::platform {
namespace {

using Link = std::shared_ptr<AuthorizationHelperLink>;

constexpr const char* kSystemPath = "/usr/sbin:/usr/bin:/sbin:/bin";

/// An authorization, with rights once it has a link.
class HelperAuthorization : public Authorization {
  public:
    [[nodiscard]] Link link() const {
        const std::lock_guard lock(mutex_);
        return link_;
    }
    void setLink(Link link) {
        const std::lock_guard lock(mutex_);
        link_.swap(link);
    }

  private:
    mutable std::mutex mutex_;
    Link link_;
};

std::shared_ptr<HelperAuthorization> ours(const AuthorizationRef& reference) {
    return std::dynamic_pointer_cast<HelperAuthorization>(reference);
}

const AuthorizationItem* find(const AuthorizationEnvironment& environment, std::string_view name) {
    const auto found = std::find_if(environment.begin(), environment.end(),
                                    [&](const auto& item) { return item.name == name; });
    return found != environment.end() ? &*found : nullptr;
}

/// The variables that a program needs to talk to its user, and nothing that is ours to hide.
Process::Environment terminalEnvironment() {
    Process::Environment environment{{"PATH", kSystemPath}, {"SHELL", "/bin/sh"}};
    for (const char* name : {"LANG", "LC_ALL", "LC_MESSAGES", "TERM"}) {
        if (const char* value = std::getenv(name); value != nullptr) {
            environment.emplace(name, value);
        }
    }
    return environment;
}

std::unique_ptr<Process> makeProcess(const std::string& path, std::vector<std::string> arguments,
                                     Process::Environment environment) {
    auto process = std::make_unique<Process>();
    process->setLaunchPath(path);
    process->setArguments(std::move(arguments));
    process->setEnvironment(std::move(environment));
    process->setNullDevice(StandardStream::input);
    return process;
}

/// Asks the user. pkexec tells by its exit status how that went.
AuthorizationStatus startInteractively(const AuthorizationPrograms& programs, Link& link) {
    constexpr int kDismissed = 126;
    constexpr int kNotAuthorized = 127;
    switch (AuthorizationHelperLink::start(
        makeProcess(programs.pkexec, {programs.helper}, terminalEnvironment()), link)) {
        case 0:
            return kAuthorizationSuccess;
        case kDismissed:
            return kAuthorizationCanceled;
        case kNotAuthorized:
            return kAuthorizationDenied;
        default:
            return kAuthorizationInternalError;
    }
}

/// The reading end of a pipe that holds the password as a line, and after it the end: what does not
/// fit cannot be tried again.
FileDescriptor passwordPipe(const SecretText& password) {
    Pipe pipe = makePipe();
    const std::string_view text = password.view();
    if (writeAll(pipe.writingEnd.get(), text.data(), text.size()) != 0 ||
        writeAll(pipe.writingEnd.get(), "\n", 1) != 0) {
        throw Exception("NSFileHandleOperationException", "A password cannot be handed over.");
    }
    return std::move(pipe.readingEnd);
}

/// Shows sudo the password. Its own memory of an earlier one does not count.
AuthorizationStatus startWithPassword(const AuthorizationPrograms& programs,
                                      const SecretText& password, Link& link) {
    // More would fill the pipe before anybody reads it.
    constexpr std::size_t kLongestPassword = 1024;
    const std::string_view text = password.view();
    if (text.size() > kLongestPassword || text.find('\n') != std::string_view::npos ||
        text.find('\0') != std::string_view::npos) {
        return kAuthorizationDenied;
    }
    std::unique_ptr<Process> process =
        makeProcess(programs.sudo, {"-k", "-S", "-p", "", "-u", "root", "--", programs.helper},
                    {{"PATH", kSystemPath}, {"LC_ALL", "C"}});
    try {
        process->setDescriptor(StandardStream::input, passwordPipe(password));
    } catch (const Exception&) {
        return kAuthorizationInternalError;
    }
    return AuthorizationHelperLink::start(std::move(process), link) == 0 ? kAuthorizationSuccess
                                                                         : kAuthorizationDenied;
}

}  // namespace

std::string authorizationHelperPath() {
    constexpr std::string_view kName = "vornic-auth-helper";
    std::vector<std::string> folders = installFolders(InstallFolder::helpers);
    folders.push_back(parentFolder(executablePath()));
    for (const std::string& folder : folders) {
        const std::string candidate = joinPath(folder, kName);
        if (isExecutableFile(candidate)) {
            return candidate;
        }
    }
    return "";
}

std::shared_ptr<AuthorizationServices> systemAuthorizationServices() {
    AuthorizationPrograms programs;
    programs.helper = authorizationHelperPath();
    return std::make_shared<LinuxAuthorizationServices>(std::move(programs));
}

AuthorizationStatus LinuxAuthorizationServices::copyPrivilegedReference(
    AuthorizationRef& /*reference*/, AuthorizationFlags /*flags*/) {
    return kAuthorizationInvalidReference;
}

AuthorizationStatus LinuxAuthorizationServices::create(
    const AuthorizationEnvironment& /*environment*/, AuthorizationFlags /*flags*/,
    AuthorizationRef& reference) {
    reference = std::make_shared<HelperAuthorization>();
    return kAuthorizationSuccess;
}

AuthorizationStatus LinuxAuthorizationServices::copyRights(
    const AuthorizationRef& reference, std::string_view right,
    const AuthorizationEnvironment& environment, AuthorizationFlags flags) {
    const std::shared_ptr<HelperAuthorization> authorization = ours(reference);
    if (!authorization) {
        return kAuthorizationInvalidReference;
    }
    if (right != kAdministratorRight) {
        return kAuthorizationDenied;
    }
    if (isAlive(reference)) {
        return kAuthorizationSuccess;
    }
    if (!isExecutableFile(programs_.helper)) {
        return kAuthorizationInternalError;
    }
    const AuthorizationItem* name = find(environment, kAuthorizationEnvironmentUsername);
    const AuthorizationItem* password = find(environment, kAuthorizationEnvironmentPassword);
    Link link;
    AuthorizationStatus status = kAuthorizationInteractionNotAllowed;
    if (name != nullptr && password != nullptr) {
        status = name->value.view() == userName()
                     ? startWithPassword(programs_, password->value, link)
                     : kAuthorizationDenied;
    } else if ((flags & kAuthorizationFlagInteractionAllowed) != 0) {
        status = startInteractively(programs_, link);
    }
    authorization->setLink(std::move(link));
    return status;
}

bool LinuxAuthorizationServices::isAlive(const AuthorizationRef& reference) const {
    const std::shared_ptr<HelperAuthorization> authorization = ours(reference);
    const Link link = authorization ? authorization->link() : nullptr;
    return link && link->isAlive();
}

bool LinuxAuthorizationServices::canAskUser() const {
    return isExecutableFile(programs_.pkexec) && isExecutableFile(programs_.helper) &&
           nodeExists(programs_.systemBus) && nodeExists(programs_.polkitService);
}

AuthorizationStatus LinuxAuthorizationServices::free(const AuthorizationRef& reference,
                                                     AuthorizationFlags /*flags*/) {
    const std::shared_ptr<HelperAuthorization> authorization = ours(reference);
    if (!authorization) {
        return kAuthorizationInvalidReference;
    }
    authorization->setLink(nullptr);
    return kAuthorizationSuccess;
}

AuthorizationStatus LinuxAuthorizationServices::executeWithPrivileges(
    const AuthorizationRef& reference, const std::string& tool, AuthorizationFlags /*flags*/,
    const std::vector<std::string>& arguments, const std::vector<SeenPath>& seen,
    std::unique_ptr<CommunicationsPipe>* pipe) {
    const std::shared_ptr<HelperAuthorization> authorization = ours(reference);
    const Link link = authorization ? authorization->link() : nullptr;
    if (!link) {
        return kAuthorizationInvalidReference;
    }
    return link->run(
        {.wantsOutput = pipe != nullptr, .tool = tool, .arguments = arguments, .seen = seen}, pipe);
}

}  // namespace vornic::platform
