#ifndef VORNIC_DESKTOP_MEDIA_MODEL_H
#define VORNIC_DESKTOP_MEDIA_MODEL_H

#include <QAbstractTableModel>
#include <QIcon>
#include <memory>
#include <vector>

#include "app/window/MediaTable.h"

namespace vornic {

/// The media of a project, a row each. Main thread.
class MediaModel : public QAbstractTableModel {
  public:
    enum Column { state, name, folder, uses, columnCount_ };

    MediaModel(const QPalette& palette, QObject* parent);

    /// @param table or null, for none
    void setTable(std::shared_ptr<const MediaTable> table);
    void setPalette(const QPalette& palette);
    [[nodiscard]] const MediaTable* table() const { return table_.get(); }
    /// The medium of a row; null for none.
    [[nodiscard]] const MediaTableRow* mediumAt(const QModelIndex& index) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    void sort(int column, Qt::SortOrder order) override;

  private:
    void arrange();
    [[nodiscard]] static QString textOf(const MediaTableRow& row, int column);

    std::shared_ptr<const MediaTable> table_;
    // Rows of the table in the order that is shown.
    std::vector<std::size_t> order_;
    int sortColumn_ = state;
    Qt::SortOrder sortOrder_ = Qt::DescendingOrder;
    QIcon missingIcon_;
};

}  // namespace vornic

#endif
