#include "desktop/ElidedLabel.h"

namespace vornic {

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void ElidedLabel::setWholeText(const QString& text) {
    whole_ = text;
    setAccessibleName(text);
    elide();
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    elide();
}

void ElidedLabel::elide() {
    setText(fontMetrics().elidedText(whole_, Qt::ElideMiddle, width()));
}

}  // namespace vornic
