#ifndef VORNIC_FORMATS_BLOCKS_H
#define VORNIC_FORMATS_BLOCKS_H

#include <array>
#include <compare>
#include <cstddef>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>
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
    [[nodiscard]] bool empty() const { return size_ == 0; }
    [[nodiscard]] Entry& back() { return (*this)[size_ - 1]; }
    [[nodiscard]] const Entry& back() const { return (*this)[size_ - 1]; }
    void pop_back() { shrinkTo(size_ - 1); }
    /// Keeps the first ones, and gives the memory of the others back.
    void shrinkTo(std::size_t size) {
        size_ = size;
        blocks_.resize((size + kBlockLength - 1) / kBlockLength);
    }

    /// A place in the list, for algorithms of the standard library.
    template <typename List, typename Value>
    class Place {
      public:
        using iterator_category = std::random_access_iterator_tag;
        using difference_type = std::ptrdiff_t;
        using value_type = std::remove_const_t<Value>;
        using pointer = Value*;
        using reference = Value&;

        Place() = default;
        Place(List* list, std::size_t at) : list_(list), at_(at) {}

        [[nodiscard]] Value& operator*() const { return (*list_)[at_]; }
        [[nodiscard]] Value* operator->() const { return &(*list_)[at_]; }
        [[nodiscard]] Value& operator[](difference_type steps) const { return *(*this + steps); }
        Place& operator+=(difference_type steps) {
            at_ = static_cast<std::size_t>(static_cast<difference_type>(at_) + steps);
            return *this;
        }
        Place& operator-=(difference_type steps) { return *this += -steps; }
        Place& operator++() { return *this += 1; }
        Place& operator--() { return *this -= 1; }
        Place operator++(int) { return std::exchange(*this, *this + 1); }
        Place operator--(int) { return std::exchange(*this, *this - 1); }
        [[nodiscard]] friend Place operator+(Place place, difference_type steps) {
            return place += steps;
        }
        [[nodiscard]] friend Place operator+(difference_type steps, Place place) {
            return place += steps;
        }
        [[nodiscard]] friend Place operator-(Place place, difference_type steps) {
            return place -= steps;
        }
        [[nodiscard]] friend difference_type operator-(const Place& left, const Place& right) {
            return static_cast<difference_type>(left.at_) - static_cast<difference_type>(right.at_);
        }
        [[nodiscard]] friend bool operator==(const Place& left, const Place& right) {
            return left.at_ == right.at_;
        }
        [[nodiscard]] friend auto operator<=>(const Place& left, const Place& right) {
            return left.at_ <=> right.at_;
        }

      private:
        List* list_ = nullptr;
        std::size_t at_ = 0;
    };
    using iterator = Place<Blocks, Entry>;
    using const_iterator = Place<const Blocks, const Entry>;

    [[nodiscard]] iterator begin() { return {this, 0}; }
    [[nodiscard]] iterator end() { return {this, size_}; }
    [[nodiscard]] const_iterator begin() const { return {this, 0}; }
    [[nodiscard]] const_iterator end() const { return {this, size_}; }

  private:
    static constexpr std::size_t kBlockLength = 1024;
    using Block = std::array<Entry, kBlockLength>;

    std::vector<std::unique_ptr<Block>> blocks_;
    std::size_t size_ = 0;
};

}  // namespace vornic

#endif
