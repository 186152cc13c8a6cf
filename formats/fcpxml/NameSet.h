#ifndef VORNIC_FORMATS_FCPXML_NAME_SET_H
#define VORNIC_FORMATS_FCPXML_NAME_SET_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vornic::fcpxml {

/// A set of the names in a text: 16 bytes a name beside its own, and no piece of memory for each,
/// since a file has an id for every asset and text style. One thread.
class NameSet {
  public:
    [[nodiscard]] bool contains(std::string_view name) const {
        return size_ != 0 && isAt(placeOf(name, hashOf(name)), name, hashOf(name));
    }
    /// Keeps a copy of the name. @return false when it was there already.
    bool insert(std::string_view name);

  private:
    struct Entry {
        std::uint64_t offset = 0;
        std::uint32_t length = 0;
        // 0 for a place that is free.
        std::uint32_t hash = 0;
    };

    [[nodiscard]] static std::uint32_t hashOf(std::string_view name);
    [[nodiscard]] bool isAt(std::size_t place, std::string_view name, std::uint32_t hash) const;
    [[nodiscard]] std::size_t placeOf(std::string_view name, std::uint32_t hash) const;
    void grow();

    std::string characters_;
    // A power of two; more than a third is free.
    std::vector<Entry> entries_;
    std::size_t size_ = 0;
};

}  // namespace vornic::fcpxml

#endif
