#ifndef VORNIC_PLATFORM_PROCESSES_PAGED_LIST_H
#define VORNIC_PLATFORM_PROCESSES_PAGED_LIST_H

#include <cstddef>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

namespace vornic::platform {

/// Memory of its own pages that grows without being copied (mremap(2)) and prefers large pages once
/// it is large. Pages that nothing was written to take none.
class GrowingPages {
  public:
    GrowingPages() = default;
    GrowingPages(GrowingPages&& other) noexcept
        : memory_(std::exchange(other.memory_, nullptr)), size_(std::exchange(other.size_, 0)) {}
    GrowingPages& operator=(GrowingPages&& other) noexcept {
        std::swap(memory_, other.memory_);
        std::swap(size_, other.size_);
        return *this;
    }
    GrowingPages(const GrowingPages&) = delete;
    GrowingPages& operator=(const GrowingPages&) = delete;
    ~GrowingPages();

    [[nodiscard]] void* memory() const { return memory_; }
    [[nodiscard]] std::size_t size() const { return size_; }
    /// Makes it at least that large; what it holds may move. Raises `std::bad_alloc`.
    void growTo(std::size_t size);

  private:
    void* memory_ = nullptr;
    std::size_t size_ = 0;
};

/// A list of plain values that only grows, for as many as a large text has elements: neither
/// growing nor touching its memory for the first time costs much.
template <typename Entry>
class PagedList {
  public:
    static_assert(std::is_trivially_copyable_v<Entry> && std::is_trivially_destructible_v<Entry>);

    PagedList() = default;
    PagedList(PagedList&& other) noexcept
        : pages_(std::move(other.pages_)), size_(std::exchange(other.size_, 0)) {}
    PagedList& operator=(PagedList&& other) noexcept {
        std::swap(pages_, other.pages_);
        std::swap(size_, other.size_);
        return *this;
    }
    PagedList(const PagedList&) = delete;
    PagedList& operator=(const PagedList&) = delete;
    ~PagedList() = default;

    [[nodiscard]] PagedList copy() const {
        PagedList copy;
        if (size_ != 0) {
            copy.pages_.growTo(size_ * sizeof(Entry));
            std::memcpy(copy.pages_.memory(), pages_.memory(), size_ * sizeof(Entry));
            copy.size_ = size_;
        }
        return copy;
    }

    /// Adds one with the values of `Entry{}`. What it raises passes on.
    /// @return the new one, to be filled in place; entries may have moved.
    Entry& add() {
        if ((size_ + 1) * sizeof(Entry) > pages_.size()) {
            pages_.growTo((size_ + 1) * sizeof(Entry));
        }
        return *new (entries() + size_++) Entry{};
    }
    [[nodiscard]] std::size_t size() const { return size_; }
    [[nodiscard]] Entry& operator[](std::size_t index) { return entries()[index]; }
    [[nodiscard]] const Entry& operator[](std::size_t index) const { return entries()[index]; }

  private:
    [[nodiscard]] Entry* entries() const { return static_cast<Entry*>(pages_.memory()); }

    GrowingPages pages_;
    std::size_t size_ = 0;
};

}  // namespace vornic::platform

#endif
