#include "desktop/MediaModel.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "app/window/HeaderText.h"
#include "desktop/QtText.h"
#include "desktop/SeverityIcon.h"

namespace vornic {

MediaModel::MediaModel(const QPalette& palette, QObject* parent) : QAbstractTableModel(parent) {
    setPalette(palette);
}

void MediaModel::setPalette(const QPalette& palette) {
    missingIcon_ = severityIcon(Severity::warning, palette);
}

void MediaModel::setTable(std::shared_ptr<const MediaTable> table) {
    beginResetModel();
    table_ = std::move(table);
    arrange();
    endResetModel();
}

const MediaTableRow* MediaModel::mediumAt(const QModelIndex& index) const {
    return index.isValid() && table_ ? &table_->rows[order_[static_cast<std::size_t>(index.row())]]
                                     : nullptr;
}

int MediaModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(order_.size());
}

int MediaModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : columnCount_;
}

QString MediaModel::textOf(const MediaTableRow& row, int column) {
    switch (column) {
        case state:
            return toQString(wordOf(row.state));
        case name:
            return oneLine(toQString(row.name));
        case folder:
            return oneLine(toQString(row.folder));
        case uses:
            return toQString(withThousands(row.uses));
        default:
            return {};
    }
}

QVariant MediaModel::data(const QModelIndex& index, int role) const {
    const MediaTableRow* const row = mediumAt(index);
    if (row == nullptr) {
        return {};
    }
    switch (role) {
        case Qt::DisplayRole:
            return textOf(*row, index.column());
        case Qt::ToolTipRole:
            return toolTipOf(textOf(*row, index.column()));
        case Qt::DecorationRole:
            return index.column() == state && !isThere(row->state) ? QVariant(missingIcon_)
                                                                   : QVariant();
        case Qt::TextAlignmentRole:
            return index.column() == uses ? QVariant(Qt::AlignRight | Qt::AlignVCenter)
                                          : QVariant();
        default:
            return {};
    }
}

QVariant MediaModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    switch (section) {
        case state:
            return tr("State");
        case name:
            return tr("Name");
        case folder:
            return tr("Folder");
        case uses:
            return tr("Uses");
        default:
            return {};
    }
}

void MediaModel::sort(int column, Qt::SortOrder order) {
    sortColumn_ = column;
    sortOrder_ = order;
    beginResetModel();
    arrange();
    endResetModel();
}

void MediaModel::arrange() {
    order_.resize(table_ ? table_->rows.size() : 0);
    std::iota(order_.begin(), order_.end(), std::size_t{0});
    const auto isBefore = [this](const MediaTableRow& left, const MediaTableRow& right) {
        switch (sortColumn_) {
            case name:
                return left.name < right.name;
            case folder:
                return left.folder < right.folder;
            case uses:
                return left.uses < right.uses;
            default:
                // What is there has the least weight.
                return isThere(left.state) != isThere(right.state) ? isThere(left.state)
                                                                   : left.state < right.state;
        }
    };
    std::stable_sort(order_.begin(), order_.end(), [&](std::size_t left, std::size_t right) {
        const bool isDescending = sortOrder_ == Qt::DescendingOrder;
        return isBefore(table_->rows[isDescending ? right : left],
                        table_->rows[isDescending ? left : right]);
    });
}

}  // namespace vornic
