#include "ui/QMShortcutKeyFieldEditor.h"

#include "ui/QMShortcutKeyTableDelegate.h"

namespace vornic {

void QMShortcutKeyFieldEditor::keyDown(const ShortcutKey& key) {
    NotificationCenter::post(QMShortcutKeyTableDelegate::kChangedNotification, key.userInfo());
}

}  // namespace vornic
