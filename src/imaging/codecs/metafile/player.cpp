#include "imaging/codecs/metafile/player.h"

#include <algorithm>
#include <cmath>

#include "basic/error.h"

namespace kvn::imaging::metafile {

namespace {

constexpr double mostPixels = 64e6; // drawings are made smaller than that
constexpr int longestSide = 32767;

[[noreturn]] void refuse(const std::string& what) {
    throw RuntimeError(errors::invalidPicture, what, "Import");
}

// What the file may ask for: less than two seconds, and more for large files. Drawing the whole
// picture some times over is a usual thing.
draw::Effort effortFor(const Source& source, const Rect& canvas) {
    constexpr double least = 0.15e9, perPixel = 60, most = 1.2e9, perByte = 500;
    return draw::Effort(std::min(most, least + perPixel * canvas.width * canvas.height) +
                        perByte * static_cast<double>(source.file.size()));
}

// The size in whole pixels, within the limits, with the resolution that belongs to it.
Sheet fitted(Sheet sheet, const ReadLimits& limits) {
    const double bytes = static_cast<double>(limits.pixelBytes);
    const double most = std::max(1.0, std::min(mostPixels, bytes / 3));
    if (!(sheet.width > 0 && sheet.height > 0)) refuse("The drawing has no size.");
    double scale = std::min(1.0, std::sqrt(most / (sheet.width * sheet.height)));
    scale = std::min(scale, longestSide / std::max(sheet.width, sheet.height));
    // Rows are padded, which narrow pictures feel.
    const auto stored = [&] {
        const double row = std::max(64.0, 3 * sheet.width * scale + 63);
        return row * std::max(1.0, sheet.height * scale);
    };
    while (scale > 1e-6 && stored() > bytes)
        scale *= 0.9;
    const auto whole = [&](double side) {
        return std::max(1.0, scale < 1 ? std::floor(side * scale) : std::round(side));
    };
    const double width = whole(sheet.width), height = whole(sheet.height);
    sheet.xDpi *= scale < 1 ? width / sheet.width : 1;
    sheet.yDpi *= scale < 1 ? height / sheet.height : 1;
    sheet.width = width;
    sheet.height = height;
    return sheet;
}

Rect canvasOf(const Sheet& sheet) {
    return {0, 0, static_cast<int>(sheet.width), static_cast<int>(sheet.height)};
}

Affine mapOf(const Sheet& sheet) {
    const draw::Box& f = sheet.frame;
    return Affine::scaling(sheet.width / (f.right - f.left), sheet.height / (f.bottom - f.top)) *
           Affine::translation(-f.left, -f.top) * Affine::scaling(1, sheet.mirrored ? -1 : 1);
}

struct Rehearsal {
    Sheet sheet;
    Measure measure;
    std::vector<std::string> warnings;
};

void rehearseOn(const Source& source, Rehearsal& rehearsal, const Rect& canvas, const Affine& map,
                Task& task) {
    draw::Effort effort = effortFor(source, canvas);
    Drawing drawing(canvas, nullptr, effort, map, rehearsal.sheet.perMillimetre);
    rehearsal.warnings.clear();
    source.play(drawing, task, rehearsal.warnings);
    rehearsal.measure = drawing.measure();
    if (rehearsal.measure.marks == 0) refuse(source.whyEmpty());
}

Rehearsal rehearse(const Source& source, const ReadLimits& limits, Task& task) {
    Rehearsal rehearsal;
    auto sheet = source.sheet();
    if (!sheet) {
        const int far = 1 << 15;
        rehearseOn(source, rehearsal, {-far, -far, 2 * far, 2 * far}, {}, task);
        sheet = source.sheetAround(rehearsal.measure.bounds);
    }
    rehearsal.sheet = fitted(*sheet, limits);
    if (!mapOf(rehearsal.sheet).isUsable()) refuse("The drawing has no size.");
    rehearseOn(source, rehearsal, canvasOf(rehearsal.sheet), mapOf(rehearsal.sheet), task);
    return rehearsal;
}

const BitmapMark* bitmapAlone(const Rehearsal& rehearsal) {
    const BitmapMark* bitmap = rehearsal.measure.soleBitmap();
    if (!bitmap || bitmap->dib.paletteIndices || bitmap->dib.rows > 0) return nullptr;
    const draw::Box& place = bitmap->place;
    const Sheet& sheet = rehearsal.sheet;
    const bool covers = std::abs(place.left) <= 1 && std::abs(place.top) <= 1 &&
                        std::abs(place.right - sheet.width) <= 1 &&
                        std::abs(place.bottom - sheet.height) <= 1;
    return covers ? bitmap : nullptr;
}

// The bitmap's resolution: as many pixels on the sheet's inches. Whole where rounding of the
// stated size, to the hundredth of a millimetre, may have made the difference.
double resolution(int pixels, double inches) {
    if (!(inches > 0)) return 0;
    const double dpi = pixels / inches, whole = std::round(dpi);
    const double doubt = dpi * (0.01 / 25.4) / inches;
    return whole > 0 && std::abs(dpi - whole) <= doubt + 1e-9 ? whole : dpi;
}

Page bitmapPage(const BitmapMark& bitmap, const Sheet& sheet, const ReadLimits& limits, Task& task,
                std::vector<std::string>& warnings) {
    Page page;
    page.raster = decodeDib(bitmap.dib, {}, bitmap.alpha, limits, task, warnings);
    if (bitmap.alpha) divideByAlpha(page.raster);
    Metadata meta;
    meta.xDpi = resolution(page.raster.width(), sheet.inches.x);
    meta.yDpi = resolution(page.raster.height(), sheet.inches.y);
    page.metadata = std::make_shared<const Metadata>(std::move(meta));
    return page;
}

Page drawnPage(const Source& source, const Sheet& sheet, ReadLimits limits, Task& task,
               std::vector<std::string>& warnings) {
    const Rect canvas = canvasOf(sheet);
    limits.take(canvas.width, canvas.height, ImageType::Rgb24);
    Page page;
    page.raster =
        Raster::filled(ImageType::Rgb24, canvas.width, canvas.height, {255, 255, 255, 255});
    draw::Effort effort = effortFor(source, canvas);
    draw::Surface surface(page.raster, effort);
    Drawing drawing(canvas, &surface, effort, mapOf(sheet), sheet.perMillimetre);
    std::vector<std::string> known;
    source.play(drawing, task, known);
    if (effort.isSpent())
        warnings.push_back("The " + std::string(source.name()) +
                           " file asks for too much drawing: a part of it is left out.");
    Metadata meta;
    meta.xDpi = sheet.xDpi;
    meta.yDpi = sheet.yDpi;
    page.metadata = std::make_shared<const Metadata>(std::move(meta));
    return page;
}

} // namespace

Picture readMetafile(const Source& source, FileType type, ReadLimits limits, Task& task) {
    Rehearsal rehearsal = rehearse(source, limits, task);
    Picture picture;
    picture.type = type;
    picture.warnings = std::move(rehearsal.warnings);
    if (const BitmapMark* bitmap = bitmapAlone(rehearsal))
        picture.pages.push_back(
            bitmapPage(*bitmap, rehearsal.sheet, limits, task, picture.warnings));
    else
        picture.pages.push_back(drawnPage(source, rehearsal.sheet, limits, task, picture.warnings));
    return picture;
}

std::vector<PageFacts> metafileFacts(const Source& source, ReadLimits limits) {
    Task task;
    const Rehearsal rehearsal = rehearse(source, limits, task);
    if (const BitmapMark* bitmap = bitmapAlone(rehearsal)) {
        const DibFacts facts = factsOf(bitmap->dib);
        const bool alpha = bitmap->alpha && facts.bits == 32;
        return {{facts.width, facts.height, alpha ? ImageType::Rgba32 : facts.type, facts.bits}};
    }
    const Rect canvas = canvasOf(rehearsal.sheet);
    return {{canvas.width, canvas.height, ImageType::Rgb24, 24}};
}

} // namespace kvn::imaging::metafile
