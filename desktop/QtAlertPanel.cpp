#include "desktop/QtAlertPanel.h"

#include <QCheckBox>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <cstdint>
#include <utility>

#include "desktop/AlertBox.h"
#include "desktop/QtText.h"
#include "desktop/Sheet.h"
#include "ui/alerts/SuppressionPreference.h"

namespace vornic {

namespace {

constexpr std::int64_t kDefaultReturn = 1;
constexpr std::int64_t kAlternateReturn = 0;
constexpr std::int64_t kOtherReturn = -1;

class QtAlertPanel : public AlertPanel {
  public:
    explicit QtAlertPanel(const AlertContents& contents)
        : box_(new QMessageBox), over_(dynamic_cast<QWidget*>(contents.over.get())) {
        prepareAlertBox(*box_, toQString(contents.messageText),
                        toQString(contents.informativeText));
        addButtons(contents);
    }

    ~QtAlertPanel() override {
        if (box_) {
            box_->disconnect();
            box_->hide();
            box_->deleteLater();
        }
    }
    QtAlertPanel(const QtAlertPanel&) = delete;
    QtAlertPanel& operator=(const QtAlertPanel&) = delete;

    void showSuppressionCheckBox(const std::string& preferenceKey) override {
        const SuppressionPreference preference(preferenceKey);
        auto* const box = new QCheckBox(QStringLiteral("Do not show this message again"), box_);
        box->setChecked(preference.isTicked());
        QObject::connect(box, &QCheckBox::toggled,
                         [preference](bool ticked) { preference.setTicked(ticked); });
        box_->setCheckBox(box);
    }

    void begin(const std::shared_ptr<AlertWindow>& parentWindow,
               std::function<void(std::int64_t)> didEnd) override {
        auto* const window = dynamic_cast<QWidget*>(parentWindow.get());
        QMessageBox& box = *box_;
        if (tellsFailure(box.text())) {
            const QWidget* const own = ownWindow();
            const QWidget* const over = window != nullptr ? window
                                        : own != nullptr  ? own
                                                          : windowInUse();
            const QString file = over != nullptr ? over->windowFilePath() : QString();
            markAsFailure(box, file.isEmpty() ? file : fileNameOf(pathFromQString(file)));
        }
        if (window != nullptr) {
            box.setParent(window, box.windowFlags() | Qt::Dialog);
        }
        // Once: what is told keeps the alert alive, which keeps this panel.
        QObject::connect(
            &box, &QMessageBox::finished, &box,
            [this, didEnd = std::move(didEnd)] { didEnd(answer()); }, Qt::SingleShotConnection);
        if (window != nullptr) {
            beginSheet(box);
        } else {
            beginAlone(box, ownWindow());
        }
    }

    [[nodiscard]] bool isVisible() const override { return box_ && box_->isVisible(); }
    void orderOut() override {
        if (box_) {
            box_->disconnect();
            box_->hide();
        }
    }

  private:
    void addButtons(const AlertContents& contents) {
        default_ =
            contents.defaultButtonTitle
                ? box_->addButton(toQString(*contents.defaultButtonTitle), QMessageBox::AcceptRole)
                : box_->addButton(QMessageBox::Ok);
        box_->setDefaultButton(default_);
        if (contents.alternateButtonTitle) {
            alternate_ =
                box_->addButton(toQString(*contents.alternateButtonTitle), QMessageBox::RejectRole);
            box_->setEscapeButton(alternate_);
        } else {
            box_->setEscapeButton(default_);
        }
        if (contents.otherButtonTitle) {
            other_ = box_->addButton(toQString(*contents.otherButtonTitle),
                                     QMessageBox::DestructiveRole);
        }
    }

    // The window that a free-standing alert belongs to; null where there is none to be seen.
    [[nodiscard]] const QWidget* ownWindow() const {
        return over_ && over_->isVisible() ? over_.data() : nullptr;
    }

    [[nodiscard]] std::int64_t answer() const {
        const QAbstractButton* const clicked = box_->clickedButton();
        if (clicked != nullptr && clicked == other_) {
            return kOtherReturn;
        }
        // Closed by the window manager or with Escape, it has been answered by its escape button.
        const bool isAlternate =
            clicked == alternate_ || (clicked == nullptr && alternate_ != nullptr);
        return alternate_ != nullptr && isAlternate ? kAlternateReturn : kDefaultReturn;
    }

    // A window takes the sheets on it along when it is destroyed.
    QPointer<QMessageBox> box_;
    QPointer<QWidget> over_;
    QPushButton* default_ = nullptr;
    QPushButton* alternate_ = nullptr;
    QPushButton* other_ = nullptr;
};

}  // namespace

std::shared_ptr<AlertPanel> QtAlertPanelFactory::makePanel(const AlertContents& contents) {
    return std::make_shared<QtAlertPanel>(contents);
}

}  // namespace vornic
