#include "pictures.h"

#include <cmath>
#include <numbers>

#include "files.h"
#include "imaging/convert.h"
#include "imaging/draw/surface.h"
#include "imaging/operation.h"
#include "imaging/palette_presets.h"

namespace kvn::gallery {
namespace {

using imaging::ImageType;
using imaging::Raster;
using imaging::Rgba;
using imaging::draw::Path;
using imaging::draw::PointD;

constexpr int width = 400, height = 300;
constexpr Rgba white{255, 255, 255, 255}, black{0, 0, 0, 255};

// A pen over one picture, with whole figures as strokes.
class Sketch {
  public:
    explicit Sketch(Rgba paper)
        : picture_(Raster::filled(ImageType::Rgb24, width, height, paper)) {}

    Sketch& fill(const Path& path, Rgba color) {
        const imaging::draw::SolidPaint paint(color);
        surface().fill(path.flattened({}), imaging::draw::FillRule::NonZero, {&paint, nullptr},
                       all());
        return *this;
    }
    Sketch& line(const Path& path, double thickness, Rgba color = black) {
        const imaging::draw::SolidPaint paint(color);
        surface().stroke(path.flattened({}),
                         {.width = thickness,
                          .cap = imaging::draw::LineCap::Round,
                          .join = imaging::draw::LineJoin::Round,
                          .dashes = {}},
                         {}, {&paint, nullptr}, all());
        return *this;
    }
    Sketch& outlined(const Path& path, Rgba color, double thickness = 4) {
        return fill(path, color).line(path, thickness);
    }
    const Raster& picture() const { return picture_; }

  private:
    imaging::draw::Surface surface() { return {picture_, effort_}; }
    imaging::draw::Clip all() const { return imaging::draw::Clip(picture_.rect()); }

    Raster picture_;
    imaging::draw::Effort effort_{1e12};
};

Path circle(double x, double y, double rx, double ry) {
    Path path;
    path.addEllipse({x, y}, rx, ry);
    return path;
}
Path polygon(std::initializer_list<PointD> points, bool closed = true) {
    Path path;
    path.addPolyline({points.begin(), points.size()}, closed);
    return path;
}
Path star(PointD center, double outer, double inner, int points) {
    Path path;
    for (int i = 0; i < 2 * points; ++i) {
        const double angle = std::numbers::pi * (i / static_cast<double>(points) - 0.5);
        const double radius = i % 2 == 0 ? outer : inner;
        const PointD p = center + PointD{std::cos(angle), std::sin(angle)} * radius;
        i == 0 ? path.moveTo(p) : path.lineTo(p);
    }
    path.close();
    return path;
}
Path hatching(double left, double top, double right, double bottom, double step) {
    Path path;
    for (double x = left; x <= right; x += step) {
        path.moveTo({x, bottom});
        path.lineTo({x + (bottom - top) * 0.5, top});
    }
    return path;
}

// Outlines, flat colours, fine lines: a cottage under a sun.
Raster drawing() {
    Sketch sketch(white);
    sketch.outlined(star({322, 66}, 56, 30, 12), {255, 210, 40, 255});
    sketch.outlined(polygon({{60, 130}, {60, 250}, {240, 250}, {240, 130}}), {240, 225, 190, 255});
    sketch.outlined(polygon({{40, 134}, {150, 44}, {260, 134}}), {200, 60, 40, 255}, 5);
    sketch.outlined(polygon({{130, 180}, {130, 250}, {170, 250}, {170, 180}}), {90, 110, 190, 255});
    sketch.fill(circle(161, 216, 3, 3), black);
    for (const double x : {76.0, 188.0}) {
        sketch.outlined(polygon({{x, 160}, {x + 36, 160}, {x + 36, 196}, {x, 196}}),
                        {150, 210, 240, 255}, 3);
        sketch.line(polygon({{x + 18, 160}, {x + 18, 196}}, false), 2);
        sketch.line(polygon({{x, 178}, {x + 36, 178}}, false), 2);
    }
    sketch.outlined(polygon({{318, 190}, {318, 250}, {332, 250}, {332, 190}}), {140, 90, 50, 255},
                    3);
    for (const double r : {44.0, 32.0, 20.0, 8.0})
        sketch.outlined(circle(325, 165, r, r),
                        r == 44 || r == 20 ? Rgba{70, 160, 70, 255} : Rgba{130, 200, 90, 255}, 2);
    sketch.line(polygon({{10, 250}, {390, 250}}, false), 4);
    sketch.line(hatching(14, 258, 370, 290, 6), 1);
    return sketch.picture();
}

// A face with the red pupils that a flash gives, red lips, and red in the clothes.
Raster face() {
    Sketch sketch({60, 80, 70, 255});
    sketch.fill(circle(200, 320, 150, 90), {170, 30, 40, 255});
    sketch.fill(circle(200, 160, 120, 145), {224, 172, 138, 255});
    for (const double x : {145.0, 255.0}) {
        sketch.fill(circle(x, 130, 30, 16), {245, 242, 238, 255});
        sketch.fill(circle(x, 130, 15, 15), {90, 110, 120, 255});
        sketch.fill(circle(x, 130, 9, 9), {215, 35, 40, 255});
        sketch.fill(circle(x - 3, 126, 2, 2), white);
        sketch.line(polygon({{x - 32, 104}, {x, 94}, {x + 32, 104}}, false), 5, {90, 60, 40, 255});
    }
    sketch.line(polygon({{200, 140}, {192, 188}, {208, 190}}, false), 3, {190, 135, 105, 255});
    sketch.fill(circle(200, 232, 38, 13), {190, 60, 70, 255});
    return sketch.picture();
}

// Lines of words, as a scanner gives them from a sheet that lay askew.
Raster page() {
    Sketch sketch(white);
    unsigned state = 7;
    for (double y = 30; y < 280; y += 14)
        for (double x = 30; x < 350;) {
            const double length = 8 + (state = state * 1103515245 + 12345) / 65536 % 34;
            sketch.line(polygon({{x, y}, {std::min(x + length, 368.0), y}}, false), 4);
            x += length + 9;
        }
    imaging::Task task;
    const Raster turned = imaging::runOperation(*imaging::findOperation("Geometry.Rotate"),
                                                sketch.picture(), {3.0, white, 0}, task)
                              .front();
    const Raster grey = imaging::convertType(turned, ImageType::Gray8, task);
    const auto sharp = imaging::runOperation(*imaging::findOperation("Effects.Threshold"), grey,
                                             {128, 255, true}, task);
    return imaging::convertType(sharp.front(), ImageType::Bit1, task);
}

// Grey of a function of the place, both 0 to 1 across and down.
template <class Grey>
Raster shaded(int w, int h, Grey grey) {
    Raster picture = Raster::uninitialized(ImageType::Gray8, w, h);
    const imaging::View view = picture.edit();
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            view.row(y)[x] = static_cast<std::uint8_t>(
                std::lround(255 * std::clamp(grey((x + 0.5) / w, (y + 0.5) / h), 0.0, 1.0)));
    return picture;
}

// Sixteen by sixteen squares, entry 0 at the top left; a short palette begins again.
Raster swatches(const imaging::Palette& palette) {
    constexpr int side = 128, square = side / 16;
    Raster picture = Raster::uninitialized(ImageType::Indexed8, side, side);
    const imaging::View view = picture.edit();
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            view.row(y)[x] = static_cast<std::uint8_t>(
                static_cast<std::size_t>(y / square * 16 + x / square) % palette.size());
    picture.setPalette(palette);
    return picture;
}

} // namespace

void writePictures(const std::string& folder) {
    const auto write = [&](const char* name, const Raster& picture) {
        writePicture(folder + "/" + name, picture);
    };
    write("drawing.png", drawing());
    write("face.png", face());
    write("page.png", page());
    write("ramp.png", shaded(200, 150, [](double x, double) { return 1 - x; }));
    write("disc.png", shaded(120, 120, [](double x, double y) {
              return 10 * (0.45 - std::hypot(x - 0.5, y - 0.5));
          }));
    write("bump.png", shaded(200, 150, [](double x, double y) {
              const double u = std::fmod(4 * x, 1) - 0.5, v = std::fmod(3 * y, 1) - 0.5;
              return std::sqrt(std::max(0.0, 1 - 5 * (u * u + v * v)));
          }));
    imaging::Task task;
    write("green.png", imaging::runOperation(*imaging::findOperation("Channels.Split"),
                                             readPicture(folder + "/photo.jpg"), {}, task)
                           .at(1));
    write("indexes.png", swatches(imaging::Palette::grayRamp()));
    write("palette-system.png", swatches(imaging::presetPalette(1)));
    write("palette-web.png", swatches(imaging::presetPalette(2)));
    write("palette-sixteen.png", swatches(imaging::presetPalette(3)));
    write("palette-bilevel.png", swatches(imaging::presetPalette(4)));
}

} // namespace kvn::gallery
