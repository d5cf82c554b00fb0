#include "bench/peers/packed.h"
#include "bench/peers/peers.h"

#include <magick/api.h>
#include <memory>
#include <vector>

namespace kvn::bench {
namespace {

// Gives a new picture; the copying of those calls that work in place is part of their time, as the
// source is to stay.
using Call = std::function<Image*(const Image* source, ExceptionInfo* failure)>;

struct Row {
    const char* name;
    Call call;
    bool half = false;
};

using InPlace = std::function<void(Image* picture)>;

Call onCopy(const InPlace& work) {
    return [work](const Image* source, ExceptionInfo* failure) {
        Image* copy = CloneImage(source, 0, 0, 1, failure);
        work(copy);
        SyncImagePixels(copy);
        return copy;
    };
}

Call resized(unsigned long width, unsigned long height, FilterTypes filter) {
    return [=](const Image* source, ExceptionInfo* failure) {
        return ResizeImage(source, width, height, filter, 1.0, failure);
    };
}

Call blurred(double sigma) {
    return [=](const Image* source, ExceptionInfo* failure) {
        return BlurImage(source, 0, sigma, failure);
    };
}

Call convolved(unsigned order, std::vector<double> values) {
    return [=](const Image* source, ExceptionInfo* failure) {
        return ConvolveImage(source, order, values.data(), failure);
    };
}

Call reduced(unsigned long colors) {
    return onCopy([=](Image* picture) {
        QuantizeInfo info;
        GetQuantizeInfo(&info);
        info.number_colors = colors;
        info.dither = 1;
        QuantizeImage(&info, picture);
    });
}

std::vector<Row> pointRows() {
    return {
        {"invert", onCopy([](Image* p) { NegateImage(p, 0); })},
        {"gamma", onCopy([](Image* p) { GammaImage(p, "1.5"); })},
        {"brightness and contrast", onCopy([](Image* p) { LevelImage(p, "10%,1.0,85%"); })},
        {"solarize", onCopy([](Image* p) { SolarizeImage(p, MaxRGB / 2); })},
        {"threshold", onCopy([](Image* p) { ThresholdImage(p, MaxRGB * 30.0 / 255); })},
        {"saturation", onCopy([](Image* p) { ModulateImage(p, "100,150,100"); })},
        {"hue, saturation, lightness", onCopy([](Image* p) { ModulateImage(p, "104,112,108"); })},
        {"grey", onCopy([](Image* p) { SetImageType(p, GrayscaleType); })},
        {"histogram equalize", onCopy([](Image* p) { EqualizeImage(p); })},
        {"histogram stretch", onCopy([](Image* p) { NormalizeImage(p); })},
        {"Gaussian noise",
         [](const Image* s, ExceptionInfo* e) { return AddNoiseImage(s, GaussianNoise, e); }},
        {"to 256 colours, dithered", reduced(256)},
        {"to 16 colours, dithered", reduced(16)},
    };
}

std::vector<Row> neighbourRows() {
    return {
        {"Gaussian blur, sigma 2", blurred(2)},
        {"Gaussian blur, sigma 10", blurred(10)},
        {"Gaussian blur, sigma 20", blurred(20)},
        {"box blur 7 x 7", convolved(7, std::vector<double>(49, 1))},
        {"median 3 x 3",
         [](const Image* s, ExceptionInfo* e) { return MedianFilterImage(s, 1, e); }},
        {"sharpen 3 x 3", convolved(3, {-1, -2, -1, -2, 20, -2, -1, -2, -1})},
        {"3 x 3 table", convolved(3, {-1, -2, -1, -2, 20, -2, -1, -2, -1})},
        {"unsharp mask, radius 2.4",
         [](const Image* s, ExceptionInfo* e) { return UnsharpMaskImage(s, 0, 2.4, 1, 0, e); }},
        {"unsharp mask, radius 10",
         [](const Image* s, ExceptionInfo* e) { return UnsharpMaskImage(s, 0, 10, 1, 0, e); }},
        {"emboss", [](const Image* s, ExceptionInfo* e) { return EmbossImage(s, 1, 0.5, e); }},
        {"motion blur, 10 px",
         [](const Image* s, ExceptionInfo* e) { return MotionBlurImage(s, 10, 30, 30, e); }},
    };
}

std::vector<Row> shapeRows() {
    return {
        {"to 1500 x 1000, bilinear", resized(1500, 1000, TriangleFilter)},
        {"to 1500 x 1000, bicubic", resized(1500, 1000, CatromFilter)},
        {"to 1500 x 1000, Lanczos3", resized(1500, 1000, LanczosFilter)},
        {"to 1500 x 1000, box", resized(1500, 1000, BoxFilter)},
        {"to 1613 x 1075, box", resized(1613, 1075, BoxFilter)},
        {"twice as large, bilinear", resized(6000, 4000, TriangleFilter), true},
        {"twice as large, bicubic", resized(6000, 4000, CatromFilter), true},
        {"twice as large, Lanczos3", resized(6000, 4000, LanczosFilter), true},
        {"flip across", [](const Image* s, ExceptionInfo* e) { return FlopImage(s, e); }},
        {"flip down", [](const Image* s, ExceptionInfo* e) { return FlipImage(s, e); }},
        {"rotate 90", [](const Image* s, ExceptionInfo* e) { return RotateImage(s, 90, e); }},
        {"rotate 180", [](const Image* s, ExceptionInfo* e) { return RotateImage(s, 180, e); }},
        {"rotate 30, bicubic",
         [](const Image* s, ExceptionInfo* e) { return RotateImage(s, 30, e); }},
        {"skew", [](const Image* s, ExceptionInfo* e) { return ShearImage(s, 14, 0, e); }},
        {"waves", [](const Image* s, ExceptionInfo* e) { return WaveImage(s, 20, 500, e); }},
        {"spin", [](const Image* s, ExceptionInfo* e) { return SwirlImage(s, 90, e); }},
        {"pinch", [](const Image* s, ExceptionInfo* e) { return ImplodeImage(s, 0.3, e); }},
    };
}

Image* imageOf(const imaging::Raster& raster) {
    const std::vector<std::uint8_t> pixels = packed(raster);
    ExceptionInfo failure;
    GetExceptionInfo(&failure);
    Image* image = ConstituteImage(static_cast<unsigned long>(raster.width()),
                                   static_cast<unsigned long>(raster.height()), "RGB", CharPixel,
                                   pixels.data(), &failure);
    DestroyExceptionInfo(&failure);
    return image;
}

} // namespace

Works magickWorks(const Pictures& pictures) {
    InitializeMagick(nullptr);
    SetMagickResourceLimit(ThreadsResource, threads);
    const Image* large = imageOf(pictures.large); // live as long as the program
    const Image* half = imageOf(pictures.half);
    Works works;
    for (const auto& rows : {pointRows(), neighbourRows(), shapeRows()})
        for (const Row& row : rows)
            works[row.name] = [source = row.half ? half : large, call = row.call] {
                ExceptionInfo failure;
                GetExceptionInfo(&failure);
                if (Image* result = call(source, &failure)) DestroyImage(result);
                DestroyExceptionInfo(&failure);
            };
    return works;
}

} // namespace kvn::bench
