#include "desktop/MendSheet.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSyntaxHighlighter>
#include <QVBoxLayout>
#include <utility>

#include "app/window/HeaderText.h"
#include "desktop/ColorScheme.h"
#include "desktop/OutcomeBadge.h"
#include "desktop/QtText.h"

namespace vornic {

namespace {

constexpr int kColumns = 92;
constexpr int kRows = 20;
// Of a longer difference the beginning is shown.
constexpr std::size_t kLongest = 2'000'000;

// Lines that go and lines that come begin with a sign; the colour says it again.
class DifferenceColors : public QSyntaxHighlighter {
  public:
    DifferenceColors(QTextDocument* document, QPalette palette)
        : QSyntaxHighlighter(document), palette_(std::move(palette)) {}

  protected:
    void highlightBlock(const QString& text) override {
        QTextCharFormat format;
        if (text.startsWith(u'-')) {
            format.setForeground(errorColorOn(palette_));
        } else if (text.startsWith(u'+')) {
            format.setForeground(OutcomeBadge::discColor(OutcomeBadge::Kind::good, palette_));
        } else if (text.startsWith(QLatin1String("@@"))) {
            format.setForeground(palette_.color(QPalette::PlaceholderText));
        } else {
            return;
        }
        setFormat(0, static_cast<int>(text.size()), format);
    }

  private:
    QPalette palette_;
};

QString shownDifference(const std::string& difference) {
    QString text = toQString(std::string_view(difference).substr(0, kLongest));
    for (QChar& character : text) {
        if (turnsDirection(character)) {
            character = QChar::ReplacementCharacter;
        }
    }
    return difference.size() > kLongest ? text + QStringLiteral("\n…") : text;
}

}  // namespace

MendSheet::MendSheet(const MendPreview& preview, std::function<void()> mend, QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("mendSheet"));
    setWindowTitle(tr("Mend"));
    auto* const question = new QLabel(this);
    question->setObjectName(QStringLiteral("mendLabel"));
    question->setTextFormat(Qt::PlainText);
    question->setWordWrap(true);
    question->setText(
        tr("%1 will be made in the file. The original goes to the Trash and can be restored.")
            .arg(toQString(counted(preview.count, "mend", "mends"))));
    auto* const difference = new QPlainTextEdit(this);
    difference->setObjectName(QStringLiteral("mendDifference"));
    difference->setAccessibleName(tr("What will be changed"));
    difference->setReadOnly(true);
    difference->setTabChangesFocus(true);
    difference->setLineWrapMode(QPlainTextEdit::NoWrap);
    difference->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    difference->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    new DifferenceColors(difference->document(), palette());
    difference->setPlainText(shownDifference(preview.difference));
    auto* const buttons = new QDialogButtonBox(this);
    QPushButton* const mendButton = buttons->addButton(tr("&Mend"), QDialogButtonBox::AcceptRole);
    mendButton->setObjectName(QStringLiteral("makeMendsBtn"));
    mendButton->setAutoDefault(false);
    QPushButton* const cancel = buttons->addButton(QDialogButtonBox::Cancel);
    cancel->setDefault(true);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(question);
    column->addWidget(difference, 1);
    column->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::accepted, this, [this, mend = std::move(mend)] {
        accept();
        mend();
    });
    const QFontMetrics metrics(difference->font());
    const QSize wanted(metrics.averageCharWidth() * kColumns, metrics.height() * kRows);
    constexpr int kPart = 20;
    const QSize room = parent->size() - parent->size() / kPart;
    // A sheet takes the size that its contents ask for.
    constexpr int kAround = 60;
    difference->setMinimumSize(wanted.boundedTo(room - QSize(kAround, 3 * kAround)));
    cancel->setFocus();
}

}  // namespace vornic
