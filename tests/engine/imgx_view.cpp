// The control on the screen: what it paints at every device pixel ratio, and what it tells of
// mouse, wheel, keys and region.
#include <QAccessible>
#include <QPainter>
#include <QProcess>
#include <QScrollBar>
#include <QSignalSpy>
#include <QWheelEvent>
#include <QtTest>
#include <cmath>
#include <random>

#include "engine/engine.h"
#include "engine/imgx.h"

using namespace kvn::engine;

namespace {

QImage noise(int width, int height, unsigned seed = 1) {
    std::mt19937 dice(seed);
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, 0xFF000000u | (dice() & 0xFFFFFFu));
    return image;
}

QImage grabbed(QWidget* widget) {
    return widget->grab().toImage().convertToFormat(QImage::Format_RGB32);
}

// Grabs paint into a picture of their own; this one paints as the screen does.
void paintNow(ImgX& control) {
    control.Refresh();
}

void turnWheel(ImgX& control, QPoint at, QPoint angle, Qt::KeyboardModifiers keys = {}) {
    QWheelEvent event(at, control.viewport()->mapToGlobal(QPointF(at)), QPoint(), angle,
                      Qt::NoButton, keys, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(control.viewport(), &event);
}

} // namespace

class ImgXViewTest : public QObject {
    Q_OBJECT

  private slots:
    void init();
    void cleanup();

    void exactAtEveryRatio_data();
    void exactAtEveryRatio();
    void exactAtThisRatio();
    void bufferedAndDirectLookTheSame();
    void changedPixelsShowAtEveryZoom();
    void barsAndScrollPlaces();
    void fitsTheWindow();
    void frozenUntilAutoDisplay();
    void afterPaintGetsCanvasPixels();
    void wheelZoomsAboutTheCursor();
    void eventsInOrder();
    void pressReportsItsPixelFirst();
    void rubberBand();
    void regionFromCode();
    void escapeDropsTheRegion();
    void handsPan();
    void zoomTools();
    void keys();
    void magnifier();
    void isToldToAssistivePrograms();

  private:
    void show(const QImage& picture, int width = 200, int height = 150);
    QWidget* canvas() const { return control_->viewport(); }
    void drag(QPoint from, QPoint to, Qt::MouseButton button = Qt::LeftButton);
    void press(int key, Qt::KeyboardModifiers modifiers = {});
    // Zoomed, with the picture's corner in the canvas's.
    void setZoomAtCorner(double zoom);

    std::unique_ptr<Engine> engine_;
    std::unique_ptr<ImgX> control_;
    QStringList told_;
};

void ImgXViewTest::init() {
    engine_ = std::make_unique<Engine>();
    control_ = std::make_unique<ImgX>(*engine_, QStringLiteral("ImgX"));
    ImgX* c = control_.get();
    told_.clear();
    const auto tell = [this](const char* text, auto... values) {
        QString line = QString::fromLatin1(text);
        ((line += QLatin1Char(' ') + QString::number(values)), ...);
        told_.append(line);
    };
    connect(c, &ImgX::MouseDown, this,
            [=](int b, int s, int x, int y) { tell("down", b, s, x, y); });
    connect(c, &ImgX::MouseMove, this,
            [=](int b, int s, int x, int y) { tell("move", b, s, x, y); });
    connect(c, &ImgX::MouseUp, this, [=](int b, int s, int x, int y) { tell("up", b, s, x, y); });
    connect(c, &ImgX::ImageMouseMove, this,
            [=](int b, int s, int x, int y) { tell("image", b, s, x, y); });
    connect(c, &ImgX::DblClick, this, [=] { tell("double"); });
    connect(c, &ImgX::ToolStarting, this, [=] { tell("tool"); });
    connect(c, &ImgX::RegionChanged, this,
            [=](double x, double y, double w, double h) { tell("region", x, y, w, h); });
    connect(c, &ImgX::RegionFinished, this,
            [=](int x1, int y1, int x2, int y2, bool*) { tell("finished", x1, y1, x2, y2); });
    connect(c, &ImgX::KeyDown, this, [=](int code, int shift) { tell("key", code, shift); });
    connect(c, &ImgX::KeyUp, this, [=](int code, int shift) { tell("keyup", code, shift); });
}

void ImgXViewTest::cleanup() {
    control_.reset();
    engine_.reset();
}

void ImgXViewTest::show(const QImage& picture, int width, int height) {
    control_->Import().FromPicture(QPixmap::fromImage(picture), QString());
    control_->resize(width, height);
    control_->setVisible(true);
    QVERIFY(QTest::qWaitForWindowExposed(control_.get()));
    told_.clear();
}

void ImgXViewTest::drag(QPoint from, QPoint to, Qt::MouseButton button) {
    QTest::mousePress(canvas(), button, {}, from);
    const QPointF global = canvas()->mapToGlobal(QPointF(to));
    QMouseEvent move(QEvent::MouseMove, to, global, Qt::NoButton, button, Qt::NoModifier);
    QCoreApplication::sendEvent(canvas(), &move);
    QTest::mouseRelease(canvas(), button, {}, to);
}

void ImgXViewTest::press(int key, Qt::KeyboardModifiers modifiers) {
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, modifiers);
        QCoreApplication::sendEvent(control_.get(), &event);
    }
}

void ImgXViewTest::setZoomAtCorner(double zoom) {
    control_->setZoom(zoom);
    control_->horizontalScrollBar()->setValue(0);
    control_->verticalScrollBar()->setValue(0);
}

// --- painting -----------------------------------------------------------------------------------

void ImgXViewTest::exactAtEveryRatio_data() {
    QTest::addColumn<QString>("ratio");
    for (const char* ratio : {"1", "1.25", "1.5", "2"})
        QTest::newRow(ratio) << QString::fromLatin1(ratio);
}

// The ratio of a screen is fixed when a program starts, so this one starts itself again.
void ImgXViewTest::exactAtEveryRatio() {
    QFETCH(QString, ratio);
    QProcess again;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_SCALE_FACTOR"), ratio);
    environment.insert(QStringLiteral("KVN_EXPECTED_RATIO"), ratio);
    again.setProcessEnvironment(environment);
    again.setProcessChannelMode(QProcess::MergedChannels);
    again.start(QCoreApplication::applicationFilePath(), {QStringLiteral("exactAtThisRatio")});
    QVERIFY(again.waitForFinished(60000));
    QVERIFY2(again.exitCode() == 0, again.readAll().constData());
}

void ImgXViewTest::exactAtThisRatio() {
    const double ratio = canvas()->devicePixelRatioF();
    if (qEnvironmentVariableIsSet("KVN_EXPECTED_RATIO"))
        QCOMPARE(ratio, qEnvironmentVariable("KVN_EXPECTED_RATIO").toDouble());
    const QImage picture = noise(700, 600);
    // Within a parent at a place that falls between device pixels.
    QWidget parent;
    parent.resize(220, 180);
    control_->setParent(&parent);
    control_->Import().FromPicture(QPixmap::fromImage(picture), QString());
    control_->setGeometry(7, 5, 201, 151);
    parent.show();
    QVERIFY(QTest::qWaitForWindowExposed(&parent));
    for (const double zoom : {1.0, 2.0, 3.0})
        for (const bool buffered : {true, false}) {
            control_->setDoubleBuffer(buffered);
            control_->setZoom(zoom);
            control_->horizontalScrollBar()->setValue(31);
            control_->verticalScrollBar()->setValue(17);
            QCOMPARE(control_->ScrollX(), int(31.5 / zoom));
            const QImage shown = grabbed(&parent);
            const int left = qRound(7 * ratio), top = qRound(5 * ratio);
            const int width = int(canvas()->width() * ratio) - 2;
            const int height = int(canvas()->height() * ratio) - 2;
            for (int y = 2; y < height; ++y)
                for (int x = 2; x < width; ++x)
                    QCOMPARE(shown.pixel(left + x, top + y),
                             picture.pixel(int((x + 31) / zoom), int((y + 17) / zoom)));
        }
    control_->setParent(nullptr);
}

// One control scrolls its back image, the other scales afresh each time.
void ImgXViewTest::bufferedAndDirectLookTheSame() {
    show(noise(700, 500));
    ImgX direct(*engine_, QStringLiteral("Direct"));
    direct.setDoubleBuffer(false);
    direct.Import().FromImgX(control_->Image(), 0, QString());
    direct.resize(control_->size());
    direct.setVisible(true);
    QVERIFY(QTest::qWaitForWindowExposed(&direct));
    std::mt19937 dice(5);
    for (int i = 0; i < 60; ++i) {
        const double zoom = std::exp2((int(dice() % 60) - 30) / 10.0);
        const int x = int(dice() % 300), y = int(dice() % 300);
        for (ImgX* c : {control_.get(), &direct}) {
            if (i % 4 == 0) c->setZoom(zoom);
            c->horizontalScrollBar()->setValue(x);
            c->verticalScrollBar()->setValue(y);
            if (i % 5 == 0) c->setAntialiasDisplay(i % 10 == 0);
            paintNow(*c);
        }
        QCOMPARE(direct.Zoom(), control_->Zoom());
        QCOMPARE(grabbed(control_->viewport()), grabbed(direct.viewport()));
    }
}

void ImgXViewTest::changedPixelsShowAtEveryZoom() {
    QImage picture(400, 300, QImage::Format_RGB32);
    picture.fill(Qt::white);
    for (const double zoom : {0.13, 0.5, 0.7, 1.0, 2.5}) {
        show(picture, 300, 250);
        setZoomAtCorner(zoom);
        paintNow(*control_);
        for (int i = 0; i < 40; ++i)
            for (int j = 0; j < 40; ++j)
                control_->Info().SetPixel(30 + i, 20 + j, Color(255, 0, 0));
        paintNow(*control_);
        const QImage shown = grabbed(canvas());
        QCOMPARE(shown.pixel(int(50 * zoom), int(40 * zoom)), 0xFFFF0000u);
        QCOMPARE(shown.pixel(int(76 * zoom), int(66 * zoom)), 0xFFFFFFFFu);
    }
}

void ImgXViewTest::barsAndScrollPlaces() {
    show(noise(190, 140));
    QCOMPARE(canvas()->size(), QSize(200, 150));
    QVERIFY(!control_->verticalScrollBar()->isVisible());
    show(noise(1000, 140)); // the bar below leaves too little height
    QVERIFY(control_->horizontalScrollBar()->isVisible());
    QVERIFY(control_->verticalScrollBar()->isVisible());
    QCOMPARE(control_->horizontalScrollBar()->maximum(), 1000 - canvas()->width());
    QCOMPARE(control_->verticalScrollBar()->maximum(), 140 - canvas()->height());
    QCOMPARE(control_->ClientWidth(), canvas()->width());
    control_->horizontalScrollBar()->setValue(300);
    QCOMPARE(control_->ScrollX(), 300);
    control_->setZoom(2);
    QCOMPARE(control_->horizontalScrollBar()->maximum(), 2000 - canvas()->width());
    show(noise(80, 60)); // keeps the zoom
    QCOMPARE(control_->ScrollX(), 0);
    QCOMPARE(control_->Zoom(), 2.0);
}

void ImgXViewTest::fitsTheWindow() {
    show(noise(800, 300));
    QSignalSpy zoomed(control_.get(), &ImgX::ZoomChanged);
    control_->setZoomFit(1); // not enabled
    QCOMPARE(zoomed.count(), 0);
    control_->setFitEnabled(true);
    control_->setZoomFit(1);
    QCOMPARE(control_->Zoom(), 0.25);
    control_->setZoomFit(3);
    QCOMPARE(zoomed.count(), 2);
    QVERIFY(!control_->verticalScrollBar()->isVisible());
    QVERIFY(control_->horizontalScrollBar()->isVisible());
    QCOMPARE(canvas()->height(), qRound(300 * control_->Zoom()));
    control_->setFitEnabled(false);
    const double zoom = control_->Zoom();
    control_->resize(300, 300);
    QCOMPARE(control_->Zoom(), zoom);
}

void ImgXViewTest::frozenUntilAutoDisplay() {
    QImage red(300, 300, QImage::Format_RGB32), blue(20, 20, QImage::Format_RGB32);
    red.fill(Qt::red);
    blue.fill(Qt::blue);
    for (const bool buffered : {true, false}) {
        control_->setDoubleBuffer(buffered);
        show(red);
        control_->verticalScrollBar()->setValue(40);
        control_->setAutoDisplay(false);
        control_->Import().FromPicture(QPixmap::fromImage(blue), QString());
        paintNow(*control_);
        QCOMPARE(grabbed(canvas()).pixel(5, 5), 0xFFFF0000u);
        control_->Undo();
        control_->setAutoDisplay(true);
        QCOMPARE(control_->ScrollY(), 40); // the small picture in between left no mark
        control_->setAutoDisplay(false);
        control_->Import().FromPicture(QPixmap::fromImage(blue), QString());
        QCoreApplication::processEvents();
        int paints = 0;
        const auto counting =
            connect(control_.get(), &ImgX::AfterPaint, this, [&paints] { ++paints; });
        control_->setAutoDisplay(true);
        QTRY_COMPARE(paints, 1);
        QTest::qWait(20);
        QCOMPARE(paints, 1);
        disconnect(counting);
        QCOMPARE(grabbed(canvas()).pixel(5, 5), 0xFF0000FFu);
    }
}

void ImgXViewTest::afterPaintGetsCanvasPixels() {
    show(noise(300, 300));
    connect(control_.get(), &ImgX::AfterPaint, this, [this](QPainter* painter) {
        painter->fillRect(10, 20, 30, 5, Qt::green);
        painter->translate(1000, 1000); // must not matter to anyone
        control_->Repaint();            // nor this
    });
    const QImage shown = grabbed(canvas());
    QCOMPARE(shown.pixel(10, 20), 0xFF00FF00u);
    QCOMPARE(shown.pixel(39, 24), 0xFF00FF00u);
    QVERIFY(shown.pixel(40, 20) != 0xFF00FF00u);
}

// --- mouse and wheel ----------------------------------------------------------------------------

void ImgXViewTest::wheelZoomsAboutTheCursor() {
    show(noise(2000, 2000));
    control_->horizontalScrollBar()->setValue(700);
    control_->verticalScrollBar()->setValue(800);
    QList<double> distances;
    connect(control_.get(), &ImgX::MouseWheel, this, [&](double distance) {
        distances.append(distance);
        control_->setZoom(control_->Zoom() * (1 + distance / 3 * 0.1));
    });
    const QPoint at(150, 30);
    turnWheel(*control_, at, {0, 120});
    QCOMPARE(distances, QList<double>{3});
    for (int i = 0; i < 5; ++i)
        turnWheel(*control_, at, {0, 8});
    QCOMPARE(distances, (QList<double>{3, 1}));
    for (int i = 0; i < 12; ++i)
        turnWheel(*control_, at, {0, 240});
    told_.clear();
    QMouseEvent move(QEvent::MouseMove, at, canvas()->mapToGlobal(QPointF(at)), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(canvas(), &move);
    QCOMPARE(told_, (QStringList{"move 0 0 150 30", "image 0 0 850 830"}));
    // Set without the wheel, the middle stays.
    control_->setZoom(4);
    control_->horizontalScrollBar()->setValue(4000);
    control_->setZoom(1);
    QCOMPARE(control_->ScrollX(), 1000 + canvas()->width() / 8 - canvas()->width() / 2);
    distances.clear();
    const int x = control_->ScrollX();
    turnWheel(*control_, at, {-120, 0});
    turnWheel(*control_, at, {0, -60}, Qt::ShiftModifier);
    QVERIFY(distances.isEmpty());
    QCOMPARE(control_->ScrollX(), x + 180);
}

void ImgXViewTest::eventsInOrder() {
    show(noise(400, 400));
    control_->setToolMode(1);
    control_->verticalScrollBar()->setValue(100);
    connect(control_.get(), &ImgX::MouseUp, this,
            [this] { told_.append(control_->HasRegion() ? "has" : "none"); });
    QMouseEvent settle(QEvent::MouseMove, QPointF(10, 10), canvas()->mapToGlobal(QPointF(10, 10)),
                       Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(canvas(), &settle);
    told_.clear();
    drag({10, 10}, {60, 40});
    QCOMPARE(told_,
             (QStringList{"down 1 0 10 10", "tool", "region 10 110 50 30", "move 1 0 60 40",
                          "image 1 0 60 140", "finished 10 110 60 140", "up 1 0 60 40", "has"}));
    told_.clear();
    QTest::mousePress(canvas(), Qt::RightButton, Qt::ControlModifier, {60, 40});
    QTest::mouseRelease(canvas(), Qt::RightButton, Qt::ControlModifier, {60, 40});
    QTest::mouseDClick(canvas(), Qt::MiddleButton, Qt::ShiftModifier, {60, 40});
    told_.removeAll("has");
    QCOMPARE(told_, (QStringList{"down 2 2 60 40", "up 2 2 60 40", "double"}));
}

void ImgXViewTest::pressReportsItsPixelFirst() {
    show(noise(400, 400));
    setZoomAtCorner(2);
    QTest::mousePress(canvas(), Qt::LeftButton, {}, {51, 20});
    QCOMPARE(told_.mid(told_.size() - 2), (QStringList{"image 1 0 25 10", "down 1 0 51 20"}));
    QTest::mouseRelease(canvas(), Qt::LeftButton, {}, {51, 20});
}

// --- region -------------------------------------------------------------------------------------

void ImgXViewTest::rubberBand() {
    show(noise(100, 80));
    control_->setToolMode(1);
    drag({20, 10}, {70, 30});
    QVERIFY(control_->HasRegion());
    QCOMPARE(QRect(control_->RegionLeft(), control_->RegionTop(), control_->RegionWidth(),
                   control_->RegionHeight()),
             QRect(20, 10, 50, 20));
    // Its frame is there, and stays one pixel wide at every zoom.
    for (const double zoom : {1.0, 2.0}) {
        setZoomAtCorner(zoom);
        const QImage shown = grabbed(canvas());
        for (const int x : {int(20 * zoom), int(70 * zoom) - 1}) {
            int whites = 0, blacks = 0;
            for (int y = int(10 * zoom); y < 30 * zoom; ++y) {
                whites += shown.pixel(x, y) == 0xFFFFFFFFu;
                blacks += shown.pixel(x, y) == 0xFF000000u;
            }
            QCOMPARE(whites + blacks, int(20 * zoom));
            QVERIFY(whites > 5 && blacks > 5);
        }
    }
    setZoomAtCorner(1);
    drag({90, 60}, {30, 140}); // beyond the picture, backwards
    QVERIFY(told_.contains("finished 90 60 30 80"));
    QCOMPARE(control_->RegionHeight(), 20);
    drag({50, 50}, {51, 51});
    QCOMPARE(control_->RegionWidth(), 1);
    told_.clear();
    QTest::mouseClick(canvas(), Qt::LeftButton, {}, {40, 40}); // a click ends it
    QVERIFY(!control_->HasRegion());
    QVERIFY(told_.contains("region 0 0 0 0"));
    QVERIFY(told_.filter("finished").isEmpty());
    QCOMPARE(control_->RegionWidth(), 100);

    connect(control_.get(), &ImgX::RegionFinished, this,
            [](int, int, int, int, bool* cancel) { *cancel = true; });
    drag({20, 10}, {70, 30});
    QVERIFY(!control_->HasRegion());
}

void ImgXViewTest::regionFromCode() {
    show(noise(100, 80));
    control_->setRegionLeft(-1);
    control_->setRegionTop(-1);
    control_->setRegionHeight(81);
    control_->setRegionWidth(101);
    QVERIFY(told_.isEmpty());
    control_->setHasRegion(true);
    control_->setHasRegion(true);
    QCOMPARE(told_, (QStringList{"region 0 0 100 80", "region 0 0 100 80"}));
    control_->setRegionWidth(11);
    QCOMPARE(told_.last(), QString("region 0 0 10 80"));
    control_->setHasRegion(false);
    // A flag alone means the whole picture, and is no rectangle to tell of.
    told_.clear();
    control_->setHasRegion(true);
    QVERIFY(control_->HasRegion() && told_.isEmpty());
    QCOMPARE(control_->RegionWidth(), 100);
    control_->setHasRegion(false);
    QCOMPARE(told_.last(), QString("region 0 0 0 0"));
    told_.clear();
    control_->setHasRegion(false);
    QVERIFY(told_.isEmpty());
}

void ImgXViewTest::escapeDropsTheRegion() {
    show(noise(100, 80));
    control_->setToolMode(1);
    drag({20, 10}, {70, 30});
    press(Qt::Key_Escape);
    QVERIFY(!control_->HasRegion());
    // In the middle of a drag: what follows is no drag any more.
    QTest::mousePress(canvas(), Qt::LeftButton, {}, {20, 20});
    QMouseEvent move(QEvent::MouseMove, QPointF(60, 60), canvas()->mapToGlobal(QPointF(60, 60)),
                     Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(canvas(), &move);
    QVERIFY(control_->HasRegion());
    press(Qt::Key_Escape);
    told_.clear();
    QCoreApplication::sendEvent(canvas(), &move);
    QTest::mouseRelease(canvas(), Qt::LeftButton, {}, {60, 60});
    QVERIFY(!control_->HasRegion());
    QVERIFY(told_.filter("finished").isEmpty());
}

// --- tools and keys -----------------------------------------------------------------------------

void ImgXViewTest::handsPan() {
    show(noise(1000, 1000));
    const auto place = [this] { return QPoint(control_->ScrollX(), control_->ScrollY()); };
    drag({100, 100}, {60, 70}, Qt::MiddleButton);
    QCOMPARE(place(), QPoint(40, 30));
    drag({100, 100}, {60, 70}); // no tool
    QCOMPARE(place(), QPoint(40, 30));
    control_->setToolMode(2);
    drag({60, 70}, {80, 90});
    QCOMPARE(place(), QPoint(20, 10));
    control_->setToolMode(1);
    QTest::keyPress(control_.get(), Qt::Key_Space);
    drag({100, 100}, {90, 95});
    QTest::keyRelease(control_.get(), Qt::Key_Space);
    QCOMPARE(place(), QPoint(30, 15));
    QVERIFY(!control_->HasRegion());
    drag({100, 100}, {90, 95});
    QVERIFY(control_->HasRegion());
}

void ImgXViewTest::zoomTools() {
    show(noise(1000, 1000));
    const auto pixelAt = [this](QPoint at) {
        QTest::mousePress(canvas(), Qt::RightButton, {}, at);
        QTest::mouseRelease(canvas(), Qt::RightButton, {}, at);
        return told_.filter("image").last();
    };
    control_->horizontalScrollBar()->setValue(300);
    control_->verticalScrollBar()->setValue(300);
    const QString pixel = pixelAt({50, 60});
    control_->setToolMode(4);
    QTest::mouseClick(canvas(), Qt::LeftButton, {}, {50, 60});
    QCOMPARE(control_->Zoom(), 2.0);
    control_->setToolMode(0);
    QTest::mouseClick(canvas(), Qt::LeftButton, {}, {20, 20});
    QCOMPARE(pixelAt({50, 60}), pixel);
    control_->setToolMode(4);
    QTest::mouseClick(canvas(), Qt::RightButton, {}, {50, 60});
    QTest::mouseClick(canvas(), Qt::LeftButton, Qt::ShiftModifier, {50, 60});
    QCOMPARE(control_->Zoom(), 0.5);
    control_->setZoom(100);
    QTest::mouseClick(canvas(), Qt::LeftButton, {}, {50, 60}); // no further, and not back
    QCOMPARE(control_->Zoom(), 100.0);

    control_->setToolMode(3);
    control_->setZoom(1);
    control_->horizontalScrollBar()->setValue(0);
    control_->verticalScrollBar()->setValue(0);
    QCoreApplication::processEvents();
    const int width = canvas()->width() / 4, height = canvas()->height() / 4;
    drag({10, 20}, {10 + width, 20 + height});
    QVERIFY(std::abs(control_->Zoom() - 4) < 0.1);
    QVERIFY(std::abs(control_->ScrollX() - 10) <= 1 && std::abs(control_->ScrollY() - 20) <= 1);
    QVERIFY(!control_->HasRegion());

    control_->setToolMode(12);
    const double zoom = control_->Zoom();
    drag({50, 60}, {50, 180});
    QVERIFY(std::abs(control_->Zoom() - zoom / 2) < 0.01);
}

void ImgXViewTest::keys() {
    show(noise(1000, 1000));
    press(Qt::Key_Control); // its own modifier is added by the event
    press(Qt::Key_Plus, Qt::ControlModifier);
    press(Qt::Key_A);
    QCOMPARE(told_.filter("key 1"), (QStringList{"key 17 2", "key 187 2"}));
    QVERIFY(told_.contains("key 65 0") && told_.contains("keyup 65 0"));
    press(Qt::Key_Down);
    QVERIFY(control_->ScrollY() > 0 && control_->ScrollX() == 0);
    press(Qt::Key_End);
    QCOMPARE(control_->ScrollX(), 1000 - canvas()->width());
    QCOMPARE(control_->ScrollY(), 1000 - canvas()->height());
    press(Qt::Key_Home, Qt::ControlModifier); // somebody else's
    QVERIFY(control_->ScrollX() > 0);
    press(Qt::Key_PageUp);
    QVERIFY(control_->ScrollY() < 1000 - canvas()->height());
    press(Qt::Key_Home);
    QCOMPARE(control_->ScrollX(), 0);
}

void ImgXViewTest::magnifier() {
    QImage picture(100, 100, QImage::Format_RGB32);
    picture.fill(Qt::white);
    picture.setPixel(30, 40, qRgb(1, 2, 3));
    show(picture);
    control_->ZoomWindow().Show();
    control_->ZoomWindow().setZoomRate(8);
    auto* window = control_->findChild<QWidget*>("ZoomWindow");
    QVERIFY(window && window->isVisible());
    QMouseEvent move(QEvent::MouseMove, QPointF(30, 40), canvas()->mapToGlobal(QPointF(30, 40)),
                     Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(canvas(), &move);
    const QImage shown = grabbed(window);
    int dark = 0;
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 200; ++x)
            dark += shown.pixel(x, y) == qRgb(1, 2, 3);
    QCOMPARE(dark, 64);
    control_->setVisible(false);
    QVERIFY(!window->isVisible());
    control_->setVisible(true);
    QVERIFY(window->isVisible());
    control_->ZoomWindow().Hide();
    QVERIFY(!window->isVisible());
}

void ImgXViewTest::isToldToAssistivePrograms() {
    show(noise(100, 80));
    QAccessibleInterface* access = QAccessible::queryAccessibleInterface(control_.get());
    QVERIFY(access);
    QCOMPARE(access->role(), QAccessible::Canvas);
    QCOMPARE(access->text(QAccessible::Name), QStringLiteral("Canvas"));
    QVERIFY(access->text(QAccessible::Description).contains("100 by 80"));
    QVERIFY(access->state().focusable);
}

QTEST_MAIN(ImgXViewTest)
#include "imgx_view.moc"
