#ifndef VORNIC_BASE_REPLACEABLE_H
#define VORNIC_BASE_REPLACEABLE_H

#include <mutex>
#include <utility>

namespace vornic::platform {

/// A value that may be replaced while other threads use it; each of them works on a copy.
template <typename T>
class Replaceable {
  public:
    [[nodiscard]] T value() const {
        const std::lock_guard lock(mutex_);
        return value_;
    }
    void set(T value) {
        const std::lock_guard lock(mutex_);
        std::swap(value_, value);
    }

  private:
    mutable std::mutex mutex_;
    T value_{};
};

}  // namespace vornic::platform

#endif
