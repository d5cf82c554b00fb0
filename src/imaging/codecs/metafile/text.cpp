#include "imaging/codecs/metafile/text.h"

#include <algorithm>
#include <numbers>

namespace kvn::imaging::metafile {

namespace {

// Bits of the alignment.
constexpr int atPosition = 1, alignRight = 2, alignCenter = 6, alignBottom = 8, alignBaseline = 24;

draw::FontWish wishOf(const FontFace& font) {
    draw::FontWish wish;
    wish.family = font.name;
    const int family = font.pitchAndFamily & 0xf0;
    // The usual Japanese fonts begin with a wide MS, and are fixed unless a wide P follows.
    const bool fixed =
        (font.pitchAndFamily & 3) == 1 ||
        (font.name.starts_with("\uff2d\uff33") && font.name.find("\uff30") == std::string::npos);
    wish.kin = family == 0x30 || fixed ? "monospace" : family == 0x10 ? "serif" : "sans-serif";
    wish.weight = std::clamp(font.weight > 0 ? font.weight : 400, 1, 1000);
    wish.italic = font.italic;
    return wish;
}

// The axes that text is set along. One unit of `along` is a logical unit on the line, one of `up`
// is one above it, both in canvas pixels.
struct Axes {
    PointD along, up;
};

// Upright on the page whichever way its axes run, turned by the escapement, which runs the way of
// the axes, and by what else the world's map does.
Axes axesOf(const Drawing& drawing) {
    const Affine& world = drawing.state().world;
    const auto back = world.inverse();
    const Affine page = back ? drawing.toCanvas() * *back : drawing.toCanvas();
    const double turn = drawing.state().font.escapement * std::numbers::pi / 1800;
    const double angle = page.determinant() < 0 ? -turn : turn;
    const PointD along{std::cos(angle), -std::sin(angle)}, up{-std::sin(angle), -std::cos(angle)};
    const Affine map = Affine::scaling(std::abs(page.xx), std::abs(page.yy)) * world;
    return {map.linear(along), map.linear(up)};
}

struct Glyph {
    draw::Font* font = nullptr;
    unsigned number = 0;
    double x = 0; // along the line, logical
};

// A line of text being set: glyphs, its length and its height, in logical units.
class Setting {
  public:
    Setting(Drawing& drawing, const TextLine& line)
        : drawing_(drawing), state_(drawing.state()), line_(line), axes_(axesOf(drawing)),
          wish_(wishOf(state_.font)), font_(drawing.fonts().find(wish_)) {
        if (!font_) return;
        const double asked = state_.font.height;
        if (asked < 0)
            em_ = -asked;
        else if (asked > 0)
            em_ = asked / (font_->ascent + font_->descent);
        else
            em_ = defaultPixels / std::max(1e-9, length(axes_.up));
        if (state_.font.width != 0)
            stretch_ = std::abs(state_.font.width) / (font_->averageWidth * em_);
        place();
        align();
    }

    bool isReady() const { return font_ != nullptr; }
    double advance() const { return length_; }

    draw::Path glyphs() const {
        draw::Path path;
        for (const Glyph& glyph : glyphs_) {
            if (!drawing_.effort().spend(perGlyph)) break;
            const PointD at = start_ + axes_.along * glyph.x;
            const PointD x = axes_.along * (em_ * stretch_), y = axes_.up * em_;
            const double slant = glyph.font->slant;
            path.append(glyph.font->outline(glyph.number),
                        {x.x, y.x + x.x * slant, x.y, y.y + x.y * slant, at.x, at.y});
        }
        return path;
    }

    // From `low` to `high` above the baseline, in ems, over the whole length.
    draw::Outline bar(double low, double high) const {
        const PointD a = start_ + axes_.up * (em_ * low), b = start_ + axes_.up * (em_ * high);
        const PointD along = axes_.along * length_;
        return {{{a, a + along, b + along, b}, true}};
    }
    draw::Outline cell() const { return bar(-font_->descent, font_->ascent); }

  private:
    static constexpr double defaultPixels = 16;
    static constexpr double perGlyph = 2000; // nanoseconds

    void place() {
        double x = 0, natural = 0;
        const auto& advances = line_.advances;
        for (std::size_t i = 0; i < line_.text.size(); ++i) {
            const Character& character = line_.text[i];
            const Glyph glyph = glyphFor(character.code, x);
            if (glyph.number != 0) glyphs_.push_back(glyph);
            const double own = glyph.font ? glyph.font->advance(glyph.number) * em_ * stretch_ : 0;
            if (character.first < advances.size()) {
                const bool last = i + 1 == line_.text.size();
                const std::size_t end = last ? advances.size() : line_.text[i + 1].first;
                for (std::size_t k = character.first; k < std::min(end, advances.size()); ++k)
                    x += advances[k];
                natural += own;
            } else {
                x += own + state_.textExtra + (character.code == U' ' ? state_.breakExtra : 0);
                natural = 0;
            }
        }
        length_ = x;
        // A substitute that is wider than the file's font is made as narrow.
        if (natural > x && x > 0) stretch_ *= std::max(0.5, x / natural);
    }

    Glyph glyphFor(char32_t code, double x) {
        if (line_.options & textGlyphs) {
            // Numbers hold for the font of the file. The usual fonts number the first
            // characters alike: 3 is the blank.
            const bool usual = code >= 3 && code < 98;
            return {font_, usual ? font_->glyphOf(code + 29) : 0, x};
        }
        code = symbolOf(code, state_.font.name, state_.font.charset);
        if (code < 0x20) return {nullptr, 0, x};
        if (const unsigned number = font_->glyphOf(code)) return {font_, number, x};
        if (draw::Font* other = drawing_.fonts().findWith(wish_, code))
            return {other, other->glyphOf(code), x};
        return {font_, 0, x};
    }

    void align() {
        const int align = state_.textAlign;
        const PointD at = align & atPosition ? state_.position : line_.at;
        start_ = drawing_.toCanvas()(at);
        if ((align & alignCenter) == alignCenter)
            start_ = start_ - axes_.along * (length_ / 2);
        else if (align & alignRight)
            start_ = start_ - axes_.along * length_;
        if ((align & alignBaseline) == alignBaseline) return;
        const double drop = align & alignBottom ? -font_->descent : font_->ascent;
        start_ = start_ - axes_.up * (em_ * drop);
    }

    Drawing& drawing_;
    const State& state_;
    const TextLine& line_;
    Axes axes_;
    draw::FontWish wish_;
    draw::Font* font_;
    double em_ = 0, stretch_ = 1, length_ = 0;
    PointD start_;
    std::vector<Glyph> glyphs_;
};

draw::Outline outlineOf(const draw::Box& box, const Affine& map) {
    draw::Path path;
    path.addRectangle({box.left, box.top}, {box.right, box.bottom});
    return path.flattened(map);
}

void drawGlyphs(Drawing& drawing, const Setting& setting) {
    State& state = drawing.state();
    const draw::FillRule rule = state.fillRule;
    state.fillRule = draw::FillRule::NonZero;
    if (state.opaque) drawing.colorArea(setting.cell(), state.backColor);
    drawing.colorArea(setting.glyphs().flattened({}), state.textColor);
    if (state.font.underline) drawing.colorArea(setting.bar(-0.15, -0.09), state.textColor);
    if (state.font.strikeOut) drawing.colorArea(setting.bar(0.25, 0.31), state.textColor);
    state.fillRule = rule;
}

} // namespace

void drawText(Drawing& drawing, const TextLine& line) {
    State& state = drawing.state();
    const Affine map = drawing.toCanvas();
    if (line.rect && line.options & textOpaque) {
        const draw::Outline area = outlineOf(*line.rect, map);
        if (!drawing.rehearse(boundsOf(area))) drawing.colorArea(area, state.backColor);
    }
    if (line.text.empty()) return;
    const Setting setting(drawing, line);
    if (!setting.isReady()) return;
    const draw::Clip clip = state.clip;
    if (line.rect && line.options & textClipped)
        drawing.clipTo({line.rect->left, line.rect->top}, {line.rect->right, line.rect->bottom},
                       map, draw::Combine::And);
    if (drawing.isCollecting())
        drawing.path().append(setting.glyphs(), {});
    else if (!drawing.rehearse(boundsOf(setting.cell())))
        drawGlyphs(drawing, setting);
    state.clip = clip;
    if (state.textAlign & atPosition) state.position.x += setting.advance();
}

} // namespace kvn::imaging::metafile
