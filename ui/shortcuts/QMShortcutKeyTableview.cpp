#include "ui/shortcuts/QMShortcutKeyTableview.h"

#include "ui/shortcuts/QMShortcutKeyTableDelegate.h"

namespace vornic {

bool QMShortcutKeyTableview::keyDown(std::string_view characters) {
    if (characters != "\b" && characters != "\x7F") {
        return false;
    }
    NotificationCenter::post(QMShortcutKeyTableDelegate::kClearedNotification);
    return true;
}

}  // namespace vornic
