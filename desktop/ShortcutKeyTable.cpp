#include "desktop/ShortcutKeyTable.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStyledItemDelegate>

#include "desktop/ShortcutKeyCapture.h"
#include "ui/shortcuts/QMShortcutKeyTableDelegate.h"

namespace vornic {

namespace {

// Room for as many rows as help without filling a small screen, and for some above a text that
// there is to say.
constexpr int kShownRows = 12;
constexpr int kFewestRows = 5;

// Puts the capture of keys into a cell.
class CellDelegate : public QStyledItemDelegate {
  public:
    explicit CellDelegate(ShortcutKeyTable* table) : QStyledItemDelegate(table), table_(table) {}

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                          const QModelIndex& /*index*/) const override {
        return new ShortcutKeyCapture(parent,
                                      [table = table_](ShortcutKeyCapture& capture,
                                                       const ShortcutKeyCapture::Outcome& outcome) {
                                          table->endCapture(capture, outcome);
                                      });
    }
    void setEditorData(QWidget* /*editor*/, const QModelIndex& /*index*/) const override {}
    void setModelData(QWidget* /*editor*/, QAbstractItemModel* /*model*/,
                      const QModelIndex& /*index*/) const override {}

  protected:
    // Keys are the editor's alone.
    bool eventFilter(QObject* object, QEvent* event) override {
        const bool isKey =
            event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride;
        return !isKey && QStyledItemDelegate::eventFilter(object, event);
    }

  private:
    ShortcutKeyTable* table_;
};

}  // namespace

ShortcutKeyTable::ShortcutKeyTable(QWidget* parent) : QTableView(parent), model_(*this) {
    setObjectName(QStringLiteral("shortcutKeyTable"));
    setAccessibleName(tr("Commands and their shortcuts"));
    setModel(&model_);
    setItemDelegate(new CellDelegate(this));
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setTabKeyNavigation(false);
    setAlternatingRowColors(true);
    setShowGrid(false);
    setWordWrap(false);
    verticalHeader()->hide();
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setSectionsClickable(false);
    horizontalHeader()->setSectionResizeMode(ShortcutKeyModel::descriptionColumn,
                                             QHeaderView::Stretch);
    horizontalHeader()->setSectionResizeMode(ShortcutKeyModel::keyColumn, QHeaderView::Fixed);
    const QFontMetrics metrics = fontMetrics();
    const int keyWidth = metrics.horizontalAdvance(QStringLiteral("Ctrl+Shift+Alt+Cmd+Page Down")) +
                         metrics.height();
    horizontalHeader()->resizeSection(ShortcutKeyModel::keyColumn, keyWidth);
    verticalHeader()->setDefaultSectionSize(metrics.height() * 3 / 2);
    setMinimumSize(keyWidth * 2, heightOfRows(kFewestRows));
    connect(this, &QTableView::doubleClicked, this, [this] { beginCapture(); });
}

ShortcutKeyTable::~ShortcutKeyTable() {
    setModel(nullptr);
}

QSize ShortcutKeyTable::sizeHint() const {
    const int width = sizeHintForColumn(ShortcutKeyModel::descriptionColumn) +
                      horizontalHeader()->sectionSize(ShortcutKeyModel::keyColumn) +
                      verticalScrollBar()->sizeHint().width() + 2 * frameWidth();
    return {width, heightOfRows(kShownRows)};
}

int ShortcutKeyTable::heightOfRows(int rows) const {
    return horizontalHeader()->sizeHint().height() + rows * verticalHeader()->defaultSectionSize() +
           2 * frameWidth();
}

void ShortcutKeyTable::reloadData() {
    model_.reload();
    if (!selectedRow() && model_.rowCount() > 0) {
        selectRow(0);
    }
}

std::optional<std::size_t> ShortcutKeyTable::selectedRow() const {
    const QModelIndexList rows = selectionModel()->selectedRows();
    return rows.isEmpty() ? std::nullopt
                          : std::optional(static_cast<std::size_t>(rows.front().row()));
}

void ShortcutKeyTable::setEditingEnabled(bool enabled) {
    model_.setEditingEnabled(enabled);
}

void ShortcutKeyTable::beginCapture() {
    if (!model_.isEditingEnabled()) {
        if (refuse_) {
            refuse_();
        }
        return;
    }
    const std::optional<std::size_t> row = selectedRow();
    const QModelIndex cell =
        row ? model_.index(static_cast<int>(*row), ShortcutKeyModel::keyColumn) : QModelIndex();
    if (model_.flags(cell).testFlag(Qt::ItemIsEditable)) {
        setFocus();
        edit(cell);
    }
}

void ShortcutKeyTable::endCapture(ShortcutKeyCapture& capture,
                                  const ShortcutKeyCapture::Outcome& outcome) {
    closeEditor(&capture, QAbstractItemDelegate::NoHint);
    if (outcome.isCleared) {
        QMShortcutKeyTableview::keyDown("\x7F");
    } else if (outcome.key) {
        QMShortcutKeyTableDelegate::sharedController().customFieldEditor()->keyDown(*outcome.key);
    }
}

void ShortcutKeyTable::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Space:
        case Qt::Key_F2:
            beginCapture();
            break;
        case Qt::Key_Delete:
        case Qt::Key_Backspace:
            if (!model_.isEditingEnabled()) {
                beginCapture();
            } else {
                QMShortcutKeyTableview::keyDown(event->key() == Qt::Key_Delete ? "\x7F" : "\b");
            }
            break;
        default:
            QTableView::keyPressEvent(event);
    }
}

}  // namespace vornic
