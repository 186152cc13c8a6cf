#ifndef VORNIC_TESTS_FAULTS_SCENE_KIND_H
#define VORNIC_TESTS_FAULTS_SCENE_KIND_H

#include <map>
#include <string>
#include <vector>

namespace vornic::test {

/// What a run is to do and on which files.
struct SceneKind {
    /// `undo` takes back a repair that was made before. `conversion` is that of `vornic`, `version`
    /// that of `vornic-convert --in-place`.
    enum class Work { repair, conversion, undo, mend, version };
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
};

/// All of them.
[[nodiscard]] const std::vector<SceneKind>& sceneKinds();

/// A damaged document that can be repaired; the letter, which stands in names, tells several apart
/// that are of the same size.
[[nodiscard]] std::string damagedDocument(char letter);
/// A sound document.
[[nodiscard]] std::string soundDocument(char letter);

/// True for work that leaves the file as it is or puts the result in its place and the original in
/// the Trash, and ends with status 3 and a word why where it does not.
[[nodiscard]] bool isInPlaceChange(const SceneKind& kind);

/// Where work that has a working copy has it.
[[nodiscard]] std::string workingCopyName(const SceneKind& kind);

}  // namespace vornic::test

#endif
