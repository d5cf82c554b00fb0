// The seven forms a picture can have, 8 bits a channel.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kvn::imaging {

// The numbers are the rows of the image type list and go through every layer unchanged.
enum class ImageType : int {
    Bit1 = 0,          // one bit a pixel, most significant bit first; palette of two colours
    Indexed8 = 1,      // one palette index a pixel; opaque palette of 1 to 256 colours
    Indexed8Alpha = 2, // one palette index a pixel; every palette colour has its own alpha
    Gray8 = 3,         // one grey byte, 0 black
    GrayAlpha16 = 4,   // grey byte, alpha byte (straight)
    Rgb24 = 5,         // red, green, blue
    Rgba32 = 6,        // red, green, blue, alpha (straight)
};
inline constexpr int imageTypeCount = 7;

constexpr int bitsPerPixel(ImageType type) {
    constexpr int bits[imageTypeCount] = {1, 8, 8, 8, 16, 24, 32};
    return bits[static_cast<int>(type)];
}
// Whole bytes a pixel; 0 for the packed 1-bit form.
constexpr int bytesPerPixel(ImageType type) {
    return bitsPerPixel(type) / 8;
}
constexpr bool hasPalette(ImageType type) {
    return type <= ImageType::Indexed8Alpha;
}
constexpr bool hasAlpha(ImageType type) {
    return type == ImageType::Indexed8Alpha || type == ImageType::GrayAlpha16 ||
           type == ImageType::Rgba32;
}
constexpr bool isImageType(int number) {
    return number >= 0 && number < imageTypeCount;
}

// Payload bytes of one row, without the padding of the storage.
constexpr std::size_t rowBytes(ImageType type, int width) {
    return (static_cast<std::size_t>(width) * static_cast<std::size_t>(bitsPerPixel(type)) + 7) / 8;
}

} // namespace kvn::imaging
