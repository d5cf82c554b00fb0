// Images, their pages and the runner behind every call: undo steps, trace, failure, cancel.
#include <QJsonObject>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include "basic/error.h"
#include "engine/detail/page_list.h"
#include "engine/detail/runner.h"
#include "engine/engine.h"
#include "engine/image.h"
#include "engine/image_values.h"
#include "engine/imgx.h"
#include "engine/operations.h"
#include "engine/palette.h"

using namespace kvn;
using namespace kvn::engine;

namespace {

int failureOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const RuntimeError& error) {
        return error.number();
    }
    return 0;
}

QStringList operations(const Trace& trace) {
    QStringList names;
    for (const TraceRecord& record : trace.records())
        names.append(record.op);
    return names;
}

} // namespace

class ImageTest : public QObject {
    Q_OBJECT

  private slots:
    void init() {
        engine_ = std::make_unique<Engine>();
        engine_->trace().setKept(true);
        engine_->setProgressDelay(0);
    }
    void cleanup() { engine_.reset(); }

    void newImageHasTypeSizeAndColor_data();
    void newImageHasTypeSizeAndColor();
    void refusesImpossibleImages();
    void copiesShareUntilOneSideChanges();
    void labelsNameTheStep();
    void failureLeavesEverythingAsItWas();
    void cancelLeavesEverythingAsItWas();
    void secondOperationFromThePumpIsRefused();
    void progressBeginsWithZeroAndEndsWithHundred();
    void pagesComeGoAndBecomeCurrent();
    void drawingChangesOnlyItsRectangle();
    void changesWithoutAStepGoWithTheStepBefore();
    void namedOperationsRunAndAreTraced();
    void palettesStandAloneAndInPictures();
    void pixelArraysGoOutAndComeBack();
    void savedPictureIsUnchangedUntilEdited();
    void saveRefusesWhatCannotBeWritten();
    void failedSaveKeepsTheOldFile();

  private:
    Image made(int width, int height, int type, const Color& color = Color(10, 20, 30)) {
        Image image(*engine_);
        image.Import().New(width, height, color, type, "no undo");
        return image;
    }
    std::unique_ptr<Engine> engine_;
};

void ImageTest::newImageHasTypeSizeAndColor_data() {
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("depth");
    QTest::addColumn<int>("colors");
    QTest::addColumn<bool>("alpha");
    const int depths[] = {1, 8, 8, 8, 16, 24, 32};
    const int colors[] = {2, 1, 1, 256, 256, 1 << 24, 1 << 24};
    for (int type = 0; type < 7; ++type)
        QTest::addRow("type %d", type)
            << type << depths[type] << colors[type] << (type == 2 || type == 4 || type == 6);
}

void ImageTest::newImageHasTypeSizeAndColor() {
    QFETCH(int, type);
    const Image image = made(7, 5, type, Color(255, 255, 255, 128));
    const Info info = image.Info();
    QCOMPARE(info.Width(), 7);
    QCOMPARE(info.Height(), 5);
    QCOMPARE(info.TypeIndex(), type);
    QTEST(info.ColorDepth(), "depth");
    QTEST(info.ColorCount(), "colors");
    QTEST(info.HasAlpha(), "alpha");
    const Color pixel = info.GetPixel(6, 4);
    QCOMPARE(pixel.RgbGet(), 0xFFFFFFu);
    QCOMPARE(int(pixel.Alpha()), info.HasAlpha() ? 128 : 255);
    QVERIFY(!info.Changed());
    QCOMPARE(info.FileType(), 0);
}

void ImageTest::refusesImpossibleImages() {
    Image image(*engine_);
    const Color white(255, 255, 255);
    QVERIFY(failureOf([&] { image.Import().New(0, 10, white, 5, ""); }) != 0);
    QVERIFY(failureOf([&] { image.Import().New(10, -1, white, 5, ""); }) != 0);
    QVERIFY(failureOf([&] { image.Import().New(10, 10, white, 7, ""); }) != 0);
    QCOMPARE(failureOf([&] { image.Import().New(2000000000, 2000000000, white, 6, ""); }),
             errors::outOfMemory);
    QVERIFY(image.IsEmpty());
    QCOMPARE(failureOf([&] { image.Info().Width(); }), errors::objectNotSet);
    QVERIFY(engine_->trace().records().back().errorNumber.has_value());
}

void ImageTest::copiesShareUntilOneSideChanges() {
    Image source = made(100, 100, 5);
    Image copy(*engine_);
    copy.Import().FromImgX(source, 0, "");
    const auto raster = [](const Image& image) -> const imaging::Raster& {
        return detail::pageOf(image.ref()).raster;
    };
    QVERIFY(raster(copy).sharesPixelsWith(raster(source)));
    copy.Info().SetPixel(3, 4, Color(200, 0, 0));
    QVERIFY(!raster(copy).sharesPixelsWith(raster(source)));
    QCOMPARE(source.Info().GetPixel(3, 4).RgbGet(), Color(10, 20, 30).RgbGet());
    QCOMPARE(copy.Info().GetPixel(3, 4).RgbGet(), Color(200, 0, 0).RgbGet());
    // A working copy brings nothing of an earlier picture with it.
    QTemporaryDir folder;
    source.Export().Save(folder.filePath("a.png"), 2, 0, -1);
    Image loaded(*engine_);
    loaded.Import().FromFile(folder.filePath("a.png"), 0, "no undo");
    Image working(*engine_);
    working.Import().FromImgX(loaded, 0, "");
    QCOMPARE(working.Info().FileType(), 2);
    working.Import().FromImgX(source, 0, "");
    QCOMPARE(working.Info().FileType(), 0);
    QVERIFY(working.Info().Name().isEmpty());
    // A picture can be replaced by a copy of itself.
    copy.Import().FromImgX(copy, 0, "");
    QCOMPARE(copy.Info().GetPixel(3, 4).Red(), quint8(200));
}

void ImageTest::labelsNameTheStep() {
    ImgX control(*engine_, "ImgX");
    control.setDoc(3);
    control.setUndoDepth(25);
    control.Import().New(4, 4, Color(), 5, "No UNDO");
    QCOMPARE(control.Undos(), 0);
    QVERIFY(!engine_->trace().records().back().step);
    control.Info().ConvertType("", 3);
    control.Info().ConvertType("To colour", 5);
    control.SaveUndo("Recipe");
    control.Info().ConvertType("no undo", 0);
    QCOMPARE(control.Undos(), 3);
    QCOMPARE(control.UndoLabel(), QString("Recipe"));
    const auto records = engine_->trace().records();
    QCOMPARE(*records[records.size() - 4].step, QString("Convert Type"));
    QCOMPARE(*records[records.size() - 3].step, QString("To colour"));
    QCOMPARE(*records[records.size() - 2].step, QString("Recipe"));
    QCOMPARE(records.back().doc, 3);
    QCOMPARE(records.back().on, QString("ImgX"));
    QCOMPARE(records.back().args, QJsonArray({"no undo", 0}));
    control.Undo();
    QCOMPARE(control.Info().TypeIndex(), 5);
    control.Undo();
    QCOMPARE(control.Info().TypeIndex(), 3);
    control.Redo();
    QCOMPARE(control.Info().TypeIndex(), 5);
    QCOMPARE(control.RedoLabel(), QString("Recipe"));
}

void ImageTest::failureLeavesEverythingAsItWas() {
    ImgX control(*engine_, "ImgX");
    control.Import().New(4, 4, Color(1, 2, 3), 5, "");
    QSignalSpy changed(&control, &ImgX::ImageChanged);
    const int undos = control.Undos();
    detail::PageList& list = *control.Image().ref().list;
    const auto fail = [&](auto thrown) {
        return failureOf([&] {
            detail::changeState(list, {"Test", {}, "", "Test"},
                                [&](detail::ListState& next, imaging::Task&) {
                                    next.pages.clear();
                                    throw thrown;
                                });
        });
    };
    QCOMPARE(fail(std::bad_alloc()), errors::outOfMemory);
    QCOMPARE(fail(RuntimeError(77, "text", "source")), 77);
    QVERIFY(fail(std::runtime_error("other")) != 0);
    QCOMPARE(control.Undos(), undos);
    QCOMPARE(control.Images().Count(), 1);
    QVERIFY(changed.isEmpty());
    QVERIFY(!control.isBusy());
}

void ImageTest::cancelLeavesEverythingAsItWas() {
    ImgX control(*engine_, "ImgX");
    control.Import().New(40, 40, Color(1, 2, 3), 5, "no undo");
    QObject::connect(&control, &ImgX::Progress, this,
                     [](int percent, const QString&, bool* cancel) { *cancel = percent > 0; });
    detail::PageList& list = *control.Image().ref().list;
    const auto slow = [](imaging::Task& task) {
        for (int i = 0; i <= 10; ++i) {
            task.report(i / 10.0);
            QTest::qSleep(20);
        }
    };
    QCOMPARE(failureOf([&] {
                 detail::changeState(list, {"Test", {}, "", "Test"},
                                     [&](detail::ListState& next, imaging::Task& task) {
                                         next.pages.clear();
                                         slow(task);
                                     });
             }),
             errors::cancelled);
    QCOMPARE(control.Images().Count(), 1);
    // In place: the pixels painted so far go back, with and without a step of their own.
    for (const char* label : {"", "no undo"}) {
        QCOMPARE(failureOf([&] {
                     detail::changeInPlace(list, {"Test", {}, label, "Test"}, {2, 2, 5, 5},
                                           [&](imaging::Raster& raster, imaging::Task& task) {
                                               raster.setPixel(3, 3, {9, 9, 9, 255});
                                               slow(task);
                                           });
                 }),
                 errors::cancelled);
        QCOMPARE(control.Info().GetPixel(3, 3).RgbGet(), Color(1, 2, 3).RgbGet());
        QCOMPARE(control.Undos(), 0);
    }
}

void ImageTest::secondOperationFromThePumpIsRefused() {
    ImgX control(*engine_, "ImgX");
    control.Import().New(4, 4, Color(1, 2, 3), 5, "no undo");
    int inner = 0;
    QObject::connect(&control, &ImgX::Progress, this, [&](int, const QString&, bool*) {
        if (inner == 0) inner = failureOf([&] { control.Undo(); });
        QVERIFY(control.isBusy());
    });
    detail::changeState(*control.Image().ref().list, {"Test", {}, "", "Test"},
                        [](detail::ListState&, imaging::Task& task) { task.report(0.5); });
    QVERIFY(inner != 0);
    QCOMPARE(control.Undos(), 1);
}

void ImageTest::progressBeginsWithZeroAndEndsWithHundred() {
    ImgX control(*engine_, "ImgX");
    QList<int> percents;
    QObject::connect(&control, &ImgX::Progress, this,
                     [&](int percent, const QString&, bool*) { percents.append(percent); });
    const auto work = [&] {
        detail::changeState(*control.Image().ref().list, {"Test", {}, "no undo", "Test"},
                            [](detail::ListState&, imaging::Task& task) {
                                for (int i = 0; i <= 4; ++i) {
                                    task.report(i / 4.0);
                                    QTest::qSleep(40);
                                }
                            });
    };
    work();
    QVERIFY(percents.size() >= 3);
    QCOMPARE(percents.first(), 0);
    QCOMPARE(percents.last(), 100);
    QVERIFY(std::is_sorted(percents.begin(), percents.end()));
    // Short work, and work in a batch that reports none, stay silent.
    percents.clear();
    engine_->setProgressDelay(10000);
    work();
    engine_->setProgressDelay(0);
    control.setProgress(false);
    work();
    QVERIFY(percents.isEmpty());
}

void ImageTest::pagesComeGoAndBecomeCurrent() {
    ImgX control(*engine_, "ImgX");
    control.setUndoDepth(25);
    QSignalSpy listed(&control, &ImgX::ImageListChanged), changed(&control, &ImgX::ImageChanged);
    for (int i = 1; i <= 3; ++i)
        control.Images().Add(made(i, i, 5), 0, 0, "no undo");
    QCOMPARE(control.Images().Count(), 3);
    QCOMPARE(control.Info().ListIndex(), 0);
    QVERIFY(!control.Modified());
    QCOMPARE(changed.count(), 3);
    QCOMPARE(listed.count(), 3);

    control.Images().setCurrent(control.Images().Item(1));
    QCOMPARE(control.Info().Width(), 2);
    QCOMPARE(changed.count(), 3); // another page is shown, nothing was changed
    QCOMPARE(listed.count(), 4);

    // A page put before the current one leaves it current.
    control.Images().Add(made(9, 9, 3), 1, 0, "");
    QCOMPARE(control.Images().Item(0).Info().Width(), 9);
    QCOMPARE(control.Info().Width(), 2);
    QVERIFY(control.Modified());

    const Image kept = control.Images().Item(3);
    control.Images().Remove(control.Images().Current(), "");
    QCOMPARE(control.Info().Width(), 3); // the page that took its place
    control.Images().Remove(kept, "");
    QCOMPARE(control.Info().Width(), 1); // the last one left
    QCOMPARE(failureOf([&] { kept.Info().Width(); }), errors::objectNotSet);
    QCOMPARE(failureOf([&] { control.Images().Item(2); }), errors::subscriptOutOfRange);

    control.Undo();
    control.Undo();
    control.Undo();
    QCOMPARE(control.Images().Count(), 3);
    QCOMPARE(control.Info().Width(), 2);
    QCOMPARE(kept.Info().Width(), 3); // the same page is back

    control.Images().Clear("no undo");
    QVERIFY(control.IsEmpty());
    QVERIFY(control.Images().Current().isNull());
}

void ImageTest::drawingChangesOnlyItsRectangle() {
    ImgX control(*engine_, "ImgX");
    control.setUndoDepth(25);
    control.Import().New(64, 64, Color(0, 0, 0), 5, "no undo");
    const Image stamp = made(10, 10, 6, Color(255, 0, 0, 128));
    control.Draw().Image(stamp.Info(), 60, -5, nullptr, 1.0, true, "");
    QCOMPARE(control.Info().GetPixel(62, 3).Red(), quint8(128));
    QCOMPARE(control.Info().GetPixel(62, 6).Red(), quint8(0));
    QCOMPARE(control.Undos(), 1);
    const Color key(255, 0, 0);
    control.Draw().Image(stamp.Info(), 0, 0, &key, 1.0, true, "no undo");
    QCOMPARE(control.Info().GetPixel(5, 5).Red(), quint8(0));
    control.Draw().Image(stamp.Info(), 0, 0, nullptr, 0.5, true, "");
    QCOMPARE(control.Info().GetPixel(5, 5).Red(), quint8(64));
    control.Undo();
    control.Undo();
    QCOMPARE(control.Info().GetPixel(62, 3).Red(), quint8(0));
    QCOMPARE(control.Info().GetPixel(5, 5).Red(), quint8(0));
}

void ImageTest::changesWithoutAStepGoWithTheStepBefore() {
    ImgX control(*engine_, "ImgX");
    control.setUndoDepth(25);
    control.Import().New(64, 64, Color(0, 0, 0), 5, "no undo");
    const Image stamp = made(10, 10, 5, Color(255, 0, 0));
    const auto red = [&](int x) { return int(control.Info().GetPixel(x, 1).Red()); };
    control.Draw().Image(stamp.Info(), 0, 0, nullptr, 1.0, true, "");
    control.Draw().Image(stamp.Info(), 20, 0, nullptr, 1.0, true, "no undo");
    control.Info().SetPixel(40, 1, Color(255, 0, 0));
    control.Info().SetPixel(41, 1, Color(255, 0, 0));
    QVERIFY(red(1) && red(21) && red(40) && red(41));
    control.Undo();
    QVERIFY(!red(1) && !red(21) && !red(40) && !red(41));
    control.Redo();
    QVERIFY(red(1) && red(21) && red(40) && red(41));
}

void ImageTest::namedOperationsRunAndAreTraced() {
    Image image = made(6, 4, 5);
    image.Info().SetPixel(0, 0, Color(255, 255, 255));
    engine_->trace().clear();
    image.run("Geometry.Flip", {0}, "");
    QCOMPARE(image.Info().GetPixel(5, 0).Red(), quint8(255));
    image.run("Geometry.ResizeCanvas", {8, 6, QVariant::fromValue(Color(1, 2, 3, 4)), 1, 1},
              "Border");
    QCOMPARE(image.Info().Width(), 8);
    const auto records = engine_->trace().records();
    QCOMPARE(operations(engine_->trace()), QStringList({"Geometry.Flip", "Geometry.ResizeCanvas"}));
    QCOMPARE(records[1].args, QJsonArray({8, 6, "#01020304", 1, 1, "Border"}));
    QCOMPARE(*records[1].step, QString("Border"));
    QCOMPARE(failureOf([&] { image.run("Geometry.Nothing", {}, ""); }), errors::memberNotFound);
}

void ImageTest::palettesStandAloneAndInPictures() {
    Palette own(*engine_);
    own.LoadPreset(3);
    own.Entry(0, Color(1, 2, 3));
    QCOMPARE(own.Count(), 16);
    Image image = made(40, 30, 5, Color(1, 2, 3));
    image.Geometry().ApplyPalette(own, false, "no undo");
    Palette inPicture = image.Info().Palette();
    QCOMPARE(inPicture.Count(), 16);
    inPicture.Entry(0, Color(200, 100, 50));
    QCOMPARE(image.Info().GetPixel(39, 29).RgbGet(), Color(200, 100, 50).RgbGet());
    QCOMPARE(own.Colors().front().Red(), uchar{1}); // a palette of its own
    inPicture.LoadPreset(2);
    QCOMPARE(image.Info().Palette().Count(), 216);
    const QStringList calls = operations(engine_->trace());
    QCOMPARE(calls.last(2), (QStringList{"Palette.Entry", "Palette.LoadPreset"}));
    QVERIFY(!engine_->trace().records().back().step);
    QCOMPARE(engine_->trace().records().back().args, QJsonArray{2});
    QVERIFY(failureOf([&] { own.LoadPreset(9); }) != 0);
    Image colored = made(4, 4, 5);
    QVERIFY(failureOf([&] { colored.Info().Palette().Entry(0, Color()); }) != 0);
}

void ImageTest::pixelArraysGoOutAndComeBack() {
    for (int type = 0; type < 7; ++type) {
        Image image = made(11, 3, type, Color(0, 0, 0));
        image.Info().SetPixel(9, 2, Color(255, 255, 255));
        PixelArray pixels = image.Export().GetPixels();
        QCOMPARE(pixels.bytes.size(), qsizetype(11 * 3 * pixels.components));
        const Color before = image.Info().GetPixel(9, 2);
        image.Import().New(11, 3, Color(0, 0, 0), type, "no undo");
        image.Info().SetPixel(9, 2, Color(255, 255, 255));
        image.Info().SetPixel(1, 1, Color(255, 255, 255));
        image.Import().FromPixels(pixels, "");
        QCOMPARE(image.Info().GetPixel(9, 2).RgbGet(), before.RgbGet());
        QVERIFY(image.Info().GetPixel(1, 1).RgbGet() == image.Info().GetPixel(0, 0).RgbGet());
        pixels.bytes.chop(1);
        QVERIFY(failureOf([&] { image.Import().FromPixels(pixels, ""); }) != 0);
    }
}

void ImageTest::savedPictureIsUnchangedUntilEdited() {
    QTemporaryDir folder;
    ImgX control(*engine_, "ImgX");
    control.setUndoDepth(25);
    control.Import().New(20, 10, Color(9, 8, 7), 5, "no undo");
    control.Info().SetPixel(1, 1, Color(255, 0, 0));
    QVERIFY(control.Modified());
    const QString path = folder.filePath("a.png");
    control.Export().Save(path, 2, 0, -1);
    QVERIFY(!control.Modified());
    control.Info().ConvertType("", 3);
    QVERIFY(control.Modified());
    control.Undo();
    QVERIFY(!control.Modified()); // back to what stands in the file

    Image loaded(*engine_);
    loaded.Import().FromFile(path, 0, "");
    QCOMPARE(loaded.Info().GetPixel(1, 1).RgbGet(), 0x0000FFu);
    QCOMPARE(loaded.Info().FileType(), 2);
    QCOMPARE(loaded.Info().Name(), QString("a.png"));
    QVERIFY(!loaded.Info().Changed());
}

void ImageTest::saveRefusesWhatCannotBeWritten() {
    Image image = made(4, 4, 5);
    QVERIFY(failureOf([&] { image.Export().Save("", 2, 0, -1); }) != 0);
    QVERIFY(failureOf([&] { image.Export().Save("/tmp/never.gif", 11, 0, -1); }) != 0);
    QVERIFY(failureOf([&] { image.Export().Save("/tmp/never", 0, 0, -1); }) != 0);
    QVERIFY(!QFile::exists("/tmp/never.gif") && !QFile::exists("/tmp/never"));
}

void ImageTest::failedSaveKeepsTheOldFile() {
    QTemporaryDir folder;
    const QString path = folder.filePath("wide.jpg");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("old content");
    file.close();
    Image image = made(66000, 1, 5); // wider than the format's field can hold
    QVERIFY(failureOf([&] { image.Export().Save(path, 1, 0, -1); }) != 0);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("old content"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

QTEST_MAIN(ImageTest)
#include "image.moc"
