#ifndef VORNIC_PICTURE_SVG_CANVAS_H
#define VORNIC_PICTURE_SVG_CANVAS_H

#include <string>
#include <string_view>
#include <vector>

#include "picture/Canvas.h"

namespace vornic {

/// Writes an SVG 1.1 document, well-formed whatever the texts hold, the same bytes for the same
/// shapes. Titles of groups are what browsers show as tooltips and screen readers read.
class SVGCanvas : public Canvas {
  public:
    void rectangle(const Box& box, double radius, const ShapeStyle& style) override;
    void polygon(const std::vector<Point>& corners, const ShapeStyle& style) override;
    void line(Point from, Point to, Colour colour, double width) override;
    void text(Point at, std::string_view text, const TextStyle& style) override;
    void begin(const ShapeGroup& group) override;
    void end() override;
    [[nodiscard]] bool showsTitles() const override { return true; }

    /// The document with all that was drawn. @param width and height in pixels.
    [[nodiscard]] std::string document(std::string_view title, double width, double height) const;

  private:
    std::string body_;
    // How each open group ends.
    std::vector<std::string_view> ends_;
};

/// A text as it stands in markup, between tags or quotes; what neither XML nor a reader can take is
/// written out as on terminals, lines end with "&#10;". @param text any bytes.
[[nodiscard]] std::string svgText(std::string_view text);

/// The text, or its beginning with "…", where it would take more than the width. An estimate by
/// the shapes of characters, on the wide side. @param width in pixels at a size of 11.
[[nodiscard]] std::string elidedText(std::string_view text, double width);

}  // namespace vornic

#endif
