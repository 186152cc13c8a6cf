#ifndef VORNIC_DESKTOP_FINDINGS_VIEW_H
#define VORNIC_DESKTOP_FINDINGS_VIEW_H

#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolButton>
#include <QTreeView>
#include <QWidget>
#include <array>
#include <functional>
#include <memory>
#include <vector>

#include "desktop/FindingsModel.h"

namespace vornic {

/// The findings of a document's file: a table that can be searched, narrowed and sorted, what a
/// finding means and the lines around it, and the mends that are ticked.
class FindingsView : public QWidget {
  public:
    struct Actions {
        /// The user wants to see the place of a finding.
        std::function<void(const ListedFinding&)> showPlace;
        /// The user wants the ticked mends made.
        std::function<void()> mend;
    };

    FindingsView(Actions actions, QWidget* parent);

    void setTable(std::shared_ptr<const FindingsTable> table);
    [[nodiscard]] FindingsModel& model() { return *model_; }
    [[nodiscard]] QTreeView& tree() { return *tree_; }
    /// Chooses a finding of the table; one that the filter hides is shown first.
    void showFinding(const Finding& finding);
    /// While the file is being changed, nothing can be mended.
    void setMayMend(bool mayMend);

    /// The selected rows, or all when none is selected, a line each, as the clipboard takes them.
    [[nodiscard]] QString selectedText() const;
    void copy();
    void selectAll() { tree_->selectAll(); }

  protected:
    void changeEvent(QEvent* event) override;

  private:
    QWidget* makeBar();
    void begin();
    void narrow();
    bool choose(const Finding& finding);
    void showDetails(const QModelIndex& index);
    void showPlaceAt(const QModelIndex& index);
    void countTicked();
    void countSeverities();
    void expandSmallGroups();

    Actions actions_;
    FindingsModel* model_;
    QTreeView* tree_;
    QPlainTextEdit* details_;
    QLineEdit* filter_ = nullptr;
    std::array<QToolButton*, kSeverityCount> switches_{};
    QPushButton* mendButton_ = nullptr;
    bool mayMend_ = false;
    // To be chosen once the rows are there that it is in.
    const Finding* wanted_ = nullptr;
};

}  // namespace vornic

#endif
