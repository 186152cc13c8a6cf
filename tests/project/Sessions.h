#ifndef VORNIC_TESTS_PROJECT_SESSIONS_H
#define VORNIC_TESTS_PROJECT_SESSIONS_H

#include <map>
#include <string>
#include <vector>

#include "tests/app/TestMaterial.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"

namespace vornic::test {

/// A session that a document shows: a code block marked "console", in which lines with "$ " are
/// commands and the others what they print.
struct Session {
    std::vector<std::string> commands;
    std::string shown;
};

/// All sessions of a document in Markdown.
[[nodiscard]] std::vector<Session> sessionsOf(const std::string& document);

/// The programs that a document shows, by their names: code blocks that begin with "#!", and of
/// which the second line says "# NAME ...".
[[nodiscard]] std::map<std::string, std::string> programsOf(const std::string& document);

/// A home folder in which sessions are played one after the other, as a user without root's rights.
/// In what it shows the home folder is /home/anna.
class SessionPlayer {
  public:
    /// @param projects the folder of fixtures that the folder "Projects", where sessions begin, is
    ///     a copy of
    explicit SessionPlayer(const std::string& projects);

    /// Makes a program that sessions can call by its name.
    void addProgram(const std::string& name, const std::string& script) const;
    /// What a terminal would show of the session: each command and then what it prints.
    [[nodiscard]] std::string play(const Session& session) const;

  private:
    TestMaterial material_;
    Unprivileged unprivileged_;
    Sandbox sandbox_;
    std::string projects_ = sandbox_.home() + "/Projects";
    std::string added_ = sandbox_.path("programs");
};

}  // namespace vornic::test

#endif
