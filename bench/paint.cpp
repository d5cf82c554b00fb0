// What a step of zooming or panning costs on a 24-megapixel picture in a window of 1600 by 1000
// pixels, from the call to the painted window, and what the first paint of a picture costs. The
// line for a step is 16 milliseconds.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QScrollBar>
#include <map>
#include <memory>
#include <string>

#include "bench/photo.h"
#include "engine/engine.h"
#include "engine/imgx.h"

namespace {

using namespace kvn;
using imaging::ImageType;
using imaging::Raster;

constexpr double zooms[] = {0.005, 0.01, 0.05, 0.125, 0.33, 0.5, 0.501, 0.75,
                            0.99,  1,    1.01, 1.5,   2,    4,   16};

struct Form {
    const char* name;
    ImageType type;
};
constexpr Form forms[] = {{"rgb24", ImageType::Rgb24},
                          {"rgba32", ImageType::Rgba32},
                          {"indexed8", ImageType::Indexed8},
                          {"gray8", ImageType::Gray8},
                          {"bit1", ImageType::Bit1}};

// The photograph's pixels; with `alpha` every value of it occurs, so that the backdrop shows.
engine::PixelArray photoPixels(bool alpha) {
    const Raster raster = bench::photo(alpha ? ImageType::Rgba32 : ImageType::Rgb24);
    engine::PixelArray array;
    array.type = static_cast<int>(raster.type());
    array.width = raster.width();
    array.height = raster.height();
    array.components = imaging::bytesPerPixel(raster.type());
    for (int y = 0; y < array.height; ++y)
        array.bytes.append(reinterpret_cast<const char*>(raster.view().row(y)),
                           static_cast<qsizetype>(raster.rowBytes()));
    for (qsizetype i = 3; alpha && i < array.bytes.size(); i += 4)
        array.bytes[i] = static_cast<char>(i / 4);
    return array;
}

// One control for each form of picture, all in windows that hold the canvas and both bars.
engine::ImgX& windowWith(ImageType type) {
    // Left to the system at the end: the application, which they need to go in order, is gone
    // before static objects are.
    static auto& engine = *new engine::Engine;
    static auto& windows = *new std::map<ImageType, engine::ImgX*>;
    engine::ImgX*& window = windows[type];
    if (window) return *window;
    window = new engine::ImgX(engine, QStringLiteral("ImgX"));
    const engine::Color gray(200, 200, 200);
    window->setUndoEnabled(false);
    const engine::PixelArray pixels = photoPixels(type == ImageType::Rgba32);
    window->Import().New(pixels.width, pixels.height, gray, pixels.type, QString());
    window->Import().FromPixels(pixels, QString());
    window->Info().ConvertType(QString(), static_cast<int>(type));
    engine::Image tile(engine);
    tile.Import().New(16, 16, gray, 5, QString());
    window->setBackdrop(tile);
    window->setAntialiasDisplay(true);
    window->resize(1620, 1020);
    window->setVisible(true);
    QCoreApplication::processEvents();
    return *window;
}

// Another back colour makes the whole canvas new, as a zoom step does, at this very zoom.
void zoomStep(benchmark::State& state, ImageType type, double zoom) {
    engine::ImgX& window = windowWith(type);
    window.setZoom(zoom);
    window.Refresh();
    quint32 color = 0;
    for (auto _ : state) {
        window.setBackColor(color ^= 0x10101);
        window.Refresh();
    }
}

void panStep(benchmark::State& state, ImageType type, double zoom) {
    engine::ImgX& window = windowWith(type);
    window.setZoom(zoom);
    window.Refresh();
    QScrollBar* across = window.horizontalScrollBar();
    QScrollBar* down = window.verticalScrollBar();
    int step = 40;
    for (auto _ : state) {
        if (across->value() + step > across->maximum() || across->value() + step < 0) step = -step;
        across->setValue(across->value() + step);
        down->setValue(down->value() + step);
        window.Refresh();
    }
}

// Nothing is kept of a hidden window, so that showing it again is a first paint.
void firstPaint(benchmark::State& state, ImageType type, double zoom) {
    engine::ImgX& window = windowWith(type);
    window.setZoom(zoom);
    for (auto _ : state) {
        state.PauseTiming();
        window.setVisible(false);
        window.setVisible(true);
        state.ResumeTiming();
        QCoreApplication::processEvents();
    }
}

void registerAll() {
    using Body = void (*)(benchmark::State&, ImageType, double);
    const auto add = [](const std::string& what, const Form& form, double zoom, Body body) {
        std::string percent = std::to_string(zoom * 100);
        percent.erase(percent.find_last_not_of('0') + 1);
        if (percent.back() == '.') percent.pop_back();
        benchmark::RegisterBenchmark((what + "/" + form.name + "/" + percent).c_str(), body,
                                     form.type, zoom)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    };
    for (const Form& form : forms) {
        for (const double zoom : zooms)
            add("zoom", form, zoom, zoomStep);
        for (const double zoom : {0.5, 0.75, 1.0, 4.0})
            add("pan", form, zoom, panStep);
        for (const double zoom : {0.125, 0.25, 0.5})
            add("first", form, zoom, firstPaint);
    }
}

} // namespace

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    registerAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
