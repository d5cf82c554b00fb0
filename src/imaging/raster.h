// One picture in memory: type, size, pixels and palette. Copying is cheap (the pixels are shared
// until one side writes); kernels work on the views.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>

#include "imaging/geometry.h"
#include "imaging/image_type.h"
#include "imaging/palette.h"
#include "imaging/pixel_buffer.h"

namespace kvn::imaging {

// Pixels to read. Valid as long as the raster it came from is neither changed nor gone.
struct ConstView {
    const std::uint8_t* data = nullptr;
    std::size_t stride = 0;
    int width = 0;
    int height = 0;
    ImageType type = ImageType::Rgb24;

    const std::uint8_t* row(int y) const {
        assert(y >= 0 && y < height);
        return data + stride * static_cast<std::size_t>(y);
    }
};

// Pixels to write.
struct View {
    std::uint8_t* data = nullptr;
    std::size_t stride = 0;
    int width = 0;
    int height = 0;
    ImageType type = ImageType::Rgb24;

    std::uint8_t* row(int y) const {
        assert(y >= 0 && y < height);
        return data + stride * static_cast<std::size_t>(y);
    }
    operator ConstView() const { return {data, stride, width, height, type}; }
};

class Raster {
  public:
    Raster() = default;
    // Black, and clear where the type has alpha (for palette types: index 0). The palette types
    // start with black and white (1-bit) or an empty palette. Throws RuntimeError: invalidCall
    // for a side below 1, outOfMemory.
    Raster(ImageType type, int width, int height);
    // The same without touching the memory, for callers that write every pixel.
    static Raster uninitialized(ImageType type, int width, int height);
    // Every pixel the colour, or the nearest one that the type has. Palette types get a palette
    // of that one colour (1-bit keeps black and white).
    static Raster filled(ImageType type, int width, int height, Rgba color);

    bool isEmpty() const { return pixels_.isNull(); }
    ImageType type() const { return type_; }
    int width() const { return width_; }
    int height() const { return height_; }
    Size size() const { return {width_, height_}; }
    Rect rect() const { return {0, 0, width_, height_}; }
    std::size_t rowBytes() const { return imaging::rowBytes(type_, width_); }
    // Bytes that the pixels take, padding included.
    std::size_t byteSize() const { return pixels_.byteSize(); }

    const Palette& palette() const { return palette_; }
    void setPalette(Palette palette) { palette_ = std::move(palette); }
    Palette& paletteForEdit() { return palette_; }

    ConstView view() const;
    // Detaches from other holders (copying if shared), then gives the pixels. The one way to
    // write, to be called once before the work is split over threads.
    View edit();

    // The colour of one pixel; outside the picture: clear black. Grey gives r = g = b.
    Rgba pixel(int x, int y) const;
    // The stored index of a palette picture, the grey of a grey one, else 0.
    std::uint8_t index(int x, int y) const;
    // Sets one pixel to the colour, or the nearest that the type has. Outside: nothing.
    void setPixel(int x, int y, Rgba color);

    // The part of the picture in `rect`, which is clipped to the picture; same type and palette.
    // Throws invalidCall if nothing is left.
    Raster cropped(const Rect& rect) const;

    // Same type, size, palette and pixels (padding is not looked at).
    bool samePixels(const Raster& other) const;
    bool sharesPixelsWith(const Raster& other) const { return pixels_.sharesWith(other.pixels_); }
    bool isShared() const { return pixels_.isShared(); }

  private:
    ImageType type_ = ImageType::Rgb24;
    int width_ = 0;
    int height_ = 0;
    PixelBuffer pixels_;
    Palette palette_;
};

} // namespace kvn::imaging
