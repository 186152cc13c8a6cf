#ifndef VORNIC_TESTS_APP_TEST_MATERIAL_H
#define VORNIC_TESTS_APP_TEST_MATERIAL_H

#include <string>
#include <string_view>

namespace vornic::test {

/// The built programs and the fixtures, in a place where the user who runs the programs can read
/// them: in the build and source trees, or in a copy when the tests were started as root and the
/// trees lie where only root may look. Make it before the process gives root's rights up.
class TestMaterial {
  public:
    TestMaterial();
    ~TestMaterial();
    TestMaterial(const TestMaterial&) = delete;
    TestMaterial& operator=(const TestMaterial&) = delete;

    /// The path of a program ("vornic", "vornic-repair"), its bundle beside its folder.
    [[nodiscard]] std::string program(std::string_view name) const;
    /// The path of a fixture.
    [[nodiscard]] std::string fixture(std::string_view name) const;
    /// The application bundle that the programs use.
    [[nodiscard]] std::string bundle() const;

  private:
    std::string programs_;
    std::string fixtures_;
    std::string copy_;
};

}  // namespace vornic::test

#endif
