#include "desktop/RelinkModel.h"

#include <utility>

#include "app/window/MediaTable.h"
#include "desktop/QtText.h"

namespace vornic {

RelinkModel::RelinkModel(RelinkPreview preview, QObject* parent)
    : QAbstractTableModel(parent), preview_(std::move(preview)) {}

int RelinkModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(preview_.moves.size() + preview_.stays.size());
}

int RelinkModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : columnCount_;
}

QString RelinkModel::textOfMove(const RelinkPreview::Move& move, int column) const {
    switch (column) {
        case oldPlace:
            return oneLine(toQString(move.oldPath));
        case newPlace:
            return oneLine(toQString(move.newPath));
        default:
            return toQString(wordOf(move.state));
    }
}

QString RelinkModel::textOfStay(const RelinkPreview::Stay& stay, int column) const {
    switch (column) {
        case oldPlace:
            return oneLine(toQString(stay.path));
        case newPlace:
            return tr("Stays: %1").arg(oneLine(toQString(stay.why)));
        default:
            return tr("Missing");
    }
}

QVariant RelinkModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::ToolTipRole)) {
        return {};
    }
    const auto row = static_cast<std::size_t>(index.row());
    const bool isMove = row < preview_.moves.size();
    QString text = isMove ? textOfMove(preview_.moves[row], index.column())
                          : textOfStay(preview_.stays[row - preview_.moves.size()], index.column());
    if (role == Qt::DisplayRole) {
        return text;
    }
    if (!isMove) {
        for (const std::string& each : preview_.stays[row - preview_.moves.size()].candidates) {
            text += u'\n' + toQString(each);
        }
    }
    return toolTipOf(text);
}

QVariant RelinkModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    switch (section) {
        case oldPlace:
            return tr("Old place");
        case newPlace:
            return tr("New place");
        default:
            return tr("State");
    }
}

}  // namespace vornic
