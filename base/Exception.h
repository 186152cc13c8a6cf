#ifndef VORNIC_BASE_EXCEPTION_H
#define VORNIC_BASE_EXCEPTION_H

#include <exception>
#include <string>
#include <utility>

namespace vornic::platform {

/// The exception that code of this system raises and catches at the border of an operation. It
/// carries a name, which says the kind, and a reason in words. Other exceptions (`std::bad_alloc`,
/// say) are not caught there and pass on.
class Exception : public std::exception {
  public:
    Exception(std::string name, std::string reason)
        : name_(std::move(name)), reason_(std::move(reason)) {}

    [[nodiscard]] const std::string& name() const noexcept { return name_; }
    [[nodiscard]] const std::string& reason() const noexcept { return reason_; }
    /// The reason, as a C string that lives as long as the exception.
    [[nodiscard]] const char* what() const noexcept override { return reason_.c_str(); }

  private:
    std::string name_;
    std::string reason_;
};

/// An index or a range outside the text or list that it was meant for.
class RangeException : public Exception {
  public:
    explicit RangeException(std::string reason)
        : Exception("NSRangeException", std::move(reason)) {}
};

}  // namespace vornic::platform

#endif
