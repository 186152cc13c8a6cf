#ifndef VORNIC_BASE_ERRNO_OR_H
#define VORNIC_BASE_ERRNO_OR_H

#include <optional>
#include <utility>

namespace vornic {

/// An errno value as the result of what failed with it (errno(3)).
struct Errno {
    int number = 0;
};

/// The value that an operation gave, or the errno value for which it gave none.
template <typename Value>
class [[nodiscard]] ErrnoOr {
  public:
    ErrnoOr(Value value) : value_(std::move(value)) {}
    ErrnoOr(Errno failure) : errorNumber_(failure.number) {}

    [[nodiscard]] explicit operator bool() const { return value_.has_value(); }
    /// The value; there must be one.
    [[nodiscard]] const Value& operator*() const& { return *value_; }
    [[nodiscard]] Value& operator*() & { return *value_; }
    [[nodiscard]] Value operator*() && { return std::move(*value_); }
    [[nodiscard]] const Value* operator->() const { return &*value_; }

    /// Why there is no value; 0 when there is one.
    [[nodiscard]] int errorNumber() const { return errorNumber_; }
    /// The value, or nothing, where the reason makes no difference.
    [[nodiscard]] const std::optional<Value>& value() const& { return value_; }
    [[nodiscard]] std::optional<Value> value() && { return std::move(value_); }

  private:
    std::optional<Value> value_;
    int errorNumber_ = 0;
};

}  // namespace vornic

#endif
