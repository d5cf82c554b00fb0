#include "imaging/convert_bilevel.h"

#include <algorithm>
#include <tuple>
#include <utility>
#include <vector>

#include "imaging/convert_rows.h"
#include "imaging/quantize_colors.h"

namespace kvn::imaging {

namespace {

// The two colours exactly, darker first.
Raster keepColors(const Raster& source, const ColorSet& colors, Task& task) {
    Rgba dark = unpacked(colors.colors()[0]), light = unpacked(colors.colors()[1]);
    const auto order = [](Rgba c) { return std::tuple(luma(c.r, c.g, c.b), c.r, c.g, c.b); };
    if (order(light) < order(dark)) std::swap(dark, light);

    Raster result = Raster::uninitialized(ImageType::Bit1, source.width(), source.height());
    result.setPalette(Palette({dark, light}));
    const View to = result.edit();
    const RowReader reader(source, ImageType::Rgba32);
    const std::uint32_t bright = packed(light) & 0xFFFFFF;
    parallelRows(to.height, task, [&](int y0, int y1) {
        std::vector<std::uint8_t> row(static_cast<std::size_t>(to.width) * 4);
        std::vector<std::uint8_t> bits(static_cast<std::size_t>(to.width));
        for (int y = y0; y < y1; ++y) {
            reader.read(y, row.data());
            const std::uint8_t* p = row.data();
            for (std::uint8_t& bit : bits) {
                bit = (packed({p[0], p[1], p[2], 0}) == bright);
                p += 4;
            }
            packBits(bits.data(), to.row(y), to.width);
        }
    });
    return result;
}

// Floyd and Steinberg's error diffusion to black and white, the direction changing with every
// row. Errors are whole numbers in sixteenths of a grey level, so none is lost but to rounding.
class BilevelDiffusion {
  public:
    explicit BilevelDiffusion(int width)
        : width_(width), below_(static_cast<std::size_t>(width) + 2) {}

    // Turns grey bytes into 0 and 1 in place.
    void row(std::uint8_t* gray) {
        if (leftwards_)
            walk<-1>(gray + width_ - 1, below_.data() + width_);
        else
            walk<1>(gray, below_.data() + 1);
        leftwards_ = !leftwards_;
    }

  private:
    // `below` holds what the row above left for each pixel of this one, and takes what this one
    // leaves for the next: a place is read one step before it is written.
    template <int step>
    void walk(std::uint8_t* gray, int* below) {
        int ahead = 0;    // for the next pixel of this row
        int behind = 0;   // for the pixel below the last one, still lacking this one's share
        int diagonal = 0; // for the pixel below this one, from the last one
        for (int i = 0; i < width_; ++i, gray += step, below += step) {
            const int wanted = *gray * 16 + ahead + *below;
            const int white = wanted >= 128 * 16;
            const int error = wanted - (white ? 255 * 16 : 0);
            *gray = static_cast<std::uint8_t>(white);
            ahead = (error * 7) >> 4;
            const int backward = (error * 3) >> 4, down = (error * 5) >> 4;
            below[-step] = behind + backward;
            behind = diagonal + down;
            diagonal = error - ahead - backward - down;
        }
        below[-step] = behind;
    }

    int width_;
    std::vector<int> below_; // with a margin of one at each end
    bool leftwards_ = false;
};

Raster dither(const Raster& source, Task& task) {
    Raster result = Raster::uninitialized(ImageType::Bit1, source.width(), source.height());
    const View to = result.edit();
    const RowReader reader(source, ImageType::Gray8);
    BilevelDiffusion diffusion(to.width);
    std::vector<std::uint8_t> row(static_cast<std::size_t>(to.width));
    for (int y = 0; y < to.height; ++y) {
        if (y % 64 == 0) task.report(static_cast<double>(y) / to.height);
        reader.read(y, row.data());
        diffusion.row(row.data());
        packBits(row.data(), to.row(y), to.width);
    }
    task.report(1);
    return result;
}

} // namespace

Raster toBilevel(const Raster& source, Task& task) {
    const auto colors = [&] {
        const Task::Stage stage(task, 0, 0.2);
        return collectColors(source, false, 2, task);
    }();
    const Task::Stage stage(task, 0.2, 1);
    if (colors && colors->colors().size() == 2) return keepColors(source, *colors, task);
    return dither(source, task);
}

} // namespace kvn::imaging
