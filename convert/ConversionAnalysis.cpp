#include "convert/ConversionAnalysis.h"

#include <utility>
#include <vector>

#include "base/Error.h"
#include "base/FormatString.h"

namespace vornic {

namespace {

/// What stands in a menu title for a version without a release.
constexpr std::string_view kMissingLabel = "(null)";

ConversionOffer::Version offerVersion(const ConvertibleFile& file, const std::string& key) {
    return {
        .key = key,
        .title = formatString("%@ (Final Cut Pro %@+)", key,
                              file.catalogue.fcpVersion(key).value_or(std::string(kMissingLabel))),
        .test = testVersion(file.document->xmlString(), key),
        // Deliberate: every version but the current one stands in the menu twice.
        .menuItems = key == file.version ? 1 : 2,
    };
}

}  // namespace

std::variant<ConvertibleFile, AnalysisFailure> readForConversion(const std::string& path) {
    using Kind = AnalysisFailure::Kind;
    ErrorSlot error;
    std::unique_ptr<XMLDocument> document = XMLDocument::load(path, XMLMode::strict, error);
    if (!document) {
        return AnalysisFailure{Kind::notLoaded, error.value_or(Error()).localizedDescription()};
    }
    std::optional<VersionCatalogue> catalogue = VersionCatalogue::load();
    if (!catalogue) {
        return AnalysisFailure{Kind::noCatalogue, {}};
    }
    std::optional<std::string> version =
        document->rootName() == "xmeml" ? document->rootAttribute("version") : std::nullopt;
    if (!version) {
        return AnalysisFailure{Kind::noVersion, {}};
    }
    std::string release = catalogue->fcpVersion(*version).value_or("Unknown Version");
    return ConvertibleFile{std::move(document), std::move(*catalogue), std::move(*version),
                           std::move(release)};
}

std::optional<ConversionOffer> makeConversionOffer(const ConvertibleFile& file,
                                                   const StopToken& stop) {
    const std::vector<std::string> keys = file.catalogue.sortedKeys();
    ConversionOffer offer{
        .version = file.version, .release = file.release, .versions = {}, .lowest = {}};
    offer.versions.reserve(keys.size());
    for (auto key = keys.rbegin(); key != keys.rend(); ++key) {
        if (stop.stopRequested()) {
            return std::nullopt;
        }
        offer.versions.push_back(offerVersion(file, *key));
        if (offer.versions.back().test.isRequired && !offer.lowest) {
            offer.lowest = offer.versions.size() - 1;
        }
    }
    return offer;
}

}  // namespace vornic
