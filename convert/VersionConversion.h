#ifndef VORNIC_CONVERT_VERSION_CONVERSION_H
#define VORNIC_CONVERT_VERSION_CONVERSION_H

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/Error.h"
#include "xml/tree/XMLDocument.h"

namespace vornic {

/// What converting a document to a version means.
struct ConversionPlan {
    /// The version that the document declares and the target, as numbers.
    std::int64_t current = 0;
    std::int64_t target = 0;
    /// The target as the document is to declare it.
    std::string version;
    /// True for a downgrade below the lowest version that holds the document without loss: the
    /// elements that the target does not know have to go.
    bool losesInformation = false;
};

/// Why a document cannot be converted.
enum class ConversionRefusal {
    /// It is no XMEML, or declares no version.
    noVersion,
    /// It declares a version without a value.
    noVersionAttribute,
};

/// Whether elements have to go: for a downgrade below the lowest version that holds the document
/// without loss. @param lowest 0 before an analysis has run
[[nodiscard]] bool losesInformation(std::int64_t current, std::int64_t target, std::int64_t lowest);

/// Plans a conversion. Any thread.
/// @param document may be null, which is refused
/// @param version the target, a decimal string
/// @param lowestVersion the lowest version without loss, as an analysis has found it; 0 before one
///     has run, which makes every conversion one without loss
[[nodiscard]] std::variant<ConversionPlan, ConversionRefusal> planConversion(
    const XMLDocument* document, const std::string& version, std::int64_t lowestVersion);

/// What became of the removal of elements.
struct StripResult {
    enum class Outcome { done, noCatalogue, noVersion };
    Outcome outcome = Outcome::done;
    /// What was wrong with names of the catalogue that are no query, in their order.
    std::vector<Error> queryErrors;
};

/// Removes the elements, with all that is in them, that every catalogue version above the target
/// introduced, the highest version first. A document that is no XMEML, and a target that the
/// catalogue does not know, change nothing. Any thread.
[[nodiscard]] StripResult stripElementsAbove(XMLDocument& document, const std::string& version);

}  // namespace vornic

#endif
