#include "desktop/ShortcutKeysView.h"

#include <QVBoxLayout>

#include "desktop/ShortcutKeysPane.h"

namespace vornic {

ShortcutKeysView::ShortcutKeysView(QWidget* parent) : QWidget(parent), container_(*this) {
    setObjectName(QStringLiteral("shortcutKeysView"));
}

ShortcutKeyPane* ShortcutKeysView::loadInterface(const std::string& name) {
    return name == "QMShortcutKeyConfig" ? new ShortcutKeysPane(this) : nullptr;
}

void ShortcutKeysView::addFilling(ShortcutKeyPane& pane) {
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(dynamic_cast<QWidget*>(&pane));
}

}  // namespace vornic
