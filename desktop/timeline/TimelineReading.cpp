#include <QAccessible>
#include <QAccessibleWidget>
#include <QHash>
#include <QPointer>

#include "desktop/QtText.h"
#include "desktop/timeline/TimelineArea.h"

// What a timeline tells screen readers: a list of its clips.

namespace vornic {

namespace {

class ReadableClip : public QAccessibleInterface, public QAccessibleActionInterface {
  public:
    ReadableClip(TimelineArea& area, std::uint32_t clip) : area_(&area), clip_(clip) {}

    [[nodiscard]] bool isValid() const override {
        return area_ != nullptr && area_->picture() != nullptr &&
               clip_ < area_->picture()->sequence().clips.size();
    }
    [[nodiscard]] QObject* object() const override { return nullptr; }
    [[nodiscard]] QWindow* window() const override {
        return isValid() ? area_->window()->windowHandle() : nullptr;
    }
    [[nodiscard]] QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(area_);
    }
    [[nodiscard]] QAccessibleInterface* child(int /*index*/) const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface* childAt(int /*x*/, int /*y*/) const override {
        return nullptr;
    }
    [[nodiscard]] int childCount() const override { return 0; }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* /*child*/) const override {
        return -1;
    }
    [[nodiscard]] QAccessible::Role role() const override { return QAccessible::ListItem; }

    // "Interview 1, V1", and what a tool tip says.
    [[nodiscard]] QString text(QAccessible::Text kind) const override {
        if (!isValid()) {
            return {};
        }
        const SequencePicture& picture = *area_->picture();
        if (kind == QAccessible::Name) {
            const std::uint32_t track = picture.sequence().clips[clip_].track;
            return oneLine(
                toQString(picture.titleOf(clip_) + ", " + picture.sequence().tracks[track].name));
        }
        return kind == QAccessible::Description
                   ? oneLine(
                         toQString(picture.describe(clip_)).replace(u'\n', QStringLiteral(", ")))
                   : QString();
    }
    void setText(QAccessible::Text /*kind*/, const QString& /*text*/) override {}
    [[nodiscard]] QRect rect() const override {
        if (!isValid()) {
            return {};
        }
        const QRect seen = area_->rectOf(clip_);
        return {area_->viewport()->mapToGlobal(seen.topLeft()), seen.size()};
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state;
        state.invalid = !isValid();
        if (isValid()) {
            const bool isCursor = area_->cursor() == clip_;
            state.focusable = true;
            state.selectable = true;
            state.selected = isCursor;
            state.focused = isCursor && area_->hasFocus();
            state.offscreen = area_->rectOf(clip_).isEmpty();
        }
        return state;
    }
    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }

    [[nodiscard]] QStringList actionNames() const override {
        return {QAccessibleActionInterface::setFocusAction(),
                QAccessibleActionInterface::pressAction()};
    }
    void doAction(const QString& name) override {
        if (!isValid()) {
            return;
        }
        area_->setCursorClip(clip_);
        if (name == QAccessibleActionInterface::pressAction()) {
            area_->activate(clip_);
        } else {
            area_->setFocus();
        }
    }
    [[nodiscard]] QStringList keyBindingsForAction(const QString& /*name*/) const override {
        return {};
    }

  private:
    QPointer<TimelineArea> area_;
    std::uint32_t clip_;
};

class ReadableArea : public QAccessibleWidget {
  public:
    explicit ReadableArea(TimelineArea& area)
        : QAccessibleWidget(&area, QAccessible::List), area_(area) {}
    ~ReadableArea() override {
        for (const QAccessible::Id id : clips_) {
            QAccessible::deleteAccessibleInterface(id);
        }
    }
    ReadableArea(const ReadableArea&) = delete;
    ReadableArea& operator=(const ReadableArea&) = delete;

    [[nodiscard]] int childCount() const override {
        return area_.picture() == nullptr
                   ? 0
                   : static_cast<int>(area_.picture()->sequence().clips.size());
    }
    [[nodiscard]] QAccessibleInterface* child(int index) const override {
        if (index < 0 || index >= childCount()) {
            return nullptr;
        }
        if (const auto known = clips_.constFind(index); known != clips_.constEnd()) {
            return QAccessible::accessibleInterface(*known);
        }
        // The toolkit owns it.
        auto* const clip = new ReadableClip(area_, static_cast<std::uint32_t>(index));
        clips_.insert(index, QAccessible::registerAccessibleInterface(clip));
        return clip;
    }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override {
        for (auto clip = clips_.constBegin(); clip != clips_.constEnd(); ++clip) {
            if (QAccessible::accessibleInterface(clip.value()) == child) {
                return clip.key();
            }
        }
        return -1;
    }
    [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override {
        const std::uint32_t clip = area_.clipAt(area_.viewport()->mapFromGlobal(QPoint(x, y)));
        return clip == kNoTimelineItem ? nullptr : child(static_cast<int>(clip));
    }
    [[nodiscard]] QAccessibleInterface* focusChild() const override {
        return area_.hasFocus() && area_.cursor() != kNoTimelineItem
                   ? child(static_cast<int>(area_.cursor()))
                   : nullptr;
    }

  private:
    TimelineArea& area_;
    // Those that somebody has asked for.
    mutable QHash<int, QAccessible::Id> clips_;
};

QAccessibleInterface* makeReadable(const QString& /*className*/, QObject* object) {
    auto* const area = dynamic_cast<TimelineArea*>(object);
    return area != nullptr ? new ReadableArea(*area) : nullptr;  // which the toolkit owns
}

}  // namespace

void installReadableTimelines() {
    QAccessible::installFactory(makeReadable);
}

}  // namespace vornic
