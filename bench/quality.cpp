// bench_quality [PICTURE ...]: what the pixel work promises beside speed, in numbers: colours of a
// reduced palette against those of libimagequant (left out where it is not found), the way through
// hue, saturation and luminance and back, turns by right angles against a copy, and how much memory
// each operation takes beside its source and its result. Without pictures a made one is used.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>

#include "basic/error.h"
#include "bench/photo.h"
#include "imaging/byte_io.h"
#include "imaging/codecs/codec.h"
#include "imaging/operation.h"
#include "imaging/palette_presets.h"
#ifdef KVN_PEER_IMAGEQUANT
#include <libimagequant.h>
#endif

namespace kvn::bench {
namespace {

using imaging::ImageType;
using imaging::Raster;
using imaging::Value;

Raster run(const char* name, const Raster& source, std::vector<Value> values) {
    imaging::Task task;
    return imaging::runOperation(*imaging::findOperation(name), source, std::move(values), task)
        .front();
}

// --- few colours -------------------------------------------------------------------------------

// Peak signal to noise ratio over all three channels, in decibels.
double psnr(const Raster& a, const Raster& b) {
    const imaging::ConstView one = a.view(), other = b.view();
    double sum = 0;
    for (int y = 0; y < one.height; ++y)
        for (int i = 0; i < 3 * one.width; ++i) {
            const double d = one.row(y)[i] - other.row(y)[i];
            sum += d * d;
        }
    return 10 * std::log10(255.0 * 255 * 3 * one.width * one.height / std::max(sum, 1e-9));
}

Raster ours(const Raster& picture, int colors) {
    imaging::Task task;
    return imaging::convertType(run("Geometry.Dither", picture, {colors, true, true}),
                                ImageType::Rgb24, task);
}

#ifdef KVN_PEER_IMAGEQUANT
Raster theirs(const Raster& picture, int colors) {
    imaging::Task task;
    const Raster rgba = imaging::convertType(picture, ImageType::Rgba32, task);
    std::vector<const void*> rows;
    for (int y = 0; y < rgba.height(); ++y)
        rows.push_back(rgba.view().row(y));
    liq_attr* attributes = liq_attr_create();
    liq_set_max_colors(attributes, colors);
    liq_image* image = liq_image_create_rgba_rows(attributes, const_cast<void**>(rows.data()),
                                                  rgba.width(), rgba.height(), 0);
    liq_result* result = liq_quantize_image(attributes, image);
    liq_set_dithering_level(result, 1);
    std::vector<std::uint8_t> indices(static_cast<std::size_t>(rgba.width()) *
                                      static_cast<std::size_t>(rgba.height()));
    liq_write_remapped_image(result, image, indices.data(), indices.size());
    const liq_palette* palette = liq_get_palette(result);
    Raster reduced = Raster::uninitialized(ImageType::Rgb24, rgba.width(), rgba.height());
    const imaging::View to = reduced.edit();
    for (std::size_t i = 0; i < indices.size(); ++i) {
        const liq_color c = palette->entries[indices[i]];
        const auto width = static_cast<std::size_t>(rgba.width());
        std::uint8_t* p = to.row(static_cast<int>(i / width)) + i % width * 3;
        p[0] = c.r, p[1] = c.g, p[2] = c.b;
    }
    liq_result_destroy(result);
    liq_image_destroy(image);
    liq_attr_destroy(attributes);
    return reduced;
}
#endif

// Sixteen colours are compared as the eye does from afar, after a blur of one pixel.
void compareColors(const std::string& name, const Raster& picture) {
    for (const int colors : {256, 16}) {
        const auto seen = [&](const Raster& raster) {
            return colors == 16 ? run("Effects.GaussianBlur", raster, {25}) : raster;
        };
        std::printf("| %s, %d colours | %.2f |", name.c_str(), colors,
                    psnr(seen(picture), seen(ours(picture, colors))));
#ifdef KVN_PEER_IMAGEQUANT
        std::printf(" %.2f |\n", psnr(seen(picture), seen(theirs(picture, colors))));
#else
        std::puts(" |");
#endif
    }
}

Raster fromFile(const char* path) {
    const imaging::FileBytes file(path);
    const std::string name = path;
    const imaging::Codec* codec =
        imaging::codecForContent(file.bytes(), name.substr(name.rfind('.') + 1));
    if (!codec) throw RuntimeError(errors::invalidPicture, name + " is no picture", "bench");
    imaging::Task task;
    return imaging::convertType(codec->read(file.bytes(), {}, task).pages.at(0).raster,
                                ImageType::Rgb24, task);
}

// --- hue, saturation, luminance ------------------------------------------------------------------

// Over all colours, each of the three numbers rounded to a byte on the way.
void roundTrip() {
    int worst = 0;
    double sum = 0;
    for (int i = 0; i < 1 << 24; ++i) {
        const int rgb[] = {i & 255, i >> 8 & 255, i >> 16};
        const imaging::Hsl hsl = imaging::hslFromRgb(rgb[0], rgb[1], rgb[2]);
        const imaging::RgbReal back =
            imaging::rgbFromHsl({std::round(hsl.h), std::round(hsl.s), std::round(hsl.l)});
        const double values[] = {back.r, back.g, back.b};
        int most = 0;
        for (int c = 0; c < 3; ++c)
            most = std::max(most, std::abs(static_cast<int>(std::lround(values[c])) - rgb[c]));
        worst = std::max(worst, most);
        sum += most;
    }
    std::printf("\nHSL in bytes and back, all colours: at most %d of 255 off, %.2f on average\n",
                worst, sum / (1 << 24));
}

// --- right angles --------------------------------------------------------------------------------

double milliseconds(const std::function<void()>& work) {
    std::vector<double> times;
    for (int i = 0; i < 10; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double, std::milli> took =
            std::chrono::steady_clock::now() - start;
        if (i > 0) times.push_back(took.count());
    }
    std::ranges::sort(times);
    return times[times.size() / 2];
}

void rightAngles(const Raster& picture) {
    Raster target = picture;
    const imaging::View to = target.edit();
    const double copy = milliseconds([&] {
        imaging::Task task;
        imaging::parallelRows(to.height, task, [&](int y0, int y1) {
            for (int y = y0; y < y1; ++y)
                std::memcpy(to.row(y), picture.view().row(y), picture.rowBytes());
        });
    });
    std::printf("\n24 megapixels: copy %.1f ms", copy);
    for (const double angle : {90.0, 180.0, 270.0})
        std::printf(", turn by %.0f %.1f ms", angle, milliseconds([&] {
                        run("Geometry.Rotate", picture, {angle, imaging::Rgba{}, 0});
                    }));
    std::puts("");
}

// --- memory --------------------------------------------------------------------------------------

double processMegabytes(const std::string& field) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(field)) return std::stod(line.substr(field.size())) / 1024;
    return 0;
}

// Values in the middle of an operation's ranges, small where sizes would grow.
std::vector<Value> valuesFor(const imaging::Operation& operation, const Raster& picture) {
    static const imaging::Point corners[] = {{0, 3999}, {0, 0}, {5999, 1000}, {5999, 3000}};
    std::vector<Value> values;
    std::size_t points = 0;
    for (const imaging::Argument& argument : operation.arguments) {
        const double middle =
            std::clamp((argument.minimum + argument.maximum) / 2, argument.minimum + 0.0, 40.0);
        switch (argument.kind) {
        case imaging::ArgumentKind::Integer:
        case imaging::ArgumentKind::Number:
            if (argument.name == "width")
                values.emplace_back(3000);
            else if (argument.name == "height")
                values.emplace_back(2000);
            else
                values.emplace_back(std::max(argument.minimum, std::floor(middle)));
            break;
        case imaging::ArgumentKind::Boolean:
            values.emplace_back(true);
            break;
        case imaging::ArgumentKind::Text:
            values.emplace_back(std::string("key"));
            break;
        case imaging::ArgumentKind::Color:
            values.emplace_back(imaging::Rgba{200, 80, 40, 255});
            break;
        case imaging::ArgumentKind::Point:
            values.emplace_back(corners[points++ % 4]);
            break;
        case imaging::ArgumentKind::Matrix:
            if (operation.name == "Channels.AlphaTable")
                values.emplace_back(imaging::Matrix{1, 256, std::vector<double>(256, 7)});
            else
                values.emplace_back(imaging::Matrix{3, 3, {1, 2, 1, 2, 4, 2, 1, 2, 1}});
            break;
        case imaging::ArgumentKind::Image:
            values.emplace_back(std::make_shared<const Raster>(picture));
            break;
        case imaging::ArgumentKind::Palette:
            values.emplace_back(imaging::presetPalette(2));
            break;
        }
    }
    return values;
}

// What the operation needs at its highest beside source and result, in pictures of the source's
// size. Kept blocks are given back first, so that everything that is wanted shows.
void memoryOf(const imaging::Operation& operation, const Raster& picture) {
    std::vector<Value> values = valuesFor(operation, picture);
    imaging::PixelBuffer::trimCache();
    std::ofstream("/proc/self/clear_refs") << "5";
    const double before = processMegabytes("VmRSS:");
    double result = 0;
    try {
        imaging::Task task;
        for (const Raster& page :
             imaging::runOperation(operation, picture, std::move(values), task))
            if (!page.sharesPixelsWith(picture))
                result += static_cast<double>(page.byteSize()) / (1 << 20);
    } catch (const RuntimeError& error) {
        std::printf("| %s | %s |\n", std::string(operation.name).c_str(), error.what());
        return;
    }
    const double own = static_cast<double>(picture.byteSize()) / (1 << 20);
    const double extra = (processMegabytes("VmHWM:") - before - result) / own;
    if (extra > 0.05) std::printf("| %s | %.2f |\n", std::string(operation.name).c_str(), extra);
}

void memory(const Raster& picture) {
    std::puts("\nMemory beside source and result, in pictures; what is not listed takes none.\n\n"
              "| operation | pictures |\n|---|---|");
    for (const imaging::Operation* operation : imaging::operations()) {
        memoryOf(*operation, picture);
        std::fflush(stdout);
    }
}

} // namespace
} // namespace kvn::bench

int main(int argc, char** argv) {
    using namespace kvn::bench;
    try {
        std::puts("| PSNR, dB | ours | libimagequant |\n|---|---|---|");
        for (int i = 1; i < argc; ++i) {
            const std::string path = argv[i];
            compareColors(path.substr(path.rfind('/') + 1), fromFile(argv[i]));
        }
        if (argc < 2)
            compareColors("made picture", photo(kvn::imaging::ImageType::Rgb24, 1500, 1000));
        roundTrip();
        const Raster picture = photo();
        rightAngles(picture);
        memory(picture);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_quality: %s\n", error.what());
        return 1;
    }
}
