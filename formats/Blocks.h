#ifndef VORNIC_FORMATS_BLOCKS_H
#define VORNIC_FORMATS_BLOCKS_H

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

namespace vornic {

/// A list that only grows, in blocks: growing moves nothing and needs no second copy of what is
/// there, and at most one block is not used to its end.
template <typename Entry>
class Blocks {
  public:
    void push_back(const Entry& entry) {
        if (size_ % kBlockLength == 0) {
            blocks_.push_back(std::make_unique<Block>());
        }
        (*this)[size_++] = entry;
    }
    [[nodiscard]] Entry& operator[](std::size_t index) {
        return (*blocks_[index / kBlockLength])[index % kBlockLength];
    }
    [[nodiscard]] const Entry& operator[](std::size_t index) const {
        return (*blocks_[index / kBlockLength])[index % kBlockLength];
    }
    [[nodiscard]] std::size_t size() const { return size_; }

  private:
    static constexpr std::size_t kBlockLength = 1024;
    using Block = std::array<Entry, kBlockLength>;

    std::vector<std::unique_ptr<Block>> blocks_;
    std::size_t size_ = 0;
};

}  // namespace vornic

#endif
