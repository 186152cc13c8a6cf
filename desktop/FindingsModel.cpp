#include "desktop/FindingsModel.h"

#include <QPointer>
#include <algorithm>
#include <utility>

#include "app/window/HeaderText.h"
#include "base/Exception.h"
#include "desktop/QtText.h"
#include "desktop/SeverityIcon.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"

namespace vornic {

namespace {

// Of more, the main thread would feel it.
constexpr std::size_t kArrangedAtOnce = 2000;

// What comes from files is shown on one line, with nothing that turns its direction around.
QString shown(const std::string& text) {
    return oneLine(toQString(text));
}

}  // namespace

FindingsModel::FindingsModel(const QPalette& palette, QObject* parent)
    : QAbstractItemModel(parent) {
    setPalette(palette);
}

void FindingsModel::setPalette(const QPalette& palette) {
    for (std::size_t index = 0; index < kSeverityCount; ++index) {
        icons_.at(index) = severityIcon(static_cast<Severity>(index), palette);
    }
}

void FindingsModel::setTable(std::shared_ptr<const FindingsTable> table) {
    // The old rows are of the old table.
    beginResetModel();
    table_ = std::move(table);
    rows_ = {};
    positions_.clear();
    endResetModel();
    ticked_.assign(table_ ? table_->findings().size() : 0, false);
    for (std::size_t index = 0; index < ticked_.size(); ++index) {
        ticked_[index] = FindingsTable::isSafelyMended(table_->findings()[index]);
    }
    arrange();
    if (tickedChanged_) {
        tickedChanged_();
    }
}

void FindingsModel::choose(const FindingsChoice& choice) {
    choice_ = choice;
    arrange();
}

void FindingsModel::arrange() {
    ++number_;
    if (!table_ || table_->findings().size() <= kArrangedAtOnce) {
        return show(arranged(table_.get(), choice_));
    }
    try {
        platform::startUnattendedThread([self = QPointer<FindingsModel>(this), number = number_,
                                         table = table_, choice = choice_] {
            auto shown = std::make_shared<Shown>(arranged(table.get(), choice));
            platform::MainThread::perform([self, number, shown] {
                if (self && number == self->number_) {
                    self->show(std::move(*shown));
                }
            });
        });
    } catch (const platform::Exception&) {
        show(arranged(table_.get(), choice_));
    }
}

FindingsModel::Shown FindingsModel::arranged(const FindingsTable* table,
                                             const FindingsChoice& choice) {
    Shown shown{table != nullptr ? table->arranged(choice) : FindingsRows(), {}};
    shown.positions.assign(shown.rows.rows.size(), 0);
    const auto number = [&shown](const std::vector<std::size_t>& rows) {
        for (std::size_t place = 0; place < rows.size(); ++place) {
            shown.positions[rows[place]] = static_cast<int>(place);
        }
    };
    number(shown.rows.top);
    for (const FindingsRow& row : shown.rows.rows) {
        number(row.children);
    }
    return shown;
}

void FindingsModel::show(Shown shown) {
    beginResetModel();
    rows_ = std::move(shown.rows);
    positions_ = std::move(shown.positions);
    endResetModel();
}

const FindingsRow& FindingsModel::rowAt(const QModelIndex& index) const {
    return rows_.rows[index.internalId()];
}

const ListedFinding* FindingsModel::findingAt(const QModelIndex& index) const {
    return index.isValid() && table_ ? &table_->findings()[rowAt(index).listed] : nullptr;
}

bool FindingsModel::isGroup(const QModelIndex& index) const {
    return index.isValid() && rowAt(index).isGroup;
}

QModelIndex FindingsModel::indexOf(const Finding& finding) const {
    for (std::size_t row = 0; row < rows_.rows.size(); ++row) {
        const FindingsRow& candidate = rows_.rows[row];
        if (!candidate.isGroup && table_->findings()[candidate.listed].finding == &finding) {
            return createIndex(positions_[row], 0, row);
        }
    }
    return {};
}

std::vector<const Finding*> FindingsModel::tickedFindings() const {
    std::vector<const Finding*> findings;
    for (std::size_t index = 0; index < ticked_.size(); ++index) {
        if (ticked_[index]) {
            findings.push_back(table_->findings()[index].finding);
        }
    }
    return findings;
}

QModelIndex FindingsModel::index(int row, int column, const QModelIndex& parent) const {
    const std::vector<std::size_t>& rows = parent.isValid() ? rowAt(parent).children : rows_.top;
    if (row < 0 || row >= static_cast<int>(rows.size()) || column < 0 || column >= columnCount_) {
        return {};
    }
    return createIndex(row, column, rows[static_cast<std::size_t>(row)]);
}

QModelIndex FindingsModel::parent(const QModelIndex& index) const {
    const std::size_t parent = index.isValid() ? rowAt(index).parent : FindingsRow::kNoParent;
    return parent == FindingsRow::kNoParent ? QModelIndex()
                                            : createIndex(positions_[parent], 0, parent);
}

int FindingsModel::rowCount(const QModelIndex& parent) const {
    if (parent.column() > 0) {
        return 0;
    }
    return static_cast<int>(parent.isValid() ? rowAt(parent).children.size() : rows_.top.size());
}

int FindingsModel::columnCount(const QModelIndex& /*parent*/) const {
    return columnCount_;
}

QString FindingsModel::whatOf(const FindingsRow& row) const {
    const QString message = shown(table_->findings()[row.listed].finding->message());
    return row.isGroup ? QStringLiteral("%1 × %2").arg(toQString(withThousands(row.count)), message)
                       : message;
}

QString FindingsModel::textOf(const FindingsRow& row, int column) const {
    const ListedFinding& listed = table_->findings()[row.listed];
    switch (column) {
        case severity:
            return wordOf(listed.finding->severity);
        case what:
            return whatOf(row);
        case where:
            return row.isGroup ? QString() : shown(table_->placeOf(listed));
        case before:
            return row.isGroup ? QString() : shown(table_->before(listed));
        case after:
            return row.isGroup ? QString() : shown(table_->after(listed));
        case state:
            return toQString(nameOf(listed.state));
        default:
            return {};
    }
}

std::vector<std::size_t> FindingsModel::mendable(const FindingsRow& row) const {
    std::vector<std::size_t> findings;
    const auto add = [&](std::size_t listed) {
        if (FindingsTable::canBeMended(table_->findings()[listed])) {
            findings.push_back(listed);
        }
    };
    if (!row.isGroup) {
        add(row.listed);
        return findings;
    }
    for (const std::size_t child : row.children) {
        add(rows_.rows[child].listed);
    }
    return findings;
}

QVariant FindingsModel::tickOf(const FindingsRow& row) const {
    const std::vector<std::size_t> findings = mendable(row);
    if (findings.empty()) {
        return {};
    }
    const auto count = std::count_if(findings.begin(), findings.end(),
                                     [this](std::size_t listed) { return ticked_[listed]; });
    if (count == 0) {
        return Qt::Unchecked;
    }
    return count == static_cast<std::ptrdiff_t>(findings.size()) ? Qt::Checked
                                                                 : Qt::PartiallyChecked;
}

QVariant FindingsModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const FindingsRow& row = rowAt(index);
    switch (role) {
        case Qt::DisplayRole:
            return textOf(row, index.column());
        case Qt::DecorationRole:
            return index.column() == severity
                       ? QVariant(icons_.at(static_cast<std::size_t>(
                             table_->findings()[row.listed].finding->severity)))
                       : QVariant();
        case Qt::CheckStateRole:
            return index.column() == severity ? tickOf(row) : QVariant();
        case Qt::ToolTipRole:
            return toolTipOf(textOf(row, index.column()));
        default:
            return {};
    }
}

bool FindingsModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::CheckStateRole || !index.isValid() || index.column() != severity) {
        return false;
    }
    const bool isTicked = value.toInt() == Qt::Checked;
    for (const std::size_t listed : mendable(rowAt(index))) {
        ticked_[listed] = isTicked;
    }
    const QModelIndex above = parent(index);
    Q_EMIT dataChanged(index, index, {Qt::CheckStateRole});
    if (above.isValid()) {
        Q_EMIT dataChanged(above, above, {Qt::CheckStateRole});
    }
    if (const int children = rowCount(index); children > 0) {
        Q_EMIT dataChanged(this->index(0, severity, index),
                           this->index(children - 1, severity, index), {Qt::CheckStateRole});
    }
    if (tickedChanged_) {
        tickedChanged_();
    }
    return true;
}

Qt::ItemFlags FindingsModel::flags(const QModelIndex& index) const {
    Qt::ItemFlags flags = QAbstractItemModel::flags(index);
    if (index.isValid() && index.column() == severity && !mendable(rowAt(index)).empty()) {
        flags |= Qt::ItemIsUserCheckable;
    }
    return flags;
}

QVariant FindingsModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    switch (section) {
        case severity:
            return tr("Severity");
        case what:
            return tr("What");
        case where:
            return tr("Where");
        case before:
            return tr("Before");
        case after:
            return tr("After");
        case state:
            return tr("State");
        default:
            return {};
    }
}

void FindingsModel::sort(int column, Qt::SortOrder order) {
    FindingsChoice choice = choice_;
    choice.isDescending = order == Qt::DescendingOrder;
    switch (column) {
        case severity:
            choice.order = FindingsOrder::severity;
            break;
        case what:
            choice.order = FindingsOrder::message;
            break;
        case state:
            choice.order = FindingsOrder::state;
            break;
        default:
            choice.order = FindingsOrder::place;
            break;
    }
    choose(choice);
}

}  // namespace vornic
