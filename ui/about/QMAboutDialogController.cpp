#include "ui/about/QMAboutDialogController.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/FormatString.h"
#include "base/PathText.h"
#include "platform/files/FileSystem.h"
#include "platform/settings/Bundle.h"
#include "platform/settings/PropertyList.h"

namespace vornic {
namespace {

using platform::Bundle;
using platform::PropertyList;

constexpr std::string_view kFamilyName = "Brindle Tools";
constexpr double kHeightWithoutCredits = 250.0;

std::string executableName(const Bundle& bundle) {
    return withoutExtension(
        bundle.infoString("CFBundleExecutable").value_or(platform::applicationName()));
}

/// The text or the whole number of a key, where the list holds one.
std::string textOf(const std::optional<PropertyList>& list, std::string_view key) {
    const PropertyList* value = list ? list->find(key) : nullptr;
    if (value == nullptr) {
        return "";
    }
    if (const std::int64_t* number = value->integer()) {
        return std::to_string(*number);
    }
    const std::string* text = value->string();
    return text != nullptr ? *text : "";
}

std::string versionText(const Bundle& bundle) {
    ErrorSlot ignored;
    const std::optional<std::string> path = bundle.pathForResource("QMUpdates", "plist");
    const std::optional<PropertyList> updates =
        path ? PropertyList::readFile(*path, ignored) : std::nullopt;
    return formatString("%@ (%@)\n\n%@ %@ (%@)",
                        bundle.infoString("CFBundleShortVersionString").value_or(""),
                        bundle.infoString("CFBundleVersion").value_or(""), kFamilyName,
                        textOf(updates, "QMGroupVersionString"), textOf(updates, "QMGroupVersion"));
}

}  // namespace

void QMAboutDialogController::awakeFromNib() {
    const Bundle bundle = Bundle::mainBundle();
    PanelFrame frame = panel_.frame().value_or(PanelFrame{});
    if (const std::optional<std::string> credits = bundle.pathForResource("Credits", "rtf")) {
        showCredits(*credits);
    } else {
        frame.height = kHeightWithoutCredits;
        panel_.setCreditsHidden(true);
        panel_.setFrame(frame);
    }
    panel_.showApplicationIcon();
    const std::string name = executableName(bundle);
    panel_.setTitle(formatString("About %@", name));
    panel_.setAppName(name);
    panel_.setVersion(versionText(bundle));
}

void QMAboutDialogController::showCredits(const std::string& path) {
    ErrorSlot ignored;
    const std::optional<std::string> rtf = platform::readFile(path, ignored);
    if (!rtf) {
        return;
    }
    panel_.setCreditsEditable(true);
    panel_.insertCredits(*rtf);
    panel_.setCreditsEditable(false);
    panel_.scrollCreditsToBeginning();
}

}  // namespace vornic
