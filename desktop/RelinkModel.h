#ifndef VORNIC_DESKTOP_RELINK_MODEL_H
#define VORNIC_DESKTOP_RELINK_MODEL_H

#include <QAbstractTableModel>

#include "app/window/MediaActions.h"

namespace vornic {

/// What relinking would do, a row for each medium: first those that get another place, then those
/// that stay. Main thread.
class RelinkModel : public QAbstractTableModel {
  public:
    enum Column { oldPlace, newPlace, state, columnCount_ };

    RelinkModel(RelinkPreview preview, QObject* parent);

    [[nodiscard]] const RelinkPreview& preview() const { return preview_; }
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;

  private:
    [[nodiscard]] QString textOfMove(const RelinkPreview::Move& move, int column) const;
    [[nodiscard]] QString textOfStay(const RelinkPreview::Stay& stay, int column) const;

    RelinkPreview preview_;
};

}  // namespace vornic

#endif
