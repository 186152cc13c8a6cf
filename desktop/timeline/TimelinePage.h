#ifndef VORNIC_DESKTOP_TIMELINE_TIMELINE_PAGE_H
#define VORNIC_DESKTOP_TIMELINE_TIMELINE_PAGE_H

#include <QComboBox>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QWidget>
#include <functional>
#include <memory>
#include <vector>

#include "desktop/ElidedLabel.h"
#include "desktop/timeline/TimelineArea.h"

namespace vornic {

/// The timeline of a document's file: its sequences, and what there is to know of the clip that is
/// looked at. It is read on a thread, once the page comes to be seen. Main thread.
class TimelinePage : public QWidget {
  public:
    struct Actions {
        /// The user looks at a clip that begins in a line of the file.
        std::function<void(std::size_t line)> looked;
        /// The user wants to see that line.
        std::function<void(std::size_t line)> showLine;
        /// The user wants to see a finding in the list.
        std::function<void(const Finding&)> showFinding;
        std::function<void()> savePicture;
    };

    TimelinePage(Actions actions, QWidget* parent);
    ~TimelinePage() override;
    TimelinePage(const TimelinePage&) = delete;
    TimelinePage& operator=(const TimelinePage&) = delete;

    /// Shows the timeline of another reading of the file (null: nothing).
    void setInspection(std::shared_ptr<const Inspection> inspection);
    /// Null while the timeline is being read.
    [[nodiscard]] const std::shared_ptr<const InspectedTimeline>& timeline() const {
        return timeline_;
    }
    [[nodiscard]] TimelineArea& area() { return *area_; }
    [[nodiscard]] std::uint32_t sequence() const { return sequence_; }
    /// Shows another sequence of the file; `goBack` leads to the one before.
    void showSequence(std::uint32_t number);
    void goBack();
    /// Goes to the finding on the clip, and then to the next one on it.
    void showFinding();
    void showSource();
    /// Copies the details.
    void copy() const;
    [[nodiscard]] QString details() const { return details_->toPlainText(); }

  protected:
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    QWidget* makeBar();
    QPushButton* addButton(QWidget* parent, const char* objectName, const QString& text,
                           const QString& description, std::function<void()> command);
    void addZoomButtons(QHBoxLayout& row, QWidget* bar);
    void arrange();
    void read();
    void take(std::shared_ptr<const InspectedTimeline> timeline);
    void fillSequences();
    void look(std::uint32_t clip);
    void showDetails();
    void activate(std::uint32_t clip);
    void updateButtons();
    [[nodiscard]] QString detailsOf(std::uint32_t clip) const;

    // A sequence that a clip was opened in, and that clip.
    struct Step {
        std::uint32_t sequence = 0;
        std::uint32_t clip = kNoTimelineItem;
    };

    Actions actions_;
    std::shared_ptr<const Inspection> inspection_;
    std::shared_ptr<const InspectedTimeline> timeline_;
    std::uint32_t sequence_ = 0;
    std::vector<Step> way_;
    // Where the user was when the file was read anew.
    Step kept_;
    std::string keptTitle_;
    // What an older reading brings is dropped.
    unsigned number_ = 0;
    std::size_t shownFinding_ = 0;

    QComboBox* sequences_ = nullptr;
    ElidedLabel* summary_ = nullptr;
    QPushButton* backButton_ = nullptr;
    QPushButton* openButton_ = nullptr;
    QPushButton* findingButton_ = nullptr;
    QPushButton* sourceButton_ = nullptr;
    QPushButton* saveButton_ = nullptr;
    QSplitter* splitter_ = nullptr;
    TimelineArea* area_ = nullptr;
    QWidget* legend_ = nullptr;
    QPlainTextEdit* details_ = nullptr;
};

}  // namespace vornic

#endif
