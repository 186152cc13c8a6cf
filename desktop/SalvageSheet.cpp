#include "desktop/SalvageSheet.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSplitter>
#include <QTreeView>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <utility>

#include "app/window/HeaderText.h"
#include "desktop/QtText.h"
#include "desktop/Sheet.h"

namespace vornic {

namespace {

QTreeView* makeTree(QAbstractItemModel* model, QWidget* parent) {
    auto* const tree = new QTreeView(parent);
    tree->setObjectName(QStringLiteral("guessesTree"));
    tree->setAccessibleName(SalvageSheet::tr("Guesses"));
    tree->setModel(model);
    tree->setUniformRowHeights(true);
    tree->setAlternatingRowColors(true);
    tree->setAllColumnsShowFocus(true);
    tree->setTabKeyNavigation(false);
    tree->header()->setFocusPolicy(Qt::NoFocus);
    tree->header()->setStretchLastSection(false);
    tree->setColumnHidden(FindingsModel::severity, true);
    tree->setColumnHidden(FindingsModel::state, true);
    // The first column that is shown has the signs of the tree.
    tree->setTreePosition(FindingsModel::what);
    const int unit = tree->fontMetrics().averageCharWidth();
    constexpr std::array kCharacters = {0, 52, 24, 30, 30, 0};
    for (const int column :
         {FindingsModel::what, FindingsModel::where, FindingsModel::before, FindingsModel::after}) {
        tree->setColumnWidth(column, unit * kCharacters.at(static_cast<std::size_t>(column)));
    }
    return tree;
}

QString sentenceAbout(const SalvagePreview& preview) {
    const std::uint64_t guesses = preview.guesses->findings().size();
    const QString copies =
        preview.copies.size() == 1
            ? SalvageSheet::tr("A copy can be made of what is left of the file.")
            : SalvageSheet::tr("%1 copies can be made, one for each root element.")
                  .arg(preview.copies.size());
    return copies + u' ' +
           SalvageSheet::tr("It is guessed in %1; look at each. The file itself stays.")
               .arg(toQString(counted(guesses, "place", "places")));
}

}  // namespace

SalvageSheet::SalvageSheet(const SalvagePreview& preview, std::function<void()> save,
                           QWidget* parent)
    : QDialog(parent),
      model_(new FindingsModel(palette(), this)),
      details_(new QPlainTextEdit(this)) {
    setObjectName(QStringLiteral("salvageSheet"));
    setWindowTitle(tr("Save a Salvaged Copy"));
    auto* const text = new QLabel(sentenceAbout(preview), this);
    text->setObjectName(QStringLiteral("salvageLabel"));
    text->setTextFormat(Qt::PlainText);
    text->setWordWrap(true);
    auto* const buttons = new QDialogButtonBox(this);
    QPushButton* const saveButton = buttons->addButton(tr("&Save…"), QDialogButtonBox::AcceptRole);
    saveButton->setObjectName(QStringLiteral("saveSalvagedBtn"));
    saveButton->setDefault(true);
    buttons->addButton(QDialogButtonBox::Cancel);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(text);
    column->addWidget(makeParts(), 1);
    column->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::accepted, this, [this, save = std::move(save)] {
        accept();
        save();
    });
    model_->setTable(preview.guesses);
    giveRoom(*this);
}

QWidget* SalvageSheet::makeParts() {
    auto* const parts = new QSplitter(Qt::Vertical, this);
    auto* const tree = makeTree(model_, parts);
    details_->setObjectName(QStringLiteral("guessDetails"));
    details_->setAccessibleName(tr("Around the guess"));
    details_->setReadOnly(true);
    details_->setTabChangesFocus(true);
    details_->setLineWrapMode(QPlainTextEdit::NoWrap);
    details_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    details_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    parts->addWidget(tree);
    parts->addWidget(details_);
    parts->setChildrenCollapsible(false);
    constexpr int kTreePart = 3;
    constexpr int kDetailsPart = 2;
    parts->setStretchFactor(0, kTreePart);
    parts->setStretchFactor(1, kDetailsPart);
    connect(tree->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current) { showGuess(current); });
    connect(model_, &QAbstractItemModel::modelReset, tree, [this, tree] {
        constexpr int kFew = 20;
        if (model_->rowCount() <= kFew) {
            tree->expandAll();
        }
        tree->setCurrentIndex(model_->index(0, FindingsModel::what));
    });
    return parts;
}

void SalvageSheet::showGuess(const QModelIndex& index) {
    const ListedFinding* const listed = model_->findingAt(index);
    if (listed == nullptr) {
        details_->clear();
        return;
    }
    QString text = oneLine(toQString(listed->finding->message())) + QStringLiteral("\n\n") +
                   tr("In the file:") + u'\n' + toQString(model_->table()->linesAround(*listed));
    const std::string copy = model_->table()->linesAroundAfter(*listed);
    if (!copy.empty()) {
        text += u'\n' + tr("In the copy:") + u'\n' + toQString(copy);
    }
    for (QChar& character : text) {
        if (turnsDirection(character)) {
            character = QChar::ReplacementCharacter;
        }
    }
    details_->setPlainText(text);
    details_->moveCursor(QTextCursor::Start);
}

}  // namespace vornic
