#ifndef VORNIC_DESKTOP_TIMELINE_PAINTER_CANVAS_H
#define VORNIC_DESKTOP_TIMELINE_PAINTER_CANVAS_H

#include <QCache>
#include <QColor>
#include <QPainter>
#include <QPair>
#include <QStaticText>
#include <QString>
#include <vector>

#include "picture/Canvas.h"

namespace vornic {

[[nodiscard]] QColor toQColor(Colour colour);

/// Texts as they were laid out, for pictures that are drawn again and again. One thread.
class LaidOutTexts {
  public:
    struct Key {
        QString text;
        int width = 0;
        int size = 0;
        bool isBold = false;
        friend bool operator==(const Key&, const Key&) = default;
    };
    /// @param font of the same family each time
    [[nodiscard]] const QStaticText& find(const Key& key, const QFont& font);
    void clear() { texts_.clear(); }

  private:
    static constexpr int kKept = 4000;
    QCache<Key, QStaticText> texts_{kKept};
};

[[nodiscard]] std::size_t qHash(const LaidOutTexts::Key& key, std::size_t seed = 0);

/// Draws on whatever a painter paints. Titles and links are of no use there.
class PainterCanvas : public Canvas {
  public:
    /// @param family of the texts.
    /// @param texts those that are kept. With them thousands of rectangles are drawn within a turn,
    ///     on whole pixels and with sharp corners; null draws for paper.
    PainterCanvas(QPainter& painter, const QFont& family, LaidOutTexts* texts);

    void rectangle(const Box& box, double radius, const ShapeStyle& style) override;
    void polygon(const std::vector<Point>& corners, const ShapeStyle& style) override;
    void line(Point from, Point to, Colour colour, double width) override;
    void text(Point at, std::string_view text, const TextStyle& style) override;
    void begin(const ShapeGroup& group) override;
    void end() override;
    [[nodiscard]] bool showsTitles() const override { return false; }

  private:
    void setStyle(const ShapeStyle& style);
    void drawSharply(const QRectF& rect, const ShapeStyle& style);
    void drawEdge(const QRectF& edge, const QColor& color, bool isDashed);

    QPainter& painter_;
    QFont font_;
    LaidOutTexts own_;
    LaidOutTexts* texts_;
    // What each open group brings back; less than 0 for nothing.
    std::vector<double> opacities_;
};

}  // namespace vornic

#endif
