#ifndef VORNIC_TESTS_FAULTS_SCENE_H
#define VORNIC_TESTS_FAULTS_SCENE_H

#include <chrono>
#include <string>
#include <vector>

#include "tests/faults/SceneKind.h"
#include "tests/faults/TracedProgram.h"
#include "tests/faults/World.h"
#include "tests/support/machine/PrivateMounts.h"

namespace vornic::test {

/// What all scenes stand on.
struct Stage {
    /// The folder that the programs are in.
    std::string programs;
    const PrivateMounts& mounts;
    /// The library that makes allocations fail and lets time pass.
    std::string allocations;
    /// The folder that scenes are made in.
    std::string folder;
    /// How long a run may take.
    std::chrono::seconds longest{30};
};

/// The sizes of a scene's volumes in bytes; 0 for no volume of its own.
struct VolumeSizes {
    long files = 0;
    long home = 0;
};

/// The files of a scene, made anew in a folder that goes with the object.
class Scene {
  public:
    Scene(const Stage& stage, const SceneKind& kind, VolumeSizes volumes = {});
    ~Scene();
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    /// False when the files did not fit or a volume could not be mounted.
    [[nodiscard]] bool isReady() const { return ready_; }
    [[nodiscard]] const SceneKind& kind() const { return kind_; }
    [[nodiscard]] const Stage& stage() const { return stage_; }
    /// The user's file.
    [[nodiscard]] std::string path() const;
    /// A path in the user's folder, or elsewhere in the scene with `../`.
    [[nodiscard]] std::string pathOf(const std::string& name) const;
    /// How the program that does the scene's work is started.
    [[nodiscard]] ProgramStart start() const;
    /// Runs a program to its end. In what it wrote, the scene's folder is "@".
    [[nodiscard]] ProgramEnd run(const ProgramStart& start, CallObserver& observer) const;
    /// The scene's work without faults, or a repair after an undo, a day later: a run does not take
    /// what is new for what a killed one has left.
    [[nodiscard]] ProgramEnd runLater() const;
    [[nodiscard]] World look() const { return lookAround(root_, kind_.file); }

  private:
    [[nodiscard]] ProgramStart startOf(const std::vector<std::string>& options,
                                       const std::string& program) const;
    // Makes the repair that is to be taken back.
    [[nodiscard]] bool repair() const;
    bool mountVolume(const std::string& folder, long size);
    bool write(const std::string& name, const std::string& bytes) const;

    const Stage& stage_;
    const SceneKind& kind_;
    std::string root_;
    std::vector<std::string> mounted_;
    bool ready_ = false;
};

/// What a run of a scene without faults does.
struct Baseline {
    World before;
    ProgramEnd end;
    World world;
    /// The bytes that the user's file has afterwards.
    std::string result;
    /// What it prints when it is run again.
    ProgramEnd again;
    std::vector<SystemCall> calls;
};

/// A baseline, or why there is none.
struct BaselineResult {
    /// False for a scene that this machine cannot have.
    bool ready = false;
    /// False when the run did not do what the scene is for, which is told on standard error.
    bool good = false;
    Baseline baseline;
};
/// Runs a scene without faults.
[[nodiscard]] BaselineResult makeBaseline(const Stage& stage, const SceneKind& kind);

}  // namespace vornic::test

#endif
