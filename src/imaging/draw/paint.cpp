#include "imaging/draw/paint.h"

#include <algorithm>
#include <array>

namespace kvn::imaging::draw {

namespace {

int wrapped(std::int64_t value, int size) {
    const auto rest = static_cast<int>(value % size);
    return rest < 0 ? rest + size : rest;
}

std::uint8_t byteOf(double value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0.0, 255.0) + 0.5);
}

// To the pixel that holds the point, the outermost one for points beyond.
int pixelOf(double at, int size) {
    return at > 0 ? static_cast<int>(std::min(at, size - 1.0)) : 0;
}

} // namespace

void SolidPaint::fetch(int, int, int count, Rgba* out) const {
    std::fill_n(out, count, color_);
}

TilePaint::TilePaint(const Raster& tile, Point origin)
    : width_(tile.width()), height_(tile.height()), origin_(origin) {
    pixels_.reserve(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_));
    for (int y = 0; y < height_; ++y)
        for (int x = 0; x < width_; ++x)
            pixels_.push_back(tile.pixel(x, y));
}

void TilePaint::fetch(int x, int y, int count, Rgba* out) const {
    const int row = wrapped(std::int64_t{y} - origin_.y, height_);
    const Rgba* pixels = &pixels_[static_cast<std::size_t>(row) * static_cast<std::size_t>(width_)];
    int column = wrapped(std::int64_t{x} - origin_.x, width_);
    for (int i = 0; i < count; ++i) {
        out[i] = pixels[column];
        if (++column == width_) column = 0;
    }
}

ImagePaint::ImagePaint(Raster image, const Affine& toImage, Sampling sampling)
    : image_(std::move(image)), view_(image_.view()), toImage_(toImage), sampling_(sampling) {}

Rgba ImagePaint::at(int x, int y) const {
    const int size = bytesPerPixel(view_.type);
    const std::uint8_t* p = view_.row(y) + std::ptrdiff_t{x} * size;
    return {p[0], p[1], p[2], size == 4 ? p[3] : std::uint8_t{255}};
}

Rgba ImagePaint::smooth(double x, double y) const {
    x = std::clamp(x - 0.5, 0.0, view_.width - 1.0);
    y = std::clamp(y - 0.5, 0.0, view_.height - 1.0);
    const int x0 = static_cast<int>(x), y0 = static_cast<int>(y);
    const int x1 = std::min(x0 + 1, view_.width - 1), y1 = std::min(y0 + 1, view_.height - 1);
    const double fx = x - x0, fy = y - y0;
    double r = 0, g = 0, b = 0, a = 0;
    const auto add = [&](Rgba c, double weight) {
        const double w = weight * c.a;
        r += c.r * w;
        g += c.g * w;
        b += c.b * w;
        a += w;
    };
    add(at(x0, y0), (1 - fx) * (1 - fy));
    add(at(x1, y0), fx * (1 - fy));
    add(at(x0, y1), (1 - fx) * fy);
    add(at(x1, y1), fx * fy);
    return a > 0 ? Rgba{byteOf(r / a), byteOf(g / a), byteOf(b / a), byteOf(a)} : Rgba{0, 0, 0, 0};
}

void ImagePaint::fetch(int x, int y, int count, Rgba* out) const {
    for (int i = 0; i < count; ++i) {
        const PointD p = toImage_({x + i + 0.5, y + 0.5});
        out[i] = sampling_ == Sampling::Smooth
                     ? smooth(p.x, p.y)
                     : at(pixelOf(p.x, view_.width), pixelOf(p.y, view_.height));
    }
}

// Colours as the linear functions that have the three values; a flat triangle has the first.
GradientPaint::GradientPaint(const PointD corners[3], const Rgba colors[3]) {
    const PointD u = corners[1] - corners[0], v = corners[2] - corners[0];
    const double area = cross(u, v);
    const auto channels = [](Rgba c) {
        return std::array<double, 4>{double(c.r), double(c.g), double(c.b), double(c.a)};
    };
    const auto c0 = channels(colors[0]), c1 = channels(colors[1]), c2 = channels(colors[2]);
    for (std::size_t i = 0; i < 4; ++i) {
        const double a = c1[i] - c0[i], b = c2[i] - c0[i];
        if (std::abs(area) > 1e-9) {
            perX_[i] = (a * v.y - b * u.y) / area;
            perY_[i] = (b * u.x - a * v.x) / area;
        }
        start_[i] = c0[i] - perX_[i] * corners[0].x - perY_[i] * corners[0].y;
    }
}

void GradientPaint::fetch(int x, int y, int count, Rgba* out) const {
    for (int k = 0; k < count; ++k) {
        const auto value = [&](std::size_t i) {
            return byteOf(start_[i] + perX_[i] * (x + k + 0.5) + perY_[i] * (y + 0.5));
        };
        out[k] = {value(0), value(1), value(2), value(3)};
    }
}

} // namespace kvn::imaging::draw
