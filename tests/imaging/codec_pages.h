// Pictures and round trips that the codec tests share.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "basic/error.h"
#include "imaging/codecs/codec.h"

namespace kvn::test {

using namespace kvn::imaging;

inline constexpr ImageType everyType[] = {
    ImageType::Bit1,        ImageType::Indexed8, ImageType::Indexed8Alpha, ImageType::Gray8,
    ImageType::GrayAlpha16, ImageType::Rgb24,    ImageType::Rgba32};

inline const char* typeName(ImageType type) {
    static constexpr const char* names[] = {"bit1",       "indexed", "indexed-alpha", "grey",
                                            "grey-alpha", "rgb",     "rgba"};
    return names[static_cast<int>(type)];
}

// Slopes with some noise, so that predictors, runs and strings all have something to do. Palettes
// have an odd number of colours, in no order.
inline Raster patterned(ImageType type, int width, int height, unsigned seed = 1) {
    std::mt19937 random(seed);
    Raster raster(type, width, height);
    if (type == ImageType::Indexed8 || type == ImageType::Indexed8Alpha) {
        std::vector<Rgba> colors(201);
        for (Rgba& color : colors)
            color = {static_cast<std::uint8_t>(random()), static_cast<std::uint8_t>(random()),
                     static_cast<std::uint8_t>(random() | 1),
                     type == ImageType::Indexed8 ? std::uint8_t{255}
                                                 : static_cast<std::uint8_t>(random())};
        raster.setPalette(Palette(colors));
    }
    const View view = raster.edit();
    const int bytes = std::max(1, bytesPerPixel(type));
    for (int y = 0; y < height; ++y)
        for (std::size_t i = 0; i < raster.rowBytes(); ++i) {
            const unsigned slope = static_cast<unsigned>(i) / bytes + 2 * y + 70 * (i % bytes);
            unsigned value = random() % 4 == 0 ? slope + random() % 5 : slope / 8 * 8;
            if (hasPalette(type) && type != ImageType::Bit1) value %= 201;
            view.row(y)[i] = static_cast<std::uint8_t>(value);
        }
    return raster;
}

inline std::vector<std::uint8_t> written(const Codec& codec, const std::vector<Page>& pages,
                                         const WriteOptions& options = {}) {
    MemorySink sink;
    Task task;
    codec.write(pages, options, sink, task);
    return std::move(sink.bytes());
}

inline Picture reread(const Codec& codec, const std::vector<std::uint8_t>& file,
                      ReadLimits limits = {}) {
    Task task;
    return codec.read(file, limits, task);
}

// The indices, or greys, of all pixels, row by row.
inline std::vector<std::uint8_t> allIndices(const Raster& raster) {
    std::vector<std::uint8_t> indices;
    for (int y = 0; y < raster.height(); ++y)
        for (int x = 0; x < raster.width(); ++x)
            indices.push_back(raster.index(x, y));
    return indices;
}

// What reading ends with: the error's number, 0 for none.
inline int errorOf(const Codec& codec, const std::vector<std::uint8_t>& file,
                   ReadLimits limits = {}) {
    try {
        reread(codec, file, limits);
    } catch (const RuntimeError& error) {
        return error.number();
    }
    return 0;
}

// Reads every beginning of the file, and the file with each of many bytes changed; what comes is
// a picture or a RuntimeError.
inline void readDamaged(const Codec& codec, const std::vector<std::uint8_t>& file,
                        std::size_t step = 1) {
    for (std::size_t size = 0; size < file.size(); size += step)
        errorOf(codec, {file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size)});
    std::mt19937 random(7);
    for (std::size_t at = 0; at < file.size(); at += step) {
        std::vector<std::uint8_t> changed = file;
        changed[at] = static_cast<std::uint8_t>(random());
        errorOf(codec, changed);
    }
}

} // namespace kvn::test
