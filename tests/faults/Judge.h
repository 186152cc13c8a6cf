#ifndef VORNIC_TESTS_FAULTS_JUDGE_H
#define VORNIC_TESTS_FAULTS_JUDGE_H

#include <string>
#include <vector>

#include "tests/faults/Scene.h"

namespace vornic::test {

/// What must hold after a run in which something went wrong.
struct Demands {
    /// What the user's file may hold; "" among them for no file.
    std::vector<std::string> atPath;
    /// Bytes of the user's that must be whole somewhere in the folder or in the Trash. After the
    /// next run, at their own path, at the user's file's or in the Trash.
    std::vector<std::string> kept;
    /// Names in the folder that others may have changed.
    std::vector<std::string> strangers;
    /// What the user's file must hold after the next run; nothing for what it may hold anyway.
    std::vector<std::string> atPathInTheEnd;
    /// False when the fault keeps the program from saying what it has to say.
    bool canSpeak = true;
    /// True when a library that cannot do without memory may end the program.
    bool mayCrash = false;
    /// False when the program made no call of its own: the system had no room for it.
    bool hasBegun = true;
    /// False when a failure may be told although the file is as it should be.
    bool failureMustBeTrue = true;
    /// False when the run may be of another kind than the one without faults.
    bool sameWork = true;
};

/// The demands of a scene in which nobody but the program touches the files.
[[nodiscard]] Demands demandsOf(const SceneKind& kind, const Baseline& baseline);

/// Tells what was not as it must be. Each function adds a sentence for every wrong.
class Judge {
  public:
    Judge(const SceneKind& kind, const Baseline& baseline, Demands demands);
    void judgeRun(const ProgramEnd& end, const World& world);
    void judgeNextRun(const ProgramEnd& end, const World& world);
    [[nodiscard]] const std::vector<std::string>& wrongs() const { return wrongs_; }

  private:
    void add(const std::string& wrong) { wrongs_.push_back(wrong); }
    void judgeEnd(const ProgramEnd& end);
    void judgeFiles(const World& world, const std::vector<std::string>& atPath);
    void judgeTruth(const ProgramEnd& end, const World& world);
    void judgeRepair(const ProgramEnd& end, const World& world);
    void judgeInPlace(const ProgramEnd& end, const World& world);
    void judgeCopy(const ProgramEnd& end, const World& world);
    void judgeUndo(const ProgramEnd& end, const World& world);
    void judgeConversion(const ProgramEnd& end, const World& world);
    void judgeMetadata(const ProgramEnd& end, const World& world);
    [[nodiscard]] bool isCopyName(const std::string& name) const;
    [[nodiscard]] std::string bytesAtPath(const World& world) const;
    [[nodiscard]] std::string nameOfBytes(const std::string& bytes) const;

    const SceneKind& kind_;
    const Baseline& baseline_;
    Demands demands_;
    std::vector<std::string> wrongs_;
};

}  // namespace vornic::test

#endif
