#ifndef VORNIC_DESKTOP_INSTANCE_LINK_H
#define VORNIC_DESKTOP_INSTANCE_LINK_H

#include <QLocalServer>
#include <QLocalSocket>
#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "desktop/IncomingFiles.h"
#include "platform/files/FileDescriptor.h"

namespace vornic {

/// Makes one running program of several starts of the same user on the same display: the first one
/// holds a lock in a folder that nobody else can enter and listens on a socket beside it; a later
/// one hands its files over there and ends. Files are handed over once: what the first one has not
/// begun to take when the later one loses patience is the later one's own again. Main thread.
class InstanceLink {
  public:
    using Paths = std::vector<std::string>;

    /// How long a start waits for a sign of life of the program that holds the lock.
    struct Patience {
        /// Which may be starting itself, at the same time as many others.
        std::chrono::milliseconds forASign{std::chrono::seconds(15)};
        /// While it opens the files.
        std::chrono::milliseconds forTheEnd{std::chrono::minutes(1)};
    };

    /// @param folder where lock and socket lie; made with mode 0700 when it is missing. When it
    ///     cannot be had, or belongs to somebody else, each start is a program of its own.
    explicit InstanceLink(std::string folder);
    InstanceLink(std::string folder, Patience patience);

    /// The folder of the current user's programs on a display.
    [[nodiscard]] static std::string folderFor(std::string_view display);

    /// Hands absolute paths to the program that runs already.
    /// @return true when it has taken them; false when this program is to run itself.
    [[nodiscard]] bool handOver(const Paths& paths);
    /// Takes what later starts hand over from now on; after a `handOver` that returned false.
    /// @param receiver outlives the link or its `stop`.
    void listen(FileReceiver& receiver);
    /// Takes nothing more: from now on the next start is the one that runs.
    void stop();

  private:
    // What came of an offer.
    enum class Answer {
        taken,
        // Nobody is there, or says anything any more.
        none,
        // Somebody was there and has hung up.
        notTaken
    };

    [[nodiscard]] bool makeFolder() const;
    [[nodiscard]] bool lock();
    [[nodiscard]] Answer send(const Paths& paths, std::chrono::steady_clock::time_point end) const;
    [[nodiscard]] Answer awaitAnswer(QLocalSocket& socket,
                                     std::chrono::steady_clock::time_point end) const;
    [[nodiscard]] std::string socketPath() const { return folder_ + "/instance"; }

    std::string folder_;
    Patience patience_;
    platform::FileDescriptor lock_;
    QLocalServer server_;
};

}  // namespace vornic

#endif
