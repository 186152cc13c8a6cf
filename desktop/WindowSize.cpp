#include "desktop/WindowSize.h"

#include <QScreen>
#include <algorithm>
#include <string>
#include <tuple>

#include "platform/settings/UserPreferences.h"

namespace vornic {

namespace {

std::string keyOf(const QWidget& window, const char* side) {
    return "window." + window.objectName().toStdString() + "." + side;
}

int storedLength(const std::string& key, int otherwise) {
    const std::optional<platform::PropertyList> value = platform::UserPreferences().value(key);
    const std::int64_t* const length = value ? value->integer() : nullptr;
    return length != nullptr && *length > 0
               ? static_cast<int>(std::min<std::int64_t>(*length, QWIDGETSIZE_MAX))
               : otherwise;
}

}  // namespace

void fitOnScreen(QWidget& window, QSize size) {
    window.resize(size.boundedTo(window.screen()->availableSize() - kWindowFrame));
}

void restoreWindowSize(QWidget& window, QSize otherwise) {
    const QSize size(storedLength(keyOf(window, "width"), otherwise.width()),
                     storedLength(keyOf(window, "height"), otherwise.height()));
    // It may have been kept on a larger screen than this one.
    fitOnScreen(window, size);
}

void saveWindowSize(const QWidget& window) {
    if (window.isMaximized() || window.isFullScreen()) {
        return;
    }
    const platform::UserPreferences preferences;
    ErrorSlot ignored;  // the next window has the default size, then
    std::ignore = preferences.setValue(keyOf(window, "width"), window.width(), ignored);
    std::ignore = preferences.setValue(keyOf(window, "height"), window.height(), ignored);
}

}  // namespace vornic
