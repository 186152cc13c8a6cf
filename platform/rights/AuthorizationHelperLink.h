#ifndef VORNIC_PLATFORM_RIGHTS_AUTHORIZATION_HELPER_LINK_H
#define VORNIC_PLATFORM_RIGHTS_AUTHORIZATION_HELPER_LINK_H

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/files/FileDescriptor.h"
#include "platform/processes/Process.h"
#include "platform/rights/AuthorizationProtocol.h"
#include "platform/rights/AuthorizationServices.h"

namespace vornic::platform {

/// Keeps other processes of the same user from looking into this one, or taking a descriptor out of
/// it, while an object lives; debuggers and core dumps among them. Any thread.
class Untraceable {
  public:
    Untraceable();
    ~Untraceable();
    Untraceable(const Untraceable&) = delete;
    Untraceable& operator=(const Untraceable&) = delete;
};

/// A program's end of the socket to its root helper, which ends when this object goes. Any thread;
/// nothing is raised.
class AuthorizationHelperLink : public std::enable_shared_from_this<AuthorizationHelperLink> {
  public:
    /// Launches a process that becomes the helper, which finds the socket as its standard output,
    /// and waits for the greeting.
    /// @param process with path, arguments and standard input set
    /// @param link is given the link on success
    /// @return the exit status of the process when it ended without becoming the helper, -1 when it
    ///     could not be launched; 0 on success.
    [[nodiscard]] static int start(std::unique_ptr<Process> process,
                                   std::shared_ptr<AuthorizationHelperLink>& link);

    AuthorizationHelperLink(std::unique_ptr<Process> process, FileDescriptor socket,
                            std::unique_ptr<Untraceable> untraceable);

    /// Has the helper start a tool.
    [[nodiscard]] AuthorizationStatus run(const ToolRequest& request,
                                          std::unique_ptr<CommunicationsPipe>* pipe);

    /// Whether the helper still holds the other end.
    [[nodiscard]] bool isAlive() const;

  private:
    class Output;

    /// The next output of the run under way, with the lock held; "" at its end.
    std::string nextOutput();

    std::unique_ptr<Untraceable> untraceable_;
    std::unique_ptr<Process> process_;
    std::mutex mutex_;
    FileDescriptor socket_;
    /// Counts the runs whose output was asked for; the last of them is the one under way.
    std::size_t reportedRuns_ = 0;
    bool outputIsPending_ = false;
};

}  // namespace vornic::platform

#endif
