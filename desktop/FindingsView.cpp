#include "desktop/FindingsView.h"

#include <QApplication>
#include <QClipboard>
#include <QEvent>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "app/window/HeaderText.h"
#include "desktop/ContextMenu.h"
#include "desktop/FlowLayout.h"
#include "desktop/QtText.h"
#include "desktop/SeverityIcon.h"
#include "report/RuleTable.h"

namespace vornic {

namespace {

// Groups of more are opened by the user.
constexpr std::uint64_t kSmallGroup = 5;

constexpr std::array kSwitchNames = {"infoSwitch", "warningSwitch", "errorSwitch"};

QTreeView* makeTree(QAbstractItemModel* model, QWidget* parent) {
    auto* const tree = new QTreeView(parent);
    tree->setObjectName(QStringLiteral("findingsTree"));
    tree->setAccessibleName(FindingsView::tr("Findings"));
    tree->setModel(model);
    tree->setUniformRowHeights(true);
    tree->setAlternatingRowColors(true);
    tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    tree->setAllColumnsShowFocus(true);
    tree->setTextElideMode(Qt::ElideRight);
    tree->setSortingEnabled(true);
    tree->setTabKeyNavigation(false);
    tree->header()->setSortIndicator(FindingsModel::severity, Qt::DescendingOrder);
    tree->header()->setStretchLastSection(false);
    tree->header()->setFocusPolicy(Qt::NoFocus);
    const int unit = tree->fontMetrics().averageCharWidth();
    constexpr std::array kCharacters = {20, 50, 26, 34, 34, 9};
    for (int column = 0; column < FindingsModel::columnCount_; ++column) {
        tree->setColumnWidth(column, unit * kCharacters.at(static_cast<std::size_t>(column)));
    }
    // What has become of it is seen first.
    tree->header()->moveSection(FindingsModel::state, FindingsModel::what);
    return tree;
}

QString heading(const char* text, std::string_view content) {
    return QStringLiteral("%1 %2\n").arg(FindingsView::tr(text), toQString(content));
}

// What the table of rules says of a finding, in the order of what a user wants to know.
QString helpOf(const ListedFinding& listed) {
    const Rule& rule = ruleOf(listed.finding->rule);
    QString text = oneLine(toQString(listed.finding->message())) + QStringLiteral("\n\n");
    text += heading("What it means:", rule.meaning);
    text += heading("What programs do:", rule.effect);
    text += heading("What to do:", rule.remedy);
    if (FindingsTable::canBeMended(listed)) {
        text += heading(FindingsTable::isSafelyMended(listed) ? "The mend, which is safe:"
                                                              : "The mend, if you want it:",
                        listed.finding->mend->description);
    }
    text += heading("Source:", rule.source) + heading("Rule:", rule.id);
    if (!listed.finding->where.path.empty()) {
        text += heading("Element:", listed.finding->where.path);
    }
    return text;
}

}  // namespace

FindingsView::FindingsView(Actions actions, QWidget* parent)
    : QWidget(parent),
      actions_(std::move(actions)),
      model_(new FindingsModel(palette(), this)),
      tree_(makeTree(model_, this)),
      details_(new QPlainTextEdit(this)) {
    setObjectName(QStringLiteral("findingsView"));
    details_->setObjectName(QStringLiteral("findingDetails"));
    details_->setAccessibleName(tr("About the finding"));
    details_->setReadOnly(true);
    details_->setTabChangesFocus(true);
    details_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    auto* const parts = new QSplitter(Qt::Horizontal, this);
    parts->setObjectName(QStringLiteral("findingsSplitter"));
    parts->addWidget(tree_);
    parts->addWidget(details_);
    constexpr int kTreePart = 5;
    constexpr int kDetailsPart = 2;
    parts->setStretchFactor(0, kTreePart);
    parts->setStretchFactor(1, kDetailsPart);
    parts->setChildrenCollapsible(true);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(makeBar());
    column->addWidget(parts, 1);
    setTabOrder(mendButton_, tree_);
    setTabOrder(tree_, details_);
    model_->setTicked([this] { countTicked(); });
    connect(tree_->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current) { showDetails(current); });
    connect(model_, &QAbstractItemModel::modelReset, this, [this] { begin(); });
    connect(tree_, &QTreeView::activated, this,
            [this](const QModelIndex& index) { showPlaceAt(index); });
    addContextMenu(*tree_, "findingMenu",
                   {{tr("&Show Place"), [this] { showPlaceAt(tree_->currentIndex()); },
                     [this] { return model_->findingAt(tree_->currentIndex()) != nullptr; }},
                    {tr("&Mend Selected…"), [this] { mendButton_->click(); },
                     [this] { return mendButton_->isEnabled(); }},
                    {tr("&Copy"), [this] { copy(); }}});
    countTicked();
    countSeverities();
}

void FindingsView::showPlaceAt(const QModelIndex& index) {
    if (const ListedFinding* const listed = model_->findingAt(index)) {
        actions_.showPlace(*listed);
    }
}

QWidget* FindingsView::makeBar() {
    auto* const bar = new QWidget(this);
    auto* const row = new QHBoxLayout(bar);
    row->setContentsMargins(0, 0, 0, 0);
    filter_ = new QLineEdit(bar);
    filter_->setObjectName(QStringLiteral("findingsFilter"));
    filter_->setAccessibleName(tr("Filter findings"));
    filter_->setPlaceholderText(tr("Filter findings"));
    filter_->setClearButtonEnabled(true);
    row->addWidget(filter_, 1, Qt::AlignTop);
    // They take a second row where the window is narrow.
    auto* const switches = new QWidget(bar);
    auto* const flow = new FlowLayout(switches);
    row->addWidget(switches);
    for (std::size_t index = kSeverityCount; index-- > 0;) {
        auto* const button = new QToolButton(switches);
        button->setObjectName(QString::fromLatin1(kSwitchNames.at(index)));
        button->setCheckable(true);
        button->setChecked(true);
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setFocusPolicy(Qt::TabFocus);
        connect(button, &QToolButton::toggled, this, [this] { narrow(); });
        flow->addWidget(button);
        switches_.at(index) = button;
    }
    mendButton_ = new QPushButton(tr("&Mend Selected…"), switches);
    mendButton_->setObjectName(QStringLiteral("mendSelectedBtn"));
    mendButton_->setAutoDefault(false);
    flow->addWidget(mendButton_);
    connect(filter_, &QLineEdit::textChanged, this, [this] { narrow(); });
    connect(mendButton_, &QPushButton::clicked, this, [this] { actions_.mend(); });
    return bar;
}

void FindingsView::setTable(std::shared_ptr<const FindingsTable> table) {
    wanted_ = nullptr;
    model_->setTable(std::move(table));
    countSeverities();
}

// The rows are others than before.
void FindingsView::begin() {
    expandSmallGroups();
    if (model_->rowCount() > 0) {
        tree_->setCurrentIndex(model_->index(0, 0));
        tree_->clearSelection();
    }
    showDetails(tree_->currentIndex());
    if (wanted_ != nullptr && choose(*wanted_)) {
        wanted_ = nullptr;
    }
}

// @return false when no row shows it
bool FindingsView::choose(const Finding& finding) {
    const QModelIndex index = model_->indexOf(finding);
    if (!index.isValid()) {
        return false;
    }
    tree_->setCurrentIndex(index);
    tree_->scrollTo(index);
    return true;
}

// The rows of a large table come later.
void FindingsView::showFinding(const Finding& finding) {
    if (choose(finding)) {
        return;
    }
    wanted_ = &finding;
    for (QToolButton* const button : switches_) {
        button->setChecked(true);
    }
    filter_->clear();
}

void FindingsView::setMayMend(bool mayMend) {
    mayMend_ = mayMend;
    countTicked();
}

void FindingsView::narrow() {
    FindingsChoice choice = model_->choice();
    choice.text = filter_->text().toStdString();
    for (std::size_t index = 0; index < kSeverityCount; ++index) {
        choice.severities.at(index) = switches_.at(index)->isChecked();
    }
    model_->choose(choice);
}

void FindingsView::expandSmallGroups() {
    for (int row = 0; row < model_->rowCount(); ++row) {
        const QModelIndex index = model_->index(row, 0);
        const int children = model_->rowCount(index);
        if (children > 0 && static_cast<std::uint64_t>(children) <= kSmallGroup) {
            tree_->expand(index);
        }
    }
}

void FindingsView::showDetails(const QModelIndex& index) {
    const ListedFinding* const listed = model_->findingAt(index);
    if (listed == nullptr) {
        details_->clear();
        return;
    }
    details_->setPlainText(helpOf(*listed));
    const std::string lines = model_->table()->linesAround(*listed);
    if (!lines.empty()) {
        QTextCursor cursor(details_->document());
        cursor.movePosition(QTextCursor::End);
        QTextCharFormat format;
        format.setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
        cursor.insertText(QStringLiteral("\n") + toQString(lines), format);
    }
    details_->moveCursor(QTextCursor::Start);
}

void FindingsView::countTicked() {
    const std::size_t count = model_->tickedFindings().size();
    mendButton_->setText(count == 0 ? tr("&Mend Selected…")
                                    : tr("&Mend Selected… (%1)").arg(count));
    mendButton_->setEnabled(count != 0 && mayMend_);
}

void FindingsView::countSeverities() {
    constexpr std::array kOne = {"Note", "Warning", "Error"};
    constexpr std::array kMany = {"Notes", "Warnings", "Errors"};
    for (std::size_t index = 0; index < kSeverityCount; ++index) {
        const auto severity = static_cast<Severity>(index);
        const std::uint64_t count = model_->table() ? model_->table()->count(severity) : 0;
        QToolButton* const button = switches_.at(index);
        button->setIcon(severityIcon(severity, palette()));
        button->setText(QStringLiteral("%1 %2").arg(toQString(withThousands(count)),
                                                    tr((count == 1 ? kOne : kMany).at(index))));
        button->setToolTip(toolTipOf(tr("Show or hide findings of this severity")));
    }
}

QString FindingsView::selectedText() const {
    QModelIndexList rows = tree_->selectionModel()->selectedRows();
    if (rows.isEmpty() && tree_->currentIndex().isValid()) {
        rows.push_back(tree_->currentIndex());
    }
    std::sort(rows.begin(), rows.end());
    QString text;
    for (const QModelIndex& row : rows) {
        QStringList cells;
        for (int column = 0; column < FindingsModel::columnCount_; ++column) {
            cells += model_->data(row.siblingAtColumn(column), Qt::DisplayRole).toString();
        }
        text += cells.join(QLatin1Char('\t')) + QLatin1Char('\n');
    }
    return text;
}

void FindingsView::copy() {
    QApplication::clipboard()->setText(selectedText());
}

void FindingsView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && model_ != nullptr && mendButton_ != nullptr) {
        model_->setPalette(palette());
        countSeverities();
    }
}

}  // namespace vornic
