#include "desktop/LossList.h"

#include <QHeaderView>

#include "app/window/HeaderText.h"
#include "desktop/QtText.h"

namespace vornic {

namespace {

constexpr int kCountCharacters = 12;
constexpr int kFewestRows = 4;

QTreeWidgetItem* makeItem(const QString& count, const std::string& text) {
    const QString line = oneLine(toQString(text));
    auto* const item = new QTreeWidgetItem({count, line});
    item->setToolTip(1, toolTipOf(line));
    return item;
}

}  // namespace

LossList::LossList(QWidget* parent) : QTreeWidget(parent) {
    setObjectName(QStringLiteral("lossList"));
    setAccessibleName(tr("What is left out"));
    setHeaderLabels({tr("How often"), tr("What is left out, and where")});
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setAlternatingRowColors(true);
    setTabKeyNavigation(false);
    setTextElideMode(Qt::ElideRight);
    header()->setStretchLastSection(true);
    header()->setFocusPolicy(Qt::NoFocus);
    setColumnWidth(0, fontMetrics().averageCharWidth() * kCountCharacters);
    setMinimumHeight(fontMetrics().height() * (kFewestRows + 1));
}

void LossList::show(const std::vector<ConversionLoss>& losses) {
    clear();
    QList<QTreeWidgetItem*> items;
    for (const ConversionLoss& loss : losses) {
        QTreeWidgetItem* const item = makeItem(toQString(withThousands(loss.count)), loss.what);
        for (const std::string& place : loss.places) {
            item->addChild(makeItem(QString(), place));
        }
        if (loss.count > loss.places.size()) {
            item->addChild(makeItem(QString(), "and " + counted(loss.count - loss.places.size(),
                                                                "more place", "more places")));
        }
        items.push_back(item);
    }
    addTopLevelItems(items);
    if (!items.isEmpty()) {
        setCurrentItem(items.front());
    }
    if (items.size() == 1) {
        expandItem(items.front());
    }
}

}  // namespace vornic
