// Geometry.Resize.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "basic/error.h"
#include "imaging/operations/resample/doubled.h"
#include "imaging/operations/resample/reconstruction.h"
#include "imaging/operations/resample/resample.h"
#include "imaging/operations/resample/resize_rows.h"
#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/result_size.h"
#include "imaging/operations/support/weighted_rows.h"

namespace kvn::imaging {
namespace {

constexpr Argument resizeArguments[] = {
    {"width", ArgumentKind::Integer, 0, 65535, "px", "columns of the result; 0 keeps the aspect"},
    {"height", ArgumentKind::Integer, 0, 65535, "px", "rows of the result; 0 keeps the aspect"},
    {"method", ArgumentKind::Integer, 0, resizeMethodCount - 1, "", "row of the method list", false,
     true},
};

using Row = std::vector<float>;

Row rowFor(int samples) {
    return Row(static_cast<std::size_t>(samples) + rowSlack);
}

// One picture on its way to another size.
struct Resampler {
    ConstView in;
    View out;
    int channels;
    bool weighted; // colours must be multiplied by alpha
    AxisWeights columns, rows;

    void writeRow(const Row& from, int y) const {
        if (weighted)
            unmultiplyRow(from.data(), out.width, channels, out.row(y));
        else
            floatsToBytes(from.data(), out.width * channels, out.row(y));
    }

    void readRow(int y, Row& to) const {
        if (weighted)
            premultiplyRow(in.row(y), in.width, channels, to.data());
        else
            bytesToFloats(in.row(y), in.width * channels, to.data());
    }

    const float* rowWeights(int y) const {
        return &rows.weight[static_cast<std::size_t>(y) * static_cast<std::size_t>(rows.width)];
    }
};

// Calls `add` for the rows of a sum, four at a time; the last ones may have weight 0.
template <typename Add>
void forFourRows(const AxisWeights& rows, int y, int height, Add add) {
    const int first = rows.first[static_cast<std::size_t>(y)];
    const float* weights =
        &rows.weight[static_cast<std::size_t>(y) * static_cast<std::size_t>(rows.width)];
    for (int k = 0; k < rows.width; k += 4) {
        int at[4];
        float weight[4];
        for (int i = 0; i < 4; ++i) {
            const int tap = std::min(k + i, rows.width - 1);
            at[i] = std::min(first + tap, height - 1);
            weight[i] = k + i < rows.width ? weights[tap] : 0.0f;
        }
        add(at, weight);
    }
}

// Rows first: for pictures that lose rows. The sum runs over pieces of the rows that stay in the
// nearest cache.
void reduceRows(const Resampler& job, int y0, int y1) {
    constexpr int piece = 4096;
    const int samples = job.in.width * job.channels;
    Row sum = rowFor(samples), result = rowFor(job.out.width * job.channels);
    std::vector<Row> four(job.weighted ? 4 : 0, rowFor(samples));
    for (int y = y0; y < y1; ++y) {
        std::fill(sum.begin(), sum.end(), 0.0f);
        if (job.weighted) {
            forFourRows(job.rows, y, job.in.height, [&](const int* at, const float* weight) {
                for (std::size_t i = 0; i < 4; ++i)
                    job.readRow(at[i], four[i]);
                const float* const from[4] = {four[0].data(), four[1].data(), four[2].data(),
                                              four[3].data()};
                addRows(from, weight, samples, sum.data());
            });
        } else {
            for (int x = 0; x < samples; x += piece)
                forFourRows(job.rows, y, job.in.height, [&](const int* at, const float* weight) {
                    const std::uint8_t* const from[4] = {
                        job.in.row(at[0]) + x, job.in.row(at[1]) + x, job.in.row(at[2]) + x,
                        job.in.row(at[3]) + x};
                    addRows(from, weight, std::min(piece, samples - x),
                            &sum[static_cast<std::size_t>(x)]);
                });
        }
        filterRow(sum.data(), job.columns, job.channels, result.data());
        job.writeRow(result, y);
    }
}

// Result row y out of the rows in the ring; straight to bytes where nothing is to be divided.
void writeSum(const Resampler& job, const std::vector<Row>& ring, int y, Row& sum) {
    const int samples = job.out.width * job.channels;
    int left = job.rows.width;
    bool fresh = true;
    forFourRows(job.rows, y, job.in.height, [&](const int* at, const float* weight) {
        const float* from[4];
        for (int i = 0; i < 4; ++i)
            from[i] = ring[static_cast<std::size_t>(at[i]) % ring.size()].data();
        left -= 4;
        if (left <= 0 && !job.weighted)
            return addRowsToBytes(from, weight, samples, fresh ? nullptr : sum.data(),
                                  job.out.row(y));
        if (fresh) std::fill(sum.begin(), sum.end(), 0.0f);
        fresh = false;
        addRows(from, weight, samples, sum.data());
    });
    if (job.weighted) job.writeRow(sum, y);
}

// Columns first: for pictures that gain rows. The rows that a sum needs stay in a ring.
void enlargeRows(const Resampler& job, int y0, int y1) {
    const int samples = job.out.width * job.channels;
    const auto slots = static_cast<std::size_t>(job.rows.width);
    std::vector<Row> ring(slots, rowFor(samples));
    Row source = rowFor(job.in.width * job.channels), sum = rowFor(samples);
    int next = job.rows.first[static_cast<std::size_t>(y0)];
    for (int y = y0; y < y1; ++y) {
        const int end =
            std::min(job.rows.first[static_cast<std::size_t>(y)] + job.rows.width, job.in.height);
        for (; next < end; ++next) {
            job.readRow(next, source);
            filterRow(source.data(), job.columns, job.channels,
                      ring[static_cast<std::size_t>(next) % slots].data());
        }
        writeSum(job, ring, y, sum);
    }
}

AxisWeights axisFor(int method, int from, int to, int padding) {
    if (from == to)
        return axisWeights({.radius = 0.25, .kernel = [](double) { return 1.0; }}, from, to,
                           padding);
    return axisWeights(reconstructionFor(method, static_cast<double>(from) / to), from, to,
                       padding);
}

Raster filtered(const Raster& picture, Size size, int method, Task& task) {
    const Raster source = promoted(picture, task);
    if (size == Size{2 * source.width(), 2 * source.height()} && isOpaque(source))
        if (const Reconstruction kernel = reconstructionFor(method, 0.5); canDouble(kernel))
            return doubledPicture(source, kernel, task);
    Raster result = Raster::uninitialized(source.type(), size.width, size.height);
    const int channels = bytesPerPixel(source.type());
    const Resampler job{source.view(),
                        result.edit(),
                        channels,
                        !isOpaque(source),
                        axisFor(method, source.width(), size.width, tapPadding(channels)),
                        axisFor(method, source.height(), size.height, 1)};
    if (size.height < source.height())
        parallelRows(
            size.height, task, [&](int y0, int y1) { reduceRows(job, y0, y1); }, 1);
    else
        parallelRows(
            size.height, task, [&](int y0, int y1) { enlargeRows(job, y0, y1); }, 64);
    return result;
}

// The source column or row under the centre of each of the result's.
std::vector<int> nearestIndices(int from, int to) {
    std::vector<int> indices(static_cast<std::size_t>(to));
    for (int i = 0; i < to; ++i)
        indices[static_cast<std::size_t>(i)] =
            static_cast<int>((std::int64_t{2} * i + 1) * from / (std::int64_t{2} * to));
    return indices;
}

template <int Step>
void pickColumns(const std::uint8_t* from, const std::vector<int>& columns, std::uint8_t* to) {
    for (const int x : columns) {
        std::memcpy(to, from + static_cast<std::ptrdiff_t>(x) * Step, Step);
        to += Step;
    }
}

void pickBits(const std::uint8_t* from, const std::vector<int>& columns, std::uint8_t* to) {
    std::uint8_t bits = 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const auto x = static_cast<std::size_t>(columns[i]);
        bits = static_cast<std::uint8_t>(bits << 1 | (from[x / 8] >> (7 - x % 8) & 1));
        if (i % 8 == 7) *to++ = bits;
    }
    const std::size_t rest = columns.size() % 8;
    if (rest) *to = static_cast<std::uint8_t>(bits << (8 - rest));
}

Raster picked(const Raster& source, Size size, Task& task) {
    constexpr decltype(&pickBits) pickers[] = {pickBits, pickColumns<1>, pickColumns<2>,
                                               pickColumns<3>, pickColumns<4>};
    const auto pick = pickers[bytesPerPixel(source.type())];
    Raster result = Raster::uninitialized(source.type(), size.width, size.height);
    result.setPalette(source.palette());
    const auto columns = nearestIndices(source.width(), size.width);
    const auto rows = nearestIndices(source.height(), size.height);
    const ConstView in = source.view();
    const View out = result.edit();
    parallelRows(size.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            pick(in.row(rows[static_cast<std::size_t>(y)]), columns, out.row(y));
    });
    return result;
}

// A length in proportion, at least one pixel.
double inProportion(int given, int other, int own) {
    return std::max(1.0, std::round(static_cast<double>(given) * other / own));
}

Size sizeFor(const Raster& source, int width, int height) {
    if (width < 0 || height < 0 || (width == 0 && height == 0))
        throw RuntimeError(errors::invalidCall, "The new size must be positive", "Geometry.Resize");
    double w = width, h = height;
    if (height == 0) h = inProportion(width, source.height(), source.width());
    if (width == 0) w = inProportion(height, source.width(), source.height());
    return checkedResultSize(w, h, "Geometry.Resize");
}

Raster resize(const Raster& source, const Arguments& arguments, Task& task) {
    const Size size = sizeFor(source, arguments.integer(0), arguments.integer(1));
    const int method = arguments.integer(2);
    if (size == source.size()) return source;
    if (reconstructionFor(method, 1).kind == Resampling::Pick) return picked(source, size, task);
    return filtered(source, size, method, task);
}

} // namespace

const Operation resizeOperation = {
    .name = "Geometry.Resize",
    .undoName = "Resize",
    .arguments = resizeArguments,
    .run = resize,
    .border = -1,
    .alpha = AlphaRule::Weighted,
    .types = TypeRule::Fixed,
    .note = "Computes the picture in another size; Simple keeps the type, the other methods make "
            "1-bit and palette pictures 24-bit or 32-bit.",
};

} // namespace kvn::imaging
