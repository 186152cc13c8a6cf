#ifndef VORNIC_DESKTOP_CHANGES_VIEW_H
#define VORNIC_DESKTOP_CHANGES_VIEW_H

#include <QCheckBox>
#include <QLabel>
#include <QToolButton>
#include <QWidget>
#include <memory>
#include <vector>

#include "app/window/AlignedRows.h"
#include "app/window/FindingsTable.h"
#include "desktop/SourceView.h"

namespace vornic {

/// A file and what it was before, beside each other, change by change.
class ChangesView : public QWidget {
  public:
    explicit ChangesView(QWidget* parent);

    /// @param table with an original, or null: there is nothing to compare
    void setTable(std::shared_ptr<const FindingsTable> table);
    [[nodiscard]] SourceView& original() { return *original_; }
    [[nodiscard]] SourceView& file() { return *file_; }
    /// Goes to a change. @param index from 0
    void showChange(std::size_t index);
    /// Goes to a line of the original. @param line from 1
    void showOriginalLine(std::size_t line);
    void showNextChange();
    void showPreviousChange();
    [[nodiscard]] std::size_t changeCount() const { return changes_.size(); }

  private:
    QWidget* makeBar();
    void compare();
    void show(AlignedRows rows);
    void tellPlace();

    std::shared_ptr<const FindingsTable> table_;
    SourceView* original_;
    SourceView* file_;
    QLabel* place_ = nullptr;
    QToolButton* previous_ = nullptr;
    QToolButton* next_ = nullptr;
    QCheckBox* hidesIndentation_ = nullptr;
    std::vector<std::size_t> changes_;
    std::size_t current_ = 0;
    // The line that is wanted once the comparison is there; 0 for none.
    std::size_t wantedLine_ = 0;
    bool isCompared_ = false;
    // What an older comparison brings is dropped.
    unsigned number_ = 0;
};

}  // namespace vornic

#endif
