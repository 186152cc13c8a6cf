#include "bench/MeasuredProcess.h"

#include <cerrno>
#include <chrono>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vornic::bench {

namespace {

constexpr double kMicroseconds = 1e6;
constexpr double kKilobytesOfAMegabyte = 1024;

bool spawn(const std::vector<std::string>& arguments, const std::string& output, pid_t& process) {
    std::vector<char*> pointers;
    for (const std::string& argument : arguments) {
        pointers.push_back(const_cast<char*>(argument.c_str()));  // NOLINT: exec takes it so
    }
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, S_IRUSR | S_IWUSR);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    const int failure =
        posix_spawnp(&process, pointers[0], &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return failure == 0;
}

}  // namespace

MeasuredProcess runMeasured(const std::vector<std::string>& arguments, const std::string& output) {
    MeasuredProcess result;
    const auto start = std::chrono::steady_clock::now();
    pid_t process = 0;
    if (!spawn(arguments, output, process)) {
        return result;
    }
    int status = 0;
    struct rusage usage {};
    while (wait4(process, &status, 0, &usage) < 0 && errno == EINTR) {
    }
    result.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    for (const struct timeval& time : {usage.ru_utime, usage.ru_stime}) {
        result.processorSeconds +=
            static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / kMicroseconds;
    }
    result.peakMegabytes = static_cast<double>(usage.ru_maxrss) / kKilobytesOfAMegabyte;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

}  // namespace vornic::bench
