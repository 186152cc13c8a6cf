#ifndef VORNIC_FOUNDATION_RIGHTS_QM_AUTHORIZATION_H
#define VORNIC_FOUNDATION_RIGHTS_QM_AUTHORIZATION_H

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/SecretText.h"
#include "foundation/rights/AuthorizationHost.h"
#include "platform/rights/AuthorizationServices.h"

namespace vornic {

/// File operations that the user's own rights do not allow, done by the standard tools with
/// administrator rights after one authentication. A process of the super-user runs the tools
/// directly and is never asked for anything.
///
/// Operations that remove or move something are refused for system folders, and those that write
/// for what would replace what this platform protects. With rights, nothing is done to anything but
/// what stood at a path before the guards and the user were asked. Refusals and faults go
/// to the console and yield false or a status; nothing raises. Tools are started and not waited for
/// unless it is said, hence true means only that the tool was started. A relative path is
/// taken from the working folder; an empty one is refused. Any thread; while one asks for rights or
/// runs a tool, others that want to wait for it.
class QMAuthorization {
  public:
    using Arguments = std::vector<std::string>;
    using Path = std::optional<std::string>;

    /// The process's instance. The flag counts at the first call, which makes it.
    static QMAuthorization& sharedController();
    static QMAuthorization& sharedController(bool withGUI);
    /// Puts an instance in the place of the shared one, for tests; null: the next call makes one.
    static void setSharedController(std::shared_ptr<QMAuthorization> controller);

    /// Adopts the authorization that a privileged parent handed over, if any.
    /// @param hasGUI whether the user may be asked for a name and a password
    explicit QMAuthorization(bool hasGUI,
                             std::shared_ptr<AuthorizationHost> host = systemAuthorizationHost());
    /// `authEnd`.
    ~QMAuthorization();
    QMAuthorization(const QMAuthorization&) = delete;
    QMAuthorization& operator=(const QMAuthorization&) = delete;

    /// Obtains administrator rights by asking the user, which blocks until the user has answered.
    bool authStart();
    /// Obtains them with the caller's own login name and password, which is wiped before this
    /// returns. A missing one, a wrong one or another user's name is refused.
    bool authStartWithUser(const std::optional<std::string>& user,
                           std::optional<platform::SecretText> password);
    /// Gives the rights up.
    void authEnd();
    /// Whether there are rights. They end with what holds them, which may die: then they are
    /// asked for again.
    [[nodiscard]] bool isAuthorized() const;
    [[nodiscard]] bool canAuthorize() const;
    /// Whether there are rights, or something on this machine that can ask the user for them. Asks
    /// for nothing.
    [[nodiscard]] bool canAskForRights() const;

    /// Removes a file or a folder with everything in it.
    bool authRemoveFile(const std::string& path);
    /// Moves an item to the user's Trash; a name that is taken there gets the local time behind it.
    bool authTrashFile(const std::string& path);
    /// @param deleteOnRootAccount in a session of the super-user himself, remove what stands in the
    ///     Trash at the item's destination instead
    bool authTrashFile(const std::string& path, bool deleteOnRootAccount);
    /// Trashes each entry of a folder. All are tried; true when none failed.
    bool authTrashFolderContents(const std::string& folder);
    /// @param deleteOnRootAccount in a session of the super-user himself, remove the entries
    /// instead
    bool authTrashFolderContents(const std::string& folder, bool deleteOnRootAccount);
    /// Moves each entry of a folder into another one. All are tried; true when none failed.
    bool authMoveFolderContents(const std::string& source, const std::string& toPath);
    bool authMoveFile(const Path& source, const Path& toPath);
    bool authCopyFile(const Path& source, const Path& toPath);
    /// Makes a folder with all folders above it.
    bool authCreateDir(const std::string& path);

    /// Runs a tool with administrator rights, which are obtained by asking the user if need be.
    /// @param async return at once; otherwise wait until the tool has closed its output
    /// @return 0 when the tool was started, -2 when it does not exist, -1 without authorization,
    ///     otherwise the platform's error code. A tool that then fails is not noticed.
    std::int32_t authExecTask(const std::string& tool, const Arguments& parameters);
    std::int32_t authExecTask(const std::string& tool, const Arguments& parameters, bool async);

  private:
    /// What stood at the arguments of a tool when the guards were asked.
    using Seen = std::vector<platform::SeenPath>;

    [[nodiscard]] Path trashDestination(const std::string& path) const;
    /// Notes the item's place where the Trash keeps notes, and has it moved.
    bool moveToTrash(const std::string& path, const std::string& destination);
    /// Whether items are removed rather than trashed.
    [[nodiscard]] bool deletesInstead(bool deleteOnRootAccount) const;
    bool startDirectlyOrAuthorized(const std::string& tool, const Arguments& arguments,
                                   const Seen& seen);
    std::int32_t execute(const std::string& tool, const Arguments& parameters, const Seen& seen,
                         bool async);
    bool obtainRights(const platform::AuthorizationEnvironment& environment,
                      platform::AuthorizationFlags flags);

    std::shared_ptr<AuthorizationHost> host_;
    /// Guards the authorization; held while the user is asked.
    mutable std::recursive_mutex mutex_;
    platform::AuthorizationRef authRef_;
    const bool hasGUI_;
    /// The user's home folder; empty for the super-user.
    std::string userDirectory_;
};

}  // namespace vornic

#endif
