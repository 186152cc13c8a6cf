#ifndef VORNIC_SALVAGE_NAME_TABLE_H
#define VORNIC_SALVAGE_NAME_TABLE_H

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>

#include "salvage/Token.h"

namespace vornic::salvage {

/// The names of elements as numbers. Those of a format come first and are known; the rest is what
/// the text holds.
class NameTable {
  public:
    /// Names that are none: what stands before the first child, text, an element's end, the
    /// document around the root element, and a name that could not be read.
    static constexpr NameId kStart = 0;
    static constexpr NameId kText = 1;
    static constexpr NameId kEnd = 2;
    static constexpr NameId kDocument = 3;
    static constexpr NameId kNameless = 4;
    /// For every name beyond the most that are told apart.
    static constexpr NameId kOther = 0xFFFF;

    NameTable() {
        for (std::string_view text : {" start", " text", " end", " document", ""}) {
            static_cast<void>(idOf(text));
        }
    }

    [[nodiscard]] NameId idOf(std::string_view name) {
        const auto found = ids_.find(name);
        if (found != ids_.end()) {
            return found->second;
        }
        if (names_.size() >= kOther) {
            return kOther;
        }
        const auto id = static_cast<NameId>(names_.size());
        ids_.emplace(names_.emplace_back(name), id);
        return id;
    }
    /// @return `kOther` for a name that the table lacks.
    [[nodiscard]] NameId find(std::string_view name) const {
        const auto found = ids_.find(name);
        return found == ids_.end() ? kOther : found->second;
    }
    [[nodiscard]] std::string_view textOf(NameId id) const {
        return id < names_.size() ? std::string_view(names_[id]) : std::string_view();
    }
    [[nodiscard]] std::size_t size() const { return names_.size(); }
    [[nodiscard]] bool isFull() const { return names_.size() >= kOther; }

    /// What is in the table so far are names of the format.
    void markKnown() { known_ = names_.size(); }
    [[nodiscard]] bool isKnown(NameId id) const { return id < known_ && id > kNameless; }

  private:
    std::deque<std::string> names_;
    std::unordered_map<std::string_view, NameId> ids_;
    std::size_t known_ = 0;
};

}  // namespace vornic::salvage

#endif
