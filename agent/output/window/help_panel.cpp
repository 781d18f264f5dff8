#include "agent/output/window/help_panel.h"

#include "agent/output/window/key_table.h"

#include <algorithm>
#include <cairo.h>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <numbers>

namespace vantor::agent {
namespace {

// All measures are points.
constexpr double kWidth = 336;
constexpr double kMargin = 24;
constexpr double kHeadHeight = 84;
constexpr double kRowHeight = 34;
constexpr double kFootHeight = 18;
/// Where the meanings begin, behind the widest pair of keys.
constexpr double kMeaningX = 132;
constexpr double kCapHeight = 24;
constexpr double kCapPadding = 9;
constexpr double kCapGap = 6;
constexpr double kCapRadius = 5;
/// Below this scale nobody can read it.
constexpr double kSmallestScale = 0.5;

struct Color {
    double red;
    double green;
    double blue;
};
constexpr Color kGround{0.078, 0.086, 0.110};
constexpr Color kEdge{0.176, 0.192, 0.235};
constexpr Color kAccent{0.427, 0.655, 1.0};
constexpr Color kText{0.925, 0.937, 0.957};
constexpr Color kQuiet{0.592, 0.627, 0.690};
constexpr Color kCap{0.157, 0.173, 0.216};
constexpr Color kCapEdge{0.286, 0.314, 0.380};

struct SurfaceDeleter {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
struct PenDeleter {
    void operator()(cairo_t* pen) const { cairo_destroy(pen); }
};
using Surface = std::unique_ptr<cairo_surface_t, SurfaceDeleter>;
using Pen = std::unique_ptr<cairo_t, PenDeleter>;

double height() {
    return kHeadHeight + kRowHeight * static_cast<double>(keyTable().size()) + kFootHeight;
}

void use(cairo_t* pen, const Color& color) {
    cairo_set_source_rgb(pen, color.red, color.green, color.blue);
}

void useFont(cairo_t* pen, double size, cairo_font_weight_t weight) {
    cairo_select_font_face(pen, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, weight);
    cairo_set_font_size(pen, size);
}

double widthOf(cairo_t* pen, const std::string& text) {
    cairo_text_extents_t extents{};
    cairo_text_extents(pen, text.c_str(), &extents);
    return extents.x_advance;
}

/// With its baseline at `y`.
void write(cairo_t* pen, double x, double y, const std::string& text, const Color& color) {
    use(pen, color);
    cairo_move_to(pen, x, y);
    cairo_show_text(pen, text.c_str());
}

void addRoundedRectangle(cairo_t* pen, double x, double y, double width, double rows,
                         double radius) {
    constexpr double kQuarter = std::numbers::pi / 2;
    cairo_new_sub_path(pen);
    cairo_arc(pen, x + width - radius, y + radius, radius, -kQuarter, 0);
    cairo_arc(pen, x + width - radius, y + rows - radius, radius, 0, kQuarter);
    cairo_arc(pen, x + radius, y + rows - radius, radius, kQuarter, 2 * kQuarter);
    cairo_arc(pen, x + radius, y + radius, radius, 2 * kQuarter, 3 * kQuarter);
    cairo_close_path(pen);
}

/// Gives where the next one begins.
double drawCap(cairo_t* pen, double x, double y, const std::string& text) {
    useFont(pen, 12, CAIRO_FONT_WEIGHT_BOLD);
    const double textWidth = widthOf(pen, text);
    const double width = std::max(textWidth + 2 * kCapPadding, kCapHeight + 4);
    addRoundedRectangle(pen, x + 0.5, y + 0.5, width - 1, kCapHeight - 1, kCapRadius);
    use(pen, kCap);
    cairo_fill_preserve(pen);
    use(pen, kCapEdge);
    cairo_set_line_width(pen, 1);
    cairo_stroke(pen);
    write(pen, x + (width - textWidth) / 2, y + 16.5, text, kText);
    return x + width + kCapGap;
}

std::string measuresOf(const OutputDescription& display) {
    char text[96];
    std::snprintf(text, sizeof(text), "%u × %u pixels  ·  %g×  ·  %g Hz", display.width,
                  display.height, std::round(display.scale * 100) / 100,
                  std::round(display.refreshRate * 10) / 10);
    return text;
}

void drawHead(cairo_t* pen, const OutputDescription& display) {
    use(pen, kAccent);
    cairo_rectangle(pen, 0, 0, kWidth, 3);
    cairo_fill(pen);
    useFont(pen, 17, CAIRO_FONT_WEIGHT_BOLD);
    write(pen, kMargin, 38, display.connector, kText);
    useFont(pen, 12, CAIRO_FONT_WEIGHT_NORMAL);
    write(pen, kMargin, 58, measuresOf(display), kQuiet);
    use(pen, kEdge);
    cairo_rectangle(pen, kMargin, 74, kWidth - 2 * kMargin, 1);
    cairo_fill(pen);
}

void drawRow(cairo_t* pen, double y, const KeyEntry& entry) {
    double x = kMargin;
    for (const KeyName& key : entry.keys) {
        if (!key.cap.empty()) {
            x = drawCap(pen, x, y + (kRowHeight - kCapHeight) / 2, std::string(key.cap));
        }
    }
    useFont(pen, 13, CAIRO_FONT_WEIGHT_NORMAL);
    write(pen, kMeaningX, y + kRowHeight / 2 + 4.5, std::string(entry.meaning), kText);
}

void draw(cairo_t* pen, const OutputDescription& display) {
    use(pen, kGround);
    cairo_paint(pen);
    drawHead(pen, display);
    double y = kHeadHeight;
    for (const KeyEntry& entry : keyTable()) {
        drawRow(pen, y, entry);
        y += kRowHeight;
    }
    // It stands in the corner: two of its sides are the screen's.
    use(pen, kEdge);
    cairo_rectangle(pen, kWidth - 1, 0, 1, height());
    cairo_rectangle(pen, 0, height() - 1, kWidth, 1);
    cairo_fill(pen);
}

} // namespace

Picture drawHelpPanel(const OutputDescription& display) {
    const double scale =
        std::min({display.scale, display.width / kWidth, display.height / height()});
    if (!(scale >= kSmallestScale)) {
        return {};
    }
    Picture picture{.width = static_cast<std::uint32_t>(kWidth * scale),
                    .height = static_cast<std::uint32_t>(height() * scale),
                    .bytes = {}};
    picture.bytes.resize(std::size_t{picture.width} * picture.height * 4);
    // Cairo's pixels are native words, which are BGRA bytes here, in rows without padding.
    const Surface surface(cairo_image_surface_create_for_data(
        picture.bytes.data(), CAIRO_FORMAT_ARGB32, static_cast<int>(picture.width),
        static_cast<int>(picture.height), static_cast<int>(picture.width * 4)));
    const Pen pen(cairo_create(surface.get()));
    cairo_scale(pen.get(), picture.width / kWidth, picture.height / height());
    draw(pen.get(), display);
    if (cairo_status(pen.get()) != CAIRO_STATUS_SUCCESS) {
        return {};
    }
    cairo_surface_flush(surface.get());
    return picture;
}

} // namespace vantor::agent
