#include "bench/peers/packed.h"
#include "bench/peers/peers.h"

#include <cstdlib>
#include <initializer_list>
#include <memory>
#include <utility>
#include <vips/vips.h>

namespace kvn::bench {
namespace {

// A pipeline is built for every run and ends in memory; nothing is remembered between runs.
using Build = std::function<int(VipsImage* in, VipsImage** out)>;

struct Row {
    const char* name;
    Build build;
    bool half = false;
};

// Several steps, each taking what the one before gave.
Build chain(std::initializer_list<Build> list) {
    return [steps = std::vector<Build>(list)](VipsImage* in, VipsImage** out) {
        g_object_ref(in);
        for (const Build& step : steps) {
            VipsImage* next = nullptr;
            const int failed = step(in, &next);
            g_object_unref(in);
            if (failed) return failed;
            in = next;
        }
        *out = in;
        return 0;
    };
}

int toBytes(VipsImage* in, VipsImage** out) {
    return vips_cast(in, out, VIPS_FORMAT_UCHAR, nullptr);
}

Build linear(double factor, double summand) {
    return [=](VipsImage* in, VipsImage** out) {
        return vips_linear1(in, out, factor, summand, "uchar", TRUE, nullptr);
    };
}

Build resized(double factor, VipsKernel kernel) {
    return [=](VipsImage* in, VipsImage** out) {
        return vips_resize(in, out, factor, "kernel", kernel, "gap", 0.0, nullptr);
    };
}

Build gauss(double sigma) {
    return [=](VipsImage* in, VipsImage** out) { return vips_gaussblur(in, out, sigma, nullptr); };
}

Build rank(int size, int index) {
    return [=](VipsImage* in, VipsImage** out) {
        return vips_rank(in, out, size, size, index, nullptr);
    };
}

Build convolved(int width, int height, std::vector<double> values, double scale) {
    return [=](VipsImage* in, VipsImage** out) {
        VipsImage* mask = vips_image_new_matrix_from_array(width, height, values.data(),
                                                           static_cast<int>(values.size()));
        vips_image_set_double(mask, "scale", scale);
        const int failed = vips_conv(in, out, mask, "precision", VIPS_PRECISION_INTEGER, nullptr);
        g_object_unref(mask);
        return failed;
    };
}

Build affine(double a, double b, double c, double d) {
    return [=](VipsImage* in, VipsImage** out) {
        VipsInterpolate* cubic = vips_interpolate_new("bicubic");
        const int failed = vips_affine(in, out, a, b, c, d, "interpolate", cubic, nullptr);
        g_object_unref(cubic);
        return failed;
    };
}

// Adds to the hue in LCh, the space this library turns hues in.
int shiftHue(VipsImage* in, VipsImage** out) {
    double factors[] = {1, 1.1, 1}, summands[] = {4, 0, 28};
    return vips_linear(in, out, factors, summands, 3, nullptr);
}

int noisy(VipsImage* in, VipsImage** out) {
    VipsImage* noise = nullptr;
    VipsImage* sum = nullptr;
    int failed = vips_gaussnoise(&noise, in->Xsize, in->Ysize, "sigma", 10.0, "mean", 0.0, nullptr);
    if (!failed) failed = vips_add(in, noise, &sum, nullptr);
    if (!failed) failed = toBytes(sum, out);
    if (sum) g_object_unref(sum);
    if (noise) g_object_unref(noise);
    return failed;
}

Build space(VipsInterpretation wanted) {
    return
        [=](VipsImage* in, VipsImage** out) { return vips_colourspace(in, out, wanted, nullptr); };
}

int saturated(VipsImage* in, VipsImage** out) {
    double mix[9];
    const double luma[] = {0.299, 0.587, 0.114};
    for (int i = 0; i < 9; ++i)
        mix[i] = (i % 4 == 0 ? 1.5 : 0.0) - 0.5 * luma[i % 3];
    VipsImage* table = vips_image_new_matrix_from_array(3, 3, mix, 9);
    const int failed = vips_recomb(in, out, table, nullptr);
    g_object_unref(table);
    return failed;
}

std::vector<Row> pointRows() {
    return {
        {"copy", [](VipsImage* in, VipsImage** out) { return vips_copy(in, out, nullptr); }},
        {"invert", [](VipsImage* in, VipsImage** out) { return vips_invert(in, out, nullptr); }},
        {"gamma",
         [](VipsImage* in, VipsImage** out) {
             return vips_gamma(in, out, "exponent", 1 / 1.5, nullptr);
         }},
        {"brightness and contrast", linear(1.25, 19.125)},
        {"intensity", linear(1.25, 0)},
        {"threshold", chain({space(VIPS_INTERPRETATION_B_W),
                             [](VipsImage* in, VipsImage** out) {
                                 return vips_moreeq_const1(in, out, 30, nullptr);
                             }})},
        {"saturation", chain({saturated, toBytes})},
        {"grey", space(VIPS_INTERPRETATION_B_W)},
        {"add alpha", [](VipsImage* in,
                         VipsImage** out) { return vips_bandjoin_const1(in, out, 200, nullptr); }},
        {"hue, saturation, lightness",
         chain({space(VIPS_INTERPRETATION_LCH), shiftHue, space(VIPS_INTERPRETATION_sRGB)})},
        {"histogram equalize",
         [](VipsImage* in, VipsImage** out) { return vips_hist_equal(in, out, nullptr); }},
        {"mosaic 10 x 10",
         chain(
             {[](VipsImage* in, VipsImage** out) { return vips_shrink(in, out, 10, 10, nullptr); },
              [](VipsImage* in, VipsImage** out) { return vips_zoom(in, out, 10, 10, nullptr); }})},
        {"Gaussian noise", noisy},
        {"gradient noise 2000 x 2000",
         [](VipsImage*, VipsImage** out) {
             return vips_perlin(out, 2000, 2000, "cell_size", 1000, "uchar", TRUE, nullptr);
         }},
    };
}

std::vector<Row> neighbourRows() {
    return {
        {"Gaussian blur, sigma 2", gauss(2)},
        {"Gaussian blur, sigma 10", gauss(10)},
        {"Gaussian blur, sigma 20", gauss(20)},
        {"box blur 7 x 7", convolved(7, 7, std::vector<double>(49, 1), 49)},
        {"median 3 x 3", rank(3, 4)},
        {"median 5 x 5", rank(5, 12)},
        {"median 9 x 9", rank(9, 40)},
        {"minimum 3 x 3", rank(3, 0)},
        {"maximum 3 x 3", rank(3, 8)},
        {"sharpen 3 x 3", convolved(3, 3, {-1, -2, -1, -2, 20, -2, -1, -2, -1}, 8)},
        {"3 x 3 table", convolved(3, 3, {-1, -2, -1, -2, 20, -2, -1, -2, -1}, 8)},
        {"3 x 5 table", convolved(3, 5, {1, 2, 1, 2, 4, 2, 3, 6, 3, 2, 4, 2, 1, 2, 1}, 36)},
        {"Sobel edges",
         [](VipsImage* in, VipsImage** out) { return vips_sobel(in, out, nullptr); }},
    };
}

std::vector<Row> shapeRows() {
    return {
        {"to 1500 x 1000, bilinear", resized(0.25, VIPS_KERNEL_LINEAR)},
        {"to 1500 x 1000, bicubic", resized(0.25, VIPS_KERNEL_CUBIC)},
        {"to 1500 x 1000, Lanczos3", resized(0.25, VIPS_KERNEL_LANCZOS3)},
        {"to 1500 x 1000, box",
         [](VipsImage* in, VipsImage** out) { return vips_shrink(in, out, 4, 4, nullptr); }},
        {"twice as large, bilinear", resized(2, VIPS_KERNEL_LINEAR), true},
        {"twice as large, bicubic", resized(2, VIPS_KERNEL_CUBIC), true},
        {"twice as large, Lanczos3", resized(2, VIPS_KERNEL_LANCZOS3), true},
        {"flip across",
         [](VipsImage* in, VipsImage** out) {
             return vips_flip(in, out, VIPS_DIRECTION_HORIZONTAL, nullptr);
         }},
        {"flip down",
         [](VipsImage* in, VipsImage** out) {
             return vips_flip(in, out, VIPS_DIRECTION_VERTICAL, nullptr);
         }},
        {"rotate 90",
         [](VipsImage* in, VipsImage** out) { return vips_rot(in, out, VIPS_ANGLE_D90, nullptr); }},
        {"rotate 180", [](VipsImage* in,
                          VipsImage** out) { return vips_rot(in, out, VIPS_ANGLE_D180, nullptr); }},
        {"rotate 30, bicubic", affine(0.8660254, -0.5, 0.5, 0.8660254)},
        {"skew", affine(1, -0.25, 0, 1)},
        {"wider canvas",
         [](VipsImage* in, VipsImage** out) {
             return vips_embed(in, out, 100, 100, 6200, 4200, nullptr);
         }},
    };
}

struct Source {
    std::vector<std::uint8_t> pixels;
    VipsImage* image = nullptr; // lives as long as the program
};

std::shared_ptr<Source> sourceOf(const imaging::Raster& raster) {
    auto source = std::make_shared<Source>();
    source->pixels = packed(raster);
    VipsImage* plain =
        vips_image_new_from_memory(source->pixels.data(), source->pixels.size(), raster.width(),
                                   raster.height(), 3, VIPS_FORMAT_UCHAR);
    vips_copy(plain, &source->image, "interpretation", VIPS_INTERPRETATION_sRGB, nullptr);
    g_object_unref(plain);
    return source;
}

void run(VipsImage* in, const Build& build) {
    VipsImage* out = nullptr;
    void* pixels = nullptr;
    std::size_t size = 0;
    if (build(in, &out) == 0) pixels = vips_image_write_to_memory(out, &size);
    if (!pixels) g_error("%s", vips_error_buffer());
    g_free(pixels);
    g_object_unref(out);
}

} // namespace

Works vipsWorks(const Pictures& pictures) {
    if (vips_init("bench_peers") != 0) return {};
    vips_concurrency_set(threads);
    vips_cache_set_max(0);
    const auto large = sourceOf(pictures.large), half = sourceOf(pictures.half);
    Works works;
    for (const auto& rows : {pointRows(), neighbourRows(), shapeRows()})
        for (const Row& row : rows)
            works[row.name] = [source = row.half ? half : large, build = row.build] {
                run(source->image, build);
            };
    return works;
}

} // namespace kvn::bench
