#ifndef VORNIC_TESTS_FAULTS_RACE_H
#define VORNIC_TESTS_FAULTS_RACE_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/faults/Judge.h"
#include "tests/faults/LateWriter.h"
#include "tests/faults/Scene.h"

namespace vornic::test {

/// Another program that does something to a scene's files in the middle of a run.
class Race {
  public:
    /// @param newer what a run without faults makes of `newerBytes`
    Race(std::string name, const Scene& scene, const Baseline& baseline, const Baseline& newer);

    /// The names of the races for this kind of scene; none where they would say nothing.
    [[nodiscard]] static std::vector<std::string> namesFor(const SceneKind& kind);
    /// What the user saves while the program runs: like the scene's own file, of the same size.
    [[nodiscard]] static std::string newerBytes(const SceneKind& kind);

    /// What the other program does at the chosen place.
    void act();
    /// What it does when the run is over.
    void finish();
    [[nodiscard]] Demands demands() const;
    /// What else went wrong, one sentence each.
    [[nodiscard]] std::vector<std::string> wrongs(const World& world) const;

  private:
    enum class Way { inPlace, renamed, savedAs, half, link };
    void write(const std::string& name, const std::string& bytes);
    void open(const std::string& path, std::string_view first, std::string_view rest);
    void link(const std::string& name) const;
    [[nodiscard]] bool isAboutCopy() const { return name_.starts_with("copy-"); }

    std::string name_;
    const Scene& scene_;
    const Baseline& baseline_;
    const Baseline& newer_;
    std::string bytes_;
    Way way_ = Way::inPlace;
    int held_ = -1;
    std::unique_ptr<LateWriter> late_;
};

}  // namespace vornic::test

#endif
