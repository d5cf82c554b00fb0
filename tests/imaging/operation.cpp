// Every operation of the table, whatever it does: over all image types and awkward sizes, with
// ordinary and extreme arguments, on one thread and on many, cancelled half-way. What single
// operations compute is tested by family.
#include <QtTest>
#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <new>
#include <set>
#include <stdexcept>
#include <string_view>

#include "basic/error.h"
#include "imaging/convert.h"
#include "imaging/operation.h"
#include "reference/pictures.h"

using namespace kvn::imaging;
using namespace reference;

namespace {

enum class Choice { Middle, Least, Most, Beyond };
constexpr Choice choices[] = {Choice::Middle, Choice::Least, Choice::Most, Choice::Beyond};

// A number for the argument. Sizes stay small enough for a test.
double numberFor(const Argument& argument, Choice choice) {
    constexpr double largest = 300;
    const bool isLength = argument.unit == "px";
    const double low = isLength ? std::max(argument.minimum, -largest) : argument.minimum;
    const double high = isLength ? std::min(argument.maximum, largest) : argument.maximum;
    switch (choice) {
    case Choice::Middle:
        return std::floor((low + high) / 2);
    case Choice::Least:
        return low;
    case Choice::Most:
        return high;
    default:
        return argument.enforced ? high : high + (isLength ? 40 : high - low + 1);
    }
}

Value valueFor(const Argument& argument, Choice choice) {
    if (argument.optional && choice == Choice::Least) return Nothing{};
    const double number = numberFor(argument, choice);
    switch (argument.kind) {
    case ArgumentKind::Integer:
        return static_cast<std::int64_t>(number);
    case ArgumentKind::Number:
        return number;
    case ArgumentKind::Boolean:
        return choice == Choice::Most;
    case ArgumentKind::Text:
        return std::string(choice == Choice::Least ? "" : "text");
    case ArgumentKind::Color:
        return Rgba{200, 100, 50, choice == Choice::Middle ? uchar{128} : uchar{255}};
    case ArgumentKind::Point:
        return choice == Choice::Beyond ? Point{-90, 4000} : Point{3, 2};
    case ArgumentKind::Matrix: {
        Matrix matrix{3, 3, {0, 1, 0, 1, 4, 1, 0, 1, 0}};
        if (argument.note.find("256") != argument.note.npos) {
            matrix = {1, 256, std::vector<double>(256)};
            for (std::size_t i = 0; i < 256; ++i)
                matrix.values[i] = 255.0 - static_cast<double>(i);
        }
        return matrix;
    }
    case ArgumentKind::Image:
        return std::make_shared<const Raster>(
            noise(everyType[static_cast<int>(choice) + 3], {20, 11}));
    case ArgumentKind::Palette:
        return Palette::grayRamp();
    }
    return Nothing{};
}

std::vector<Value> valuesFor(const Operation& operation, Choice choice) {
    std::vector<Value> values;
    for (const Argument& argument : operation.arguments)
        values.push_back(valueFor(argument, choice));
    return values;
}

// Those of the choices that make a difference.
std::vector<Choice> choicesFor(const Operation& operation) {
    std::vector<Choice> distinct;
    for (const Choice choice : choices)
        if (std::ranges::none_of(distinct, [&](Choice other) {
                return valuesFor(operation, other) == valuesFor(operation, choice);
            }))
            distinct.push_back(choice);
    return distinct;
}

// The pages; none if the operation refused these arguments with a proper error.
std::vector<Raster> resultOf(const Operation& operation, const Raster& source, Choice choice,
                             int threads) {
    Task task;
    task.threads = threads;
    try {
        return runOperation(operation, source, valuesFor(operation, choice), task);
    } catch (const kvn::RuntimeError& error) {
        if (error.description().empty() || error.number() == 0) throw;
        return {};
    }
}

bool samePages(const std::vector<Raster>& a, const std::vector<Raster>& b) {
    return std::ranges::equal(a, b,
                              [](const Raster& x, const Raster& y) { return x.samePixels(y); });
}

bool isGray(ImageType type) {
    return type == ImageType::Gray8 || type == ImageType::GrayAlpha16;
}

bool typeFits(const Operation& operation, ImageType from, ImageType to) {
    const ImageType colored = hasAlpha(from) ? ImageType::Rgba32 : ImageType::Rgb24;
    // What treats the channels differently turns grey into colour.
    if (isGray(from) && to == colored && operation.types != TypeRule::Fixed)
        return operation.alpha != AlphaRule::None;
    switch (operation.types) {
    case TypeRule::Keeps:
        return to == from;
    case TypeRule::Promotes:
        return to == (isGray(from) ? from : colored);
    default:
        return true;
    }
}

bool sameAlpha(const Raster& a, const Raster& b) {
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            if (a.pixel(x, y).a != b.pixel(x, y).a) return false;
    return true;
}

int errorOf(const Operation& operation, std::vector<Value> values) {
    try {
        checkArguments(operation, std::move(values));
    } catch (const kvn::RuntimeError& error) {
        if (error.source() != operation.name) return -1;
        return error.number();
    }
    return 0;
}

constexpr Argument allKinds[] = {
    {"whole", ArgumentKind::Integer, 0, 10, "", "", false, true},
    {"real", ArgumentKind::Number, 0, 1, "", "", false, false},
    {"flag", ArgumentKind::Boolean, 0, 0, "", ""},
    {"image", ArgumentKind::Image, 0, 0, "", "", true},
};
Raster runNothing(const Raster& source, const Arguments&, Task&) {
    return source;
}
Raster runGreedily(const Raster&, const Arguments&, Task&) {
    throw std::bad_alloc();
}
const Operation probe = {
    .name = "Test.Probe", .undoName = "", .arguments = allKinds, .run = runNothing, .note = ""};

} // namespace

class OperationTest : public QObject {
    Q_OBJECT

  private slots:
    void tableIsWhole();
    void checksArguments();
    void convertsArguments();
    void reportsExhaustedMemory();
    void survivesEverything_data() { rows(); }
    void survivesEverything();
    void doesNotDependOnThreads_data() { rows(); }
    void doesNotDependOnThreads();
    void cancelLeavesNoTrace_data() { rows(); }
    void cancelLeavesNoTrace();
    void cropClips();
    void flipMirrors();
    void canvasPlacesThePicture();

  private:
    static void rows();
};

void OperationTest::rows() {
    QTest::addColumn<const Operation*>("operation");
    for (const Operation* operation : operations())
        QTest::addRow("%s", std::string(operation->name).c_str()) << operation;
}

void OperationTest::tableIsWhole() {
    std::set<std::string_view> names;
    std::string_view last;
    for (const Operation* operation : operations()) {
        QVERIFY(names.insert(operation->name).second);
        QVERIFY(last < operation->name);
        last = operation->name;
        QVERIFY(findOperation(operation->name) == operation);
        QVERIFY(!operation->undoName.empty() && !operation->note.empty());
        QVERIFY((operation->run == nullptr) != (operation->runPages == nullptr));
        std::set<std::string_view> arguments;
        for (const Argument& argument : operation->arguments) {
            QVERIFY(arguments.insert(argument.name).second);
            QVERIFY(argument.minimum <= argument.maximum);
        }
    }
    QVERIFY(!findOperation("Effects.") && !findOperation("") && !findOperation("zzz"));
}

void OperationTest::checksArguments() {
    const Value image = std::make_shared<const Raster>(noise(ImageType::Rgb24, {1, 1}));
    const auto error = [](std::vector<Value> values) { return errorOf(probe, std::move(values)); };
    QCOMPARE(error({std::int64_t{1}, 0.5, true, image}), 0);
    QCOMPARE(error({std::int64_t{1}, 0.5, true, Nothing{}}), 0);
    QCOMPARE(error({std::int64_t{1}, 0.5, true}), 0);
    QCOMPARE(error({std::int64_t{1}, 0.5}), kvn::errors::invalidCall);
    QCOMPARE(error({std::int64_t{1}, 0.5, true, image, true}), kvn::errors::invalidCall);
    QCOMPARE(error({Nothing{}, 0.5, true, image}), kvn::errors::invalidCall);
    QCOMPARE(error({std::int64_t{11}, 0.5, true, image}), kvn::errors::invalidCall);
    QCOMPARE(error({std::int64_t{1}, 77.0, true, image}), 0); // a range that is advice only
    QCOMPARE(error({std::string("1"), 0.5, true, image}), kvn::errors::typeMismatch);
    QCOMPARE(error({std::int64_t{1}, 0.5, true, 3.0}), kvn::errors::typeMismatch);
    QCOMPARE(error({std::int64_t{1}, Rgba{}, true, image}), kvn::errors::typeMismatch);
    QCOMPARE(error({std::int64_t{1}, 0.5, true, std::make_shared<const Raster>()}),
             kvn::errors::invalidCall);
    const double infinite = std::numeric_limits<double>::infinity();
    QCOMPARE(error({infinite, 0.5, true}), kvn::errors::overflow);
    QCOMPARE(error({std::int64_t{1}, std::nan(""), true}), kvn::errors::overflow);
    Task task;
    QVERIFY_EXCEPTION_THROWN(runOperation(probe, Raster(), {std::int64_t{1}, 0.5, true}, task),
                             kvn::RuntimeError);
}

void OperationTest::convertsArguments() {
    const Arguments halves = checkArguments(probe, {2.5, std::int64_t{3}, 0.0});
    QCOMPARE(halves.integer(0), 2); // to the even neighbour
    QCOMPARE(halves.number(1), 3.0);
    QCOMPARE(halves.boolean(2), false);
    QVERIFY(halves.isNothing(3));
    QCOMPARE(checkArguments(probe, {false, true, std::int64_t{-4}}).boolean(2), true);
    QCOMPARE(Arguments({std::int64_t{1} << 40}).integer(0), std::numeric_limits<int>::max());
    QCOMPARE(Arguments({-(std::int64_t{1} << 40)}).integer(0), std::numeric_limits<int>::min());
}

void OperationTest::reportsExhaustedMemory() {
    const Operation greedy = {
        .name = "Test.Greedy", .undoName = "", .arguments = {}, .run = runGreedily, .note = ""};
    Task task;
    try {
        runOperation(greedy, noise(ImageType::Gray8, {2, 2}), {}, task);
        QFAIL("no error");
    } catch (const kvn::RuntimeError& error) {
        QCOMPARE(error.number(), kvn::errors::outOfMemory);
    }
}

void OperationTest::survivesEverything() {
    QFETCH(const Operation*, operation);
    for (const ImageType type : everyType)
        for (const Size size : awkwardSizes)
            for (const Choice choice : choicesFor(*operation)) {
                const Raster source = noise(type, size);
                const Raster before = deepCopy(source);
                for (const Raster& page : resultOf(*operation, source, choice, 0)) {
                    QVERIFY(!page.isEmpty());
                    const bool unchanged = page.samePixels(source); // nothing to be done
                    QVERIFY2(unchanged || typeFits(*operation, type, page.type()),
                             nameOf(type).c_str());
                    if (operation->alpha == AlphaRule::ColorOnly && page.size() == size)
                        QVERIFY2(sameAlpha(page, source), nameOf(type).c_str());
                }
                QVERIFY(source.samePixels(before));
            }
}

void OperationTest::doesNotDependOnThreads() {
    QFETCH(const Operation*, operation);
    for (const ImageType type : everyType) {
        const Raster source = noise(type, {61, 150});
        for (const Choice choice : choicesFor(*operation))
            QVERIFY2(samePages(resultOf(*operation, source, choice, 1),
                               resultOf(*operation, source, choice, 4)),
                     nameOf(type).c_str());
    }
}

void OperationTest::cancelLeavesNoTrace() {
    QFETCH(const Operation*, operation);
    const Raster source = noise(ImageType::Rgba32, {120, 200});
    const Raster before = deepCopy(source);
    double last = 0;
    Task task([&last](double fraction) {
        if (fraction < last) throw std::logic_error("progress falls");
        last = fraction;
        return fraction < 0.5;
    });
    try {
        runOperation(*operation, source, valuesFor(*operation, Choice::Middle), task);
    } catch (const Cancelled&) {
    } catch (const kvn::RuntimeError&) {
    }
    QVERIFY(source.samePixels(before));
    // The next run is as good as ever.
    QVERIFY(samePages(resultOf(*operation, source, Choice::Middle, 0),
                      resultOf(*operation, before, Choice::Middle, 0)));
}

void OperationTest::cropClips() {
    Task task;
    const auto& crop = *findOperation("Geometry.Crop");
    const auto rectangle = [](int x, int y, int width, int height) {
        return std::vector<Value>{std::int64_t{x}, std::int64_t{y}, std::int64_t{width},
                                  std::int64_t{height}};
    };
    const Raster source = noise(ImageType::Bit1, {30, 20});
    const Raster part = runOperation(crop, source, rectangle(-4, 13, 20, 20), task).front();
    QCOMPARE(part.size(), (Size{16, 7}));
    QVERIFY(part.samePixels(source.cropped({0, 13, 16, 7})));
    QVERIFY_EXCEPTION_THROWN(runOperation(crop, source, rectangle(30, 0, 5, 5), task),
                             kvn::RuntimeError);
}

void OperationTest::flipMirrors() {
    const auto& flip = *findOperation("Geometry.Flip");
    for (const ImageType type : everyType)
        for (const Size size : awkwardSizes) {
            const Raster source = noise(type, size);
            for (const int direction : {0, 1}) {
                Task task;
                const std::vector<Value> values{std::int64_t{direction}};
                const Raster once = runOperation(flip, source, values, task).front();
                for (int y = 0; y < size.height; ++y)
                    for (int x = 0; x < size.width; ++x)
                        QCOMPARE(once.pixel(x, y), direction == 0
                                                       ? source.pixel(size.width - 1 - x, y)
                                                       : source.pixel(x, size.height - 1 - y));
                QVERIFY(runOperation(flip, once, values, task).front().samePixels(source));
            }
        }
}

void OperationTest::canvasPlacesThePicture() {
    const auto& canvas = *findOperation("Geometry.ResizeCanvas");
    const Rgba back{12, 200, 99, 77};
    for (const ImageType type : everyType)
        for (const Point offset :
             {Point{0, 0}, Point{3, 1}, Point{-5, -2}, Point{90, 0}, Point{0, -40}}) {
            Raster source = noise(type, {21, 9});
            if (type == ImageType::Indexed8) source.setPalette(Palette(std::vector<Rgba>(40)));
            Task task;
            const Raster result = runOperation(canvas, source,
                                               {std::int64_t{27}, std::int64_t{14}, back,
                                                std::int64_t{offset.x}, std::int64_t{offset.y}},
                                               task)
                                      .front();
            QCOMPARE(result.size(), (Size{27, 14}));
            // Only the palette with room can take the colour up.
            QCOMPARE(result.type(), hasAlpha(type)                ? ImageType::Rgba32
                                    : type == ImageType::Indexed8 ? type
                                                                  : ImageType::Rgb24);
            const Rgba bare{back.r, back.g, back.b, hasAlpha(type) ? back.a : std::uint8_t{255}};
            for (int y = 0; y < 14; ++y)
                for (int x = 0; x < 27; ++x) {
                    const Point from{x - offset.x, y - offset.y};
                    const bool covered = from.x >= 0 && from.y >= 0 && from.x < 21 && from.y < 9;
                    QCOMPARE(result.pixel(x, y), covered ? source.pixel(from.x, from.y) : bare);
                }
            const std::vector<Value> inside{std::int64_t{9}, std::int64_t{4}, back,
                                            std::int64_t{-7}, std::int64_t{-3}};
            QCOMPARE(runOperation(canvas, source, inside, task).front().type(), type);
        }
}

QTEST_GUILESS_MAIN(OperationTest)
#include "operation.moc"
