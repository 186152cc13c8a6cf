#ifndef VORNIC_TESTS_FAULTS_WORLD_H
#define VORNIC_TESTS_FAULTS_WORLD_H

#include <map>
#include <string>
#include <vector>

#include <sys/types.h>

namespace vornic::test {

/// What a run finds and leaves, as a user would see it.
struct World {
    /// Everything in the user's folder by its name: the bytes of files, "-> TARGET" for links.
    std::map<std::string, std::string> files;
    /// The bytes of everything in the Trash.
    std::vector<std::string> trash;
    /// The paths of temporary files anywhere, with what is in them.
    std::map<std::string, std::string> temporaries;
    /// Mode and attributes of the user's file, for comparison.
    std::string metadata;

    [[nodiscard]] bool isInTrash(const std::string& bytes) const;
    /// True when a file of the user's folder, the Trash included, has these bytes.
    [[nodiscard]] bool holds(const std::string& bytes) const;
    /// The names in the user's folder and how much is in the Trash.
    [[nodiscard]] std::string summary() const;
};

/// @param root the folder that "files" and "home" are in
/// @param name the user's file
[[nodiscard]] World lookAround(const std::string& root, const std::string& name);

}  // namespace vornic::test

#endif
