#ifndef VORNIC_DESKTOP_TIMELINE_SCREEN_CANVAS_H
#define VORNIC_DESKTOP_TIMELINE_SCREEN_CANVAS_H

#include <QFont>
#include <QHash>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QRect>
#include <QRgb>
#include <QSize>
#include <QStaticText>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "picture/Canvas.h"

namespace vornic {

/// What a picture that is drawn again and again has in common each time: texts that are laid out,
/// fonts, and stamps. One thread.
class KeptShapes {
  public:
    /// So many texts are laid out for one drawing; the others wait for the next one.
    static constexpr std::size_t kMostNewTexts = 40;

    struct FontOfSize {
        QFont font;
        double ascent = 0;
    };

    /// Begins a drawing. What was kept for another font or scale is forgotten.
    void begin(const QFont& family, double scale);
    /// How many texts were laid out since `begin`.
    [[nodiscard]] std::size_t newTexts() const { return newTexts_; }
    /// Whether a text has not been drawn since `begin`, since too many others were new.
    [[nodiscard]] bool isIncomplete() const { return isIncomplete_; }

    [[nodiscard]] const FontOfSize& font(int size, bool isBold);
    /// @param width in pixels of the device, or `kAnyWidth`
    /// @return null when the text has to wait.
    [[nodiscard]] const QStaticText* text(std::string_view text, int width, int size, bool isBold);
    [[nodiscard]] QHash<std::uint64_t, QPixmap>& stamps() { return stamps_; }
    /// Of that size; what is in it is old.
    [[nodiscard]] QImage& image(QSize size);
    /// Gives the memory of the image back.
    void dropImage() { image_ = {}; }

    static constexpr int kAnyWidth = std::numeric_limits<int>::max();

  private:
    struct Wanted {
        std::string_view text;
        int width = 0;
        int size = 0;
        bool isBold = false;
    };
    struct Key {
        std::string text;
        int width = 0;
        int size = 0;
        bool isBold = false;
        [[nodiscard]] Wanted wanted() const { return {text, width, size, isBold}; }
    };
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(const Wanted& key) const;
        std::size_t operator()(const Key& key) const { return (*this)(key.wanted()); }
    };
    struct Equal {
        using is_transparent = void;
        bool operator()(const Wanted& left, const Wanted& right) const {
            return left.width == right.width && left.size == right.size &&
                   left.isBold == right.isBold && left.text == right.text;
        }
        bool operator()(const Key& left, const Key& right) const {
            return (*this)(left.wanted(), right.wanted());
        }
        bool operator()(const Key& left, const Wanted& right) const {
            return (*this)(left.wanted(), right);
        }
        bool operator()(const Wanted& left, const Key& right) const {
            return (*this)(left, right.wanted());
        }
    };
    using Texts = std::unordered_map<Key, QStaticText, Hash, Equal>;

    [[nodiscard]] QStaticText layOut(const Wanted& wanted);

    QFont family_;
    double scale_ = 0;
    std::size_t newTexts_ = 0;
    bool isIncomplete_ = false;
    // Texts that have long not been drawn go with the older ones.
    Texts recent_;
    Texts older_;
    QHash<int, FontOfSize> fonts_;
    QHash<std::uint64_t, QPixmap> stamps_;
    QImage image_;
};

/// Draws thousands of shapes within a turn: on whole pixels of the device, with sharp corners. A
/// painter takes fifty times as long for a rectangle as its pixels do, so that those are set here.
class ScreenCanvas : public Canvas {
  public:
    /// @param size in pixels of the device
    /// @param scale how many of them a pixel of the picture is
    ScreenCanvas(QSize size, const QFont& family, double scale, KeptShapes& kept);

    /// What was drawn.
    [[nodiscard]] const QImage& image() const { return image_; }
    void clipTo(const Box& box);
    void clipToAll();
    void fill(Colour colour);

    void rectangle(const Box& box, double radius, const ShapeStyle& style) override;
    void polygon(const std::vector<Point>& corners, const ShapeStyle& style) override;
    void line(Point from, Point to, Colour colour, double width) override;
    void text(Point at, std::string_view text, const TextStyle& style) override;
    void stamp(Point centre, std::uint64_t kind, const Drawing& draw) override;
    void begin(const ShapeGroup& group) override;
    void end() override;
    [[nodiscard]] bool showsTitles() const override { return false; }

  private:
    [[nodiscard]] int pixel(double length) const;
    void fillRect(const QRect& rect, Colour colour, double opacity);
    void drawEdges(const QRect& rect, int width, Colour colour, bool isDashed);
    void drawDashes(const QRect& edge, Colour colour);

    QImage& image_;
    QRgb* pixels_;
    qsizetype pixelsALine_;
    QPainter painter_;
    QRect clip_;
    double scale_;
    KeptShapes& kept_;
    double opacity_ = 1;
    // What each open group brings back.
    std::vector<double> opacities_;
};

}  // namespace vornic

#endif
