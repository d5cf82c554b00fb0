// Where the colour of a drawn pixel comes from: one colour, a tile, a picture, a slope.
#pragma once

#include <optional>
#include <vector>

#include "imaging/draw/affine.h"
#include "imaging/raster.h"

namespace kvn::imaging::draw {

class Paint {
  public:
    virtual ~Paint() = default;
    // Straight alpha; `count` pixels from (x, y) to the right.
    virtual void fetch(int x, int y, int count, Rgba* out) const = 0;
    // Set if all pixels have the same colour.
    virtual std::optional<Rgba> solid() const { return {}; }
};

class SolidPaint final : public Paint {
  public:
    explicit SolidPaint(Rgba color) : color_(color) {}
    void fetch(int x, int y, int count, Rgba* out) const override;
    std::optional<Rgba> solid() const override { return color_; }

  private:
    Rgba color_;
};

// A picture repeated in both directions, pixel by pixel, its corner at `origin`.
class TilePaint final : public Paint {
  public:
    TilePaint(const Raster& tile, Point origin);
    void fetch(int x, int y, int count, Rgba* out) const override;

  private:
    int width_, height_;
    Point origin_;
    std::vector<Rgba> pixels_;
};

enum class Sampling {
    Nearest,
    Smooth, // bilinear
};

// A picture of type Rgb24 or Rgba32 under the map `toImage` from drawing to picture pixels; past
// its sides the outermost pixels go on.
class ImagePaint final : public Paint {
  public:
    ImagePaint(Raster image, const Affine& toImage, Sampling sampling);
    void fetch(int x, int y, int count, Rgba* out) const override;

  private:
    Rgba at(int x, int y) const;
    Rgba smooth(double x, double y) const;

    Raster image_;
    ConstView view_;
    Affine toImage_;
    Sampling sampling_;
};

// The colours at three corners, and what lies between and beyond them on the same plane.
class GradientPaint final : public Paint {
  public:
    GradientPaint(const PointD corners[3], const Rgba colors[3]);
    void fetch(int x, int y, int count, Rgba* out) const override;

  private:
    double start_[4] = {}, perX_[4] = {}, perY_[4] = {}; // red, green, blue, alpha
};

} // namespace kvn::imaging::draw
