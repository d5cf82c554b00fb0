// What a picture command costs from the click on its menu item to the repainted window, on 24
// megapixels, beside the bare operation. The line is 15 percent.
//
// The user of the bench works at a human pace: between two clicks the background has the time to
// put away the steps.
#include <benchmark/benchmark.h>

#include <QAction>
#include <QApplication>
#include <QTemporaryDir>
#include <memory>

#include "basic/settings_store.h"
#include "bench/photo.h"
#include "bench/series.h"
#include "dialogs/frmProgress.h"
#include "dialogs/qt_asking.h"
#include "document/document_actions.h"
#include "document/frmMain.h"
#include "document/program_state.h"
#include "document/working_copy.h"
#include "effects/commands.h"
#include "engine/detail/history.h"
#include "engine/engine.h"
#include "imaging/codecs/codec.h"
#include "imaging/operation.h"
#include "shell/MDIMain.h"
#include "shell/document_windows.h"
#include "shell/menu_tree.h"

namespace {

using namespace kvn;

// The program as it runs, with one document.
struct Program {
    engine::Engine engine;
    dialogs::QtAsking asking;
    dialogs::frmProgress progress;
    document::ProgramState state;
    CRegister store;
    std::unique_ptr<shell::MDIMain> frame;
    document::frmMain* form = nullptr;

    explicit Program(const QString& picture) {
        document::addDocumentCommands(state.commands);
        effects::addEffectsCommands(state.commands);
        frame = std::make_unique<shell::MDIMain>(
            engine, asking, progress, state, store,
            shell::ProcessHooks{[](const QString&) {}, [] {}, [] {}});
        frame->load();
        frame->resize(1700, 1100);
        document::openFiles(frame->services(), {picture});
        form = frame->windows().ActiveForm();
        form->parentWidget()->showMaximized();
        QCoreApplication::processEvents();
    }
    ~Program() { form->closeWithoutAsking(); }

    void click() const {
        frame->menus().action(QStringLiteral("mnuFiltersBlurAction"), 0)->trigger();
        QCoreApplication::processEvents(); // the repaint
    }
    void rest() {
        QCoreApplication::processEvents();
        engine.historyStore().settle();
    }
};

// The picture as a file, made once.
QString photoFile() {
    static const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("photo.bmp"));
    static const bool isWritten = [&] {
        engine::Engine engine;
        imaging::Raster raster = bench::photo();
        engine::Image image(engine);
        engine::PixelArray pixels{
            static_cast<int>(raster.type()), raster.width(), raster.height(), 3, {}};
        for (int y = 0; y < raster.height(); ++y)
            pixels.bytes.append(reinterpret_cast<const char*>(raster.view().row(y)),
                                static_cast<qsizetype>(raster.rowBytes()));
        image.Import().New(pixels.width, pixels.height, engine::Color(), pixels.type, "no undo");
        image.Import().FromPixels(pixels, "no undo");
        image.Export().Save(path, 6, 0, -1);
        return true;
    }();
    Q_UNUSED(isWritten)
    return path;
}

using bench::Series;

void bare(const imaging::Raster& picture) {
    const imaging::Operation& blur = *imaging::findOperation("Effects.Blur");
    imaging::Task task;
    benchmark::DoNotOptimize(
        imaging::runOperation(blur, picture, {std::int64_t{25}, std::int64_t{7}, false}, task));
}

void report(benchmark::State& state, Series& operation, Series& click) {
    state.counters["bare_ms"] = operation.median();
    state.counters["click_ms"] = click.median();
    state.counters["percent_more"] = (click.median() / operation.median() - 1) * 100;
    state.counters["bare_min_ms"] = operation.least();
    state.counters["click_min_ms"] = click.least();
}

// Each click on the picture that the one before left, steps piling up. The two take turns, so that
// a busy machine is busy for both.
void clicks(benchmark::State& state, double zoom) {
    Program program(photoFile());
    const imaging::Raster picture = bench::photo();
    program.form->ImgX->setZoom(zoom);
    Series operation, click;
    for (int i = 0; i < 4; ++i) {
        program.click();
        program.rest();
    }
    for (auto _ : state) {
        operation.time([&] { bare(picture); });
        click.time([&] { program.click(); });
        program.rest();
    }
    report(state, operation, click);
}

// The first click in a document, which needs memory that no earlier picture has left.
void firstClick(benchmark::State& state) {
    Series operation, click;
    const imaging::Raster picture = bench::photo();
    for (auto _ : state) {
        operation.time([&] { bare(picture); });
        Program program(photoFile());
        program.rest();
        imaging::PixelBuffer::trimCache();
        click.time([&] { program.click(); });
    }
    report(state, operation, click);
}

// The first stroke of a pen after a command, and the second one.
void strokes(benchmark::State& state) {
    Program program(photoFile());
    engine::Image dab(program.engine);
    dab.Import().New(40, 40, engine::Color(), 5, "no undo");
    Series first, second;
    for (auto _ : state) {
        program.click();
        program.rest();
        for (Series* series : {&first, &second}) {
            series->time([&] {
                program.form->ImgX->Draw().Image(dab.Info(), 100, 100, nullptr, 1, true, {});
                QCoreApplication::processEvents();
            });
            program.rest();
        }
    }
    state.counters["first_ms"] = first.median();
    state.counters["second_ms"] = second.median();
}

} // namespace

int main(int argc, char** argv) {
    const QTemporaryDir home;
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_DATA_HOME"})
        qputenv(name, home.path().toUtf8());
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const auto add = [](const char* name, auto&& body, int count) {
        benchmark::RegisterBenchmark(name, body)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime()
            ->Iterations(count);
    };
    add(
        "blur25/100", [](benchmark::State& s) { clicks(s, 1.0); }, 40);
    add(
        "blur25/25", [](benchmark::State& s) { clicks(s, 0.25); }, 40);
    add("blur25/first", firstClick, 5);
    add("stroke", strokes, 15);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
