#include "desktop/RelinkSheet.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeView>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <utility>

#include "app/window/HeaderText.h"
#include "base/FormatString.h"
#include "desktop/QtText.h"
#include "desktop/RelinkModel.h"
#include "desktop/Sheet.h"

namespace vornic {

namespace {

// In the order of the menu.
constexpr std::array<std::optional<Pick>, 3> kPicks = {std::nullopt, Pick::newest,
                                                       Pick::longestTail};

std::string sentenceAbout(const RelinkPreview& preview) {
    std::string text =
        preview.moves.empty()
            ? std::string("No media file gets another place.")
            : formatString("%@ another place.",
                           counted(preview.moves.size(), "media file gets", "media files get"));
    if (!preview.stays.empty()) {
        text += formatString(" %@ missing as before.", counted(preview.stays.size(), "is", "are"));
    }
    if (preview.droppedBookmarks != 0) {
        text += formatString(" %@ back to the old place and will be dropped.",
                             counted(preview.droppedBookmarks, "bookmark leads", "bookmarks lead"));
    }
    if (!preview.unread.empty()) {
        text += formatString(" %@ could not be looked through.",
                             counted(preview.unread.size(), "folder", "folders"));
    }
    if (!preview.moves.empty()) {
        text += " The original goes to the Trash and can be restored.";
    }
    return text;
}

QTreeView* makeTable(QAbstractItemModel* model, QWidget* parent) {
    auto* const table = new QTreeView(parent);
    table->setObjectName(QStringLiteral("relinkTable"));
    table->setAccessibleName(RelinkSheet::tr("What will be relinked"));
    table->setModel(model);
    table->setRootIsDecorated(false);
    table->setUniformRowHeights(true);
    table->setAlternatingRowColors(true);
    table->setAllColumnsShowFocus(true);
    table->setTabKeyNavigation(false);
    table->setTextElideMode(Qt::ElideMiddle);
    table->header()->setFocusPolicy(Qt::NoFocus);
    table->header()->setStretchLastSection(false);
    table->header()->setSectionResizeMode(RelinkModel::oldPlace, QHeaderView::Stretch);
    table->header()->setSectionResizeMode(RelinkModel::newPlace, QHeaderView::Stretch);
    table->header()->setSectionResizeMode(RelinkModel::state, QHeaderView::Fixed);
    constexpr int kStateCharacters = 18;
    table->setColumnWidth(RelinkModel::state,
                          table->fontMetrics().averageCharWidth() * kStateCharacters);
    return table;
}

}  // namespace

RelinkSheet::RelinkSheet(RelinkPreview preview, std::optional<Pick> pick, Actions actions,
                         QWidget* parent)
    : QDialog(parent), actions_(std::move(actions)) {
    setObjectName(QStringLiteral("relinkSheet"));
    setWindowTitle(tr("Relink Media"));
    auto* const column = new QVBoxLayout(this);
    auto* const model = new RelinkModel(std::move(preview), this);
    auto* const question = new QLabel(toQString(sentenceAbout(model->preview())), this);
    question->setObjectName(QStringLiteral("relinkLabel"));
    question->setTextFormat(Qt::PlainText);
    question->setWordWrap(true);
    column->addWidget(question);
    column->addWidget(makeTable(model, this), 1);
    if (actions_.searchAgain) {
        addPick(pick);
    }
    auto* const buttons = new QDialogButtonBox(this);
    QPushButton* const relink = buttons->addButton(tr("&Relink"), QDialogButtonBox::AcceptRole);
    relink->setObjectName(QStringLiteral("relinkBtn"));
    relink->setAutoDefault(false);
    relink->setEnabled(!model->preview().moves.empty());
    QPushButton* const cancel = buttons->addButton(QDialogButtonBox::Cancel);
    cancel->setDefault(true);
    column->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::accepted, this, [this, model] {
        accept();
        actions_.relink(model->preview());
    });
    giveRoom(*this);
    cancel->setFocus();
}

void RelinkSheet::addPick(std::optional<Pick> pick) {
    auto* const menu = new QComboBox(this);
    menu->setObjectName(QStringLiteral("relinkPick"));
    menu->addItems({tr("leave it as it is"), tr("take the newest"),
                    tr("take the one whose folders fit best")});
    menu->setCurrentIndex(
        static_cast<int>(std::find(kPicks.begin(), kPicks.end(), pick) - kPicks.begin()));
    auto* const form = new QFormLayout;
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    form->addRow(tr("&Where several files have its name:"), menu);
    auto* const label = qobject_cast<QLabel*>(form->labelForField(menu));
    label->setTextFormat(Qt::PlainText);
    qobject_cast<QVBoxLayout*>(layout())->addLayout(form);
    connect(menu, &QComboBox::activated, this, [this](int index) {
        reject();
        actions_.searchAgain(kPicks.at(static_cast<std::size_t>(index)));
    });
}

}  // namespace vornic
