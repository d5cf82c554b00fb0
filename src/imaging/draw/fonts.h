// Glyph outlines of the system's fonts: the nearest font for a wish, and for characters that it
// lacks. No text layout, no pixels.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "imaging/draw/effort.h"
#include "imaging/draw/path.h"

namespace kvn::imaging::draw {

struct FontWish {
    std::string family; // UTF-8, may be empty
    std::string kin;    // what to take if there is no such family: "serif", "monospace", ...
    int weight = 400;   // 1 to 1000, bold is 700
    bool italic = false;
    auto operator<=>(const FontWish&) const = default;
};

// One font. All lengths are in units of the font's size, y upwards from the baseline.
class Font {
  public:
    virtual ~Font() = default;
    virtual const std::string& family() const = 0;
    // The number of a character's glyph, 0 if the font has none.
    virtual unsigned glyphOf(char32_t character) = 0;
    virtual const Path& outline(unsigned glyph) = 0;
    virtual double advance(unsigned glyph) = 0;

    double ascent = 0.9; // of the cell that lines are set in
    double descent = 0.2;
    double averageWidth = 0.5;
    // What upright glyphs are slanted by, x for y, where an italic was wished and there is none.
    double slant = 0;
};

// Opens fonts when they are asked for and keeps them as long as it lives. Not for several threads.
class FontBook {
  public:
    // Searches are taken off the effort; once that is spent nothing more is found.
    explicit FontBook(Effort& effort);
    ~FontBook();
    FontBook(const FontBook&) = delete;
    FontBook& operator=(const FontBook&) = delete;

    // The nearest font there is; null only where the system has none at all.
    Font* find(const FontWish& wish);
    // One that has the character, as near to the wish as can be; null if none does.
    Font* findWith(const FontWish& wish, char32_t character);

  private:
    struct Library;
    Font* open(const std::string& file, int index, double slant);

    Effort& effort_;
    std::unique_ptr<Library> library_;
    std::map<std::string, std::unique_ptr<Font>> opened_; // by file, index and slant
    std::map<FontWish, Font*> found_;
    std::map<std::pair<FontWish, char32_t>, Font*> foundWith_;
};

} // namespace kvn::imaging::draw
