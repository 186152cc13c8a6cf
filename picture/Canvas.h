#ifndef VORNIC_PICTURE_CANVAS_H
#define VORNIC_PICTURE_CANVAS_H

#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vornic {

struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    friend bool operator==(const Colour&, const Colour&) = default;
};

/// In pixels, from the upper left corner.
struct Point {
    double x = 0;
    double y = 0;
};

struct Box {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    [[nodiscard]] double right() const { return x + width; }
    [[nodiscard]] double bottom() const { return y + height; }
};

struct ShapeStyle {
    std::optional<Colour> fill = {};
    std::optional<Colour> stroke = {};
    double strokeWidth = 1;
    bool isDashed = false;
    double fillOpacity = 1;
};

struct TextStyle {
    Colour colour;
    /// In pixels.
    int size = 11;
    bool isBold = false;
    /// Whether the point is in the middle of the text, not at its beginning.
    bool isCentred = false;
    /// A longer text ends with "…", or is left out where not even that fits.
    double width = std::numeric_limits<double>::infinity();
};

/// What shapes have in common.
struct ShapeGroup {
    /// What people are told about it; lines end with "\n". "" for nothing.
    std::string title = {};
    /// By which links find it; "" for none.
    std::string id = {};
    /// The id of the group that it leads to; "" for none.
    std::string link = {};
    double opacity = 1;
};

/// Something to draw on. Later shapes cover earlier ones. Texts are any bytes.
class Canvas {
  public:
    virtual ~Canvas() = default;

    virtual void rectangle(const Box& box, double radius, const ShapeStyle& style) = 0;
    virtual void polygon(const std::vector<Point>& corners, const ShapeStyle& style) = 0;
    virtual void line(Point from, Point to, Colour colour, double width) = 0;
    /// @param at on the base line.
    virtual void text(Point at, std::string_view text, const TextStyle& style) = 0;
    /// Draws a small shape around a point, no further than 12 pixels from it.
    using Drawing = std::function<void(Canvas& canvas, Point centre)>;
    /// A shape that is drawn at many places. @param kind one shape looks the same everywhere
    virtual void stamp(Point centre, std::uint64_t /*kind*/, const Drawing& draw) {
        draw(*this, centre);
    }
    virtual void begin(const ShapeGroup& group) = 0;
    virtual void end() = 0;
    /// Whether the titles of groups are of any use.
    [[nodiscard]] virtual bool showsTitles() const = 0;
};

}  // namespace vornic

#endif
