// The sections of a PSD file, checked and put in order. No pixels.
#pragma once

#include <cstdint>
#include <span>

#include "imaging/codecs/psd_layer.h"
#include "imaging/codecs/psd_resources.h"
#include "imaging/palette.h"
#include "imaging/raster.h"

namespace kvn::imaging {

enum class PsdMode : int {
    Bitmap = 0,
    Gray = 1,
    Indexed = 2,
    Rgb = 3,
    Cmyk = 4,
    Multichannel = 7,
    Duotone = 8,
    Lab = 9,
};

struct PsdFile {
    bool isLarge = false; // the format's second version, for sides above 30,000
    int width = 0;
    int height = 0;
    int channels = 0; // in the file
    int bits = 0;     // of a channel: 1, 8, 16, 32
    PsdMode mode = PsdMode::Rgb;
    // Channels that are shown: those of the colours, and behind them perhaps alpha.
    int colors = 0;
    bool alpha = false;
    // The colours are blended with white by that alpha.
    bool matted = false;
    bool packed = false; // run lengths
    bool zipped = false; // until unzipPsd
    bool differences = false;
    // Shown instead of the merged picture, which is the same but for rounding, if not empty.
    PsdChannels layer;
    ImageType type = ImageType::Rgb24;
    Palette palette; // of an indexed picture
    PsdResources resources;
    int orientation = 1;                  // as in EXIF
    std::span<const std::uint8_t> pixels; // behind the compression's number
    Bytes unzipped;
};

bool isPsd(std::span<const std::uint8_t> file);

// Throws RuntimeError(invalidPicture) for what cannot be read.
//
// Alpha: a negative number of layers, or a mark to the same effect, says that the first channel
// behind the colours is the transparency of the merged picture, whose colours are blended with
// white then. Without that, a single channel behind them is alpha with the colours as they are,
// as programs write it that have no layers; several are saved selections and are not shown.
PsdFile readPsdFile(std::span<const std::uint8_t> file);

} // namespace kvn::imaging
