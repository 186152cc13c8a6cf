#include "ui/support/QMSiteLinks.h"

#include "base/FormatString.h"
#include "base/PercentEncoding.h"
#include "platform/settings/Bundle.h"

namespace vornic {

#ifndef VORNIC_SITE_ADDRESS
#error "VORNIC_SITE_ADDRESS is the base address of the maker's web site"
#endif

constexpr std::string_view QMSiteLinks::kBaseAddress = VORNIC_SITE_ADDRESS;

namespace {

/// A page about an application, with the application of the family as a query item when given.
std::string supportPage(std::string_view page, std::string_view appName,
                        const QMSiteLinks::Text& subapp) {
    std::string address =
        formatString("%@/support/%@/%@/", QMSiteLinks::kBaseAddress, appName, page);
    return subapp ? address + formatString("?app=%@", *subapp) : address;
}

}  // namespace

std::string QMSiteLinks::quillmarkURL() {
    return std::string(kBaseAddress);
}

std::string QMSiteLinks::quillmarkProductsURL() {
    return quillmarkURL() + "/products";
}

std::string QMSiteLinks::brindleToolsURL() {
    return formatString("%@/brindletools", kBaseAddress);
}

std::string QMSiteLinks::supportURLForAppName(std::string_view appName) {
    return quillmarkURL() + formatString("/support/%@", appName);
}

std::string QMSiteLinks::bugReportURLWithAppName(std::string_view appName, const Text& subapp) {
    return bugReportURLWithAppName(
        appName, subapp, platform::Bundle::mainBundle().infoString("CFBundleShortVersionString"));
}

std::string QMSiteLinks::bugReportURLWithAppName(std::string_view appName, const Text& subapp,
                                                 const Text& version) {
    std::string address = supportPage("bugreport", appName, subapp);
    if (version) {
        address += subapp ? "&" : "?";
        address += formatString("version=%@", platform::percentEncoded(*version));
    }
    return address;
}

std::string QMSiteLinks::featureRequestURLWithAppName(std::string_view appName,
                                                      const Text& subapp) {
    return supportPage("featurerequest", appName, subapp);
}

}  // namespace vornic
