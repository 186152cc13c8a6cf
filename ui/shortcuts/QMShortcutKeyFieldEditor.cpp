#include "ui/shortcuts/QMShortcutKeyFieldEditor.h"

#include "ui/shortcuts/QMShortcutKeyTableDelegate.h"

namespace vornic {

void QMShortcutKeyFieldEditor::keyDown(const ShortcutKey& key) {
    NotificationCenter::post(QMShortcutKeyTableDelegate::kChangedNotification, key.userInfo());
}

}  // namespace vornic
