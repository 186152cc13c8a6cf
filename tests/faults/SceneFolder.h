#ifndef VORNIC_TESTS_FAULTS_SCENE_FOLDER_H
#define VORNIC_TESTS_FAULTS_SCENE_FOLDER_H

#include <string>

#include "tests/support/machine/PrivateMounts.h"

namespace vornic::test {

/// The folder that scenes are made in: on a volume in memory, where nothing waits for a disk. Make
/// it before the process gives root's rights up.
class SceneFolder {
  public:
    /// @param wanted the folder to use instead; "" for a volume in memory of this process's own,
    /// else
    ///     /dev/shm, else the folder for temporary files. A volume in memory must keep attributes,
    ///     or their loss would go by unseen.
    SceneFolder(const PrivateMounts& mounts, const std::string& wanted);
    ~SceneFolder();
    SceneFolder(const SceneFolder&) = delete;
    SceneFolder& operator=(const SceneFolder&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }

  private:
    bool mountOwn();

    const PrivateMounts& mounts_;
    std::string path_;
    // The mount point, which goes with the object; "" for none.
    std::string mounted_;
};

}  // namespace vornic::test

#endif
