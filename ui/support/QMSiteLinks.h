#ifndef VORNIC_UI_SUPPORT_QM_SITE_LINKS_H
#define VORNIC_UI_SUPPORT_QM_SITE_LINKS_H

#include <optional>
#include <string>
#include <string_view>

namespace vornic {

/// The addresses of the maker's web pages. Class-level, without state; any thread. Names stand in
/// an address as they are given, with no escapes; texts are UTF-8.
class QMSiteLinks {
  public:
    using Text = std::optional<std::string>;

    QMSiteLinks() = delete;

    /// The maker's home page, without a slash at its end, as the build was told.
    static const std::string_view kBaseAddress;

    [[nodiscard]] static std::string quillmarkURL();
    /// The page of all products.
    [[nodiscard]] static std::string quillmarkProductsURL();
    /// The page of the product family.
    [[nodiscard]] static std::string brindleToolsURL();
    [[nodiscard]] static std::string supportURLForAppName(std::string_view appName);

    /// The page on which a fault is reported.
    /// @param appName the name that the support pages know, such as "brindletools"
    /// @param subapp the application of the family; without it the page asks
    /// @param version with its percent escapes made here; in the shorter form it is the main
    ///     bundle's "CFBundleShortVersionString", if that has one
    [[nodiscard]] static std::string bugReportURLWithAppName(std::string_view appName,
                                                             const Text& subapp);
    [[nodiscard]] static std::string bugReportURLWithAppName(std::string_view appName,
                                                             const Text& subapp,
                                                             const Text& version);
    /// The page on which a feature is asked for.
    [[nodiscard]] static std::string featureRequestURLWithAppName(std::string_view appName,
                                                                  const Text& subapp);
};

}  // namespace vornic

#endif
