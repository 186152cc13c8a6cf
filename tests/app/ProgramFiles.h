#ifndef VORNIC_TESTS_APP_PROGRAM_FILES_H
#define VORNIC_TESTS_APP_PROGRAM_FILES_H

#include <string>
#include <string_view>
#include <vector>

#include "tests/app/TestMaterial.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/programs/ProgramRunner.h"

namespace vornic::test {

/// A folder and a home of their own for the programs under test, and what they leave there.
class ProgramFiles {
  public:
    explicit ProgramFiles(const TestMaterial& material) : material_(material) {}

    /// The folder for the test's own files, which is the programs' working folder.
    [[nodiscard]] const std::string& folder() const { return sandbox_.folder(); }
    [[nodiscard]] const std::string& home() const { return sandbox_.home(); }
    /// The path of a name in the folder.
    [[nodiscard]] std::string path(std::string_view name) const { return sandbox_.path(name); }
    /// Writes a file in the folder and returns its path.
    [[nodiscard]] std::string write(std::string_view name, std::string_view bytes) const {
        return sandbox_.write(name, bytes);
    }

    /// How `vornic-repair` is started with these arguments.
    [[nodiscard]] ProgramSettings repairer(std::vector<std::string> arguments) const;
    /// How `vornic` is started with these arguments.
    [[nodiscard]] ProgramSettings converter(std::vector<std::string> arguments) const;
    ProgramResult repair(std::vector<std::string> arguments) const;
    ProgramResult convert(std::vector<std::string> arguments) const;

    [[nodiscard]] std::string trash() const { return home() + "/.Trash"; }
    /// A folder below the user's Library.
    [[nodiscard]] std::string library(std::string_view folder) const;
    [[nodiscard]] std::string logPath(int generation = 1) const;
    /// The messages of the current log, its header checked and taken off.
    [[nodiscard]] std::vector<std::string> log() const;

    /// Writes a sound XMEML file and returns its path.
    [[nodiscard]] std::string writeSound(std::string_view name) const;
    /// Writes an XMEML file that the programs can repair and returns its path.
    [[nodiscard]] std::string writeDamaged(std::string_view name) const;

  private:
    [[nodiscard]] ProgramSettings settings(std::string_view program,
                                           std::vector<std::string> arguments) const;

    const TestMaterial& material_;
    Sandbox sandbox_;
};

/// A sound XMEML file of the given version, in the form that the programs write.
[[nodiscard]] std::string soundXMEML(std::string_view version = "5");
/// `soundXMEML()` with one fault that can be repaired: a vertical tab inside a name.
[[nodiscard]] std::string damagedXMEML();
/// What the programs make of `damagedXMEML()`.
[[nodiscard]] std::string repairedXMEML();

/// The report of a sound XMEML file and of `damagedXMEML()`.
[[nodiscard]] std::string soundReport(const std::string& path);
[[nodiscard]] std::string repairedReport(const std::string& path);

/// Whether standard error holds the line about the original of one repaired file, and nothing else.
[[nodiscard]] bool tellsOriginal(const std::string& errors, const std::string& trash);

/// The messages that these two repairs log.
[[nodiscard]] std::vector<std::string> soundLog(const std::string& path);
[[nodiscard]] std::vector<std::string> repairedLog(const std::string& path);

}  // namespace vornic::test

#endif
