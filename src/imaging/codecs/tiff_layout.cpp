#include "imaging/codecs/tiff_layout.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "basic/error.h"

namespace kvn::imaging {

namespace {

[[noreturn]] void refuse(const std::string& what) {
    throw RuntimeError(errors::invalidPicture, what, "Import");
}

TiffColor colorOf(const TiffLayout& layout) {
    switch (layout.photometric) {
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_MASK:
        return TiffColor::Gray;
    case PHOTOMETRIC_PALETTE:
        return TiffColor::Palette;
    case PHOTOMETRIC_RGB:
        return TiffColor::Rgb;
    case PHOTOMETRIC_SEPARATED:
        // Other inks than the four usual ones have no known colour: the first is shown.
        return layout.samples >= 4 ? TiffColor::Cmyk : TiffColor::Gray;
    case PHOTOMETRIC_YCBCR:
        // JPEG data come out of the decoder as RGB.
        return layout.compression == COMPRESSION_JPEG && !layout.planar ? TiffColor::Rgb
                                                                        : TiffColor::Library;
    case PHOTOMETRIC_CIELAB:
        return layout.samples >= 3 ? TiffColor::CieLab : TiffColor::Gray;
    case PHOTOMETRIC_ICCLAB:
        return layout.samples >= 3 ? TiffColor::IccLab : TiffColor::Gray;
    default:
        return TiffColor::Library;
    }
}

int colorSamples(TiffColor color) {
    switch (color) {
    case TiffColor::Gray:
    case TiffColor::Palette:
        return 1;
    case TiffColor::Cmyk:
        return 4;
    default:
        return 3;
    }
}

// Extra samples of no stated meaning are not alpha, but a single one that the file does not
// mention at all is: old writers left the field out.
void setAlpha(TiffLayout& layout, TIFF* tiff) {
    const int first = colorSamples(layout.color);
    std::uint16_t count = 0;
    std::uint16_t* kinds = nullptr;
    if (!TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds)) {
        const bool usual = layout.color == TiffColor::Gray || layout.color == TiffColor::Rgb;
        if (usual && layout.samples == first + 1) layout.alpha = first;
        return;
    }
    for (int i = 0; i < count && first + i < layout.samples; ++i) {
        if (kinds[i] != EXTRASAMPLE_ASSOCALPHA && kinds[i] != EXTRASAMPLE_UNASSALPHA) continue;
        layout.alpha = first + i;
        layout.premultiplied = kinds[i] == EXTRASAMPLE_ASSOCALPHA;
        return;
    }
}

void setPalette(TiffLayout& layout, TIFF* tiff) {
    if (layout.color == TiffColor::Gray && layout.bits == 1) {
        layout.palette = layout.inverted ? Palette({{255, 255, 255, 255}, {0, 0, 0, 255}})
                                         : Palette::blackAndWhite();
        return;
    }
    if (layout.color != TiffColor::Palette) return;
    if (layout.bits > 8 && layout.bits != 16)
        refuse("TIFF palettes of " + std::to_string(layout.bits) + " bits cannot be read.");
    std::uint16_t *r = nullptr, *g = nullptr, *b = nullptr;
    if (!TIFFGetField(tiff, TIFFTAG_COLORMAP, &r, &g, &b) || !r || !g || !b)
        refuse("The TIFF file's palette is missing.");
    const int count = 1 << layout.bits;
    // Some writers put 8-bit numbers into the 16-bit fields.
    const auto largest = [&](const std::uint16_t* c) { return *std::max_element(c, c + count); };
    const int shift = std::max({largest(r), largest(g), largest(b)}) > 255 ? 8 : 0;
    std::vector<Rgba> colors;
    for (int i = 0; i < count; ++i)
        colors.push_back({static_cast<std::uint8_t>(r[i] >> shift),
                          static_cast<std::uint8_t>(g[i] >> shift),
                          static_cast<std::uint8_t>(b[i] >> shift), 255});
    // The field always holds the full count: black at its end is what fills it up.
    while (layout.bits == 8 && colors.size() > 1 && colors.back() == Rgba{0, 0, 0, 255})
        colors.pop_back();
    if (layout.bits > 8)
        layout.manyColors = std::move(colors);
    else
        layout.palette = Palette(std::move(colors));
}

void setNumbers(TiffLayout& layout, const TiffReader& reader) {
    const bool lab = layout.color == TiffColor::CieLab || layout.color == TiffColor::IccLab;
    const std::uint16_t format = lab ? SAMPLEFORMAT_UINT : reader.word(TIFFTAG_SAMPLEFORMAT);
    if (format == SAMPLEFORMAT_IEEEFP)
        layout.numbers = TiffNumbers::Float;
    else if (format == SAMPLEFORMAT_INT)
        layout.numbers = TiffNumbers::Signed;
    else if (format == SAMPLEFORMAT_COMPLEXINT || format == SAMPLEFORMAT_COMPLEXIEEEFP)
        refuse("TIFF files of complex numbers cannot be read.");
    const bool isFloat = layout.numbers == TiffNumbers::Float;
    const int bits = layout.bits;
    const bool known =
        isFloat ? bits == 16 || bits == 24 || bits == 32 || bits == 64 : bits >= 1 && bits <= 32;
    if (!known) refuse("TIFF files with " + std::to_string(bits) + "-bit samples cannot be read.");
    layout.blackAt = layout.numbers == TiffNumbers::Signed ? -std::ldexp(1.0, bits - 1) : 0;
    layout.whiteAt = isFloat ? 1 : layout.blackAt + std::ldexp(1.0, bits) - 1;
    double least = 0, most = 0;
    if (TIFFGetField(reader.get(), TIFFTAG_SMINSAMPLEVALUE, &least) &&
        TIFFGetField(reader.get(), TIFFTAG_SMAXSAMPLEVALUE, &most) && least < most &&
        layout.numbers != TiffNumbers::Unsigned) {
        layout.blackAt = least;
        layout.whiteAt = most;
    }
}

ImageType typeOf(const TiffLayout& layout) {
    const bool alpha = layout.alpha >= 0;
    if (layout.color == TiffColor::Gray) {
        if (layout.bits == 1 && layout.samples == 1) return ImageType::Bit1;
        return alpha ? ImageType::GrayAlpha16 : ImageType::Gray8;
    }
    if (layout.color == TiffColor::Palette && layout.manyColors.empty() && !alpha) {
        const bool bits = layout.bits == 1 && layout.samples == 1;
        return bits ? ImageType::Bit1 : ImageType::Indexed8;
    }
    return alpha ? ImageType::Rgba32 : ImageType::Rgb24;
}

void setChunks(TiffLayout& layout, TIFF* tiff) {
    layout.tiled = TIFFIsTiled(tiff) != 0;
    std::uint32_t width = static_cast<std::uint32_t>(layout.width), height = 0;
    if (layout.tiled) {
        TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &width);
        TIFFGetField(tiff, TIFFTAG_TILELENGTH, &height);
    } else {
        TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &height);
        height = std::min(height, static_cast<std::uint32_t>(layout.height));
    }
    const tmsize_t rowBytes = layout.tiled ? TIFFTileRowSize(tiff) : TIFFScanlineSize(tiff);
    const tmsize_t bytes = layout.tiled ? TIFFTileSize(tiff) : TIFFStripSize(tiff);
    // A tile may be larger than the picture, but not beyond reason.
    const double pageBytes = double(layout.width) * layout.height * layout.fileBits() / 8;
    const tmsize_t mostBytes = pageBytes < (16 << 20) ? tmsize_t{64} << 20 : tmsize_t{2} << 30;
    constexpr std::uint32_t mostSide = std::numeric_limits<int>::max();
    const bool sound = width > 0 && height > 0 && width <= mostSide && height <= mostSide &&
                       rowBytes > 0 && bytes > 0 && bytes <= mostBytes &&
                       bytes / rowBytes >= static_cast<tmsize_t>(height);
    // Tiles of a picture of bits begin at whole bytes.
    const bool aligned = layout.type != ImageType::Bit1 || !layout.tiled || width % 8 == 0;
    if (!sound || !aligned) refuse("The TIFF file's strips or tiles have an impossible size.");
    layout.chunkWidth = static_cast<int>(width);
    layout.chunkHeight = static_cast<int>(height);
    layout.chunkRowBytes = static_cast<std::size_t>(rowBytes);
    layout.chunkBytes = static_cast<std::size_t>(bytes);
}

void setSize(TiffLayout& layout, TIFF* tiff) {
    std::uint32_t width = 0, height = 0;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
    constexpr std::uint32_t most = std::numeric_limits<int>::max();
    if (width < 1 || height < 1 || width > most || height > most)
        refuse("The TIFF file names a picture of " + std::to_string(width) + " x " +
               std::to_string(height) + " pixels.");
    layout.width = static_cast<int>(width);
    layout.height = static_cast<int>(height);
}

// What most files without the field mean.
std::uint16_t photometricOf(const TiffReader& reader, const TiffLayout& layout) {
    std::uint16_t value = 0;
    if (TIFFGetField(reader.get(), TIFFTAG_PHOTOMETRIC, &value)) return value;
    if (layout.samples >= 3) return PHOTOMETRIC_RGB;
    const bool fax =
        layout.compression == COMPRESSION_CCITTRLE || layout.compression == COMPRESSION_CCITTRLEW ||
        layout.compression == COMPRESSION_CCITTFAX3 || layout.compression == COMPRESSION_CCITTFAX4;
    return fax ? PHOTOMETRIC_MINISWHITE : PHOTOMETRIC_MINISBLACK;
}

void requireCodec(std::uint16_t compression) {
    if (TIFFIsCODECConfigured(compression)) return;
    refuse("The TIFF file has a compression that cannot be read (" + std::to_string(compression) +
           ").");
}

} // namespace

void prepareTiffDecoder(const TiffReader& reader) {
    if (reader.word(TIFFTAG_COMPRESSION) == COMPRESSION_JPEG &&
        reader.word(TIFFTAG_PHOTOMETRIC) == PHOTOMETRIC_YCBCR)
        TIFFSetField(reader.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
}

TiffLayout readTiffLayout(const TiffReader& reader) {
    TIFF* tiff = reader.get();
    TiffLayout layout;
    setSize(layout, tiff);
    layout.compression = reader.word(TIFFTAG_COMPRESSION);
    requireCodec(layout.compression);
    prepareTiffDecoder(reader);
    layout.orientation = reader.word(TIFFTAG_ORIENTATION);
    layout.bits = reader.word(TIFFTAG_BITSPERSAMPLE);
    layout.samples = reader.word(TIFFTAG_SAMPLESPERPIXEL);
    layout.photometric = photometricOf(reader, layout);
    layout.planar =
        reader.word(TIFFTAG_PLANARCONFIG) == PLANARCONFIG_SEPARATE && layout.samples > 1;
    layout.bitsReversed = reader.word(TIFFTAG_FILLORDER) == FILLORDER_LSB2MSB;
    layout.color = colorOf(layout);
    // The planes of an old-style JPEG are the library's secret.
    if (layout.compression == COMPRESSION_OJPEG) layout.color = TiffColor::Library;
    layout.inverted =
        layout.photometric == PHOTOMETRIC_MINISWHITE ||
        (layout.photometric == PHOTOMETRIC_SEPARATED && layout.color == TiffColor::Gray);
    constexpr int mostSamples = 128;
    if (layout.samples > mostSamples)
        refuse("TIFF files with " + std::to_string(layout.samples) +
               " samples a pixel cannot be read.");
    if (layout.samples < colorSamples(layout.color) && layout.color != TiffColor::Library)
        refuse("The TIFF file has too few samples a pixel for its colours.");
    if (layout.color == TiffColor::Library) {
        layout.type = ImageType::Rgb24;
        return layout;
    }
    setNumbers(layout, reader);
    setAlpha(layout, tiff);
    setPalette(layout, tiff);
    layout.type = typeOf(layout);
    setChunks(layout, tiff);
    return layout;
}

} // namespace kvn::imaging
