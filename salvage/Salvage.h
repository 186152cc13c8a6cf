#ifndef VORNIC_SALVAGE_SALVAGE_H
#define VORNIC_SALVAGE_SALVAGE_H

#include <string>
#include <string_view>
#include <vector>

#include "salvage/Structure.h"

namespace vornic::salvage {

/// What is left of a broken text.
struct SalvagedText {
    /// Well-formed documents, one for each root element; none with a refusal.
    std::vector<std::string> copies;
    /// Why there is nothing, as a sentence without a full stop; "" otherwise.
    std::string refusal;
};

/// Makes well-formed documents of a broken text. Linear.
/// @param text UTF-8.
[[nodiscard]] SalvagedText salvageText(std::string_view text, const Weights& weights = {});

}  // namespace vornic::salvage

#endif
