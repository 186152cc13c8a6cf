#include "desktop/timeline/TimelinePage.h"

#include <QApplication>
#include <QClipboard>
#include <QEvent>
#include <QHBoxLayout>
#include <QPointer>
#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>
#include <new>
#include <set>
#include <utility>

#include "base/Exception.h"
#include "desktop/ColorScheme.h"
#include "desktop/ContextMenu.h"
#include "desktop/FlowLayout.h"
#include "desktop/QtText.h"
#include "desktop/Release.h"
#include "desktop/timeline/PainterCanvas.h"
#include "picture/TimelineSheet.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"

namespace vornic {

namespace {

constexpr double kZoomStep = 1.25;
// Of the area and of the text about the clip.
constexpr int kAreaPart = 5;
constexpr int kDetailsPart = 2;

// What the colours and signs of a timeline mean.
class Legend : public QWidget {
  public:
    Legend(const TimelinePage& page, QWidget* parent) : QWidget(parent), page_(page) {
        setObjectName(QStringLiteral("timelineLegend"));
        setFixedHeight(kLineHeight);
    }

    void update() {
        std::set<TimelineKind> kinds;
        std::set<Severity> severities;
        if (const auto& timeline = page_.timeline();
            timeline && page_.sequence() < timeline->pictures().size()) {
            for (const TimelineClip& clip :
                 timeline->pictures()[page_.sequence()].sequence().clips) {
                kinds.insert(clip.kind);
            }
            for (const TimelineMark& mark : timeline->marks()) {
                if (mark.item.sequence == page_.sequence()) {
                    severities.insert(mark.severity);
                }
            }
        }
        kinds_ = {kinds.begin(), kinds.end()};
        severities_ = {severities.rbegin(), severities.rend()};
        fit();
        QWidget::update();
    }

  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.scale(unit(), unit());
        PainterCanvas canvas(painter, font());
        draw(canvas);
    }
    void resizeEvent(QResizeEvent* /*event*/) override { fit(); }

  private:
    static constexpr int kLineHeight = 18;

    // Draws nothing.
    class Measure : public Canvas {
      public:
        void rectangle(const Box& /*box*/, double /*radius*/,
                       const ShapeStyle& /*style*/) override {}
        void polygon(const std::vector<Point>& /*corners*/, const ShapeStyle& /*style*/) override {}
        void line(Point /*from*/, Point /*to*/, Colour /*colour*/, double /*width*/) override {}
        void text(Point /*at*/, std::string_view /*text*/, const TextStyle& /*style*/) override {}
        void begin(const ShapeGroup& /*group*/) override {}
        void end() override {}
        [[nodiscard]] bool showsTitles() const override { return false; }
    };

    [[nodiscard]] double unit() const {
        constexpr double kSmall = 17;
        return std::max(1.0, fontMetrics().height() / kSmall);
    }
    double draw(Canvas& canvas) const {
        TimelineColours colours = schemeOf(palette()) == ColorScheme::dark
                                      ? TimelineColours::dark()
                                      : TimelineColours::light();
        const QColor text = palette().color(QPalette::WindowText);
        colours.text = {static_cast<std::uint8_t>(text.red()),
                        static_cast<std::uint8_t>(text.green()),
                        static_cast<std::uint8_t>(text.blue())};
        return drawTimelineLegend(canvas, {2, 2, width() / unit(), height() / unit()}, kinds_,
                                  severities_, colours);
    }
    void fit() {
        Measure measure;
        setFixedHeight(std::max(kLineHeight, static_cast<int>((draw(measure) + 2) * unit())));
    }

    const TimelinePage& page_;
    std::vector<TimelineKind> kinds_;
    std::vector<Severity> severities_;
};

}  // namespace

TimelinePage::TimelinePage(Actions actions, QWidget* parent)
    : QWidget(parent), actions_(std::move(actions)) {
    setObjectName(QStringLiteral("timelinePage"));
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(makeBar());
    splitter_ = new QSplitter(Qt::Vertical, this);
    area_ = new TimelineArea({.shown = [this] { showDetails(); },
                              .moved = [this](std::uint32_t clip) { look(clip); },
                              .activated = [this](std::uint32_t clip) { activate(clip); },
                              .signClicked = [this](std::uint32_t /*clip*/) { showFinding(); },
                              .back = [this] { goBack(); }},
                             splitter_);
    details_ = new QPlainTextEdit(splitter_);
    details_->setObjectName(QStringLiteral("timelineDetails"));
    details_->setAccessibleName(tr("About the Clip"));
    details_->setReadOnly(true);
    details_->setTabChangesFocus(true);
    details_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    splitter_->addWidget(area_);
    splitter_->addWidget(details_);
    splitter_->setChildrenCollapsible(false);
    splitter_->setStretchFactor(0, kAreaPart);
    splitter_->setStretchFactor(1, kDetailsPart);
    column->addWidget(splitter_, 1);
    legend_ = new Legend(*this, this);
    column->addWidget(legend_);
    setTabOrder(saveButton_, area_);
    setTabOrder(area_, details_);
    const auto clicks = [](QPushButton* button) {
        return ContextCommand{button->text(), [button] { button->click(); },
                              [button] { return button->isEnabled(); }};
    };
    addContextMenu(
        *area_, "clipMenu",
        {clicks(openButton_), clicks(findingButton_), clicks(sourceButton_), {tr("Copy"), [this] {
                                                                                  copy();
                                                                              }}});
    updateButtons();
}

QWidget* TimelinePage::makeBar() {
    auto* const bar = new QWidget(this);
    auto* const column = new QVBoxLayout(bar);
    column->setContentsMargins(0, 0, 0, 0);
    auto* const top = new QHBoxLayout;
    sequences_ = new QComboBox(bar);
    sequences_->setObjectName(QStringLiteral("timelineSequence"));
    sequences_->setAccessibleName(tr("Sequence"));
    sequences_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    constexpr int kCharacters = 28;
    sequences_->setMinimumContentsLength(kCharacters);
    summary_ = new ElidedLabel(bar);
    summary_->setObjectName(QStringLiteral("timelineLabel"));
    top->addWidget(sequences_);
    top->addWidget(summary_, 1);
    column->addLayout(top);
    addZoomButtons(*top, bar);
    auto* const buttons = new QWidget(bar);
    auto* const flow = new FlowLayout(buttons);
    const auto add = [&](const char* objectName, const QString& text, const QString& description,
                         std::function<void()> command) {
        auto* const button = addButton(buttons, objectName, text, description, std::move(command));
        flow->addWidget(button);
        return button;
    };
    backButton_ = add("timelineBackBtn", tr("Back"),
                      tr("Show the sequence that this one was opened in"), [this] { goBack(); });
    openButton_ = add("timelineOpenBtn", tr("Open Clip"), tr("Show what the clip shows"),
                      [this] { activate(area_->cursor()); });
    findingButton_ = add("timelineFindingBtn", tr("Show Finding"),
                         tr("Show what was found on the clip"), [this] { showFinding(); });
    sourceButton_ =
        add("timelineSourceBtn", tr("Show in Source"),
            tr("Show the line of the file that the clip begins in"), [this] { showSource(); });
    saveButton_ = add("timelineSaveBtn", tr("Save Picture…"),
                      tr("Save a picture of all sequences as SVG, PNG or PDF"),
                      [this] { actions_.savePicture(); });
    column->addWidget(buttons);
    connect(sequences_, &QComboBox::activated, this, [this](int index) {
        way_.clear();
        showSequence(static_cast<std::uint32_t>(index));
    });
    return bar;
}

QPushButton* TimelinePage::addButton(QWidget* parent, const char* objectName, const QString& text,
                                     const QString& description, std::function<void()> command) {
    auto* const button = new QPushButton(text, parent);
    button->setObjectName(QString::fromLatin1(objectName));
    button->setAccessibleDescription(description);
    button->setToolTip(toolTipOf(description));
    connect(button, &QPushButton::clicked, this, [command = std::move(command)] { command(); });
    return button;
}

// Signs in place of words, so that the other buttons keep to one row.
void TimelinePage::addZoomButtons(QHBoxLayout& row, QWidget* bar) {
    const auto addSign = [&](const char* objectName, const QString& sign, const QString& name,
                             const QString& description, double factor) {
        auto* const button = addButton(bar, objectName, sign, description,
                                       [this, factor] { area_->zoomBy(factor); });
        button->setAccessibleName(name);
        button->setMaximumWidth(button->sizeHint().height() * 3 / 2);
        row.addWidget(button);
    };
    addSign("timelineZoomOutBtn", QStringLiteral("−"), tr("Zoom Out"),
            tr("Show more of the sequence (Ctrl+−)"), 1 / kZoomStep);
    addSign("timelineZoomInBtn", QStringLiteral("+"), tr("Zoom In"),
            tr("Show less of the sequence, larger (Ctrl++)"), kZoomStep);
    row.addWidget(addButton(bar, "timelineFitBtn", tr("Fit"),
                            tr("Show the whole sequence (Ctrl+0)"),
                            [this] { area_->zoomToFit(); }));
}

// On a low page the tracks get its whole height: the text about the clip stands beside them, and
// the colours are told by it alone.
void TimelinePage::arrange() {
    constexpr int kLinesOfLowPage = 24;
    const bool isLow = height() < kLinesOfLowPage * fontMetrics().height();
    legend_->setVisible(!isLow);
    const Qt::Orientation wanted = isLow ? Qt::Horizontal : Qt::Vertical;
    if (splitter_->orientation() != wanted) {
        splitter_->setOrientation(wanted);
        const int room = isLow ? width() : height();
        splitter_->setSizes({room * kAreaPart / (kAreaPart + kDetailsPart),
                             room * kDetailsPart / (kAreaPart + kDetailsPart)});
    }
}

void TimelinePage::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    arrange();
}

TimelinePage::~TimelinePage() {
    releaseOnThread({inspection_, timeline_});
}

void TimelinePage::setInspection(std::shared_ptr<const Inspection> inspection) {
    if (area_->picture() != nullptr && area_->cursor() != kNoTimelineItem) {
        kept_ = {sequence_, area_->cursor()};
        keptTitle_ = area_->picture()->titleOf(area_->cursor());
    }
    releaseOnThread({inspection_, timeline_});
    inspection_ = std::move(inspection);
    timeline_ = nullptr;
    area_->setSequence(nullptr, 0);
    sequences_->clear();
    updateButtons();
    ++number_;
    if (isVisible()) {
        read();
    }
}

void TimelinePage::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!timeline_) {
        read();
    }
}

void TimelinePage::read() {
    area_->setNote(tr("Reading the timeline…"));
    if (!inspection_) {
        return;
    }
    ++number_;
    try {
        platform::detachNewThread(
            [self = QPointer<TimelinePage>(this), number = number_, inspection = inspection_] {
                std::shared_ptr<const InspectedTimeline> timeline;
                try {
                    timeline = std::make_shared<const InspectedTimeline>(inspection);
                } catch (const std::bad_alloc&) {
                    timeline = nullptr;
                }
                platform::MainThread::perform([self, number, timeline = std::move(timeline)] {
                    if (self && number == self->number_) {
                        self->take(timeline);
                    }
                });
            });
    } catch (const platform::Exception&) {
        area_->setNote(tr("The timeline could not be read."));
    }
}

void TimelinePage::take(std::shared_ptr<const InspectedTimeline> timeline) {
    if (!timeline) {
        area_->setNote(tr("There is not enough memory to read the timeline."));
        return;
    }
    // The same sequence as before, where the file still has it.
    const std::uint32_t before = way_.empty() ? sequence_ : way_.front().sequence;
    const bool isFirst = summary_->text().isEmpty();
    way_.clear();
    timeline_ = std::move(timeline);
    fillSequences();
    const bool isThere = !isFirst && before < timeline_->pictures().size();
    showSequence(isThere ? before : timeline_->mainSequence());
    // What changes a file leaves most clips where they are.
    const SequencePicture* const picture = area_->picture();
    if (picture != nullptr && kept_.sequence == sequence_ &&
        kept_.clip < picture->sequence().clips.size() &&
        picture->titleOf(kept_.clip) == keptTitle_) {
        area_->setCursorClip(kept_.clip);
    }
}

void TimelinePage::fillSequences() {
    sequences_->clear();
    const std::vector<TimelineSequence>& sequences = timeline_->timeline().sequences();
    QStringList names;
    for (std::uint32_t number = 0; number < sequences.size(); ++number) {
        names += oneLine(toQString(shownNameOf(sequences[number], number)));
    }
    sequences_->addItems(names);
}

void TimelinePage::showSequence(std::uint32_t number) {
    if (!timeline_) {
        return;
    }
    sequence_ = number;
    area_->setSequence(timeline_, number);
    const SequencePicture* const picture = area_->picture();
    sequences_->setCurrentIndex(static_cast<int>(number));
    if (picture == nullptr) {
        area_->setNote(timeline_->inspection().file.isRead()
                           ? tr("There is no sequence in this file.")
                           : tr("The file could not be read."));
    }
    summary_->setWholeText(picture != nullptr ? oneLine(toQString(picture->summary())) : QString());
    static_cast<Legend*>(legend_)->update();
    updateButtons();
}

void TimelinePage::goBack() {
    if (way_.empty()) {
        return;
    }
    const Step step = way_.back();
    way_.pop_back();
    showSequence(step.sequence);
    area_->setCursorClip(step.clip);
    area_->setFocus();
}

// A clip that shows a sequence opens; of another one the source is shown.
void TimelinePage::activate(std::uint32_t clip) {
    if (clip == kNoTimelineItem || area_->picture() == nullptr) {
        return;
    }
    const std::uint32_t opens = area_->picture()->sequence().clips[clip].opens;
    if (opens == kNoTimelineItem) {
        showSource();
        return;
    }
    // Sequences of hostile files show each other without an end.
    constexpr std::size_t kLongestWay = 1000;
    if (way_.size() == kLongestWay) {
        way_.erase(way_.begin());
    }
    way_.push_back({sequence_, clip});
    showSequence(opens);
    area_->setFocus();
}

void TimelinePage::look(std::uint32_t clip) {
    showDetails();
    updateButtons();
    actions_.looked(timeline_->lineOf({sequence_, clip}));
}

void TimelinePage::showDetails() {
    shownFinding_ = 0;
    if (timeline_ && area_->picture() != nullptr) {
        details_->setPlainText(detailsOf(area_->cursor()));
    } else {
        details_->clear();
    }
}

QString TimelinePage::detailsOf(std::uint32_t clip) const {
    const SequencePicture& picture = *area_->picture();
    std::string text;
    if (clip != kNoTimelineItem) {
        text = picture.describe(clip);
    }
    constexpr std::size_t kMost = 20;
    const SequencePicture::Marks& beside = picture.marksOf(kNoTimelineItem);
    for (std::size_t i = 0; i < std::min(beside.size(), kMost); ++i) {
        text += "\nbeside the clips, ";
        text += severityWord(beside[i]->severity);
        text += ": ";
        text += beside[i]->message;
    }
    if (beside.size() > kMost) {
        text += "\n";
        text += moreFindings(beside.size() - kMost);
    }
    text += "\n\n";
    text += timeline_->linesAround({sequence_, clip});
    QStringList lines;
    for (const QString& line : toQString(text).trimmed().split(u'\n')) {
        lines += oneLine(line);
    }
    return lines.join(u'\n');
}

void TimelinePage::showFinding() {
    if (!timeline_ || area_->picture() == nullptr) {
        return;
    }
    const SequencePicture::Marks* marks = &area_->picture()->marksOf(area_->cursor());
    if (marks->empty()) {
        marks = &area_->picture()->marksOf(kNoTimelineItem);
    }
    if (marks->empty()) {
        return;
    }
    const TimelineMark& mark = *(*marks)[shownFinding_++ % marks->size()];
    actions_.showFinding(timeline_->findingOf(mark));
}

void TimelinePage::showSource() {
    if (timeline_ && area_->picture() != nullptr) {
        actions_.showLine(timeline_->lineOf({sequence_, area_->cursor()}));
    }
}

void TimelinePage::copy() const {
    QApplication::clipboard()->setText(details());
}

void TimelinePage::updateButtons() {
    const SequencePicture* const picture = area_ != nullptr ? area_->picture() : nullptr;
    const std::uint32_t clip = area_ != nullptr ? area_->cursor() : kNoTimelineItem;
    const bool hasClip = picture != nullptr && clip != kNoTimelineItem;
    backButton_->setEnabled(!way_.empty());
    openButton_->setEnabled(hasClip && picture->sequence().clips[clip].opens != kNoTimelineItem);
    findingButton_->setEnabled(picture != nullptr && (!picture->marksOf(clip).empty() ||
                                                      !picture->marksOf(kNoTimelineItem).empty()));
    sourceButton_->setEnabled(picture != nullptr);
    saveButton_->setEnabled(picture != nullptr);
    sequences_->setEnabled(picture != nullptr);
}

void TimelinePage::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (legend_ != nullptr &&
        (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange)) {
        static_cast<Legend*>(legend_)->update();
        arrange();
    }
}

}  // namespace vornic
