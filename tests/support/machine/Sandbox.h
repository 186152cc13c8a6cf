#ifndef VORNIC_TESTS_SUPPORT_MACHINE_SANDBOX_H
#define VORNIC_TESTS_SUPPORT_MACHINE_SANDBOX_H

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace vornic::test {

/// A fresh folder with a home of its own for one test. `HOME`, `TMPDIR` and the XDG variables point
/// into it while the object lives; the folder and everything in it is removed with it.
class Sandbox {
  public:
    Sandbox();
    ~Sandbox();
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    /// The folder for the test's own files, without a trailing slash.
    [[nodiscard]] const std::string& folder() const { return folder_; }
    /// The home folder (`HOME`).
    [[nodiscard]] const std::string& home() const { return home_; }
    /// `folder()` joined with `name`.
    [[nodiscard]] std::string path(std::string_view name) const;
    /// Writes `bytes` to `path(name)`, replacing what is there, and returns the path.
    std::string write(std::string_view name, std::string_view bytes) const;

  private:
    std::string root_;
    std::string folder_;
    std::string home_;
};

/// Reads a whole file; a failure is a failure of the running test and yields "".
[[nodiscard]] std::string readBytes(const std::string& path);

/// True when something, a dangling link included, stands at `path`.
[[nodiscard]] bool exists(const std::string& path);

/// Base class of tests that touch files.
class SandboxTest : public ::testing::Test {
  protected:
    Sandbox sandbox;
};

}  // namespace vornic::test

#endif
