#ifndef VORNIC_CHECK_FRESH_IDS_H
#define VORNIC_CHECK_FRESH_IDS_H

#include <string>
#include <string_view>
#include <unordered_map>

#include "formats/ElementIndex.h"

namespace vornic {

/// Ids that no element of a file has, and that were not given before.
class FreshIds {
  public:
    explicit FreshIds(const ElementIndex& index) : index_(index) {}

    /// "r1-2" for "r1", if that is free.
    /// @param id that of another element, raw.
    [[nodiscard]] std::string like(std::string_view id);

  private:
    const ElementIndex& index_;
    std::unordered_map<std::string, int> lastNumbers_;
};

}  // namespace vornic

#endif
