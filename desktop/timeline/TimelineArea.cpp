#include "desktop/timeline/TimelineArea.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QToolTip>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "desktop/ColorScheme.h"
#include "desktop/QtText.h"
#include "desktop/Release.h"

namespace vornic {

namespace {

constexpr double kHeads = 84;
constexpr double kTop = SequencePicture::kRulerHeight + 4;
constexpr double kZoomStep = 1.25;
constexpr int kPageOfClips = 10;

const TimelineColours& coloursOf(const QPalette& palette) {
    return schemeOf(palette) == ColorScheme::dark ? TimelineColours::dark()
                                                  : TimelineColours::light();
}

// Each line is one there, too.
QString linesToolTip(const std::string& lines) {
    return toolTipOf(toQString(lines)).replace(u'\n', QStringLiteral("<br>"));
}

}  // namespace

TimelineArea::TimelineArea(Actions actions, QWidget* parent)
    : QAbstractScrollArea(parent), actions_(std::move(actions)) {
    static const bool isInstalled = (installReadableTimelines(), true);
    static_cast<void>(isInstalled);
    setObjectName(QStringLiteral("timelineArea"));
    setAccessibleName(tr("Timeline"));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    viewport()->setBackgroundRole(QPalette::Base);
}

TimelineArea::~TimelineArea() {
    releaseOnThread({timeline_});
}

void TimelineArea::setSequence(std::shared_ptr<const InspectedTimeline> timeline,
                               std::uint32_t sequence) {
    if (timeline != timeline_) {
        releaseOnThread({timeline_});
    }
    timeline_ = std::move(timeline);
    sequence_ = sequence;
    note_.clear();
    cursor_ = kNoTimelineItem;
    if (const SequencePicture* const shown = picture()) {
        cursor_ = shown->layout().first().value_or(kNoTimelineItem);
        note_ = shown->sequence().clips.empty() ? tr("This sequence has no clips.") : QString();
    }
    verticalScrollBar()->setValue(0);
    zoomToFit();
    if (QAccessible::isActive()) {
        QAccessibleEvent changed(this, QAccessible::ObjectReorder);
        QAccessible::updateAccessibility(&changed);
    }
    actions_.shown();
}

void TimelineArea::setNote(const QString& note) {
    note_ = note;
    viewport()->update();
}

const SequencePicture* TimelineArea::picture() const {
    return timeline_ && sequence_ < timeline_->pictures().size() ? &timeline_->pictures()[sequence_]
                                                                 : nullptr;
}

// Rows are made for small letters; larger ones enlarge all.
double TimelineArea::unit() const {
    constexpr double kSmall = 17;
    return std::max(1.0, fontMetrics().height() / kSmall);
}

Point TimelineArea::toUnits(QPointF point) const {
    return {point.x() / unit(), point.y() / unit()};
}

TimelineView TimelineArea::view() const {
    TimelineView view;
    const double width = viewport()->width() / unit();
    const double height = viewport()->height() / unit();
    view.area = {kHeads, kTop, std::max(width - kHeads, 1.0), std::max(height - kTop, 1.0)};
    view.scale = scale_;
    view.from = (picture() != nullptr ? picture()->layout().begin() : 0) +
                horizontalScrollBar()->value() / unit() / scale_;
    view.scrolled = verticalScrollBar()->value() / unit();
    return view;
}

double TimelineArea::fittingScale() const {
    constexpr double kRoom = 12;
    const SequenceLayout& layout = picture()->layout();
    return std::max(view().area.width - kRoom, 1.0) / (layout.end() - layout.begin());
}

// A frame is as wide as its timecode; scroll bars count in 32 bits.
double TimelineArea::largestScale() const {
    constexpr double kFrame = 100;
    constexpr double kMostPixels = 5e8;
    constexpr double kUsualFrame = 1.0 / 25;
    const SequenceLayout& layout = picture()->layout();
    const double frame = picture()->sequence().frame.approximateSeconds();
    return std::max(std::min(kFrame / (frame > 0 ? frame : kUsualFrame),
                             kMostPixels / (layout.end() - layout.begin())),
                    fittingScale());
}

void TimelineArea::updateBars() {
    followUps_ = 0;
    const SequencePicture* const shown = picture();
    if (shown == nullptr) {
        horizontalScrollBar()->setRange(0, 0);
        verticalScrollBar()->setRange(0, 0);
        return;
    }
    if (isFitted_) {
        scale_ = fittingScale();
    }
    const SequenceLayout& layout = shown->layout();
    const TimelineView seen = view();
    constexpr double kStep = 40;
    const double width = (layout.end() - layout.begin()) * scale_ + kStep;
    const double beyond = isFitted_ ? 0 : std::max(0.0, width - seen.area.width);
    horizontalScrollBar()->setRange(0, static_cast<int>(beyond * unit()));
    horizontalScrollBar()->setPageStep(static_cast<int>(seen.area.width * unit()));
    horizontalScrollBar()->setSingleStep(static_cast<int>(kStep * unit()));
    const double hidden = std::max(0.0, layout.height() - seen.area.height);
    verticalScrollBar()->setRange(0, static_cast<int>(std::ceil(hidden * unit())));
    verticalScrollBar()->setPageStep(static_cast<int>(seen.area.height * unit()));
    verticalScrollBar()->setSingleStep(static_cast<int>(SequenceLayout::kRowHeight * unit()));
}

void TimelineArea::scrollTo(double from) {
    const double value = (from - picture()->layout().begin()) * scale_ * unit();
    constexpr double kMost = std::numeric_limits<int>::max();
    horizontalScrollBar()->setValue(static_cast<int>(std::clamp(value, 0.0, kMost)));
}

void TimelineArea::zoomAround(double factor, double x) {
    if (picture() == nullptr) {
        return;
    }
    const double kept = view().secondsAt(x);
    const double fitting = fittingScale();
    scale_ = std::clamp(scale_ * factor, fitting, largestScale());
    isFitted_ = scale_ <= fitting;
    updateBars();
    scrollTo(kept - (x - view().area.x) / scale_);
    viewport()->update();
}

void TimelineArea::zoomBy(double factor) {
    const TimelineView seen = view();
    double x = seen.area.x + seen.area.width / 2;
    if (cursor_ != kNoTimelineItem) {
        const vornic::Box box = picture()->layout().boxOf(cursor_, seen);
        const double middle = box.x + box.width / 2;
        x = middle >= seen.area.x && middle <= seen.area.right() ? middle : x;
    }
    zoomAround(factor, x);
}

void TimelineArea::zoomToFit() {
    isFitted_ = true;
    updateBars();
    viewport()->update();
}

void TimelineArea::setCursorClip(std::uint32_t clip) {
    if (picture() == nullptr || clip >= picture()->sequence().clips.size() ||
        !picture()->layout().isPlaced(clip)) {
        return;
    }
    cursor_ = clip;
    ensureVisible();
    viewport()->update();
    if (QAccessible::isActive()) {
        QAccessibleEvent focus(this, QAccessible::Focus);
        focus.setChild(static_cast<int>(clip));
        QAccessible::updateAccessibility(&focus);
    }
    actions_.moved(cursor_);
}

void TimelineArea::activate(std::uint32_t clip) {
    if (clip != kNoTimelineItem) {
        actions_.activated(clip);
    }
}

void TimelineArea::ensureVisible() {
    constexpr double kMargin = 30;
    const SequenceLayout& layout = picture()->layout();
    const TimelineView seen = view();
    const double left = seen.xOf(layout.beginOf(cursor_));
    const double right = seen.xOf(layout.endOf(cursor_));
    const bool isSeen = left >= seen.area.x && right <= seen.area.right();
    const bool isWide = left <= seen.area.x && right >= seen.area.right();
    if (!isSeen && !isWide) {
        scrollTo(layout.beginOf(cursor_) - kMargin / scale_);
    }
    const vornic::Box box = layout.boxOf(cursor_, seen);
    QScrollBar& bar = *verticalScrollBar();
    if (box.y < seen.area.y) {
        bar.setValue(bar.value() + static_cast<int>((box.y - seen.area.y) * unit()));
    } else if (box.bottom() > seen.area.bottom()) {
        bar.setValue(bar.value() +
                     static_cast<int>(std::ceil((box.bottom() - seen.area.bottom()) * unit())));
    }
}

QRect TimelineArea::rectOf(std::uint32_t clip) const {
    if (picture() == nullptr || !picture()->layout().isPlaced(clip)) {
        return {};
    }
    const vornic::Box box = picture()->layout().boxOf(clip, view());
    const QRectF whole(box.x * unit(), box.y * unit(), box.width * unit(), box.height * unit());
    const QRect tracks(static_cast<int>(kHeads * unit()), static_cast<int>(kTop * unit()),
                       viewport()->width(), viewport()->height());
    return whole.toAlignedRect().intersected(tracks).intersected(viewport()->rect());
}

std::uint32_t TimelineArea::clipAt(QPoint point) const {
    const Point at = toUnits(point);
    if (picture() == nullptr || at.x < kHeads || at.y < kTop) {
        return kNoTimelineItem;
    }
    return picture()->layout().clipAt(at, view()).value_or(kNoTimelineItem);
}

// As `SequencePicture` draws it.
bool TimelineArea::isOnSign(QPoint point) const {
    const std::uint32_t clip = clipAt(point);
    return clip != kNoTimelineItem && picture()->signContains(clip, toUnits(point), view());
}

void TimelineArea::paintNote(QPainter& painter) {
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, note_);
}

void TimelineArea::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(viewport());
    if (picture() != nullptr) {
        paintSequence(painter);
    }
    if (picture() != nullptr && hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.drawRect(viewport()->rect().adjusted(1, 1, -1, -1));
    }
    paintNote(painter);
}

void TimelineArea::paintSequence(QPainter& painter) {
    const SequencePicture& shown = *picture();
    const TimelineColours& colours = coloursOf(palette());
    const double ratio = viewport()->devicePixelRatioF();
    ScreenCanvas canvas((QSizeF(viewport()->size()) * ratio).toSize(), font(), unit() * ratio,
                        kept_);
    canvas.fill(colours.paper);
    const TimelineView tracks = view();
    TimelineView ruler = tracks;
    ruler.area.y = 0;
    ruler.area.height = kTop;
    shown.drawRuler(canvas, ruler, colours);
    const vornic::Box heads{0, kTop, kHeads, tracks.area.height};
    canvas.clipTo({0, kTop - 6, kHeads, tracks.area.height + 6});
    shown.drawHeads(canvas, heads, tracks.scrolled, colours);
    canvas.clipTo({kHeads, kTop - 6, tracks.area.width, tracks.area.height + 6});
    shown.drawTracks(canvas, tracks, colours);
    shown.drawClips(canvas, tracks, colours, cursor_, std::numeric_limits<std::size_t>::max());
    painter.drawImage(QRectF(viewport()->rect()), canvas.image());
    if (kept_.isIncomplete()) {
        drawMissingTexts();
    }
}

// In turns of their own, so that none is long. No screen has place for so many texts that this
// would go on and on.
void TimelineArea::drawMissingTexts() {
    constexpr int kMost = 500;
    if (followUps_ < kMost) {
        ++followUps_;
        QMetaObject::invokeMethod(
            this, [this] { viewport()->update(); }, Qt::QueuedConnection);
    }
}

void TimelineArea::scrollContentsBy(int dx, int dy) {
    followUps_ = 0;
    QAbstractScrollArea::scrollContentsBy(dx, dy);
}

void TimelineArea::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    if (picture() != nullptr) {
        isFitted_ = isFitted_ || scale_ <= fittingScale();
    }
    updateBars();
}

bool TimelineArea::walk(int key) {
    const SequenceLayout& layout = picture()->layout();
    switch (key) {
        case Qt::Key_Left:
        case Qt::Key_Right:
            setCursorClip(layout.nextInTrack(cursor_, key == Qt::Key_Left ? -1 : 1));
            return true;
        case Qt::Key_Up:
        case Qt::Key_Down:
            setCursorClip(layout.inTrackBeside(cursor_, key == Qt::Key_Down));
            return true;
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
            setCursorClip(
                layout.nextInTrack(cursor_, key == Qt::Key_PageUp ? -kPageOfClips : kPageOfClips));
            return true;
        case Qt::Key_Home:
        case Qt::Key_End:
            setCursorClip(layout.endOfTrack(cursor_, key == Qt::Key_End));
            return true;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            activate(cursor_);
            return true;
        default:
            return false;
    }
}

void TimelineArea::keyPressEvent(QKeyEvent* event) {
    const Qt::KeyboardModifiers pressed = event->modifiers() & ~Qt::KeypadModifier;
    const bool isControl = (pressed & ~Qt::ShiftModifier) == Qt::ControlModifier;
    if (isControl && (event->key() == Qt::Key_Plus || event->key() == Qt::Key_Equal)) {
        zoomBy(kZoomStep);
    } else if (isControl && event->key() == Qt::Key_Minus) {
        zoomBy(1 / kZoomStep);
    } else if (isControl && event->key() == Qt::Key_0) {
        zoomToFit();
    } else if (pressed == Qt::NoModifier && event->key() == Qt::Key_Backspace) {
        actions_.back();
    } else if (pressed != Qt::NoModifier || cursor_ == kNoTimelineItem || !walk(event->key())) {
        QAbstractScrollArea::keyPressEvent(event);
    }
}

void TimelineArea::wheelEvent(QWheelEvent* event) {
    constexpr double kNotch = 120;
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
        const double notches = event->angleDelta().y() / kNotch;
        zoomAround(std::pow(kZoomStep, notches), std::max(toUnits(event->position()).x, kHeads));
        event->accept();
        return;
    }
    // Where nothing is above or below, the wheel goes along the time.
    const bool goesAlong =
        event->modifiers().testFlag(Qt::ShiftModifier) || verticalScrollBar()->maximum() == 0;
    if (goesAlong && event->angleDelta().x() == 0) {
        const int pixels = !event->pixelDelta().isNull()
                               ? event->pixelDelta().y()
                               : static_cast<int>(event->angleDelta().y() * unit());
        horizontalScrollBar()->setValue(horizontalScrollBar()->value() - pixels);
        event->accept();
        return;
    }
    QAbstractScrollArea::wheelEvent(event);
}

void TimelineArea::mousePressEvent(QMouseEvent* event) {
    const std::uint32_t clip = clipAt(event->pos());
    // The menu that the right button opens is about the clip below it.
    const bool isForMenu = event->button() == Qt::RightButton;
    if ((event->button() != Qt::LeftButton && !isForMenu) || clip == kNoTimelineItem) {
        return;
    }
    setCursorClip(clip);
    if (!isForMenu && isOnSign(event->pos())) {
        actions_.signClicked(clip);
    }
}

void TimelineArea::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        activate(clipAt(event->pos()));
    }
}

bool TimelineArea::viewportEvent(QEvent* event) {
    if (event->type() != QEvent::ToolTip) {
        return QAbstractScrollArea::viewportEvent(event);
    }
    const auto* const help = static_cast<QHelpEvent*>(event);
    const std::uint32_t clip = clipAt(help->pos());
    const TimelineMarker* const marker =
        picture() != nullptr ? picture()->markerAt(toUnits(help->pos()), view()) : nullptr;
    if (marker != nullptr) {
        QToolTip::showText(help->globalPos(), linesToolTip(picture()->describe(*marker)), this,
                           QRect(help->pos(), QSize(1, 1)));
    } else if (clip == kNoTimelineItem) {
        QToolTip::hideText();
    } else {
        QToolTip::showText(help->globalPos(), linesToolTip(picture()->describe(clip)), this,
                           rectOf(clip));
    }
    return true;
}

void TimelineArea::hideEvent(QHideEvent* event) {
    QAbstractScrollArea::hideEvent(event);
    kept_.dropImage();
}

void TimelineArea::changeEvent(QEvent* event) {
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        updateBars();
    }
    viewport()->update();
}

void TimelineArea::focusInEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusInEvent(event);
    viewport()->update();
    if (QAccessible::isActive() && cursor_ != kNoTimelineItem) {
        QAccessibleEvent focus(this, QAccessible::Focus);
        focus.setChild(static_cast<int>(cursor_));
        QAccessible::updateAccessibility(&focus);
    }
}

void TimelineArea::focusOutEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusOutEvent(event);
    viewport()->update();
}

}  // namespace vornic
