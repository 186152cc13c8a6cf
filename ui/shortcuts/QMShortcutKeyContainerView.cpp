#include "ui/shortcuts/QMShortcutKeyContainerView.h"

#include "ui/shortcuts/QMShortcutKeyTableDelegate.h"
#include "ui/shortcuts/ShortcutKeyMessage.h"

namespace vornic {

QMShortcutKeyContainerView::QMShortcutKeyContainerView(ShortcutKeyInterface& interface)
    : pane_(interface.loadInterface("QMShortcutKeyConfig")) {
    if (pane_ == nullptr) {
        tellOfShortcutKeys("Error: unable to load keyboard shortcut interface");
        return;
    }
    interface.addFilling(*pane_);
    QMShortcutKeyTableDelegate& controller = QMShortcutKeyTableDelegate::sharedController();
    controller.setParentView(this);
    controller.awakeFromNib();
}

QMShortcutKeyContainerView::~QMShortcutKeyContainerView() {
    QMShortcutKeyTableDelegate& controller = QMShortcutKeyTableDelegate::sharedController();
    if (controller.parentView() == this) {
        controller.setParentView(nullptr);
    }
}

}  // namespace vornic
