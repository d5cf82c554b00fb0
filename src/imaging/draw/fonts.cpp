#include "imaging/draw/fonts.h"

#include <cmath>
#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include FT_ADVANCES_H
#include FT_TRUETYPE_TABLES_H

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KVN_LEAK_CHECK
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define KVN_LEAK_CHECK
#endif
#ifdef KVN_LEAK_CHECK
// Fontconfig's settings hold pointers as differences, which the leak check does not follow.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig";
}
#endif

namespace kvn::imaging::draw {

namespace {

constexpr std::size_t mostKept = 4096; // glyphs a font, substitutes in all

// What searches cost, in nanoseconds.
constexpr double perSearch = 5e6, perLookUp = 1e5;

PointD pointOf(const FT_Vector* v, double em) {
    return {static_cast<double>(v->x) / em, static_cast<double>(v->y) / em};
}

struct Pen {
    Path& path;
    double em;
    PointD last;
};

// FreeType's outlines, quadratic curves raised to cubic ones.
const FT_Outline_Funcs pathFunctions = {
    [](const FT_Vector* to, void* user) {
        Pen& pen = *static_cast<Pen*>(user);
        pen.path.close();
        pen.path.moveTo(pen.last = pointOf(to, pen.em));
        return 0;
    },
    [](const FT_Vector* to, void* user) {
        Pen& pen = *static_cast<Pen*>(user);
        pen.path.lineTo(pen.last = pointOf(to, pen.em));
        return 0;
    },
    [](const FT_Vector* control, const FT_Vector* to, void* user) {
        Pen& pen = *static_cast<Pen*>(user);
        const PointD c = pointOf(control, pen.em), end = pointOf(to, pen.em);
        pen.path.curveTo(pen.last + (c - pen.last) * (2.0 / 3), end + (c - end) * (2.0 / 3), end);
        pen.last = end;
        return 0;
    },
    [](const FT_Vector* a, const FT_Vector* b, const FT_Vector* to, void* user) {
        Pen& pen = *static_cast<Pen*>(user);
        pen.last = pointOf(to, pen.em);
        pen.path.curveTo(pointOf(a, pen.em), pointOf(b, pen.em), pen.last);
        return 0;
    },
    0,
    0};

class FreeTypeFont final : public Font {
  public:
    explicit FreeTypeFont(FT_Face face) : face_(face), em_(face->units_per_EM) {
        if (face->family_name) family_ = face->family_name;
        ascent = face->ascender / em_;
        descent = -face->descender / em_;
        if (const auto* os2 = static_cast<TT_OS2*>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2))) {
            if (os2->usWinAscent > 0) {
                ascent = os2->usWinAscent / em_;
                descent = os2->usWinDescent / em_;
            }
        }
        measureAverage();
    }
    ~FreeTypeFont() override { FT_Done_Face(face_); }

    const std::string& family() const override { return family_; }
    unsigned glyphOf(char32_t character) override { return FT_Get_Char_Index(face_, character); }
    const Path& outline(unsigned glyph) override { return load(glyph).path; }
    double advance(unsigned glyph) override { return load(glyph).advance; }

  private:
    struct Glyph {
        Path path;
        double advance = 0;
    };

    static constexpr int loadFlags = FT_LOAD_NO_SCALE | FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP;

    // Weighted by how often the letters and the blank come, as the older fonts state it that files
    // with widths were made with.
    void measureAverage() {
        static constexpr int weights[] = {64, 14, 27, 35, 100, 20, 14, 42, 63, 3,  6, 35, 20,
                                          56, 56, 17, 4,  49,  56, 71, 31, 10, 18, 3, 18, 2};
        constexpr int blank = 166, total = 1000;
        // Without outlines: fonts are opened far more often than their letters are drawn.
        const auto width = [this](char32_t character) {
            FT_Fixed units = 0;
            if (FT_Get_Advance(face_, glyphOf(character), loadFlags, &units) != 0) return 0.0;
            return static_cast<double>(units) / em_;
        };
        double sum = blank * width(U' ');
        for (char32_t letter = U'a'; letter <= U'z'; ++letter)
            sum += weights[letter - U'a'] * width(letter);
        if (sum > 0) averageWidth = sum / total;
    }

    const Glyph& load(unsigned index) {
        if (const auto known = glyphs_.find(index); known != glyphs_.end()) return known->second;
        if (glyphs_.size() >= mostKept) glyphs_.clear();
        Glyph& glyph = glyphs_[index];
        if (FT_Load_Glyph(face_, index, loadFlags) != 0) return glyph;
        glyph.advance = static_cast<double>(face_->glyph->metrics.horiAdvance) / em_;
        if (face_->glyph->format != FT_GLYPH_FORMAT_OUTLINE) return glyph;
        Pen pen{glyph.path, em_, {}};
        FT_Outline_Decompose(&face_->glyph->outline, &pathFunctions, &pen);
        glyph.path.close();
        return glyph;
    }

    FT_Face face_;
    double em_;
    std::string family_;
    std::unordered_map<unsigned, Glyph> glyphs_;
};

struct PatternDeleter {
    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
using Pattern = std::unique_ptr<FcPattern, PatternDeleter>;

Pattern patternOf(const FontWish& wish) {
    Pattern pattern(FcPatternCreate());
    for (const std::string* name : {&wish.family, &wish.kin})
        if (!name->empty())
            FcPatternAddString(pattern.get(), FC_FAMILY,
                               reinterpret_cast<const FcChar8*>(name->c_str()));
    FcPatternAddInteger(pattern.get(), FC_WEIGHT, FcWeightFromOpenType(wish.weight));
    FcPatternAddInteger(pattern.get(), FC_SLANT, wish.italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    FcPatternAddBool(pattern.get(), FC_SCALABLE, FcTrue);
    FcPatternAddBool(pattern.get(), FC_OUTLINE, FcTrue);
    FcConfigSubstitute(nullptr, pattern.get(), FcMatchPattern);
    FcDefaultSubstitute(pattern.get());
    return pattern;
}

struct Place {
    std::string file;
    int index = 0;
    double slant = 0;
};

Place placeOf(const FcPattern* font, bool italic) {
    Place place;
    FcChar8* file = nullptr;
    int slant = FC_SLANT_ROMAN;
    if (!font || FcPatternGetString(font, FC_FILE, 0, &file) != FcResultMatch) return place;
    place.file = reinterpret_cast<const char*>(file);
    FcPatternGetInteger(font, FC_INDEX, 0, &place.index);
    FcPatternGetInteger(font, FC_SLANT, 0, &slant);
    if (italic && slant == FC_SLANT_ROMAN) place.slant = 0.2;
    return place;
}

} // namespace

struct FontBook::Library {
    FT_Library handle = nullptr;
    // All fonts, the nearest to `sortedFor` first.
    FcFontSet* sorted = nullptr;
    FontWish sortedFor;

    Library() {
        if (FT_Init_FreeType(&handle) != 0) handle = nullptr;
    }
    ~Library() {
        if (sorted) FcFontSetDestroy(sorted);
        if (handle) FT_Done_FreeType(handle);
    }
    void sort(const FontWish& wish) {
        if (sorted && sortedFor == wish) return;
        if (sorted) FcFontSetDestroy(sorted);
        FcResult result = FcResultMatch;
        sorted = FcFontSort(nullptr, patternOf(wish).get(), FcTrue, nullptr, &result);
        sortedFor = wish;
    }
};

FontBook::FontBook(Effort& effort) : effort_(effort), library_(std::make_unique<Library>()) {}
FontBook::~FontBook() = default;

Font* FontBook::open(const std::string& file, int index, double slant) {
    if (file.empty() || !library_->handle) return nullptr;
    const std::string key = file + '\n' + std::to_string(index) + (slant != 0 ? "/" : "");
    if (const auto known = opened_.find(key); known != opened_.end()) return known->second.get();
    std::unique_ptr<Font>& font = opened_[key];
    FT_Face face = nullptr;
    if (FT_New_Face(library_->handle, file.c_str(), index, &face) != 0) return nullptr;
    if (!FT_IS_SCALABLE(face) || face->units_per_EM == 0) {
        FT_Done_Face(face);
        return nullptr;
    }
    font = std::make_unique<FreeTypeFont>(face);
    font->slant = slant;
    return font.get();
}

Font* FontBook::find(const FontWish& wish) {
    if (const auto known = found_.find(wish); known != found_.end()) return known->second;
    if (!effort_.spend(perSearch)) return nullptr;
    if (found_.size() >= mostKept) found_.clear();
    const Pattern pattern = patternOf(wish);
    FcResult result = FcResultMatch;
    const Pattern match(FcFontMatch(nullptr, pattern.get(), &result));
    const Place place = placeOf(match.get(), wish.italic);
    return found_[wish] = open(place.file, place.index, place.slant);
}

Font* FontBook::findWith(const FontWish& wish, char32_t character) {
    const std::pair key(wish, character);
    if (const auto known = foundWith_.find(key); known != foundWith_.end()) return known->second;
    if (!effort_.spend(library_->sortedFor == wish ? perLookUp : perSearch)) return nullptr;
    if (foundWith_.size() >= mostKept) foundWith_.clear();
    Font*& found = foundWith_[key];
    library_->sort(wish);
    const FcFontSet* set = library_->sorted;
    for (int i = 0; set && i < set->nfont && !found; ++i) {
        FcCharSet* characters = nullptr;
        if (FcPatternGetCharSet(set->fonts[i], FC_CHARSET, 0, &characters) != FcResultMatch ||
            !FcCharSetHasChar(characters, character))
            continue;
        const Place place = placeOf(set->fonts[i], wish.italic);
        Font* font = open(place.file, place.index, place.slant);
        if (font && font->glyphOf(character) != 0) found = font;
    }
    return found;
}

} // namespace kvn::imaging::draw
