#include "desktop/ShortcutKeyModel.h"

#include <QApplication>
#include <QFont>
#include <QStyle>

#include "desktop/QtText.h"
#include "ui/shortcuts/QMShortcutKeyTableDelegate.h"
#include "ui/shortcuts/ShortcutKeyNames.h"

namespace vornic {

namespace {

QMShortcutKeyTableDelegate& controller() {
    return QMShortcutKeyTableDelegate::sharedController();
}

const char* identifierOf(int column) {
    return column == ShortcutKeyModel::keyColumn ? "keyname" : "description";
}

bool isTypedWithAlone(const QMShortcutKeyTextCell& cell) {
    return !cell.isLeaf() && isTypedWith(cell.stringValue());
}

QString shownText(const QMShortcutKeyTextCell& cell) {
    const QString text = toQString(cell.stringValue());
    return isTypedWithAlone(cell) ? ShortcutKeyModel::tr("%1 — cannot be typed any more").arg(text)
                                  : text;
}

QString spokenText(const QMShortcutKeyTextCell& cell) {
    QString text = shownText(cell);
    if (cell.isLeaf()) {
        return text;
    }
    if (text.isEmpty()) {
        return ShortcutKeyModel::tr("no shortcut");
    }
    return cell.isConflicting()
               ? ShortcutKeyModel::tr("%1, also the shortcut of another command").arg(text)
               : text;
}

QFont conflictFont() {
    QFont font;
    font.setBold(true);
    return font;
}

}  // namespace

void ShortcutKeyModel::reload() {
    const int rows = static_cast<int>(controller().numberOfRowsInTableView());
    if (rows != rows_) {
        beginResetModel();
        rows_ = rows;
        endResetModel();
    } else if (rows > 0) {
        Q_EMIT dataChanged(index(0, 0), index(rows - 1, columnCountOfAll - 1));
    }
}

int ShortcutKeyModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : rows_;
}

int ShortcutKeyModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : columnCountOfAll;
}

QVariant ShortcutKeyModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const QMShortcutKeyTextCell& cell = cellAt(index);
    switch (role) {
        case Qt::DisplayRole:
            return shownText(cell);
        case Qt::ToolTipRole:
            return isTypedWithAlone(cell)
                       ? QVariant(
                             toolTipOf(tr("This key works as the shortcut in every program, so "
                                          "that it types nothing and moves no cursor.")))
                       : QVariant();
        case Qt::AccessibleTextRole:
            return spokenText(cell);
        case Qt::FontRole:
            return cell.isConflicting() && !cell.isLeaf() ? QVariant(conflictFont()) : QVariant();
        case Qt::DecorationRole:
            return (cell.isConflicting() && !cell.isLeaf()) || isTypedWithAlone(cell)
                       ? QVariant(QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning))
                       : QVariant();
        default:
            return {};
    }
}

QVariant ShortcutKeyModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Vertical) {
        return {};
    }
    if (role == Qt::TextAlignmentRole) {
        return QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    }
    if (role != Qt::DisplayRole) {
        return {};
    }
    return section == keyColumn ? tr("Shortcut") : tr("Command");
}

Qt::ItemFlags ShortcutKeyModel::flags(const QModelIndex& index) const {
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    const bool isEditable = index.isValid() && isEditingEnabled_ && !cellAt(index).isLeaf();
    return isEditable ? flags | Qt::ItemIsEditable : flags;
}

QMShortcutKeyTextCell& ShortcutKeyModel::cellAt(const QModelIndex& index) const {
    const char* const column = identifierOf(index.column());
    QMShortcutKeyTextCell& cell = table_.dataCell(column);
    controller().tableViewWillDisplayCell(cell, column, static_cast<std::size_t>(index.row()));
    return cell;
}

}  // namespace vornic
