#include "desktop/FlowLayout.h"

#include <QStyle>
#include <QWidget>
#include <algorithm>

namespace vornic {

FlowLayout::FlowLayout(QWidget* parent) : QLayout(parent) {
    setContentsMargins(0, 0, 0, 0);
    constexpr int kApart = 6;
    setSpacing(kApart);
}

void FlowLayout::addItem(QLayoutItem* item) {
    items_.emplace_back(item);
}

QLayoutItem* FlowLayout::itemAt(int index) const {
    return index >= 0 && index < count() ? items_[static_cast<std::size_t>(index)].get() : nullptr;
}

QLayoutItem* FlowLayout::takeAt(int index) {
    if (itemAt(index) == nullptr) {
        return nullptr;
    }
    QLayoutItem* const item = items_[static_cast<std::size_t>(index)].release();
    items_.erase(items_.begin() + index);
    return item;
}

int FlowLayout::heightForWidth(int width) const {
    return arrange(QRect(0, 0, width, 0), false);
}

QSize FlowLayout::minimumSize() const {
    QSize size;
    for (const auto& item : items_) {
        size = item->isEmpty() ? size : size.expandedTo(item->minimumSize());
    }
    return size;
}

QSize FlowLayout::sizeHint() const {
    QSize size;
    for (const auto& item : items_) {
        if (!item->isEmpty()) {
            const QSize hint = item->sizeHint();
            const int apart = size.width() == 0 ? 0 : spacing();
            size = {size.width() + apart + hint.width(), std::max(size.height(), hint.height())};
        }
    }
    return size;
}

void FlowLayout::setGeometry(const QRect& area) {
    QLayout::setGeometry(area);
    arrange(area, true);
}

int FlowLayout::arrange(const QRect& area, bool isMoved) const {
    int left = area.left();
    int top = area.top();
    int height = 0;
    std::vector<QLayoutItem*> row;
    const auto endRow = [&] {
        for (QLayoutItem* const item : row) {
            const QRect place = item->geometry();
            item->setGeometry(place.translated(0, (height - place.height()) / 2));
        }
        row.clear();
    };
    for (const auto& item : items_) {
        if (item->isEmpty()) {
            continue;
        }
        const QSize hint = item->sizeHint();
        if (left > area.left() && left + hint.width() > area.right() + 1) {
            endRow();
            left = area.left();
            top += height + spacing();
            height = 0;
        }
        if (isMoved) {
            item->setGeometry(QRect(QPoint(left, top), hint));
            row.push_back(item.get());
        }
        left += hint.width() + spacing();
        height = std::max(height, hint.height());
    }
    endRow();
    return top + height - area.top();
}

}  // namespace vornic
