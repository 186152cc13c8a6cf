#ifndef VORNIC_DESKTOP_TIMELINE_PAINTER_CANVAS_H
#define VORNIC_DESKTOP_TIMELINE_PAINTER_CANVAS_H

#include <QColor>
#include <QFont>
#include <QPainter>
#include <vector>

#include "picture/Canvas.h"

namespace vornic {

[[nodiscard]] QColor toQColor(Colour colour);

/// Draws for paper, on whatever a painter paints. Titles and links are of no use there.
class PainterCanvas : public Canvas {
  public:
    /// @param family of the texts.
    PainterCanvas(QPainter& painter, const QFont& family);

    void rectangle(const Box& box, double radius, const ShapeStyle& style) override;
    void polygon(const std::vector<Point>& corners, const ShapeStyle& style) override;
    void line(Point from, Point to, Colour colour, double width) override;
    void text(Point at, std::string_view text, const TextStyle& style) override;
    void begin(const ShapeGroup& group) override;
    void end() override;
    [[nodiscard]] bool showsTitles() const override { return false; }

  private:
    void setStyle(const ShapeStyle& style);

    QPainter& painter_;
    QFont font_;
    // What each open group brings back; less than 0 for nothing.
    std::vector<double> opacities_;
};

}  // namespace vornic

#endif
