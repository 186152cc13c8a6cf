#ifndef VORNIC_TESTS_FAULTS_SCENE_KIND_H
#define VORNIC_TESTS_FAULTS_SCENE_KIND_H

#include <map>
#include <string>
#include <vector>

namespace vornic::test {

/// What a run is to do and on which files.
struct SceneKind {
    /// `undo` takes back a repair that was made before. `inPlace` puts what it makes in the file's
    /// place by way of a hidden copy; `copy` makes a new file and leaves the user's alone.
    enum class Work { repair, conversion, undo, inPlace, copy };
    /// For people, and for repeating a case.
    std::string name;
    Work work = Work::repair;
    /// The name of the user's file, and what it holds.
    std::string file;
    std::string bytes;
    /// What else is in the folder; no run may lose it.
    std::map<std::string, std::string> others;
    /// Part of what a run without faults prints.
    std::string proof;
    /// The home folder, with the Trash in it, is a volume of its own.
    bool homeIsApart = false;
    /// Of `inPlace` and `copy`: the program with its options.
    std::vector<std::string> command = {};
    /// Of `inPlace`: the verb in the name of the hidden copy.
    std::string verb = {};
    /// Of `copy`: the name of the new file.
    std::string made = {};
};

/// All of them.
[[nodiscard]] const std::vector<SceneKind>& sceneKinds();

/// A damaged document that can be repaired; the letter, which stands in names, tells several apart
/// that are of the same size.
[[nodiscard]] std::string damagedDocument(char letter);
/// A sound document.
[[nodiscard]] std::string soundDocument(char letter);

/// Where a repair or a change in place has its working copy.
[[nodiscard]] std::string workingCopyName(const SceneKind& kind);

}  // namespace vornic::test

#endif
