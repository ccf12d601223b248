// Places and ranges, in the units that their users say.
#pragma once

namespace talview {

struct Point {
    double x = 0;
    double y = 0;
    friend bool operator==(const Point&, const Point&) = default;
};

// Column and row of a picture, from 0.
struct Pixel {
    long x = 0;
    long y = 0;
};

struct Line {
    Point from;
    Point to;
    friend bool operator==(const Line&, const Line&) = default;
};

// Right and bottom lie outside.
struct Box {
    long left = 0;
    long top = 0;
    long right = 0;
    long bottom = 0;
    [[nodiscard]] long width() const { return right - left; }
    [[nodiscard]] long height() const { return bottom - top; }
    [[nodiscard]] bool isEmpty() const { return left >= right || top >= bottom; }
    [[nodiscard]] bool holds(long x, long y) const {
        return x >= left && x < right && y >= top && y < bottom;
    }
    friend bool operator==(const Box&, const Box&) = default;
};

// The image values that show the first and the last colour of the map.
struct Limits {
    double low = 0;
    double high = 0;
    friend bool operator==(const Limits&, const Limits&) = default;
};

} // namespace talview
