// The scan converter against sampling, pens against the areas they must cover, clips and inks
// pixel by pixel.
#include <QtTest>
#include <functional>
#include <numbers>
#include <random>

#include "imaging/draw/fonts.h"
#include "imaging/draw/surface.h"

using namespace kvn::imaging;
using namespace kvn::imaging::draw;

namespace {

using Figure = std::vector<PointD>;

// How often the figure winds round the point.
int windingAt(const Figure& figure, PointD p) {
    int winding = 0;
    for (std::size_t i = 0; i < figure.size(); ++i) {
        const PointD a = figure[i], b = figure[(i + 1) % figure.size()];
        if ((a.y <= p.y) == (b.y <= p.y)) continue;
        const double x = a.x + (b.x - a.x) * (p.y - a.y) / (b.y - a.y);
        if (x < p.x) winding += a.y < b.y ? 1 : -1;
    }
    return winding;
}

double sampled(const Figure& figure, FillRule rule, int x, int y) {
    constexpr int grid = 24;
    int inside = 0;
    for (int j = 0; j < grid; ++j)
        for (int i = 0; i < grid; ++i) {
            const int winding = windingAt(figure, {x + (i + 0.5) / grid, y + (j + 0.5) / grid});
            inside += rule == FillRule::EvenOdd ? winding % 2 != 0 : winding != 0;
        }
    return 255.0 * inside / (grid * grid);
}

std::vector<int> coverage(const Figure& figure, FillRule rule, const Rect& clip) {
    std::vector<int> values(std::size_t(clip.width * clip.height));
    ScanConverter scan(clip);
    scan.add(figure);
    int lastRow = clip.y - 1;
    scan.sweep(rule, [&](int y, std::span<const Span> spans) {
        QVERIFY(y > lastRow && y < clip.bottom());
        lastRow = y;
        int end = clip.x;
        for (const Span& span : spans) {
            QVERIFY(span.x >= end && span.coverage > 0);
            end = span.x + span.length;
            for (int x = span.x; x < end; ++x)
                values[std::size_t((y - clip.y) * clip.width + x - clip.x)] = span.coverage;
        }
        QVERIFY(end <= clip.right());
    });
    return values;
}

double strokeArea(const Outline& outline, const StrokeStyle& style, const Affine& pen = {},
                  const Rect& visible = {0, 0, 100, 100}) {
    ScanConverter scan(visible);
    strokeOutline(outline, style, pen, visible,
                  [&](std::span<const PointD> polygon) { scan.add(polygon); });
    double area = 0;
    scan.sweep(FillRule::NonZero, [&](int, std::span<const Span> spans) {
        for (const Span& span : spans)
            area += span.length * span.coverage / 255.0;
    });
    return area;
}

Outline line(std::initializer_list<PointD> points, bool closed = false) {
    return {{points, closed}};
}

} // namespace

class DrawTest : public QObject {
    Q_OBJECT
  private slots:
    void coverageIsArea();
    void farAndStrange();
    void strokes();
    void dashes();
    void curves();
    void clips();
    void inks();
    void paints();
    void fonts();
};

void DrawTest::coverageIsArea() {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> place(-6, 18);
    const Rect clip{-2, 1, 13, 11};
    for (int round = 0; round < 60; ++round) {
        // Triangles cannot overlap themselves; of stars only pixels that one edge passes are exact.
        const bool star = round % 3 == 0;
        Figure figure(star ? 5 : 3);
        for (PointD& p : figure)
            p = {place(random), place(random)};
        for (const FillRule rule : {FillRule::EvenOdd, FillRule::NonZero}) {
            const auto values = coverage(figure, rule, clip);
            int far = 0;
            for (int y = 0; y < clip.height; ++y)
                for (int x = 0; x < clip.width; ++x) {
                    const double expected = sampled(figure, rule, x + clip.x, y + clip.y);
                    const int is = values[std::size_t(y * clip.width + x)];
                    far += std::abs(is - expected) > 8;
                }
            QVERIFY2(far <= (star ? 12 : 0), qPrintable(QString("%1: %2").arg(round).arg(far)));
        }
    }
    // Neighbours along a border add up to the whole.
    const auto left =
        coverage({{0, 0}, {7.3, 0}, {2.1, 9}, {0, 9}}, FillRule::NonZero, {0, 0, 9, 9});
    const auto right =
        coverage({{7.3, 0}, {9, 0}, {9, 9}, {2.1, 9}}, FillRule::NonZero, {0, 0, 9, 9});
    for (std::size_t i = 0; i < left.size(); ++i)
        QVERIFY(std::abs(left[i] + right[i] - 255) <= 1);
}

void DrawTest::farAndStrange() {
    const Rect clip{0, 0, 8, 8};
    const double huge = 1e300, none = std::nan("");
    const std::vector<int> all(64, 255), nothing(64, 0);
    QCOMPARE(coverage({{-huge, -huge}, {huge, -huge}, {huge, huge}, {-huge, huge}},
                      FillRule::NonZero, clip),
             all);
    QCOMPARE(coverage({{-1e8, 9}, {1e8, 9}, {0, 1e8}}, FillRule::NonZero, clip), nothing);
    QCOMPARE(
        coverage({{none, 0}, {0, 0}, {8, none}, {8, 0}, {8, 8}, {0, 8}}, FillRule::NonZero, clip),
        all);
    QCOMPARE(coverage({{3, 3}}, FillRule::NonZero, clip), nothing);
    // A thousand times over the same edges.
    Figure many;
    for (int i = 0; i < 20000; ++i)
        many.insert(many.end(), {{0, 0}, {8, 0}, {8, 8}, {0, 8}});
    QCOMPARE(coverage(many, FillRule::NonZero, clip), all);
    QCOMPARE(coverage(many, FillRule::EvenOdd, clip), nothing);
}

void DrawTest::strokes() {
    constexpr double pi = std::numbers::pi;
    const Outline level = line({{20, 50.3}, {60, 50.3}}),
                  corner = line({{20, 20}, {60, 20}, {60, 60}});
    const auto style = [](double width, LineCap cap, LineJoin join = LineJoin::Miter) {
        return StrokeStyle{width, cap, join, 10, {}};
    };
    struct Expected {
        const char* name;
        double is, expected;
    };
    const Expected cases[] = {
        {"flat", strokeArea(level, style(4, LineCap::Flat)), 160},
        {"square", strokeArea(level, style(4, LineCap::Square)), 176},
        {"round", strokeArea(level, style(4, LineCap::Round)), 160 + 4 * pi},
        {"mitred", strokeArea(corner, style(4, LineCap::Flat)), 320},
        {"bevelled", strokeArea(corner, style(4, LineCap::Flat, LineJoin::Bevel)), 318},
        {"rounded", strokeArea(corner, style(4, LineCap::Flat, LineJoin::Round)), 316 + pi},
        {"past the limit", strokeArea(corner, {4, LineCap::Flat, LineJoin::Miter, 1.2, {}}), 318},
        {"closed",
         strokeArea(line({{20, 20}, {60, 20}, {60, 60}, {20, 60}}, true), style(4, LineCap::Flat)),
         640},
        {"a dot", strokeArea(line({{50, 50}}), style(10, LineCap::Round)), 25 * pi},
        {"a pen twice as high", strokeArea(level, style(4, LineCap::Flat), Affine::scaling(1, 2)),
         320},
        {"cut at the border", strokeArea(line({{-1e7, 50}, {1e7, 50}}), style(4, LineCap::Flat)),
         400},
    };
    for (const Expected& c : cases)
        QVERIFY2(std::abs(c.is - c.expected) < 0.006 * c.expected + 0.5,
                 qPrintable(QString("%1: %2 for %3").arg(c.name).arg(c.is).arg(c.expected)));
}

void DrawTest::dashes() {
    const StrokeStyle style{2, LineCap::Flat, LineJoin::Miter, 10, {6, 4}};
    QVERIFY(std::abs(strokeArea(line({{10, 50}, {90, 50}}), style) - 96) < 0.5);
    // Round a corner, and around a figure.
    QVERIFY(std::abs(strokeArea(line({{10, 10}, {15, 10}, {15, 90}}), style) - 2 * 52) < 3);
    // What is seen of a line does not depend on where it begins out of sight.
    const double far = strokeArea(line({{-1e6, 50}, {95, 50}}), style, {}, {0, 40, 50, 20});
    QVERIFY(std::abs(far - strokeArea(line({{-10, 50}, {95, 50}}), style, {}, {0, 40, 50, 20})) <
            0.5);
    // Too fine to be seen, or too many: whole.
    QVERIFY(std::abs(strokeArea(line({{10, 50}, {90, 50}}),
                                {2, LineCap::Flat, LineJoin::Miter, 10, {0.1, 0.1}}) -
                     160) < 0.5);
}

void DrawTest::curves() {
    constexpr double pi = std::numbers::pi;
    Path path;
    path.addEllipse({50, 50}, 40, 20);
    for (const Polyline& polyline : path.flattened({}, 0.05))
        for (const PointD p : polyline.points)
            QVERIFY(std::abs(std::hypot((p.x - 50) / 40, (p.y - 50) / 20) - 1) < 0.003);
    path.clear();
    path.addRoundRectangle({0, 0}, {40, 30}, 10, 5);
    ScanConverter scan({0, 0, 100, 100});
    scan.add(path.flattened({}));
    double area = 0;
    scan.sweep(FillRule::NonZero, [&](int, std::span<const Span> spans) {
        for (const Span& span : spans)
            area += span.length * span.coverage / 255.0;
    });
    QVERIFY(std::abs(area - (1200 - (4 - pi) * 50)) < 2);
}

void DrawTest::clips() {
    const Rect whole{0, 0, 12, 10}, a{2, 1, 5, 6}, b{4, 3, 6, 6};
    const auto inside = [](const Rect& r, int x, int y) {
        return r.intersected({x, y, 1, 1}).width > 0;
    };
    const std::pair<Combine, std::function<bool(bool, bool)>> ways[] = {
        {Combine::And, [](bool p, bool q) { return p && q; }},
        {Combine::Or, [](bool p, bool q) { return p || q; }},
        {Combine::Xor, [](bool p, bool q) { return p != q; }},
        {Combine::Without, [](bool p, bool q) { return p && !q; }},
        {Combine::Replace, [](bool, bool q) { return q; }}};
    for (const auto& [how, rule] : ways)
        for (const bool outlines : {false, true}) {
            Clip clip(whole);
            if (outlines) {
                clip.add(outlineOf(a), FillRule::NonZero, Combine::And);
                clip.add(outlineOf(b), FillRule::NonZero, how);
            } else {
                clip.add(a, Combine::And);
                clip.add(b, how);
            }
            const Mask mask = maskOf(clip);
            for (int y = 0; y < whole.height; ++y)
                for (int x = 0; x < whole.width; ++x) {
                    const bool open =
                        inside(mask.area, x, y) && mask.row(y)[x - mask.area.x] == 255;
                    QCOMPARE(open, rule(inside(a, x, y), inside(b, x, y)));
                }
        }
}

// Every combination of pattern, source and picture, bit by bit, and by half.
void DrawTest::inks() {
    const Rgba p{0b11110000, 0b00111100, 1, 255}, s{0b11001100, 0b01010101, 2, 255},
        d{0b10101010, 0b00001111, 7, 255};
    Effort effort(1e12);
    const SolidPaint pattern(p), source(s);
    for (unsigned code = 0; code < 256; ++code) {
        Raster raster = Raster::filled(ImageType::Rgb24, 2, 1, d);
        Surface surface(raster, effort);
        const Ink ink{&pattern, &source, static_cast<std::uint8_t>(code)};
        surface.fill({{{{0, 0}, {1.5, 0}, {1.5, 1}, {0, 1}}, true}}, FillRule::NonZero, ink,
                     Clip(raster.rect()));
        const auto meets = [&](int x, int y, int z) {
            int result = 0;
            for (int bit = 0; bit < 8; ++bit)
                result |=
                    static_cast<int>(
                        code >> ((x >> bit & 1) * 4 + (y >> bit & 1) * 2 + (z >> bit & 1)) & 1)
                    << bit;
            return static_cast<std::uint8_t>(result);
        };
        const Rgba expected{meets(p.r, s.r, d.r), meets(p.g, s.g, d.g), meets(p.b, s.b, d.b), 255};
        QCOMPARE(raster.pixel(0, 0), expected);
        QVERIFY(std::abs(raster.pixel(1, 0).r - (expected.r + d.r) / 2.0) <= 1);
    }
}

void DrawTest::paints() {
    Raster image(ImageType::Rgba32, 3, 2);
    image.setPixel(0, 0, {255, 0, 0, 255});
    image.setPixel(2, 1, {0, 0, 255, 255});
    std::array<Rgba, 6> out;
    TilePaint(image, {-4, 5}).fetch(-4, 5, 6, out.data());
    QCOMPARE(out[0], out[3]);
    QCOMPARE(out[0], (Rgba{255, 0, 0, 255}));
    ImagePaint(image, Affine::scaling(0.5, 0.5), Sampling::Nearest).fetch(0, 3, 6, out.data());
    QCOMPARE(out[4], (Rgba{0, 0, 255, 255}));
    QCOMPARE(out[3].a, std::uint8_t{0});
    ImagePaint(image, Affine::scaling(0.5, 1), Sampling::Smooth).fetch(0, 0, 6, out.data());
    QCOMPARE(out[1], (Rgba{255, 0, 0, 191})); // clear neighbours take no colour
    const PointD corners[] = {{0, 0}, {4, 0}, {0, 4}};
    const Rgba colors[] = {{0, 0, 0, 255}, {200, 0, 0, 255}, {0, 100, 0, 255}};
    GradientPaint(corners, colors).fetch(1, 2, 1, out.data());
    QCOMPARE(out[0], (Rgba{75, 63, 0, 255}));
}

void DrawTest::fonts() {
    Effort effort(1e9);
    FontBook book(effort);
    Font* font = book.find({"Sans", "sans-serif", 400, false});
    if (!font) QSKIP("no fonts");
    const unsigned glyph = font->glyphOf(U'H');
    const Box box = font->outline(glyph).bounds();
    QVERIFY(box.top > -0.01 && box.top < 0.01 && box.bottom > 0.5 && box.bottom < 1);
    QVERIFY(font->advance(glyph) > box.right - box.left);
    QVERIFY(font->averageWidth > 0.3 && font->averageWidth < 0.8);
    QCOMPARE(book.find({"Sans", "sans-serif", 400, false}), font);
    QVERIFY(!book.findWith({"Sans", "", 400, false}, 0x10ffff));
    Effort spent(0);
    QVERIFY(!FontBook(spent).find({"Sans", "", 400, false}));
}

QTEST_GUILESS_MAIN(DrawTest)
#include "draw.moc"
