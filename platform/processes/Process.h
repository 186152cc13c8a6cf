#ifndef VORNIC_PLATFORM_PROCESSES_PROCESS_H
#define VORNIC_PLATFORM_PROCESSES_PROCESS_H

#include <array>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/files/FileDescriptor.h"
#include "platform/processes/SpawnedProcess.h"

namespace vornic::platform {

/// The standard streams of a process, by their descriptors' numbers.
enum class StandardStream : std::size_t { input = 0, output = 1, error = 2 };

/// An external program: set it up, launch it once, look after it. The child gets its three standard
/// streams, what `addDescriptor` gives it and no other descriptor, the default dispositions of all
/// signals and an empty signal mask, and shares this process's working folder and, unless it is
/// given a session of its own, its group and terminal. An object that goes leaves its process
/// running; the end of the process is then fetched in the background, so that no zombie stays.
///
/// The set-up is for one thread, before the launch; everything else for any thread at any time.
class Process {
  public:
    using Environment = std::map<std::string, std::string>;

    Process() = default;
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// The path of the program; no search path is looked at.
    void setLaunchPath(std::string path) { launchPath_ = std::move(path); }
    [[nodiscard]] const std::string& launchPath() const { return launchPath_; }
    /// What follows the program's own path.
    void setArguments(std::vector<std::string> arguments) { arguments_ = std::move(arguments); }
    /// The whole environment; without, the child gets this process's.
    void setEnvironment(std::optional<Environment> environment) {
        environment_ = std::move(environment);
    }

    /// Gives the child a session of its own, so that it goes on when this program's terminal closes
    /// or is interrupted.
    void setOwnSession(bool ownSession) { ownSession_ = ownSession; }

    /// Joins a stream to the null device. Streams that nobody set are this process's own.
    void setNullDevice(StandardStream stream);
    /// Joins a stream to an open file, whose descriptor is closed here once the child has it.
    void setDescriptor(StandardStream stream, FileDescriptor descriptor);

    /// Gives the child an open file besides its standard streams. Its descriptor is closed here
    /// once the child has it.
    /// @return the number that it has in the child: 3 for the first one.
    /// @throws Exception when the system has no descriptor to give, or the child 16 already.
    int addDescriptor(FileDescriptor descriptor);

    /// Starts the program.
    /// @throws Exception when it cannot be started, or was already.
    void launch();

    /// True from the launch until the process has ended.
    [[nodiscard]] bool isRunning() const;
    /// Returns when the process has ended; at once when it was never launched.
    void waitUntilExit();
    /// Asks the process to end (SIGTERM). Nothing happens when it does not run.
    void terminate();
    /// Kills the process (SIGKILL). Nothing happens when it does not run.
    void kill();
    /// The exit status, or -1 for a process that a signal ended.
    /// @throws Exception when the process was not launched or still runs.
    [[nodiscard]] int terminationStatus() const;
    /// The signal that ended the process; 0 when it ended by itself or still runs.
    [[nodiscard]] int terminationSignal() const;
    /// The number of the process; 0 before the launch.
    [[nodiscard]] int processIdentifier() const;

    /// Says that nobody will wait for the process.
    void reapInBackground();

  private:
    struct Stream {
        bool isNullDevice = false;
        FileDescriptor descriptor;
    };

    [[nodiscard]] std::shared_ptr<SpawnedProcess> spawned() const;

    std::string launchPath_;
    std::vector<std::string> arguments_;
    std::optional<Environment> environment_;
    std::array<Stream, 3> streams_;
    std::vector<FileDescriptor> furtherDescriptors_;
    bool ownSession_ = false;
    mutable std::mutex mutex_;
    std::shared_ptr<SpawnedProcess> spawned_;
};

}  // namespace vornic::platform

#endif
