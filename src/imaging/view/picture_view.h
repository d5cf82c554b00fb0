// A picture as the screen shows it: scaled, laid over its backdrop, the back colour around it.
// Only the part asked for is ever scaled. It knows device pixels and nothing of windows.
#pragma once

#include <cstdint>
#include <vector>

#include "imaging/view/reduced_copies.h"

namespace kvn::imaging {

// What is to be shown. The picture's corner lies at (-originX, -originY) of the canvas.
struct CanvasScene {
    double zoom = 1; // device pixels an image pixel
    int originX = 0; // place of the scaled picture at the canvas's left
    int originY = 0;
    // Below 100 percent: exact mean of the pixels covered (of the next larger reduced copy, below
    // 50 percent). Otherwise, and always above, the one nearest pixel.
    bool smooth = true;
    Rgba back{255, 255, 255, 255};
};

// 32-bit pixels, opaque, 0xFFRRGGBB.
struct ScreenView {
    std::uint32_t* data = nullptr;
    std::size_t stride = 0; // in pixels
    int width = 0;
    int height = 0;
    std::uint32_t* row(int y) const { return data + stride * static_cast<std::size_t>(y); }
};

class PictureView {
  public:
    // Shares the pixels. Reduced copies of a picture of the same size and type stay but for
    // `changed`. Gives the part that may look different: the whole where size, type or palette do.
    Rect setPicture(const Raster& picture, const Rect& changed);
    // Gives the share up; render() is not to be called until setPicture was.
    void releasePicture() { picture_ = {}; }
    void dropCopies() { copies_.drop(); }
    const Raster& picture() const { return picture_; }

    // A tile behind transparent parts, its own transparent parts over `back`; empty for none.
    // Laid from the picture's corner, so that it moves with the picture.
    void setBackdrop(const Raster& tile) { backdrop_ = tile; }

    // Writes the part `area` of the canvas to the same place of `out`, on all cores. Throws
    // RuntimeError(outOfMemory).
    void render(const CanvasScene& scene, const Rect& area, const ScreenView& out);

    std::size_t copyBytes() const { return copies_.bytes(); }

  private:
    Raster picture_, backdrop_;
    SampleReader reader_;
    ReducedCopies copies_;
    Size size_;
    ImageType type_ = ImageType::Rgb24;
    Palette palette_;
};

} // namespace kvn::imaging
