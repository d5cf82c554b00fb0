// A drawing in progress: the state, its stack, the objects, and the one door to the picture. It
// knows pens, brushes and paths; what records look like in a file it does not know.
#pragma once

#include <optional>

#include "imaging/codecs/metafile/state.h"
#include "imaging/draw/fonts.h"
#include "imaging/draw/surface.h"

namespace kvn::imaging::metafile {

// A bitmap that was the drawing's first mark.
struct BitmapMark {
    Dib dib;
    bool alpha = false;
    draw::Box place; // in canvas pixels
};

// What a rehearsal without a picture has seen.
struct Measure {
    draw::Box bounds; // of all marks, in canvas pixels
    int marks = 0;
    std::optional<BitmapMark> bitmap;
    // The drawing's only mark, if it is a bitmap.
    const BitmapMark* soleBitmap() const { return marks == 1 && bitmap ? &*bitmap : nullptr; }
};

class Drawing {
  public:
    // `surface` is null for a rehearsal; `deviceToCanvas` maps pixels of the device that the file
    // was made for to pixels of the picture, `perMillimetre` is that device's resolution.
    Drawing(const Rect& canvas, draw::Surface* surface, draw::Effort& effort,
            const Affine& deviceToCanvas, PointD perMillimetre);

    State& state() { return state_; }
    const State& state() const { return state_; }
    void save();
    // Below 0: so many levels back; above 0: the level of that number, the first one is 1.
    void restore(int level);

    // Logical units to pixels of the picture.
    Affine toCanvas() const;
    const Affine& deviceToCanvas() const { return deviceToCanvas_; }
    // How large a pixel of the device is in the picture; 1 at most.
    PointD devicePixel() const;
    void setMapMode(int mode);

    // Objects by number; numbers that are not there are ignored.
    static constexpr std::size_t mostObjects = 65536;
    void put(std::size_t index, Object object);
    // At the first free place.
    void putFirst(Object object);
    void select(std::size_t index);
    void use(const Object& object);
    void remove(std::size_t index);
    const Object* object(std::size_t index) const;

    // Paths that records collect between two of them; figures drawn meanwhile go there.
    void beginPath();
    void endPath();
    bool isCollecting() const { return collecting_; }
    draw::Path& path() { return path_; }

    // A figure in canvas pixels, drawn with the state's pen and brush or added to the path.
    void figure(const draw::Path& path, bool filled, bool stroked);
    void paint(const draw::Path& path, bool filled, bool stroked);
    // An area with the brush, and any of the 256 combinations.
    void area(const draw::Outline& outline, const draw::Ink& ink);
    void fillWith(const draw::Outline& outline, const Brush& brush, int rop2);
    void colorArea(const draw::Outline& outline, Rgba color);
    // Null for the brush that paints nothing.
    std::unique_ptr<draw::Paint> paintOf(const Brush& brush);

    bool isRehearsal() const { return !surface_; }
    // Of a mark that covers this; true if it need not be drawn.
    bool rehearse(const draw::Box& box);
    Measure& measure() { return measure_; }
    draw::Effort& effort() { return effort_; }
    draw::FontBook& fonts() { return fonts_; }
    Rect canvas() const { return canvas_; }

    // The rectangle of whole pixels for a clip, or an outline where the axes are turned.
    void clipTo(PointD a, PointD b, const Affine& map, draw::Combine how);
    // By a logical distance.
    void moveClip(PointD by);

  private:
    Affine pageToDevice() const;
    void strokePath(const draw::Path& path);
    const Raster& tileFor(const Brush& brush);

    Rect canvas_;
    draw::Surface* surface_;
    draw::Effort& effort_;
    Affine deviceToCanvas_;
    PointD perMillimetre_;
    State state_;
    std::vector<State> saved_;
    std::vector<Object> objects_;
    draw::FontBook fonts_;
    draw::Path path_;
    bool collecting_ = false;
    Measure measure_;
    std::optional<Dib> tileOf_; // what `tile_` was made of
    Raster tile_;
};

// The code of `draw::Ink` for one of the sixteen ways in which a pen meets the present colour.
std::uint8_t codeOfRop2(int rop2);

// The file's colour numbers: red in the lowest byte; entries of the palette by a 1 in the highest.
Rgba colorOf(std::uint32_t number, const Palette& palette);

} // namespace kvn::imaging::metafile
