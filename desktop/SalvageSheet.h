#ifndef VORNIC_DESKTOP_SALVAGE_SHEET_H
#define VORNIC_DESKTOP_SALVAGE_SHEET_H

#include <QDialog>
#include <QPlainTextEdit>
#include <functional>

#include "app/window/SalvagePreview.h"
#include "desktop/FindingsModel.h"

namespace vornic {

/// Shows every guess that a salvage makes, with the lines around and what they become, before a
/// copy is saved. Main thread.
class SalvageSheet : public QDialog {
  public:
    /// @param save called when the user wants the copy
    SalvageSheet(const SalvagePreview& preview, std::function<void()> save, QWidget* parent);

  private:
    QWidget* makeParts();
    void showGuess(const QModelIndex& index);

    FindingsModel* model_;
    QPlainTextEdit* details_;
};

}  // namespace vornic

#endif
