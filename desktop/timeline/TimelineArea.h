#ifndef VORNIC_DESKTOP_TIMELINE_TIMELINE_AREA_H
#define VORNIC_DESKTOP_TIMELINE_TIMELINE_AREA_H

#include <QAbstractScrollArea>
#include <functional>
#include <memory>

#include "app/window/InspectedTimeline.h"
#include "desktop/timeline/ScreenCanvas.h"

namespace vornic {

/// A sequence to be looked at: zoomed, scrolled, and walked through clip by clip with keys. Only
/// what is in view is drawn. Main thread.
class TimelineArea : public QAbstractScrollArea {
  public:
    struct Actions {
        /// Another sequence is shown, or none.
        std::function<void()> shown;
        /// The user has come to another clip.
        std::function<void(std::uint32_t clip)> moved;
        /// A clip was double-clicked, or Return was pressed on it.
        std::function<void(std::uint32_t clip)> activated;
        /// The sign of the findings on a clip was clicked.
        std::function<void(std::uint32_t clip)> signClicked;
        /// Backspace was pressed.
        std::function<void()> back;
    };

    TimelineArea(Actions actions, QWidget* parent);
    ~TimelineArea() override;
    TimelineArea(const TimelineArea&) = delete;
    TimelineArea& operator=(const TimelineArea&) = delete;

    /// Shows a sequence whole, with the cursor on its first clip. @param timeline null: nothing.
    void setSequence(std::shared_ptr<const InspectedTimeline> timeline, std::uint32_t sequence);
    /// What is shown in place of a sequence.
    void setNote(const QString& note);
    [[nodiscard]] const SequencePicture* picture() const;

    /// The clip that is looked at, or `kNoTimelineItem`.
    [[nodiscard]] std::uint32_t cursor() const { return cursor_; }
    /// Goes to a clip and brings it into view.
    void setCursorClip(std::uint32_t clip);
    void activate(std::uint32_t clip);

    /// Pixels a second, in units of the font.
    [[nodiscard]] double scale() const { return scale_; }
    /// Around the cursor where that is in view, else around the middle.
    void zoomBy(double factor);
    void zoomToFit();
    /// The place of a clip on the viewport, as far as that is in view.
    [[nodiscard]] QRect rectOf(std::uint32_t clip) const;
    /// The clip at a place of the viewport, or `kNoTimelineItem`.
    [[nodiscard]] std::uint32_t clipAt(QPoint point) const;
    [[nodiscard]] bool isOnSign(QPoint point) const;
    /// What the last drawing left to the next one, which follows by itself.
    [[nodiscard]] const KeptShapes& kept() const { return kept_; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    bool viewportEvent(QEvent* event) override;

  private:
    [[nodiscard]] double unit() const;
    [[nodiscard]] TimelineView view() const;
    [[nodiscard]] double fittingScale() const;
    [[nodiscard]] double largestScale() const;
    [[nodiscard]] Point toUnits(QPointF point) const;
    void zoomAround(double factor, double x);
    void updateBars();
    void scrollTo(double from);
    void ensureVisible();
    bool walk(int key);
    void paintNote(QPainter& painter);
    void paintSequence(QPainter& painter);
    void drawMissingTexts();

    Actions actions_;
    std::shared_ptr<const InspectedTimeline> timeline_;
    std::uint32_t sequence_ = 0;
    std::uint32_t cursor_ = kNoTimelineItem;
    double scale_ = 1;
    bool isFitted_ = true;
    QString note_;
    KeptShapes kept_;
    // How often what is in view was drawn for its texts alone.
    int followUps_ = 0;
};

/// Lets the clips of a `TimelineArea` be read one by one. Once in a program.
void installReadableTimelines();

}  // namespace vornic

#endif
