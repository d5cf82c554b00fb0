// Where the picture stands on the canvas, the region's rules, and input numbers: all without a
// window.
#include <QKeyEvent>
#include <QtTest>
#include <algorithm>
#include <cmath>
#include <random>

#include "engine/detail/imgx_view_keys.h"
#include "engine/detail/region.h"
#include "engine/detail/viewport.h"

using namespace kvn::engine::detail;
using kvn::imaging::Point;
using kvn::imaging::Rect;
using kvn::imaging::Size;

namespace {

Viewport viewportOf(Size picture, Size canvas, int bar = 16) {
    Viewport viewport;
    viewport.setPicture(picture);
    viewport.setCanvas(canvas, bar);
    return viewport;
}

} // namespace

class ViewportTest : public QObject {
    Q_OBJECT

  private slots:
    void barsComeInTurn();
    void fitsLeaveNoBarAndNoGap_data();
    void fitsLeaveNoBarAndNoGap();
    void fitWidthThatTheBarWouldSpoil();
    void scrollsOnlyOverThePicture();
    void zoomIsHeldInRange();
    void anchorStays();
    void zoomBoxIsCentred();
    void pixelsAndPlacesAgree();
    void regionSidesInAnyOrder();
    void regionIsClippedWhenAsked();
    void draggedRectangles();
    void wheelPartsAddUp();
    void keysHaveTheirCodes_data();
    void keysHaveTheirCodes();
};

void ViewportTest::barsComeInTurn() {
    struct Row {
        Size picture;
        bool across, down;
    };
    for (const Row& row :
         {Row{{200, 100}, false, false}, Row{{201, 84}, true, false}, Row{{201, 85}, true, true},
          Row{{184, 101}, false, true}, Row{{185, 101}, true, true}}) {
        const Viewport v = viewportOf(row.picture, {200, 100});
        QCOMPARE(v.needsBarAcross(), row.across);
        QCOMPARE(v.needsBarDown(), row.down);
        QCOMPARE(v.canvas(), (Size{row.down ? 184 : 200, row.across ? 84 : 100}));
    }
    QCOMPARE(viewportOf({}, {200, 100}).furthest(), (Point{0, 0}));
    QCOMPARE(viewportOf({500, 500}, {0, 0}).canvas(), (Size{0, 0}));
}

void ViewportTest::fitsLeaveNoBarAndNoGap_data() {
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<double>("zoom");
    QTest::newRow("best, wide") << 1 << 6000 << 4000 << 0.25;
    QTest::newRow("best, tall") << 1 << 1000 << 8000 << 0.125;
    QTest::newRow("best enlarges") << 1 << 16 << 20 << 50.0;
    QTest::newRow("width, beside the bar") << 2 << 6000 << 4000 << 1584 / 6000.0;
    QTest::newRow("width, all of it") << 2 << 6000 << 3000 << 1600 / 6000.0;
    QTest::newRow("height, all of it") << 3 << 6000 << 4000 << 0.25;
    QTest::newRow("height, above the bar") << 3 << 8000 << 4000 << 984 / 4000.0;
    QTest::newRow("no such kind") << 4 << 6000 << 4000 << 1.0;
}

void ViewportTest::fitsLeaveNoBarAndNoGap() {
    QFETCH(int, kind);
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(double, zoom);
    Viewport v = viewportOf({width, height}, {1600, 1000});
    QCOMPARE(v.fittingZoom(kind), zoom);
    v.setZoom(v.fittingZoom(kind), {0, 0});
    if (kind == 1) QVERIFY(!v.needsBarAcross() && !v.needsBarDown());
    if (kind == 2) QVERIFY(!v.needsBarAcross() && v.scaled().width == v.canvas().width);
    if (kind == 3) QVERIFY(!v.needsBarDown() && v.scaled().height == v.canvas().height);
}

// Too high without a bar, low enough with one: as wide as it gets without.
void ViewportTest::fitWidthThatTheBarWouldSpoil() {
    Viewport v = viewportOf({1600, 1010}, {1600, 1000});
    v.setZoom(v.fittingZoom(2), {0, 0});
    QCOMPARE(v.scaled(), (Size{1584, 1000}));
    QVERIFY(!v.needsBarAcross() && !v.needsBarDown());
    // Every size: the bar along the fitted axis never shows, and a fit again changes nothing.
    std::mt19937 dice(7);
    for (int i = 0; i < 5000; ++i) {
        Viewport any = viewportOf({1 + int(dice() % 3000), 1 + int(dice() % 3000)},
                                  {30 + int(dice() % 1500), 30 + int(dice() % 1500)});
        const int kind = 1 + i % 3;
        any.setZoom(any.fittingZoom(kind), {0, 0});
        QVERIFY(kind == 3 || !any.needsBarAcross());
        QVERIFY(kind == 2 || !any.needsBarDown());
        QCOMPARE(any.fittingZoom(kind), any.zoom());
    }
}

void ViewportTest::scrollsOnlyOverThePicture() {
    Viewport v = viewportOf({500, 300}, {200, 100});
    QCOMPARE(v.furthest(), (Point{500 - 184, 300 - 84}));
    QVERIFY(v.scrollTo(50, 60));
    QCOMPARE(v.origin(), (Point{50, 60}));
    QVERIFY(!v.scrollTo(50, 60));
    v.scrollTo(1'000'000'000'000, -5);
    QCOMPARE(v.origin(), (Point{316, 0}));
    v.setPicture({210, 50}); // less to scroll over
    QCOMPARE(v.origin(), (Point{10, 0}));
    v.setZoom(0.5, {0, 0});
    QCOMPARE(v.origin(), (Point{0, 0}));
}

void ViewportTest::zoomIsHeldInRange() {
    Viewport v = viewportOf({500, 300}, {200, 100});
    QVERIFY(!v.setZoom(1, {0, 0}));
    QVERIFY(!v.setZoom(std::nan(""), {0, 0}));
    v.setZoom(-3, {0, 0});
    QCOMPARE(v.zoom(), Viewport::smallestZoom);
    v.setZoom(1e9, {0, 0});
    QCOMPARE(v.zoom(), Viewport::largestZoom);
    QCOMPARE(v.scaled(), (Size{500'000, 300'000}));
}

void ViewportTest::anchorStays() {
    Viewport v = viewportOf({6000, 4000}, {1600, 1000});
    v.scrollTo(2000, 1500);
    for (const RealPoint anchor : {RealPoint{700.5, 300.5}, RealPoint{3.5, 980.5}}) {
        const Point origin = v.origin();
        const RealPoint before = v.imagePoint(anchor);
        for (const double zoom : {1.1, 1.21, 3.0, 16.0, 4.7, 0.9}) {
            v.setZoom(zoom, anchor);
            const RealPoint now = v.imagePoint(anchor);
            QVERIFY(std::abs(now.x - before.x) <= 0.51 / zoom);
            QVERIFY(std::abs(now.y - before.y) <= 0.51 / zoom);
        }
        // Back again, even by way of a zoom at which the edges did not let it stay.
        v.setZoom(0.01, anchor);
        v.setZoom(1, anchor);
        QCOMPARE(v.origin(), origin);
    }
    // What was held counts no more after the picture was moved by hand.
    v.setZoom(2, {700.5, 300.5});
    v.scrollTo(1000, 1000);
    const RealPoint held = v.imagePoint({700.5, 300.5});
    v.setZoom(4, {700.5, 300.5});
    QVERIFY(std::abs(v.imagePoint({700.5, 300.5}).x - held.x) < 0.2);
}

void ViewportTest::zoomBoxIsCentred() {
    Viewport v = viewportOf({6000, 4000}, {1616, 1016});
    QVERIFY(v.zoomTo({3000, 2000, 400, 100}, 16));
    QCOMPARE(v.zoom(), 4.0);
    QCOMPARE(v.onCanvas({3000, 2000, 400, 100}), (Rect{0, 300, 1600, 400}));
    v.zoomTo({10, 10, 1, 1}, 16);
    QCOMPARE(v.zoom(), 16.0);
    QVERIFY(!v.zoomTo({}, 16));
}

void ViewportTest::pixelsAndPlacesAgree() {
    Viewport v = viewportOf({6000, 4000}, {1600, 1000});
    for (const double zoom : {0.3, 0.5, 1.0, 1.7, 3.0, 16.0}) {
        v.setZoom(zoom, {0, 0});
        v.scrollTo(333, 222);
        for (int x = 0; x < 200; x += 7) {
            const int column = v.imagePixel(x, 0).x;
            const Rect place = v.onCanvas({column, 0, 1, 1});
            if (zoom >= 1) QVERIFY(place.x <= x && x < place.right());
            QVERIFY(std::abs(v.imagePoint({x + 0.5, 0}).x - (column + 0.5)) <= 0.5 + 1e-9);
        }
    }
    v.setZoom(0.01, {0, 0}); // the picture's corner is its first pixel however small it is shown
    QCOMPARE(v.firstPixel(), (Point{0, 0}));
    QCOMPARE(v.imagePixel(0, 0), (Point{50, 50}));
    v.setZoom(1, {0, 0});
    v.scrollTo(40, 30);
    QCOMPARE(v.firstPixel(), (Point{40, 30}));
    QCOMPARE(v.imagePixel(7, 9), (Point{47, 39}));
    QCOMPARE(v.imagePixel(-50, 0), (Point{-10, 30}));
}

// Written one pixel outside on two sides, as "all" is written, in each of the 24 orders.
void ViewportTest::regionSidesInAnyOrder() {
    const Size picture{30, 20};
    int order[] = {0, 1, 2, 3};
    do {
        Region region;
        for (const int side : order) {
            if (side == 0) region.setLeft(-1, picture);
            if (side == 1) region.setTop(-1, picture);
            if (side == 2) region.setWidth(31, picture);
            if (side == 3) region.setHeight(21, picture);
        }
        QVERIFY(!region.isInForce(picture));
        region.setFlag(true);
        QVERIFY(region.isInForce(picture));
        QCOMPARE(region.clipped(picture), (Rect{0, 0, 30, 20}));
    } while (std::next_permutation(std::begin(order), std::end(order)));
}

void ViewportTest::regionIsClippedWhenAsked() {
    const Size picture{30, 20}, smaller{8, 8};
    const Rect all{0, 0, 30, 20};
    Region region;
    QCOMPARE(region.clipped(picture), all);
    region.setFlag(true); // nothing drawn
    QVERIFY(region.isInForce(picture) && !region.isInForce({}));
    QCOMPARE(region.clipped(picture), all);

    region.draw({5, 6, 100, 3});
    QCOMPARE(region.clipped(picture), (Rect{5, 6, 25, 3}));
    QCOMPARE(region.clipped(smaller), (Rect{5, 6, 3, 2}));
    region.setLeft(10, picture);
    QCOMPARE(region.clipped(picture), (Rect{10, 6, 20, 3}));
    QVERIFY(!region.isInForce(smaller)); // nothing of it is left
    QCOMPARE(region.clipped(smaller), (Rect{0, 0, 8, 8}));

    region.setFlag(false);
    QCOMPARE(region.clipped(picture), all);
    region.setFlag(true); // the old rectangle is forgotten
    QCOMPARE(region.clipped(picture), all);
}

void ViewportTest::draggedRectangles() {
    QCOMPARE(draggedRect(10, 20, 110, 70), (Rect{10, 20, 100, 50}));
    QCOMPARE(draggedRect(110, 70, 10, 20), (Rect{10, 20, 100, 50}));
    QCOMPARE(draggedRect(10, 20, 11, 20), (Rect{10, 20, 1, 1}));
    QCOMPARE(draggedRect(0.4, 0.6, 2.6, 2.4), (Rect{0, 1, 3, 1}));
    QCOMPARE(draggedRect(-3.2, 0, 1e300, 1).x, -3);
}

void ViewportTest::wheelPartsAddUp() {
    WheelCounter wheel;
    QCOMPARE(wheel.add(120), 3);
    QCOMPARE(wheel.add(-240), -6);
    int sum = 0;
    for (int i = 0; i < 15; ++i)
        sum += wheel.add(8);
    QCOMPARE(sum, 3);
    QCOMPARE(wheel.add(39), 0);
    QCOMPARE(wheel.add(-39), 0); // turned round: the rest is gone
    QCOMPARE(wheel.add(39), 0);
    QCOMPARE(wheel.add(1), 1);
}

void ViewportTest::keysHaveTheirCodes_data() {
    QTest::addColumn<int>("key");
    QTest::addColumn<bool>("keypad");
    QTest::addColumn<int>("code");
    QTest::newRow("+") << int(Qt::Key_Plus) << false << 187;
    QTest::newRow("= +") << int(Qt::Key_Equal) << false << 187;
    QTest::newRow("-") << int(Qt::Key_Minus) << false << 189;
    QTest::newRow("keypad +") << int(Qt::Key_Plus) << true << 107;
    QTest::newRow("keypad -") << int(Qt::Key_Minus) << true << 109;
    QTest::newRow("z") << int(Qt::Key_Z) << false << int('Z');
    QTest::newRow("7") << int(Qt::Key_7) << false << int('7');
    QTest::newRow("keypad 7") << int(Qt::Key_7) << true << 103;
    QTest::newRow("enter") << int(Qt::Key_Enter) << true << 13;
    QTest::newRow("escape") << int(Qt::Key_Escape) << false << 27;
    QTest::newRow("left") << int(Qt::Key_Left) << false << 37;
    QTest::newRow("down") << int(Qt::Key_Down) << false << 40;
    QTest::newRow("delete") << int(Qt::Key_Delete) << false << 46;
    QTest::newRow("control") << int(Qt::Key_Control) << false << 17;
    QTest::newRow("F5") << int(Qt::Key_F5) << false << 116;
    QTest::newRow("no code") << int(Qt::Key_LaunchMail) << false << 0;
}

void ViewportTest::keysHaveTheirCodes() {
    QFETCH(int, key);
    QFETCH(bool, keypad);
    QFETCH(int, code);
    const QKeyEvent event(QEvent::KeyPress, key, keypad ? Qt::KeypadModifier : Qt::NoModifier);
    QCOMPARE(virtualKey(event), code);
}

QTEST_GUILESS_MAIN(ViewportTest)
#include "viewport.moc"
