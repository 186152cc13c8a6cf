#include "desktop/DocumentHeader.h"

#include <QHBoxLayout>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "base/PathText.h"
#include "base/Text.h"
#include "desktop/FlowLayout.h"
#include "desktop/QtText.h"

namespace vornic {

namespace {

OutcomeBadge::Kind kindOf(HeaderSign sign) {
    switch (sign) {
        case HeaderSign::good:
            return OutcomeBadge::Kind::good;
        case HeaderSign::warning:
            return OutcomeBadge::Kind::warning;
        case HeaderSign::bad:
            return OutcomeBadge::Kind::bad;
        case HeaderSign::neutral:
            return OutcomeBadge::Kind::neutral;
        case HeaderSign::none:
            break;
    }
    return OutcomeBadge::Kind::none;
}

QString kindByName(const std::string& path) {
    return lowercased(pathExtension(path)) == "fcpxml"
               ? DocumentHeader::tr("Final Cut Pro X file (FCPXML)")
               : DocumentHeader::tr("Final Cut Pro 7 file (XMEML)");
}

QLabel* makeLabel(const char* objectName, const QString& description, QWidget* parent) {
    auto* const label = new QLabel(parent);
    label->setObjectName(QString::fromLatin1(objectName));
    label->setAccessibleDescription(description);
    label->setTextFormat(Qt::PlainText);
    return label;
}

}  // namespace

DocumentHeader::DocumentHeader(const std::string& path, std::function<void(HeaderOffer)> accept,
                               QWidget* parent)
    : QWidget(parent), accept_(std::move(accept)) {
    auto* const name = new ElidedLabel(this);
    name->setObjectName(QStringLiteral("fileNameLabel"));
    name->setAccessibleDescription(tr("File"));
    name->setToolTip(toolTipOf(path));
    QFont large = name->font();
    large.setPointSizeF(large.pointSizeF() * 1.4);
    large.setBold(true);
    name->setFont(large);
    name->setWholeText(fileNameOf(path));
    auto* const kind = makeLabel("fileKindLabel", tr("Kind of file"), this);
    kind->setText(kindByName(path));
    facts_ = makeLabel("fileFactsLabel", tr("Version and size"), this);
    auto* const folder = new ElidedLabel(this);
    folder->setObjectName(QStringLiteral("fileFolderLabel"));
    folder->setAccessibleDescription(tr("Folder"));
    folder->setToolTip(toolTipOf(path));
    folder->setWholeText(oneLine(pathToQString(parentFolder(path))));

    auto* const about = new QHBoxLayout();
    constexpr int kApart = 12;
    about->setSpacing(kApart);
    about->addWidget(kind);
    about->addWidget(facts_);
    about->addWidget(folder, 1);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    column->addWidget(name);
    column->addLayout(about);
    column->addWidget(makeSentence());
}

QWidget* DocumentHeader::makeSentence() {
    auto* const line = new QWidget(this);
    badge_ = new OutcomeBadge(line);
    badge_->setObjectName(QStringLiteral("outcomeBadge"));
    sentence_ = makeLabel("headerLabel", tr("State of the file"), line);
    sentence_->setWordWrap(true);
    QFont bold = sentence_->font();
    bold.setBold(true);
    sentence_->setFont(bold);
    auto* const row = new QHBoxLayout();
    row->addWidget(badge_);
    row->addWidget(sentence_, 1);
    auto* const column = new QVBoxLayout(line);
    constexpr int kAbove = 4;
    column->setContentsMargins(0, kAbove, 0, kAbove);
    column->addLayout(row);
    column->addWidget(makeOffers(line));
    return line;
}

// A row of buttons, or several where they have no room beside each other.
QWidget* DocumentHeader::makeOffers(QWidget* parent) {
    buttons_ = new QWidget(parent);
    buttons_->setVisible(false);
    auto* const flow = new FlowLayout(buttons_);
    const auto add = [&](HeaderOffer offer, const char* objectName, const QString& text) {
        auto* const button = new QPushButton(text, buttons_);
        button->setObjectName(QString::fromLatin1(objectName));
        button->setVisible(false);
        connect(button, &QPushButton::clicked, this, [this, offer] { accept_(offer); });
        flow->addWidget(button);
        offers_[offer] = button;
    };
    add(HeaderOffer::showRemoved, "showRemovedBtn", tr("Show"));
    add(HeaderOffer::bringBackAndMend, "bringBackBtn", tr("Bring Bac&k and Mend Instead"));
    add(HeaderOffer::mend, "mendBtn", tr("Me&nd…"));
    add(HeaderOffer::treatAsContents, "treatAsBtn", QString());
    add(HeaderOffer::setVersion, "setVersionBtn", tr("Set Version…"));
    add(HeaderOffer::saveSalvagedCopy, "salvageBtn", tr("Save a Salvaged Cop&y…"));
    add(HeaderOffer::restoreOriginal, "restoreBtn", tr("Restore &Original"));
    return buttons_;
}

void DocumentHeader::setText(const HeaderText& text) {
    badge_->setKind(kindOf(text.sign));
    sentence_->setText(wrappable(oneLine(toQString(text.sentence))));
    offers_.at(HeaderOffer::treatAsContents)
        ->setText(text.contents == FileKind::fcpxml ? tr("Treat as FC&PXML")
                                                    : tr("Treat as &XMEML"));
    buttons_->setVisible(!text.offers.empty());
    for (const auto& [offer, button] : offers_) {
        button->setVisible(std::find(text.offers.begin(), text.offers.end(), offer) !=
                           text.offers.end());
    }
}

void DocumentHeader::setBusy(const QString& sentence) {
    setText({.sentence = sentence.toStdString(), .offers = {}});
}

void DocumentHeader::setFacts(const QString& facts) {
    facts_->setText(facts);
}

}  // namespace vornic
