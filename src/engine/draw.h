// The pen of one engine control, and drawing into its current image with it.
#pragma once

#include <memory>

#include "engine/image.h"

namespace kvn::imaging {
struct DrawOptions;
}

namespace kvn::engine {

namespace detail {
struct Call;
}

class Draw {
  public:
    explicit Draw(std::shared_ptr<detail::PageList> list) : list_(std::move(list)) {}

    void setAntialias(double amount);
    double Antialias() const;
    engine::Color Color() const;  // the pen's colour: writing to it changes the pen
    void setFillStyle(int style); // -1 none, 0..5 hatches, 6 solid
    int FillStyle() const;
    void setLineStyle(int style); // 0..4
    int LineStyle() const;
    void setTexture(const engine::Image& picture); // a null image takes it off
    void setTextureMode(int mode);                 // 0 action, 1 image, 2 tile
    int TextureMode() const;
    void setWidth(int pixels);
    int Width() const;
    void setMergeType(int type); // 0..8, at first 1, the most opaque
    int MergeType() const;

    // Draws a whole image over the current one at x, y, alpha over what is there. Pixels of
    // `transparent` are left out unless it is null. Opacity 0..1.
    void Image(const engine::Info& picture, int x, int y, const engine::Color* transparent,
               double opacity, bool flag, const QString& label);
    // Draws a whole image over the current one at x, y. Where the current one has alpha, MergeType
    // says how the picture's alpha meets it.
    void MergeImage(const engine::Info& picture, int x, int y, const QString& label);

  private:
    void compose(const detail::Call& call, const engine::Info& picture, int x, int y,
                 const imaging::DrawOptions& options);

    std::shared_ptr<detail::PageList> list_;
};

} // namespace kvn::engine
