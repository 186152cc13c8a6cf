#ifndef VORNIC_FORMATS_XMEML_ID_TABLE_H
#define VORNIC_FORMATS_XMEML_ID_TABLE_H

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "formats/xmeml/View.h"

namespace vornic::xmeml {

/// Elements by a text that belongs to each: mostly the ids of one kind of element, since a file and
/// a clip item may have the same one. 16 bytes an element; texts are read anew when they are
/// compared. Fill it with `add`, then call `sort` once.
class IdTable {
  public:
    void add(ElementNumber element, std::string_view text) {
        entries_.push_back({hashOf(text), element});
    }
    void sort();
    [[nodiscard]] bool isEmpty() const { return entries_.empty(); }

    /// Reads the text of an element that was added.
    using Reader = std::function<std::string_view(ElementNumber, std::string& storage)>;

    /// The first element with the text, or `kNoElement`.
    [[nodiscard]] ElementNumber find(std::string_view text, const Reader& read) const;
    /// Tells each element whose text an earlier one has, with the first of them, in the order of
    /// the file.
    void forEachRepeated(const Reader& read,
                         const std::function<void(ElementNumber first, ElementNumber)>& tell) const;
    /// The first element of each text, in the order of the file.
    [[nodiscard]] std::vector<ElementNumber> firstOfEach(const Reader& read) const;

  private:
    struct Entry {
        std::uint64_t hash;
        ElementNumber element;
    };

    [[nodiscard]] static std::uint64_t hashOf(std::string_view text) {
        return std::hash<std::string_view>()(text);
    }
    // Calls with the first element of the text of each.
    void forEach(const Reader& read,
                 const std::function<void(ElementNumber first, ElementNumber)>& tell) const;

    std::vector<Entry> entries_;
};

}  // namespace vornic::xmeml

#endif
