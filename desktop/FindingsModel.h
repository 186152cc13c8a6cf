#ifndef VORNIC_DESKTOP_FINDINGS_MODEL_H
#define VORNIC_DESKTOP_FINDINGS_MODEL_H

#include <QAbstractItemModel>
#include <QIcon>
#include <array>
#include <functional>
#include <memory>
#include <vector>

#include "app/window/FindingsTable.h"

namespace vornic {

/// The rows of a table of findings, with a box for each mend that can be made. Main thread.
class FindingsModel : public QAbstractItemModel {
  public:
    enum Column { severity, what, where, before, after, state, columnCount_ };

    FindingsModel(const QPalette& palette, QObject* parent);

    /// Shows another table (null: nothing). The safe mends are ticked. The rows of a large table
    /// are put in order on a thread, and the model is reset once more when that is done.
    void setTable(std::shared_ptr<const FindingsTable> table);
    /// The same for what of the table is shown; until then a large one shows what it did before.
    void choose(const FindingsChoice& choice);
    void setPalette(const QPalette& palette);
    [[nodiscard]] const FindingsTable* table() const { return table_.get(); }
    [[nodiscard]] const std::shared_ptr<const FindingsTable>& shared() const { return table_; }
    [[nodiscard]] const FindingsChoice& choice() const { return choice_; }

    /// The finding of a row; for a group its first one. Null for none.
    [[nodiscard]] const ListedFinding* findingAt(const QModelIndex& index) const;
    [[nodiscard]] bool isGroup(const QModelIndex& index) const;
    /// The row of a finding, or none when it is not shown.
    [[nodiscard]] QModelIndex indexOf(const Finding& finding) const;
    /// Those whose boxes are ticked, whether they are shown or not.
    [[nodiscard]] std::vector<const Finding*> tickedFindings() const;
    /// Called when a box was ticked or cleared.
    void setTicked(std::function<void()> ticked) { tickedChanged_ = std::move(ticked); }

    [[nodiscard]] QModelIndex index(int row, int column,
                                    const QModelIndex& parent = {}) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex& index) const override;
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    void sort(int column, Qt::SortOrder order) override;

  private:
    [[nodiscard]] const FindingsRow& rowAt(const QModelIndex& index) const;
    [[nodiscard]] QString textOf(const FindingsRow& row, int column) const;
    [[nodiscard]] QString whatOf(const FindingsRow& row) const;
    [[nodiscard]] std::vector<std::size_t> mendable(const FindingsRow& row) const;
    [[nodiscard]] QVariant tickOf(const FindingsRow& row) const;
    // What is shown.
    struct Shown {
        FindingsRows rows;
        // Where a row stands among its parent's.
        std::vector<int> positions;
    };
    [[nodiscard]] static Shown arranged(const FindingsTable* table, const FindingsChoice& choice);
    void arrange();
    void show(Shown shown);

    std::shared_ptr<const FindingsTable> table_;
    FindingsChoice choice_;
    FindingsRows rows_;
    std::vector<int> positions_;
    // By finding.
    std::vector<bool> ticked_;
    // What an older arranging brings is dropped.
    unsigned number_ = 0;
    std::array<QIcon, kSeverityCount> icons_;
    std::function<void()> tickedChanged_;
};

}  // namespace vornic

#endif
