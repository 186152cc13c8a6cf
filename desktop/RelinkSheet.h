#ifndef VORNIC_DESKTOP_RELINK_SHEET_H
#define VORNIC_DESKTOP_RELINK_SHEET_H

#include <QDialog>
#include <functional>
#include <optional>

#include "app/window/MediaActions.h"

namespace vornic {

/// Shows what relinking would do, medium by medium, before it is done. The default is not to do it.
class RelinkSheet : public QDialog {
  public:
    struct Actions {
        std::function<void(const RelinkPreview&)> relink;
        /// Searches once more, with something that decides between files of one name. None where
        /// nothing was searched.
        std::function<void(std::optional<Pick>)> searchAgain;
    };

    /// @param pick what decided in this search
    RelinkSheet(RelinkPreview preview, std::optional<Pick> pick, Actions actions, QWidget* parent);

  private:
    void addPick(std::optional<Pick> pick);

    Actions actions_;
};

}  // namespace vornic

#endif
