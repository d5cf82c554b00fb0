#include "imaging/codecs/metafile/drawing.h"

#include <algorithm>

namespace kvn::imaging::metafile {

namespace {

constexpr std::size_t mostSaved = 256;
constexpr std::size_t mostPathPoints = 4 << 20;

// Hundredths of a millimetre that a unit has in the modes of fixed size.
double unitOf(int mode) {
    constexpr double units[] = {0, 0, 10, 1, 25.4, 2.54, 2540.0 / 1440, 10};
    return mode >= mapLowMetric && mode <= mapIsotropic ? units[mode] : 0;
}

} // namespace

Drawing::Drawing(const Rect& canvas, draw::Surface* surface, draw::Effort& effort,
                 const Affine& deviceToCanvas, PointD perMillimetre)
    : canvas_(canvas), surface_(surface), effort_(effort), deviceToCanvas_(deviceToCanvas),
      perMillimetre_(perMillimetre), state_(canvas), fonts_(effort) {}

void Drawing::save() {
    if (saved_.size() < mostSaved) saved_.push_back(state_);
}

void Drawing::restore(int level) {
    const int count = static_cast<int>(saved_.size());
    const int target = level < 0 ? count + level : level - 1;
    if (target < 0 || target >= count) return;
    state_ = std::move(saved_[static_cast<std::size_t>(target)]);
    saved_.resize(static_cast<std::size_t>(target), State(canvas_));
}

Affine Drawing::pageToDevice() const {
    const State& s = state_;
    const auto ratio = [](double device, double page) { return page != 0 ? device / page : 1; };
    double x = ratio(s.viewportExtent.x, s.windowExtent.x);
    double y = ratio(s.viewportExtent.y, s.windowExtent.y);
    if (s.mapMode == mapIsotropic) {
        const double least = std::min(std::abs(x), std::abs(y));
        x = std::copysign(least, x);
        y = std::copysign(least, y);
    }
    return {x,
            0,
            0,
            y,
            s.viewportOrigin.x - s.windowOrigin.x * x,
            s.viewportOrigin.y - s.windowOrigin.y * y};
}

Affine Drawing::toCanvas() const {
    return deviceToCanvas_ * pageToDevice() * state_.world;
}

PointD Drawing::devicePixel() const {
    const Affine& m = deviceToCanvas_;
    return {std::min(1.0, std::hypot(m.xx, m.yx)), std::min(1.0, std::hypot(m.xy, m.yy))};
}

void Drawing::setMapMode(int mode) {
    if (mode < mapText || mode > mapAnisotropic) return;
    state_.mapMode = mode;
    if (mode == mapAnisotropic) return;
    state_.windowExtent = state_.viewportExtent = {1, 1};
    if (const double unit = unitOf(mode); unit != 0)
        state_.viewportExtent = {perMillimetre_.x * unit / 100, -perMillimetre_.y * unit / 100};
}

// --- objects ---------------------------------------------------------------------------------

void Drawing::put(std::size_t index, Object object) {
    if (index >= mostObjects) return;
    if (index >= objects_.size()) objects_.resize(index + 1);
    objects_[index] = std::move(object);
}

void Drawing::putFirst(Object object) {
    const auto free = std::ranges::find_if(
        objects_, [](const Object& o) { return std::holds_alternative<std::monostate>(o); });
    put(static_cast<std::size_t>(free - objects_.begin()), std::move(object));
}

const Object* Drawing::object(std::size_t index) const {
    return index < objects_.size() ? &objects_[index] : nullptr;
}

void Drawing::select(std::size_t index) {
    if (const Object* chosen = object(index)) use(*chosen);
}

void Drawing::use(const Object& object) {
    if (const auto* pen = std::get_if<Pen>(&object)) state_.pen = *pen;
    if (const auto* brush = std::get_if<Brush>(&object)) state_.brush = *brush;
    if (const auto* font = std::get_if<FontFace>(&object)) state_.font = *font;
    if (const auto* palette = std::get_if<Palette>(&object)) state_.palette = *palette;
}

void Drawing::remove(std::size_t index) {
    if (index < objects_.size()) objects_[index] = std::monostate();
}

// --- paths -----------------------------------------------------------------------------------

void Drawing::beginPath() {
    path_.clear();
    collecting_ = true;
}

void Drawing::endPath() {
    collecting_ = false;
}

void Drawing::figure(const draw::Path& path, bool filled, bool stroked) {
    if (!collecting_) return paint(path, filled, stroked);
    if (path_.size() + path.size() <= mostPathPoints) path_.append(path, {});
}

void Drawing::paint(const draw::Path& path, bool filled, bool stroked) {
    filled = filled && state_.brush.kind != Brush::Kind::Null;
    stroked = stroked && state_.pen.style != penNull;
    if (path.isEmpty() || (!filled && !stroked)) return;
    const PointD half = devicePixel() * 0.5;
    draw::Box box = path.bounds();
    if (stroked) box.add(PointD{box.right, box.bottom} + half * 2);
    if (rehearse(box)) return;
    // Lines run through the middle of the device's pixels, and so do the borders of what they
    // surround.
    const Affine shift = stroked ? Affine::translation(half.x, half.y) : Affine{};
    if (filled) fillWith(path.flattened(shift), state_.brush, state_.rop2);
    if (stroked) strokePath(path);
}

bool Drawing::rehearse(const draw::Box& box) {
    if (surface_) return false;
    ++measure_.marks;
    measure_.bounds.add(box);
    return true;
}

void Drawing::area(const draw::Outline& outline, const draw::Ink& ink) {
    if (surface_) surface_->fill(outline, state_.fillRule, ink, state_.clip);
}

void Drawing::fillWith(const draw::Outline& outline, const Brush& brush, int rop2) {
    const auto paint = paintOf(brush);
    if (paint) area(outline, {paint.get(), nullptr, codeOfRop2(rop2)});
}

void Drawing::colorArea(const draw::Outline& outline, Rgba color) {
    const draw::SolidPaint paint(color);
    area(outline, {&paint, nullptr, draw::Ink::patternAlone});
}

void Drawing::clipTo(PointD a, PointD b, const Affine& map, draw::Combine how) {
    if (map.xy != 0 || map.yx != 0) {
        draw::Path path;
        path.addRectangle(a, b);
        state_.clip.add(path.flattened(map), draw::FillRule::NonZero, how);
        return;
    }
    const PointD p = map(a), q = map(b);
    const auto whole = [](double v) {
        return static_cast<int>(std::lround(std::clamp(v, -1e6, 1e6)));
    };
    const int left = whole(std::min(p.x, q.x)), top = whole(std::min(p.y, q.y));
    const int right = whole(std::max(p.x, q.x)), bottom = whole(std::max(p.y, q.y));
    state_.clip.add(Rect{left, top, right - left, bottom - top}, how);
}

void Drawing::moveClip(PointD by) {
    constexpr double perShape = 200, perPoint = 10; // nanoseconds
    double cost = 0;
    for (const auto& shape : state_.clip.shapes()) {
        cost += perShape;
        for (const draw::Polyline& line : shape->outline)
            cost += perShape + perPoint * static_cast<double>(line.points.size());
    }
    if (effort_.spend(cost)) state_.clip.move(toCanvas().linear(by));
}

// --- paints ----------------------------------------------------------------------------------

namespace {

Raster hatchTile(int hatch, Rgba color, Rgba back) {
    constexpr int size = 8;
    Raster tile(ImageType::Rgba32, size, size);
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x) {
            const bool level = y == size / 2, upright = x == size / 2;
            const bool falling = x == y, rising = x + y == size - 1;
            const bool on[] = {level,  upright,          falling,
                               rising, level || upright, falling || rising};
            tile.setPixel(x, y, hatch >= 0 && hatch < 6 && on[hatch] ? color : back);
        }
    return tile;
}

} // namespace

const Raster& Drawing::tileFor(const Brush& brush) {
    constexpr int longest = 1024;
    constexpr std::size_t oldRows = 32; // behind a header with spare bytes
    Dib key = brush.dib;
    if (key.isEmpty()) key.header = brush.oldBitmap;
    if (tileOf_ == key) return tile_;
    tileOf_ = key;
    tile_ = brush.dib.isEmpty() ? readOldBitmap(brush.oldBitmap, oldRows) : Raster();
    const DibFacts facts = factsOf(brush.dib);
    if (!brush.dib.isEmpty() && facts.width <= longest && facts.height <= longest)
        tile_ = readDib(brush.dib, state_.palette, false, effort_);
    return tile_;
}

std::unique_ptr<draw::Paint> Drawing::paintOf(const Brush& brush) {
    const State& s = state_;
    if (brush.kind == Brush::Kind::Null) return nullptr;
    if (brush.kind == Brush::Kind::Solid) return std::make_unique<draw::SolidPaint>(brush.color);
    const PointD at = deviceToCanvas_(s.brushOrigin);
    const Point origin{static_cast<int>(std::clamp(at.x, -1e6, 1e6)),
                       static_cast<int>(std::clamp(at.y, -1e6, 1e6))};
    if (brush.kind == Brush::Kind::Hatch) {
        const Rgba back = s.opaque ? s.backColor : Rgba{0, 0, 0, 0};
        return std::make_unique<draw::TilePaint>(hatchTile(brush.hatch, brush.color, back), origin);
    }
    Raster tile = tileFor(brush);
    if (tile.isEmpty()) return nullptr;
    if (brush.mono && tile.type() == ImageType::Bit1)
        tile.setPalette(Palette({s.textColor, s.backColor}));
    return std::make_unique<draw::TilePaint>(tile, origin);
}

std::uint8_t codeOfRop2(int rop2) {
    const unsigned table = rop2 >= 1 && rop2 <= 16 ? static_cast<unsigned>(rop2 - 1) : 12;
    unsigned code = 0;
    for (unsigned bit = 0; bit < 8; ++bit)
        code |= (table >> ((bit >> 2) * 2 + (bit & 1)) & 1) << bit;
    return static_cast<std::uint8_t>(code);
}

Rgba colorOf(std::uint32_t number, const Palette& palette) {
    if (number >> 24 == 1 && !palette.isEmpty()) return palette[number & 0xffff];
    return {static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(number >> 8),
            static_cast<std::uint8_t>(number >> 16), 255};
}

} // namespace kvn::imaging::metafile
