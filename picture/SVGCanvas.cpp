#include "picture/SVGCanvas.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "base/HTMLText.h"
#include "base/Utf8.h"

namespace vornic {

namespace {

constexpr int kMeasuredSize = 11;

std::string number(double value) {
    constexpr std::size_t kLongest = 340;
    char buffer[kLongest];
    std::snprintf(buffer, sizeof(buffer), "%.2f", value);
    std::string text = buffer;
    // Some locales have a comma.
    std::replace(text.begin(), text.end(), ',', '.');
    text.resize(text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) {
        text.pop_back();
    }
    return text == "-0" ? "0" : text;
}

std::string hex(Colour colour) {
    constexpr std::size_t kLongest = 8;
    char buffer[kLongest];
    std::snprintf(buffer, sizeof(buffer), "#%02x%02x%02x", colour.red, colour.green, colour.blue);
    return buffer;
}

std::string attribute(std::string_view name, std::string_view value) {
    return " " + std::string(name) + "=\"" + std::string(value) + "\"";
}

std::string attributesOf(const ShapeStyle& style) {
    std::string attributes = attribute("fill", style.fill ? hex(*style.fill) : "none");
    if (style.fillOpacity < 1) {
        attributes += attribute("fill-opacity", number(style.fillOpacity));
    }
    if (style.stroke) {
        attributes += attribute("stroke", hex(*style.stroke));
        if (style.strokeWidth != 1) {
            attributes += attribute("stroke-width", number(style.strokeWidth));
        }
        if (style.isDashed) {
            attributes += attribute("stroke-dasharray", "3 2");
        }
    }
    return attributes;
}

// At a size of 11, in the fonts of common desktops.
double widthOf(char32_t code) {
    constexpr std::string_view kNarrow = "iljtfrI.,:;'|!()[] ";
    constexpr double kThin = 4.2;
    constexpr double kMiddle = 6.8;
    constexpr double kBroad = 9.2;
    constexpr double kFull = 11.5;
    if (code < 0x80) {
        const char c = static_cast<char>(code);
        return kNarrow.find(c) != std::string_view::npos                                ? kThin
               : (c >= 'A' && c <= 'Z') || c == 'm' || c == 'w' || c == '@' || c == '%' ? kBroad
                                                                                        : kMiddle;
    }
    return code < 0x1100 ? kBroad : kFull;
}

}  // namespace

void SVGCanvas::rectangle(const Box& box, double radius, const ShapeStyle& style) {
    body_ += "<rect" + attribute("x", number(box.x)) + attribute("y", number(box.y)) +
             attribute("width", number(box.width)) + attribute("height", number(box.height)) +
             (radius > 0 ? attribute("rx", number(radius)) : "") + attributesOf(style) + "/>\n";
}

void SVGCanvas::polygon(const std::vector<Point>& corners, const ShapeStyle& style) {
    std::string points;
    for (const Point& corner : corners) {
        points += (points.empty() ? "" : " ") + number(corner.x) + "," + number(corner.y);
    }
    body_ += "<polygon" + attribute("points", points) + attributesOf(style) + "/>\n";
}

void SVGCanvas::line(Point from, Point to, Colour colour, double width) {
    body_ += "<path" +
             attribute("d", "M" + number(from.x) + " " + number(from.y) + "L" + number(to.x) + " " +
                                number(to.y)) +
             attribute("stroke", hex(colour)) + attribute("stroke-width", number(width)) + "/>\n";
}

void SVGCanvas::text(Point at, std::string_view text, const TextStyle& style) {
    const std::string shown = std::isinf(style.width)
                                  ? std::string(text)
                                  : elidedText(text, style.width * kMeasuredSize / style.size);
    if (shown.empty()) {
        return;
    }
    body_ += "<text" + attribute("x", number(at.x)) + attribute("y", number(at.y)) +
             attribute("font-size", std::to_string(style.size)) +
             attribute("fill", hex(style.colour)) +
             (style.isBold ? attribute("font-weight", "bold") : "") +
             (style.isCentred ? attribute("text-anchor", "middle") : "") + ">" + svgText(shown) +
             "</text>\n";
}

void SVGCanvas::begin(const ShapeGroup& group) {
    if (!group.link.empty()) {
        body_ += "<a" + attribute("xlink:href", "#" + group.link) + ">";
    }
    body_ += "<g" + (group.id.empty() ? "" : attribute("id", group.id)) +
             (group.opacity < 1 ? attribute("opacity", number(group.opacity)) : "") + ">";
    body_ += group.title.empty() ? "\n" : "<title>" + svgText(group.title) + "</title>\n";
    ends_.push_back(group.link.empty() ? "</g>\n" : "</g></a>\n");
}

void SVGCanvas::end() {
    body_ += ends_.back();
    ends_.pop_back();
}

std::string SVGCanvas::document(std::string_view title, double width, double height) const {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<svg xmlns=\"http://www.w3.org/2000/svg\" "
           "xmlns:xlink=\"http://www.w3.org/1999/xlink\" version=\"1.1\"" +
           attribute("width", number(width)) + attribute("height", number(height)) +
           attribute("viewBox", "0 0 " + number(width) + " " + number(height)) +
           " font-family=\"DejaVu Sans, Noto Sans, Helvetica, Arial, sans-serif\">\n<title>" +
           svgText(title) + "</title>\n" + body_ + "</svg>\n";
}

std::string svgText(std::string_view text) {
    std::string escaped;
    while (true) {
        const std::size_t end = text.find('\n');
        escaped += escapedForHTML(text.substr(0, end));
        if (end == std::string_view::npos) {
            return escaped;
        }
        escaped += "&#10;";
        text.remove_prefix(end + 1);
    }
}

std::string elidedText(std::string_view text, double width) {
    constexpr char32_t kEllipsis = U'…';
    const double ellipsis = widthOf(kEllipsis);
    double taken = 0;
    std::size_t fits = 0;
    for (std::size_t at = 0; at < text.size();) {
        const Utf8Character character = utf8CharacterAt(text, at);
        taken += widthOf(character.code);
        at += character.length;
        if (taken > width) {
            return fits == 0 ? "" : std::string(text.substr(0, fits)) + "…";
        }
        fits = taken + ellipsis <= width ? at : fits;
    }
    return std::string(text);
}

}  // namespace vornic
