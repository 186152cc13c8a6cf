#ifndef VORNIC_FOUNDATION_PLACES_PATH_LOOK_H
#define VORNIC_FOUNDATION_PLACES_PATH_LOOK_H

#include <chrono>
#include <cstdint>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace vornic {

/// What stands at a path.
struct PathSight {
    enum class Kind {
        file,
        folder,
        /// A device, a pipe or the like.
        special,
        missing,
        /// It, or a folder on the way there, may not be read.
        unreadable,
        /// On a volume that is not mounted: one that is mounted when somebody enters it, which
        /// nobody did in order to look, or one whose folder ("/Volumes/NAME", "/mnt/NAME",
        /// "/media/USER/NAME", "/run/media/USER/NAME") is not there or is empty.
        notMounted,
        /// Its volume did not answer, or answered with an error.
        noAnswer,
    };

    Kind kind = Kind::missing;
    /// For what is there: its path without links, each name as the folder spells it.
    std::string path = {};
    /// Whether a name on the way is spelt otherwise: in the case of its letters, or in its Unicode
    /// normalisation.
    bool hasOtherName = false;
    /// Of a folder.
    bool isEmpty = false;
    std::uint64_t size = 0;
    /// Nanoseconds since 1970-01-01 UTC.
    std::int64_t modified = 0;
};

/// Looks where files are, by their status alone: nothing is opened but folders in which a name is
/// missing, nothing is mounted, and a volume that does not answer holds nobody up. Each volume is
/// asked by a child process; after its first silence it is not asked again. Any thread.
class PathLook {
  public:
    /// @param limit how long a volume may be silent.
    explicit PathLook(std::chrono::milliseconds limit = std::chrono::seconds(2)) : limit_(limit) {}

    /// @param paths absolute.
    /// @return one for each, in their order.
    [[nodiscard]] std::vector<PathSight> lookAt(const std::vector<std::string>& paths);

  private:
    void findUnmounted(const std::vector<std::string>& paths, std::vector<PathSight>& sights);

    const std::chrono::milliseconds limit_;
    std::mutex mutex_;
    // The mount points of volumes that were silent.
    std::set<std::string> silent_;
};

}  // namespace vornic

#endif
