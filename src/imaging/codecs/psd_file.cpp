#include "imaging/codecs/psd_file.h"

#include <algorithm>
#include <string>

#include "basic/error.h"
#include "imaging/codecs/fields.h"
#include "imaging/metadata/exif_block.h"

namespace kvn::imaging {

namespace {

constexpr std::size_t headerSize = 26;
constexpr std::uint32_t signature = 0x38425053; // "8BPS"
constexpr int longestSide = 300000;

[[noreturn]] void refuse(const std::string& what) {
    throw RuntimeError(errors::invalidPicture, what, "Import");
}

// How many channels the colours take; 0 for an unknown mode.
int colorsOf(PsdMode mode, int channels) {
    switch (mode) {
    case PsdMode::Bitmap:
    case PsdMode::Gray:
    case PsdMode::Indexed:
    case PsdMode::Duotone:
        return 1;
    case PsdMode::Rgb:
    case PsdMode::Lab:
        return 3;
    case PsdMode::Cmyk:
        return 4;
    case PsdMode::Multichannel:
        return channels >= 3 ? 3 : 1;
    }
    return 0;
}

void readHeader(PsdFile& psd, const BigFields& fields) {
    psd.isLarge = fields.u16(4) == 2;
    const std::uint32_t height = fields.u32(14), width = fields.u32(18);
    if (width < 1 || height < 1 || width > longestSide || height > longestSide)
        refuse("The PSD file names a picture of " + std::to_string(width) + " x " +
               std::to_string(height) + " pixels.");
    psd.width = static_cast<int>(width);
    psd.height = static_cast<int>(height);
    psd.channels = static_cast<int>(fields.u16(12));
    psd.bits = static_cast<int>(fields.u16(22));
    psd.mode = static_cast<PsdMode>(fields.u16(24));
    psd.colors = colorsOf(psd.mode, psd.channels);
    if (psd.colors == 0) refuse("The PSD file has an unknown colour mode.");
    if (psd.channels < psd.colors) refuse("The PSD file has too few channels for its colours.");
    const bool bitmap = psd.mode == PsdMode::Bitmap;
    const bool deep = psd.bits == 16 || psd.bits == 32;
    const bool known =
        bitmap ? psd.bits == 1 : psd.bits == 8 || (deep && psd.mode != PsdMode::Indexed);
    if (!known)
        refuse("The PSD file has an unknown depth (" + std::to_string(psd.bits) + " bits).");
}

// Reds, then greens, then blues.
void setPalette(PsdFile& psd, std::span<const std::uint8_t> data) {
    const std::size_t third = data.size() / 3;
    const std::size_t count =
        std::min({psd.resources.colorCount.value_or(third), third, Palette::maxSize});
    std::vector<Rgba> colors;
    for (std::size_t i = 0; i < count; ++i)
        colors.push_back({data[i], data[third + i], data[2 * third + i], 255});
    if (const auto index = psd.resources.transparentIndex; index && *index < colors.size())
        colors[*index].a = 0;
    if (colors.empty()) refuse("The PSD file has no palette.");
    psd.palette = Palette(std::move(colors));
}

// Whether the layer section says that the first extra channel is the merged transparency.
bool saysTransparency(std::span<const std::uint8_t> section, bool isLarge) {
    const BigFields fields(section);
    const std::size_t wide = isLarge ? 8 : 4;
    constexpr std::uint32_t negative = 0x8000;
    const std::uint64_t layers = isLarge ? fields.u64(0) : fields.u32(0);
    if (layers >= 2) return (fields.u16(wide) & negative) != 0;
    // Pictures of more than 8 bits have their layers in a block behind the global mask.
    std::uint64_t at = wide + 4 + std::uint64_t{fields.u32(wide)};
    while (at + 12 <= section.size()) {
        const auto here = static_cast<std::size_t>(at);
        const std::uint32_t key = fields.u32(here + 4);
        constexpr std::uint32_t marks[] = {0x4d74726e, 0x4d743136, 0x4d743332};  // Mtrn Mt16 Mt32
        constexpr std::uint32_t blocks[] = {0x4c617972, 0x4c723136, 0x4c723332}; // Layr Lr16 Lr32
        if (std::ranges::find(marks, key) != std::end(marks)) return true;
        const bool isLayers = std::ranges::find(blocks, key) != std::end(blocks);
        const std::size_t sizeBytes = isLarge && (isLayers) ? 8 : 4;
        if (isLayers) return (fields.u16(here + 8 + sizeBytes) & negative) != 0;
        const std::uint64_t size = fields.u32(here + 8);
        at += 12 + (size + 3) / 4 * 4;
    }
    return false;
}

void setAlpha(PsdFile& psd, bool transparency) {
    const int extra = psd.channels - psd.colors;
    const bool possible = psd.mode != PsdMode::Bitmap && psd.mode != PsdMode::Indexed &&
                          psd.mode != PsdMode::Multichannel;
    psd.alpha = possible && (extra == 1 || (extra > 1 && transparency));
    psd.matted = psd.alpha && transparency;
}

ImageType typeOf(const PsdFile& psd) {
    if (psd.mode == PsdMode::Bitmap) return ImageType::Bit1;
    if (psd.mode == PsdMode::Indexed)
        return psd.palette.hasTransparency() ? ImageType::Indexed8Alpha : ImageType::Indexed8;
    if (psd.colors == 1) return psd.alpha ? ImageType::GrayAlpha16 : ImageType::Gray8;
    return psd.alpha ? ImageType::Rgba32 : ImageType::Rgb24;
}

void setPixels(PsdFile& psd, std::span<const std::uint8_t> data) {
    const std::uint32_t compression = BigFields(data).u16(0);
    if (data.size() < 2) refuse("The PSD file is cut off before its pixels.");
    enum : std::uint32_t { raw, runs, zip, zipOfDifferences };
    if (compression > zipOfDifferences)
        refuse("The PSD file has an unknown compression (" + std::to_string(compression) + ").");
    psd.packed = compression == runs;
    psd.zipped = compression == zip || compression == zipOfDifferences;
    psd.differences = compression == zipOfDifferences;
    psd.pixels = data.subspan(2);
}

} // namespace

bool isPsd(std::span<const std::uint8_t> file) {
    const BigFields fields(file);
    return file.size() >= headerSize && fields.u32(0) == signature &&
           (fields.u16(4) == 1 || fields.u16(4) == 2);
}

PsdFile readPsdFile(std::span<const std::uint8_t> file) {
    if (!isPsd(file)) refuse("The PSD file has no valid header.");
    const BigFields fields(file);
    PsdFile psd;
    readHeader(psd, fields);
    std::uint64_t at = headerSize;
    const auto nextSection = [&](bool wide) {
        const auto here = static_cast<std::size_t>(std::min<std::uint64_t>(at, file.size()));
        const std::uint64_t size = wide ? fields.u64(here) : fields.u32(here);
        const std::uint64_t start = here + (wide ? 8u : 4u);
        // A length that leads out of the file leaves nothing behind it.
        at = size > file.size() ? file.size() : start + size;
        return partOf(file, start, size);
    };
    const auto colorData = nextSection(false);
    psd.resources = readPsdResources(nextSection(false));
    const auto layers = nextSection(psd.isLarge);
    if (psd.mode == PsdMode::Indexed) setPalette(psd, colorData);
    setAlpha(psd, saysTransparency(layers, psd.isLarge));
    if (psd.matted && !psd.isLarge && psd.bits == 8 &&
        (psd.mode == PsdMode::Rgb || psd.mode == PsdMode::Gray))
        psd.layer = coveringPsdLayer(layers, psd.width, psd.height, psd.colors);
    if (!psd.layer.empty()) psd.matted = false;
    psd.type = typeOf(psd);
    setPixels(psd, partOf(file, at, file.size()));
    Metadata& meta = psd.resources.metadata;
    if (psd.mode == PsdMode::Cmyk || psd.mode == PsdMode::Lab || psd.mode == PsdMode::Multichannel)
        meta.icc.clear(); // of colours that the picture no longer has
    psd.orientation = exifOrientation(meta.exif);
    return psd;
}

} // namespace kvn::imaging
