#include "imaging/codecs/metafile/bitmaps.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "imaging/convert.h"

namespace kvn::imaging::metafile {

namespace {

constexpr int halftone = 4; // the stretch mode that means to be smooth

// Upper left corner and two sides, in canvas pixels. Along the axes the borders are whole pixels,
// so that the strips of a picture that was cut meet.
struct Place {
    PointD origin, across, down;
    draw::Outline outline() const {
        return {{{origin, origin + across, origin + across + down, origin + down}, true}};
    }
};

double wholeSide(double from, double to) {
    const double side = std::round(to) - std::round(from);
    return side != 0 ? side : to < from ? -1 : 1;
}

Place placeOf(const Drawing& drawing, const std::array<PointD, 3>& corners) {
    const Affine map = drawing.toCanvas();
    const PointD a = map(corners[0]), b = map(corners[1]), c = map(corners[2]);
    constexpr double straight = 1e-6;
    if (std::abs(b.y - a.y) > straight || std::abs(c.x - a.x) > straight) return {a, b - a, c - a};
    return {{std::round(a.x), std::round(a.y)}, {wholeSide(a.x, b.x), 0}, {0, wholeSide(a.y, c.y)}};
}

Raster resized(const Raster& source, int width, int height) {
    Raster target = Raster::uninitialized(source.type(), width, height);
    const ConstView from = source.view();
    const View to = target.edit();
    const int type = bytesPerPixel(source.type()) == 4 ? CV_8UC4 : CV_8UC3;
    const cv::Mat in(from.height, from.width, type, const_cast<std::uint8_t*>(from.data),
                     from.stride);
    cv::Mat out(height, width, type, to.data, to.stride);
    cv::resize(in, out, out.size(), 0, 0, cv::INTER_AREA);
    return target;
}

void changeAlpha(Raster& raster, const Blit& blit) {
    const View view = raster.edit();
    for (int y = 0; y < view.height; ++y) {
        std::uint8_t* p = view.row(y);
        for (int x = 0; x < view.width; ++x, p += 4) {
            if (blit.clear && p[0] == blit.clear->r && p[1] == blit.clear->g &&
                p[2] == blit.clear->b)
                p[3] = 0;
            p[3] = mul255(p[3], blit.opacity);
        }
    }
}

// A part of the bitmap, in whole pixels, ready to be sampled.
struct Part {
    Raster raster;
    Rect rect;                       // within the bitmap
    double shrunkX = 1, shrunkY = 1; // its pixels for one of the bitmap's
};

Rect sourceRect(const Blit& blit, const Raster& bitmap) {
    const auto whole = [](double v) {
        return static_cast<int>(std::lround(std::clamp(v, -1e6, 1e6)));
    };
    const double x = std::min(blit.sourceX, blit.sourceX + blit.sourceWidth);
    const double y = std::min(blit.sourceY, blit.sourceY + blit.sourceHeight);
    return Rect{whole(x), whole(y), whole(std::abs(blit.sourceWidth)),
                whole(std::abs(blit.sourceHeight))}
        .intersected(bitmap.rect());
}

// Averages where the place is smaller, unless single bits count.
Part preparedPart(const Blit& blit, const Raster& bitmap, const Place& place) {
    Part part;
    part.rect = sourceRect(blit, bitmap);
    if (part.rect.isEmpty()) return part;
    const bool withAlpha = blit.alpha || blit.clear || blit.opacity < 255;
    Task task;
    part.raster = convertType(bitmap.cropped(part.rect),
                              withAlpha ? ImageType::Rgba32 : ImageType::Rgb24, task);
    if (blit.code == draw::Ink::sourceAlone && !blit.clear) {
        const double x = length(place.across) / std::abs(blit.sourceWidth);
        const double y = length(place.down) / std::abs(blit.sourceHeight);
        const auto shrunk = [](double scale, int side) {
            return scale < 1 ? std::max(1, static_cast<int>(std::lround(side * scale))) : side;
        };
        const int width = shrunk(x, part.rect.width), height = shrunk(y, part.rect.height);
        if (width < part.rect.width || height < part.rect.height)
            part.raster = resized(part.raster, width, height);
        part.shrunkX = double(width) / part.rect.width;
        part.shrunkY = double(height) / part.rect.height;
    }
    if (blit.alpha) divideByAlpha(part.raster);
    if (withAlpha) changeAlpha(part.raster, blit);
    return part;
}

// Pixels of the canvas to pixels of the prepared part.
std::optional<Affine> sampling(const Blit& blit, const Part& part, const Place& place) {
    const Affine placed{place.across.x / blit.sourceWidth,
                        place.down.x / blit.sourceHeight,
                        place.across.y / blit.sourceWidth,
                        place.down.y / blit.sourceHeight,
                        place.origin.x,
                        place.origin.y};
    const auto back = (placed * Affine::translation(-blit.sourceX, -blit.sourceY)).inverse();
    if (!back) return {};
    const Affine map = Affine::scaling(part.shrunkX, part.shrunkY) *
                       Affine::translation(-part.rect.x, -part.rect.y) * *back;
    if (!map.isUsable()) return {};
    return map;
}

bool isWhole(const Blit& blit) {
    const DibFacts facts = factsOf(blit.dib);
    return blit.code == draw::Ink::sourceAlone && !blit.clear && blit.opacity == 255 &&
           blit.sourceX == 0 && blit.sourceY == 0 && blit.sourceWidth == facts.width &&
           blit.sourceHeight == facts.height;
}

void rememberBitmap(Drawing& drawing, const Blit& blit, const Place& place) {
    Measure& measure = drawing.measure();
    const bool upright = place.across.x > 0 && place.across.y == 0 && place.down.y > 0 &&
                         place.down.x == 0 && drawing.state().clip.isRectangle();
    if (measure.marks == 1 && upright && isWhole(blit))
        measure.bitmap = {blit.dib, blit.alpha, boundsOf(place.outline())};
}

} // namespace

void setRows(Blit& blit, const DibFacts& facts, const RowsOf& rows) {
    const bool some = rows.count > 0 && rows.count < facts.height;
    blit.dib.rows = some ? static_cast<int>(rows.count) : 0;
    const double there = some ? rows.count : facts.height;
    const double low = std::max(rows.from.y, rows.first);
    const double high = std::min(rows.from.y + rows.size.y, rows.first + there);
    if (high <= low) return;
    const double y = facts.topDown ? low - rows.first : rows.first + there - high;
    const double down = facts.topDown ? low - rows.from.y : rows.from.y + rows.size.y - high;
    blit.setSource(rows.from.x, y, rows.size.x, high - low);
    blit.setPlace(rows.at + PointD{0, down}, rows.size.x, high - low);
}

void drawBitmap(Drawing& drawing, const Blit& blit) {
    if (blit.sourceWidth == 0 || blit.sourceHeight == 0) return;
    const Place place = placeOf(drawing, blit.corners);
    const draw::Outline outline = place.outline();
    if (drawing.rehearse(boundsOf(outline))) return rememberBitmap(drawing, blit, place);
    State& state = drawing.state();
    if (pixelsAround(boundsOf(outline), state.clip.bounds()).isEmpty()) return;
    const Raster bitmap = blit.raster.isEmpty()
                              ? readDib(blit.dib, state.palette, blit.alpha, drawing.effort())
                              : blit.raster;
    if (bitmap.isEmpty()) return;
    Part part = preparedPart(blit, bitmap, place);
    if (part.rect.isEmpty()) return;
    const auto map = sampling(blit, part, place);
    if (!map) return;
    const draw::ImagePaint source(std::move(part.raster), *map,
                                  state.stretchMode == halftone ? draw::Sampling::Smooth
                                                                : draw::Sampling::Nearest);
    draw::Ink ink{nullptr, &source, blit.code};
    const auto pattern = ink.usesPattern() ? drawing.paintOf(state.brush) : nullptr;
    if (ink.usesPattern() && !pattern) return;
    ink.pattern = pattern.get();
    drawing.area(outline, ink);
}

void drawPattern(Drawing& drawing, PointD at, double width, double height, std::uint8_t code) {
    const draw::Outline outline =
        placeOf(drawing, {at, at + PointD{width, 0}, at + PointD{0, height}}).outline();
    if (drawing.rehearse(boundsOf(outline))) return;
    draw::Ink ink{nullptr, nullptr, code};
    if (ink.usesSource()) return;
    const auto pattern = ink.usesPattern() ? drawing.paintOf(drawing.state().brush) : nullptr;
    if (ink.usesPattern() && !pattern) return;
    ink.pattern = pattern.get();
    drawing.area(outline, ink);
}

} // namespace kvn::imaging::metafile
