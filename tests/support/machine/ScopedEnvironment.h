#ifndef VORNIC_TESTS_SUPPORT_MACHINE_SCOPED_ENVIRONMENT_H
#define VORNIC_TESTS_SUPPORT_MACHINE_SCOPED_ENVIRONMENT_H

#include <cstdlib>
#include <optional>
#include <string>

namespace vornic::test {

/// Gives a variable of the environment a value while the object lives.
class ScopedEnvironment {
  public:
    ScopedEnvironment(const char* name, const std::string& value) : name_(name) {
        if (const char* const before = std::getenv(name)) {
            before_ = before;
        }
        setenv(name, value.c_str(), 1);
    }
    ~ScopedEnvironment() {
        if (before_) {
            setenv(name_.c_str(), before_->c_str(), 1);
        } else {
            unsetenv(name_.c_str());
        }
    }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

  private:
    std::string name_;
    std::optional<std::string> before_;
};

}  // namespace vornic::test

#endif
