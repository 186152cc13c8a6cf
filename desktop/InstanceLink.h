#ifndef VORNIC_DESKTOP_INSTANCE_LINK_H
#define VORNIC_DESKTOP_INSTANCE_LINK_H

#include <QLocalServer>
#include <functional>
#include <string>
#include <vector>

#include "platform/FileDescriptor.h"

namespace vornic {

/// Makes one running program of several starts of the same user: the first one holds a lock in a
/// folder that nobody else can enter and listens on a socket beside it; a later one hands its files
/// over there and ends. Main thread.
class InstanceLink {
  public:
    using Paths = std::vector<std::string>;

    /// @param folder where lock and socket lie; made with mode 0700 when it is missing. When it
    ///     cannot be had, or belongs to somebody else, each start is a program of its own.
    explicit InstanceLink(std::string folder) : folder_(std::move(folder)) {}

    /// The folder of the current user.
    [[nodiscard]] static std::string defaultFolder();

    /// Hands absolute paths to the program that runs already.
    /// @return true when it has taken them; false when this program is to run itself.
    [[nodiscard]] bool handOver(const Paths& paths);
    /// Takes what later starts hand over from now on; after a `handOver` that returned false.
    void listen(std::function<void(const Paths&)> receive);

  private:
    [[nodiscard]] bool makeFolder() const;
    [[nodiscard]] bool lock();
    [[nodiscard]] bool send(const Paths& paths) const;
    [[nodiscard]] std::string socketPath() const { return folder_ + "/instance"; }
    void receiveFrom(QLocalSocket* socket);

    std::string folder_;
    platform::FileDescriptor lock_;
    QLocalServer server_;
    std::function<void(const Paths&)> receive_;
};

}  // namespace vornic

#endif
