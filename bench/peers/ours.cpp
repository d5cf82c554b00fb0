#include <vector>

#include "bench/peers/peers.h"
#include "imaging/operation.h"

namespace kvn::bench {
namespace {

using imaging::Matrix;
using imaging::Point;
using imaging::Raster;
using imaging::Rgba;
using imaging::Value;

struct Row {
    const char* name;
    const char* operation;
    std::vector<Value> values;
    bool half = false; // of the half picture
};

const Rgba black{0, 0, 0, 255};
const Rgba ink{160, 60, 20, 255};
const Matrix sharpening{3, 3, {-1, -2, -1, -2, 20, -2, -1, -2, -1}};
const Matrix five{5, 3, {1, 2, 1, 2, 4, 2, 3, 6, 3, 2, 4, 2, 1, 2, 1}};
const Matrix block{3, 3, {1, 1, 1, 1, 1, 1, 1, 1, 1}};

std::vector<Row> rows() {
    return {
        {"invert", "Effects.Negative", {}},
        {"gamma", "Effects.Gamma", {1.5}},
        {"brightness and contrast", "Effects.BrightnessContrast", {20, 20, -1}},
        {"intensity", "Effects.Intensify", {25}},
        {"posterize", "Effects.Posterize", {}},
        {"solarize", "Effects.Solarize", {0}},
        {"threshold", "Effects.Threshold", {30, 255, true}},
        {"saturation", "Effects.Saturation", {1.5}},
        {"grey", "Channels.Desaturate", {}},
        {"duotone", "Effects.Duotone", {ink}},
        {"replace a colour", "Geometry.ReplaceColor", {ink, black, 20.0, true}},
        {"add alpha", "Channels.ConstantAlpha", {200, 0}},
        {"hue, saturation, lightness", "Channels.AdjustHSLLiteral", {20, 30, 10}},
        {"swap red and blue", "Channels.Swizzle", {2, 1, 0, 3}},
        {"split into channels", "Channels.Split", {}},
        {"add to channels", "Channels.AdjustLiteral", {20, -10, 5, 0}},
        {"histogram equalize", "Geometry.HistogramEqualize", {0, 255, 7}},
        {"histogram stretch", "Geometry.HistogramStretch", {0, 255, 7}},
        {"mosaic 10 x 10", "Effects.Mosaic", {10, 10, 7}},
        {"Gaussian noise", "Effects.Noise", {0, 100, false, true}},
        {"Gaussian blur, sigma 2", "Effects.GaussianBlur", {50}},
        {"Gaussian blur, sigma 10", "Effects.GaussianBlur", {250}},
        {"Gaussian blur, sigma 20", "Effects.GaussianBlur", {500}},
        {"box blur 7 x 7", "Effects.ArithmeticMean", {7, true}},
        {"median 3 x 3", "Effects.MedianCut", {3, true}},
        {"median 5 x 5", "Effects.MedianCut", {5, true}},
        {"median 9 x 9", "Effects.MedianCut", {9, true}},
        {"minimum 3 x 3", "Effects.Minimum", {3, true}},
        {"maximum 3 x 3", "Effects.Maximum", {3, true}},
        {"maximum 15 x 15", "Effects.Maximum", {15, true}},
        {"open 3 x 3", "Effects.Morphology", {block, 2}},
        {"top hat 3 x 3", "Effects.Morphology", {block, 4}},
        {"sharpen 3 x 3", "Effects.Sharpen", {100, 3, true}},
        {"unsharp mask, radius 2.4", "Effects.UnsharpMask", {0, 1.0, 2.4}},
        {"unsharp mask, radius 10", "Effects.UnsharpMask", {0, 1.0, 10.0}},
        {"Sobel edges", "Effects.EdgeDetection", {50}},
        {"Canny edges", "Effects.CannyEdge", {100, 20, 40}},
        {"emboss", "Effects.Emboss", {45, 45, 4, false}},
        {"3 x 3 table", "Effects.ApplyMatrix", {sharpening, 8.0, 0, false, false}},
        {"3 x 5 table", "Effects.ApplyFilter", {five, 36.0, 0}},
        {"motion blur, 10 px", "Geometry.MotionBlur", {10.0, 2, 30.0, 0}},
        {"to 1500 x 1000, bilinear", "Geometry.Resize", {1500, 1000, 0}},
        {"to 1500 x 1000, bicubic", "Geometry.Resize", {1500, 1000, 21}},
        {"to 1500 x 1000, Lanczos3", "Geometry.Resize", {1500, 1000, 15}},
        {"to 1500 x 1000, box", "Geometry.Resize", {1500, 1000, 5}},
        {"to 1613 x 1075, box", "Geometry.Resize", {1613, 1075, 5}},
        {"twice as large, bilinear", "Geometry.Resize", {6000, 4000, 0}, true},
        {"twice as large, bicubic", "Geometry.Resize", {6000, 4000, 21}, true},
        {"twice as large, Lanczos3", "Geometry.Resize", {6000, 4000, 15}, true},
        {"flip across", "Geometry.Flip", {0}},
        {"flip down", "Geometry.Flip", {1}},
        {"rotate 90", "Geometry.Rotate", {90.0, black, 0}},
        {"rotate 180", "Geometry.Rotate", {180.0, black, 0}},
        {"rotate 30, bicubic", "Geometry.Rotate", {30.0, black, 0}},
        {"skew", "Geometry.Skew", {0, 1000, black, false}},
        {"perspective",
         "Geometry.Perspective",
         {Point{0, 3999}, Point{0, 0}, Point{5999, 1000}, Point{5999, 3000}, 1}},
        {"wider canvas", "Geometry.ResizeCanvas", {6200, 4200, black, 100, 100}},
        {"waves", "Transforms.Wave", {0, 20.0, 8.0}},
        {"ripple", "Transforms.Ripple", {0, 3000, 20, 8.0, 0, 0}},
        {"spin", "Transforms.Spin", {3000.0, 90.0, 0, 0}},
        {"pinch", "Transforms.Pinch", {3000.0, 10.0, 0, 0}},
        {"to 256 colours, dithered", "Geometry.Dither", {256, true, true}},
        {"to 16 colours, dithered", "Geometry.Dither", {16, true, true}},
        {"gradient noise 2000 x 2000", "Geometry.PerlinNoise", {2000, 2000, 50}},
    };
}

} // namespace

Works ourWorks(const Pictures& pictures) {
    Works works;
    for (Row& row : rows())
        if (const imaging::Operation* operation = imaging::findOperation(row.operation))
            works[row.name] = [operation, source = row.half ? pictures.half : pictures.large,
                               values = row.values] {
                imaging::Task task;
                task.threads = threads;
                imaging::runOperation(*operation, source, values, task);
            };
    works["copy"] = [source = pictures.large, target = Raster(pictures.large)]() mutable {
        imaging::Task task;
        task.threads = threads;
        const imaging::View to = target.edit();
        imaging::parallelRows(to.height, task, [&](int y0, int y1) {
            for (int y = y0; y < y1; ++y)
                std::copy_n(source.view().row(y), source.rowBytes(), to.row(y));
        });
    };
    return works;
}

} // namespace kvn::bench
