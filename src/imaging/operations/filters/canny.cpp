#include "imaging/operations/filters/canny.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "imaging/convert.h"
#include "imaging/operations/filters/convolve_kernels.h"
#include "imaging/operations/filters/gauss.h"
#include "imaging/operations/filters/gauss_kernels.h"
#include "imaging/operations/filters/padded_rows.h"
#include "imaging/operations/support/color_maps.h"

namespace kvn::imaging {
namespace {

constexpr double sigma = 1;
enum Mark : std::uint8_t { None = 0, Weak = 1, Strong = 2, Edge = 255 };

struct Thresholds {
    std::int32_t low, high; // squares of the gradient
};

Thresholds thresholdsOf(int a, int b) {
    const auto square = [](int percent) {
        const double length = std::clamp(percent, 0, 100) * 2.55;
        return static_cast<std::int32_t>(length * length);
    };
    return {square(std::min(a, b)), square(std::max(a, b))};
}

Raster blurredGray(const Raster& source, Task& task) {
    const Raster gray = convertType(source, ImageType::Gray8, task);
    Raster result = Raster::uninitialized(ImageType::Gray8, gray.width(), gray.height());
    const View to = result.edit();
    gaussRows(gray.view(), sigma, false, task, [&](int y, const float* row) {
        roundLevels(row, to.row(y), static_cast<std::size_t>(to.width));
    });
    return result;
}

// The gradient of one row; its squares have a zero on both sides.
struct GradientRow {
    std::vector<std::int16_t> across, down;
    std::vector<std::int32_t> squares;

    explicit GradientRow(int width)
        : across(static_cast<std::size_t>(width)), down(across.size()), squares(across.size() + 2) {
    }
    const std::int32_t* square() const { return squares.data() + 1; }
};

// The gradients of a row and its two neighbours; beyond the picture there is none.
class Gradients {
  public:
    explicit Gradients(const ConstView& gray)
        : gray_(gray), around_(gray, 1, 1, 1), rows_(3, GradientRow(gray.width)),
          none_(gray.width) {}

    void start(int y) {
        make(y - 1);
        make(y);
    }
    void moveTo(int y) { make(y + 1); }
    const GradientRow& row(int y) const {
        return y < 0 || y >= gray_.height ? none_ : rows_[static_cast<std::size_t>(y % 3)];
    }

  private:
    void make(int y) {
        if (y < 0 || y >= gray_.height) return;
        GradientRow& row = rows_[static_cast<std::size_t>(y % 3)];
        sobelParts(around_.around(y), row.across.data(), row.down.data(), row.squares.data() + 1,
                   row.across.size());
    }

    ConstView gray_;
    PaddedRows around_;
    std::vector<GradientRow> rows_;
    GradientRow none_;
};

// Whether the gradient at x is the greatest across the edge: along the row, the column or a
// diagonal, whichever is nearest to its direction (tan 22.5 degrees is 0.4142). Of two equal ones
// the second is taken.
bool isRidge(const GradientRow& above, const GradientRow& own, const GradientRow& below, int x) {
    const int dx = own.across[static_cast<std::size_t>(x)];
    const int dy = own.down[static_cast<std::size_t>(x)];
    const int ax = std::abs(dx) * 13573, ay = std::abs(dy) * 32768; // 0.4142 in 2^-15
    const std::int32_t square = own.square()[x];
    if (ay < ax) return square > own.square()[x - 1] && square >= own.square()[x + 1];
    if (std::abs(dx) * 32768 < std::abs(dy) * 13573)
        return square > above.square()[x] && square >= below.square()[x];
    const int side = (dx ^ dy) < 0 ? 1 : -1;
    return square > above.square()[x + side] && square >= below.square()[x - side];
}

void markRow(const Gradients& gradients, int y, const Thresholds& thresholds, std::uint8_t* marks,
             int width) {
    const GradientRow& above = gradients.row(y - 1);
    const GradientRow& own = gradients.row(y);
    const GradientRow& below = gradients.row(y + 1);
    std::memset(marks, None, static_cast<std::size_t>(width));
    const std::int32_t* square = own.square();
    for (int x = 0; x < width; ++x) {
        if (square[x] <= thresholds.low || !isRidge(above, own, below, x)) continue;
        marks[x] = square[x] > thresholds.high ? Strong : Weak;
    }
}

void markRidges(const ConstView& gray, const Thresholds& thresholds, const View& marks,
                Task& task) {
    parallelRows(gray.height, task, [&](int y0, int y1) {
        Gradients gradients(gray);
        gradients.start(y0);
        for (int y = y0; y < y1; ++y) {
            gradients.moveTo(y);
            markRow(gradients, y, thresholds, marks.row(y), gray.width);
        }
    });
}

// Makes edges of the strong marks and of all weak ones that are connected to them.
class Tracer {
  public:
    explicit Tracer(const View& marks) : marks_(marks) {}

    void trace(Task& task) {
        for (int y = 0; y < marks_.height; ++y) {
            if (y % 64 == 0) task.report(static_cast<double>(y) / marks_.height);
            const std::uint8_t* row = marks_.row(y);
            const std::uint8_t* const end = row + marks_.width;
            const auto next = [end](const std::uint8_t* from) {
                return static_cast<const std::uint8_t*>(
                    std::memchr(from, Strong, static_cast<std::size_t>(end - from)));
            };
            for (const std::uint8_t* at = next(row); at; at = next(at))
                follow({static_cast<int>(at - row), y});
        }
    }

  private:
    void follow(Point start) {
        take(start);
        while (!open_.empty()) {
            const Point p = open_.back();
            open_.pop_back();
            for (int y = std::max(0, p.y - 1); y <= std::min(marks_.height - 1, p.y + 1); ++y)
                for (int x = std::max(0, p.x - 1); x <= std::min(marks_.width - 1, p.x + 1); ++x)
                    if (marks_.row(y)[x] == Weak || marks_.row(y)[x] == Strong) take({x, y});
        }
    }
    void take(Point p) {
        marks_.row(p.y)[p.x] = Edge;
        open_.push_back(p);
    }

    View marks_;
    std::vector<Point> open_;
};

void paintRow(const std::uint8_t* marks, std::uint8_t level, const std::uint8_t* pixels,
              std::uint8_t* out, int width, ImageType type) {
    const int channels = bytesPerPixel(type), colors = channels - (hasAlpha(type) ? 1 : 0);
    for (int x = 0; x < width; ++x, pixels += channels, out += channels) {
        const std::uint8_t value = marks[x] == Edge ? level : 0;
        for (int c = 0; c < channels; ++c)
            out[c] = c < colors ? value : pixels[c];
    }
}

constexpr Argument cannyEdgeArguments[] = {
    {"intensity", ArgumentKind::Integer, 0, 100, "%", "brightness of the edges; clamped"},
    {"low", ArgumentKind::Integer, 0, 100, "%", "gradient that goes on with an edge; clamped"},
    {"high", ArgumentKind::Integer, 0, 100, "%", "gradient that begins an edge; clamped"},
};

Raster cannyEdge(const Raster& picture, const Arguments& arguments, Task& task) {
    const auto level =
        static_cast<std::uint8_t>((std::clamp(arguments.integer(0), 0, 100) * 255 + 50) / 100);
    const Thresholds thresholds = thresholdsOf(arguments.integer(1), arguments.integer(2));
    const Raster source = promoted(picture, task);
    Raster marks = Raster::uninitialized(ImageType::Gray8, source.width(), source.height());
    const View marked = marks.edit();
    {
        const Task::Stage stage(task, 0, 0.5);
        const Raster gray = blurredGray(source, task);
        markRidges(gray.view(), thresholds, marked, task);
    }
    {
        const Task::Stage stage(task, 0.5, 0.9);
        Tracer(marked).trace(task);
    }
    const Task::Stage stage(task, 0.9, 1);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    parallelRows(from.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            paintRow(marked.row(y), level, from.row(y), to.row(y), from.width, from.type);
    });
    return result;
}

} // namespace

const Operation cannyEdgeOperation = {
    .name = "Effects.CannyEdge",
    .undoName = "Canny Edge Detection",
    .arguments = cannyEdgeArguments,
    .run = cannyEdge,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .note = "Thin, connected outlines on black.",
};

} // namespace kvn::imaging
