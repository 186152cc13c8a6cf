#include "desktop/BatchModel.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "app/window/HeaderText.h"
#include "desktop/QtText.h"
#include "desktop/SeverityIcon.h"

namespace vornic {

namespace {

QString kindText(FileKind kind) {
    switch (kind) {
        case FileKind::fcpxml:
            return QStringLiteral("FCPXML");
        case FileKind::xmeml:
            return QStringLiteral("XMEML");
        default:
            return {};
    }
}

QString resultText(const BatchRow& row) {
    QString text = toQString(nameOf(row.result));
    if (!text.isEmpty()) {
        text[0] = text[0].toUpper();
    }
    if (row.result == BatchResult::sound && row.problems() != 0) {
        text += BatchModel::tr(", with %1")
                    .arg(toQString(counted(row.problems(), "warning", "warnings")));
    }
    if (!row.reason.empty()) {
        text +=
            (text.isEmpty() ? QString() : QStringLiteral(": ")) + oneLine(toQString(row.reason));
    }
    return text;
}

QString progressText(const BatchRow& row) {
    constexpr int kPercent = 100;
    switch (row.state) {
        case BatchState::waiting:
            return BatchModel::tr("Waiting");
        case BatchState::working:
            return row.progress > 0 ? BatchModel::tr("%1 %").arg(
                                          static_cast<int>(std::floor(row.progress * kPercent)))
                                    : BatchModel::tr("At work");
        default:
            return row.result == BatchResult::none ? QString() : BatchModel::tr("Done");
    }
}

QString textOf(const BatchRow& row, int column) {
    switch (column) {
        case BatchModel::name:
            return oneLine(pathToQString(row.name));
        case BatchModel::folder:
            return oneLine(pathToQString(row.folder));
        case BatchModel::kind:
            return kindText(row.kind);
        case BatchModel::result:
            return resultText(row);
        case BatchModel::problems:
            return row.result == BatchResult::none ? QString()
                                                   : toQString(withThousands(row.problems()));
        case BatchModel::progress:
            return progressText(row);
        default:
            return {};
    }
}

// Other paths of the same file are told beside its own.
QString toolTipFor(const BatchRow& row, int column) {
    if (column != BatchModel::name) {
        return toolTipOf(textOf(row, column));
    }
    QString text = oneLine(pathToQString(row.path));
    for (const std::string& other : row.otherPaths) {
        text += QStringLiteral("\n") +
                BatchModel::tr("the same as %1").arg(oneLine(pathToQString(other)));
    }
    return toolTipOf(text);
}

}  // namespace

BatchModel::BatchModel(const Batch& batch, const QPalette& palette, QObject* parent)
    : QAbstractTableModel(parent), batch_(batch) {
    setPalette(palette);
}

void BatchModel::setPalette(const QPalette& palette) {
    errorIcon_ = severityIcon(Severity::error, palette);
    warningIcon_ = severityIcon(Severity::warning, palette);
}

void BatchModel::show(std::vector<std::size_t> rows) {
    beginResetModel();
    cachedNumber_.reset();
    shown_ = std::move(rows);
    endResetModel();
}

void BatchModel::tellChanges(const std::vector<std::size_t>& rows) {
    cachedNumber_.reset();
    if (rows.empty() || shown_.empty()) {
        return;
    }
    const auto first = std::lower_bound(shown_.begin(), shown_.end(), rows.front());
    const auto end = std::upper_bound(first, shown_.end(), rows.back());
    if (first != end) {
        Q_EMIT dataChanged(index(static_cast<int>(first - shown_.begin()), kind),
                           index(static_cast<int>(end - shown_.begin()) - 1, progress));
    }
}

std::size_t BatchModel::numberAt(const QModelIndex& index) const {
    return shown_[static_cast<std::size_t>(index.row())];
}

BatchRow BatchModel::rowAt(const QModelIndex& index) const {
    return cachedRow(numberAt(index));
}

QModelIndex BatchModel::indexOf(std::size_t number) const {
    const auto found = std::lower_bound(shown_.begin(), shown_.end(), number);
    return found != shown_.end() && *found == number
               ? index(static_cast<int>(found - shown_.begin()), 0)
               : QModelIndex();
}

int BatchModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(shown_.size());
}

int BatchModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : columnCount_;
}

const BatchRow& BatchModel::cachedRow(std::size_t number) const {
    if (cachedNumber_ != number) {
        cached_ = batch_.row(number);
        cachedNumber_ = number;
    }
    return cached_;
}

QVariant BatchModel::iconOf(const BatchRow& row) const {
    if (row.result == BatchResult::failed) {
        return errorIcon_;
    }
    return isFailure(row.result) ? QVariant(warningIcon_) : QVariant();
}

QVariant BatchModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    switch (role) {
        case Qt::DisplayRole:
            return textOf(cachedRow(numberAt(index)), index.column());
        case Qt::ToolTipRole:
            return toolTipFor(cachedRow(numberAt(index)), index.column());
        case Qt::DecorationRole:
            return index.column() == result ? iconOf(cachedRow(numberAt(index))) : QVariant();
        case Qt::TextAlignmentRole:
            return index.column() == problems ? QVariant(Qt::AlignRight | Qt::AlignVCenter)
                                              : QVariant();
        default:
            return {};
    }
}

QVariant BatchModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    switch (section) {
        case name:
            return tr("Name");
        case folder:
            return tr("Folder");
        case kind:
            return tr("Kind");
        case result:
            return tr("Result");
        case problems:
            return tr("Problems");
        case progress:
            return tr("Progress");
        default:
            return {};
    }
}

}  // namespace vornic
