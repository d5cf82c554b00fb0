#include "imaging/codecs/png_rows.h"

#include <cstring>

namespace kvn::imaging {

ImageType pngImageType(const PngOutline& outline) {
    const PngHeader& header = *outline.header;
    const bool hasAlpha = outline.transparency.has_value();
    switch (header.color) {
    case PngColor::Gray:
        if (hasAlpha) return ImageType::GrayAlpha16;
        return header.depth == 1 ? ImageType::Bit1 : ImageType::Gray8;
    case PngColor::Palette:
        if (hasAlpha) return ImageType::Indexed8Alpha;
        return header.depth == 1 ? ImageType::Bit1 : ImageType::Indexed8;
    case PngColor::Rgb:
        return hasAlpha ? ImageType::Rgba32 : ImageType::Rgb24;
    case PngColor::GrayAlpha:
        return ImageType::GrayAlpha16;
    default:
        return ImageType::Rgba32;
    }
}

PngRowConverter::PngRowConverter(const PngOutline& outline)
    : outline_(outline), header_(*outline.header), type_(pngImageType(outline)) {
    isDirect_ = header_.depth <= 8 && header_.bits() == bitsPerPixel(type_);
    const bool isKeyed = header_.color == PngColor::Gray || header_.color == PngColor::Rgb;
    const auto channels = static_cast<std::size_t>(header_.channels());
    if (!outline.transparency || !isKeyed || outline.transparency->size() < 2 * channels) return;
    key_.emplace();
    for (std::size_t i = 0; i < channels; ++i) {
        const int value = (*outline.transparency)[2 * i] << 8 | (*outline.transparency)[2 * i + 1];
        (*key_)[i] = value & ((1 << header_.depth) - 1);
    }
}

Palette PngRowConverter::palette() const {
    if (!hasPalette(type_)) return {};
    if (header_.color == PngColor::Gray) return Palette::blackAndWhite();
    std::vector<Rgba> colors;
    for (std::size_t i = 0; i + 3 <= outline_.palette.size(); i += 3)
        colors.push_back({outline_.palette[i], outline_.palette[i + 1], outline_.palette[i + 2]});
    if (outline_.transparency)
        for (std::size_t i = 0; i < std::min(colors.size(), outline_.transparency->size()); ++i)
            colors[i].a = (*outline_.transparency)[i];
    if (type_ == ImageType::Bit1) colors.resize(2);
    return Palette(std::move(colors));
}

void PngRowConverter::convert(const std::uint8_t* file, std::uint8_t* row) const {
    if (isDirect_) {
        std::memcpy(row, file, header_.rowBytes());
    } else if (header_.color == PngColor::Palette) {
        unpackIndexes(file, row);
    } else {
        convertSamples(file, row);
    }
}

int PngRowConverter::sample(const std::uint8_t* file, std::size_t index) const {
    if (header_.depth == 16) return file[2 * index] << 8 | file[2 * index + 1];
    if (header_.depth == 8) return file[index];
    const std::size_t bit = index * static_cast<std::size_t>(header_.depth);
    const int shift = 8 - header_.depth - static_cast<int>(bit & 7);
    return file[bit >> 3] >> shift & ((1 << header_.depth) - 1);
}

std::uint8_t PngRowConverter::scaled(int sample) const {
    // To the nearest of 255 steps; exact for every 16-bit number.
    if (header_.depth == 16) return static_cast<std::uint8_t>((sample * 255 + 32895) >> 16);
    return static_cast<std::uint8_t>(sample * (255 / ((1 << header_.depth) - 1)));
}

void PngRowConverter::unpackIndexes(const std::uint8_t* file, std::uint8_t* row) const {
    for (std::size_t x = 0; x < static_cast<std::size_t>(header_.width); ++x)
        row[x] = static_cast<std::uint8_t>(sample(file, x));
}

void PngRowConverter::convertSamples(const std::uint8_t* file, std::uint8_t* row) const {
    const auto width = static_cast<std::size_t>(header_.width);
    const auto channels = static_cast<std::size_t>(header_.channels());
    if (!hasAlpha(type_) || !key_) {
        // A tRNS chunk too short to name a colour still makes an alpha channel.
        const bool addsAlpha = hasAlpha(type_) && header_.channels() % 2 == 1;
        for (std::size_t x = 0, i = 0; x < width; ++x) {
            for (std::size_t k = 0; k < channels; ++k, ++i)
                *row++ = scaled(sample(file, i));
            if (addsAlpha) *row++ = 255;
        }
        return;
    }
    for (std::size_t x = 0, i = 0; x < width; ++x) {
        bool isKey = true;
        for (std::size_t k = 0; k < channels; ++k, ++i) {
            const int value = sample(file, i);
            isKey = isKey && value == (*key_)[k];
            *row++ = scaled(value);
        }
        *row++ = isKey ? 0 : 255;
    }
}

} // namespace kvn::imaging
