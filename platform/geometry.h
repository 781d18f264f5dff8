#pragma once
// Sizes and rectangles in points, colours in components from 0 to 1 (not clamped).

namespace vantor {

struct Size {
    double width = 0;
    double height = 0;
    bool operator==(const Size&) const = default;
};

struct Point {
    double x = 0;
    double y = 0;
    bool operator==(const Point&) const = default;
};

struct Rect {
    Point origin;
    Size size;
    bool operator==(const Rect&) const = default;
};

struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 0;
    bool operator==(const Color&) const = default;

    /// The generic grey of `white` (0 black, 1 white).
    static constexpr Color gray(double white, double alpha) {
        return {.red = white, .green = white, .blue = white, .alpha = alpha};
    }
};

} // namespace vantor
