#ifndef VORNIC_CONVERT_CONVERSION_ANALYSIS_H
#define VORNIC_CONVERT_CONVERSION_ANALYSIS_H

#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "base/StopToken.h"
#include "convert/ConversionOffer.h"
#include "convert/catalogue/VersionCatalogue.h"
#include "xml/tree/XMLDocument.h"

namespace vornic {

/// A file that can be converted: its document, and what it declares.
struct ConvertibleFile {
    std::unique_ptr<XMLDocument> document;
    VersionCatalogue catalogue;
    /// The text of the "version" attribute.
    std::string version;
    /// The Final Cut Pro release that this version needs; "Unknown Version" when the catalogue does
    /// not say.
    std::string release;
};

/// Why a file cannot be converted.
struct AnalysisFailure {
    enum class Kind { notLoaded, noCatalogue, noVersion };
    Kind kind;
    /// For `notLoaded`: why.
    std::string description;
};

/// Reads a file, strictly, and the version that it declares. Any thread.
[[nodiscard]] std::variant<ConvertibleFile, AnalysisFailure> readForConversion(
    const std::string& path);

/// Works out which versions can be offered for a file, and the lowest of them that holds it without
/// loss. Any thread.
/// @param stop asked between the versions
/// @return nothing when it was stopped.
[[nodiscard]] std::optional<ConversionOffer> makeConversionOffer(const ConvertibleFile& file,
                                                                 const StopToken& stop);

}  // namespace vornic

#endif
