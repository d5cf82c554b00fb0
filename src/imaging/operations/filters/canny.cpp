#include "imaging/operations/filters/canny.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <vector>

#include "imaging/convert.h"
#include "imaging/convert_rows.h"
#include "imaging/operations/filters/convolve_kernels.h"
#include "imaging/operations/filters/gauss.h"
#include "imaging/operations/filters/gauss_kernels.h"
#include "imaging/operations/filters/window_rows.h"
#include "imaging/operations/support/hidden_colors.h"
#include "imaging/operations/support/simd.h"

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

// A ridge is where the gradient is the greatest across the edge: along the row, the column or a
// diagonal, whichever is nearest to its direction (tan 22.5 degrees is 0.4142). Of two equal ones
// the second is taken. Without branches, for the directions of noise cannot be foretold.
KVN_CLONES void markRow(const std::int32_t* above, const std::int32_t* own,
                        const std::int32_t* below, const std::int16_t* across,
                        const std::int16_t* down, Thresholds thresholds,
                        std::uint8_t* __restrict marks, int width) {
    for (int x = 0; x < width; ++x) {
        const std::int32_t aboveLeft = above[x - 1], aboveOwn = above[x], aboveRight = above[x + 1];
        const std::int32_t left = own[x - 1], square = own[x], right = own[x + 1];
        const std::int32_t belowLeft = below[x - 1], belowOwn = below[x], belowRight = below[x + 1];
        const std::int32_t dx = across[x], dy = down[x];
        const std::int32_t ax = dx < 0 ? -dx : dx, ay = dy < 0 ? -dy : dy;
        const bool flat = ay * 32768 < ax * 13573, steep = ax * 32768 < ay * 13573; // in 2^-15
        const bool opposed = (dx ^ dy) < 0;
        const std::int32_t slantedBefore = opposed ? aboveRight : aboveLeft;
        const std::int32_t slantedAfter = opposed ? belowLeft : belowRight;
        const std::int32_t straightBefore = flat ? left : aboveOwn;
        const std::int32_t straightAfter = flat ? right : belowOwn;
        const bool straight = flat | steep;
        const std::int32_t before = straight ? straightBefore : slantedBefore;
        const std::int32_t after = straight ? straightAfter : slantedAfter;
        const bool ridge = (square > before) & (square >= after) & (square > thresholds.low);
        const std::int32_t mark = square > thresholds.high ? Strong : Weak;
        marks[x] = static_cast<std::uint8_t>(ridge ? mark : None);
    }
}

void markRow(const Gradients& gradients, int y, const Thresholds& thresholds, std::uint8_t* marks,
             int width) {
    const GradientRow& own = gradients.row(y);
    markRow(gradients.row(y - 1).square(), own.square(), gradients.row(y + 1).square(),
            own.across.data(), own.down.data(), thresholds, marks, width);
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

// Makes edges of the strong marks and of all weak ones that are connected to them, within its rows.
class Tracer {
  public:
    explicit Tracer(const View& marks) : marks_(marks) {}

    void trace() {
        for (int y = 0; y < marks_.height; ++y) {
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
    // Goes on with the edges of two rows, y - 1 and y, that were traced apart.
    void join(int y) {
        for (int x = 0; x < marks_.width; ++x)
            for (const int side : {y - 1, y})
                if (marks_.row(side)[x] == Edge) follow({x, side});
    }

  private:
    void follow(Point start) {
        take(start);
        while (!open_.empty()) {
            const Point p = open_.back();
            open_.pop_back();
            const int left = std::max(0, p.x - 1), right = std::min(marks_.width - 1, p.x + 1);
            for (int y = std::max(0, p.y - 1); y <= std::min(marks_.height - 1, p.y + 1); ++y) {
                const std::uint8_t* row = marks_.row(y);
                for (int x = left; x <= right; ++x)
                    if (row[x] == Weak || row[x] == Strong) take({x, y});
            }
        }
    }
    void take(Point p) {
        marks_.row(p.y)[p.x] = Edge;
        open_.push_back(p);
    }

    View marks_;
    std::vector<Point> open_;
};

// Each band by itself, then from band to band; what is connected does not depend on the order.
void traceEdges(const View& marks, Task& task) {
    std::mutex guard;
    std::vector<int> seams;
    parallelRows(
        marks.height, task,
        [&](int y0, int y1) {
            Tracer({marks.row(y0), marks.stride, marks.width, y1 - y0, marks.type}).trace();
            const std::lock_guard lock(guard);
            if (y0 > 0) seams.push_back(y0);
        },
        128);
    Tracer whole(marks);
    for (const int y : seams)
        whole.join(y);
}

KVN_CLONES void brightenEdges(const std::uint8_t* __restrict marks, std::uint8_t level,
                              std::uint8_t* __restrict out, int width) {
    for (int x = 0; x < width; ++x)
        out[x] = marks[x] == Edge ? level : 0;
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
        traceEdges(marked, task);
    }
    const Task::Stage stage(task, 0.9, 1);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    parallelRows(from.height, task, [&](int y0, int y1) {
        std::vector<std::uint8_t> gray(static_cast<std::size_t>(from.width));
        for (int y = y0; y < y1; ++y) {
            brightenEdges(marked.row(y), level, gray.data(), from.width);
            convertRow(ImageType::Gray8, from.type, gray.data(), to.row(y), from.width);
            if (hasAlpha(from.type))
                copyAlpha(from.row(y), to.row(y), from.width, bytesPerPixel(from.type));
        }
    });
    return result;
}

} // namespace

const Operation cannyEdgeOperation = {
    .name = "Effects.CannyEdge",
    .undoName = "Canny Edge Detection",
    .arguments = cannyEdgeArguments,
    .run = overVisibleColors<cannyEdge>,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .note = "Thin, connected outlines on black.",
};

} // namespace kvn::imaging
