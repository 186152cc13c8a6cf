#ifndef VORNIC_DESKTOP_BATCH_MODEL_H
#define VORNIC_DESKTOP_BATCH_MODEL_H

#include <QAbstractTableModel>
#include <QIcon>
#include <optional>
#include <vector>

#include "job/batch/Batch.h"

namespace vornic {

/// The rows of a batch that its window shows. A row is asked for when it is drawn; nothing of it is
/// kept. Main thread.
class BatchModel : public QAbstractTableModel {
  public:
    enum Column { name, folder, kind, result, problems, progress, columnCount_ };

    /// @param batch must outlive this
    BatchModel(const Batch& batch, const QPalette& palette, QObject* parent);

    /// Shows these rows of the batch, in ascending order.
    void show(std::vector<std::size_t> rows);
    [[nodiscard]] const std::vector<std::size_t>& shown() const { return shown_; }
    /// Rows of the batch, in ascending order, have changed.
    void tellChanges(const std::vector<std::size_t>& rows);
    void setPalette(const QPalette& palette);

    /// The row of the batch at an index.
    [[nodiscard]] std::size_t numberAt(const QModelIndex& index) const;
    [[nodiscard]] BatchRow rowAt(const QModelIndex& index) const;
    /// Where a row of the batch is shown; no index when it is not.
    [[nodiscard]] QModelIndex indexOf(std::size_t number) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;

  private:
    [[nodiscard]] const BatchRow& cachedRow(std::size_t number) const;
    [[nodiscard]] QVariant iconOf(const BatchRow& row) const;

    const Batch& batch_;
    std::vector<std::size_t> shown_;
    // The row that was asked for last, since a view asks for one cell after the other.
    mutable std::optional<std::size_t> cachedNumber_;
    mutable BatchRow cached_;
    QIcon errorIcon_;
    QIcon warningIcon_;
};

}  // namespace vornic

#endif
