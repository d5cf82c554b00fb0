// Metafiles made record by record.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "imaging/metadata.h"

namespace kvn::test {

using imaging::Bytes;

inline void putNumber(Bytes& out, std::uint64_t value, int size) {
    for (int i = 0; i < size; ++i)
        out.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

inline Bytes joined(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// A bitmap for a record; rows from the bottom up, padded.
inline Bytes dib(int width, int height, int bits, const Bytes& paletteAndRows) {
    Bytes out;
    for (const int field : {40, width, height, 1 | bits << 16, 0, 0, 0, 0, 0, 0})
        putNumber(out, static_cast<std::uint32_t>(field), 4);
    return joined(out, paletteAndRows);
}

// Two by two pixels: red and green above blue and white.
inline Bytes fourColors() {
    return dib(2, 2, 24, {255, 0, 0, 255, 255, 255, 0, 0, 0, 0, 255, 0, 255, 0, 0, 0});
}

class WmfMaker {
  public:
    // The words as they stand in the file.
    WmfMaker& add(std::uint32_t function, std::initializer_list<int> words = {},
                  const Bytes& tail = {}) {
        putNumber(records_, 3 + words.size() + (tail.size() + 1) / 2, 4);
        putNumber(records_, function, 2);
        for (const int word : words)
            putNumber(records_, static_cast<std::uint16_t>(word), 2);
        records_.insert(records_.end(), tail.begin(), tail.end());
        if (tail.size() % 2) records_.push_back(0);
        return *this;
    }
    // 0,0 to width,height is what the window shows.
    WmfMaker& window(int width, int height) {
        return add(0x20b, {0, 0}).add(0x20c, {height, width});
    }
    WmfMaker& brush(std::uint32_t color, int style = 0, int hatch = 0) {
        return add(0x2fc, {style, int(color & 0xffff), int(color >> 16), hatch});
    }
    WmfMaker& pen(int style, int width, std::uint32_t color) {
        return add(0x2fa, {style, width, 0, int(color & 0xffff), int(color >> 16)});
    }
    WmfMaker& select(int object) { return add(0x12d, {object}); }
    Bytes file() const {
        Bytes out;
        for (const int word : {1, 9, 0x300, 0, 0, 16, 0, 0, 0})
            putNumber(out, static_cast<std::uint64_t>(word), 2);
        return joined(joined(out, records_), {3, 0, 0, 0, 0, 0});
    }
    Bytes placeable(int width, int height, int unitsPerInch) const {
        Bytes out;
        putNumber(out, 0x9ac6cdd7, 4);
        for (const int word : {0, 0, 0, width, height, unitsPerInch, 0, 0, 0})
            putNumber(out, static_cast<std::uint64_t>(word), 2);
        return joined(out, file());
    }

  private:
    Bytes records_;
};

class EmfMaker {
  public:
    // The fields behind type and size.
    EmfMaker& add(std::uint32_t type, std::initializer_list<int> fields = {},
                  const Bytes& tail = {}) {
        const std::size_t padding = (4 - tail.size() % 4) % 4;
        putNumber(records_, type, 4);
        putNumber(records_, 8 + 4 * fields.size() + tail.size() + padding, 4);
        for (const int field : fields)
            putNumber(records_, static_cast<std::uint32_t>(field), 4);
        records_.insert(records_.end(), tail.begin(), tail.end());
        records_.resize(records_.size() + padding);
        return *this;
    }
    EmfMaker& brush(int index, std::uint32_t color, int style = 0, int hatch = 0) {
        return add(39, {index, style, int(color), hatch}).add(37, {index});
    }
    EmfMaker& pen(int index, int style, int width, std::uint32_t color) {
        return add(38, {index, style, width, 0, int(color)}).add(37, {index});
    }
    EmfMaker& noPen() { return add(37, {int(0x80000008)}); }
    EmfMaker& rectangle(int left, int top, int right, int bottom) {
        return add(43, {left, top, right, bottom});
    }
    // A bitmap over the rectangle; a negative size mirrors it.
    EmfMaker& bitmap(int x, int y, int width, int height, const Bytes& bitmap,
                     std::uint32_t rop = 0xcc0020) {
        const int pixels = static_cast<int>(bitmap.size()) - 40;
        return add(
            81, {0, 0, -1, -1, x, y, 0, 0, 2, 2, 80, 40, 120, pixels, 0, int(rop), width, height},
            bitmap);
    }
    EmfMaker& text(int x, int y, const char* text) {
        Bytes wide;
        int count = 0;
        for (; text[count]; ++count)
            putNumber(wide, static_cast<std::uint8_t>(text[count]), 2);
        return add(84, {0, 0, -1, -1, 1, 0, 0, x, y, count, 76, 0, 0, 0, -1, -1, 0}, wide);
    }
    // The frame of a screen of 100 pixels an inch, so that one of them is one of the picture.
    Bytes file(int width, int height) const {
        Bytes out;
        const std::size_t size = 88 + records_.size() + 20;
        for (const int field : {1,
                                88,
                                0,
                                0,
                                width - 1,
                                height - 1,
                                0,
                                0,
                                width * 2540 / 100,
                                height * 2540 / 100,
                                0x464d4520,
                                0x10000,
                                int(size),
                                2,
                                64,
                                0,
                                0,
                                0,
                                1000,
                                1000,
                                254,
                                254})
            putNumber(out, static_cast<std::uint32_t>(field), 4);
        out = joined(out, records_);
        for (const int field : {14, 20, 0, 0, 20})
            putNumber(out, static_cast<std::uint32_t>(field), 4);
        return out;
    }

  private:
    Bytes records_;
};

// Something of most kinds of records.
inline Bytes drawnWmf() {
    Bytes font;
    for (const int word : {-9, 0, 300, 0, 700, 0, 0, 0, 0x1200})
        putNumber(font, static_cast<std::uint16_t>(word), 2);
    font = joined(font, Bytes{'S', 'y', 'm', 'b', 'o', 'l', 0, 0});
    WmfMaker wmf;
    wmf.window(60, 40).add(0x01e).pen(1, 1, 0xff).select(0).brush(0xff00, 2, 5).select(1);
    wmf.add(0x41b, {30, 30, 2, 2}).add(0x418, {20, 50, 5, 30}).add(0x61c, {4, 4, 39, 20, 25, 3});
    wmf.add(0x324, {3, 1, 1, 50, 8, 20, 39}).add(0x538, {1, 3, 5, 5, 30, 5, 9, 33});
    wmf.add(0x81a, {5, 50, 20, 40, 35, 55, 10, 25})
        .add(0x6ff, {0, 6, 0, 0, 40, 1, 2, 0, 0, 9, 9, 2, 3, 12, 5, 55, 2});
    wmf.add(0x12c, {2})
        .add(0x12a, {2})
        .add(0x2fb, {}, font)
        .select(3)
        .add(0x521, {3, 0x6261, 0x63, 20, 20});
    wmf.add(0xa32, {20, 10, 2, 4, 5, 5, 55, 35, 0x7061, 6, 6})
        .add(0x142, {3, 0}, fourColors())
        .select(4);
    wmf.add(0x61d, {0x5a, 0x5a, 20, 20, 15, 15})
        .add(0xf43, {0x20, 0xcc, 0, 2, 2, 0, 0, 30, -20, 5, 40}, fourColors());
    wmf.add(0xb41, {0x86, 0xee, 2, 2, 0, 0, 20, 30, 10, 10}, fourColors())
        .add(0x127, {-1})
        .add(0x1f0, {1});
    return wmf.placeable(60, 40, 96);
}

inline Bytes drawnEmf() {
    EmfMaker emf;
    emf.add(33).add(17, {8}).add(9, {60, -40}).add(11, {60, 40}).add(12, {0, 40});
    emf.pen(1, 2, 3, 0xff).brush(2, 0xff00, 2, 4).rectangle(5, 5, 30, 30);
    emf.add(35, {0x3f000000, 0x3f800000, 0, 0x3f000000, 0x41000000, 0}).add(42, {5, 5, 50, 30});
    emf.add(59)
        .add(27, {3, 3})
        .add(54, {40, 9})
        .add(55, {5, 5, 30, 30, 6, 6, 29, 9})
        .add(61)
        .add(60);
    emf.add(67, {1})
        .add(86, {0, 0, -1, -1, 3, 0x50001, 0x10030, 0x200020})
        .add(41, {20, 20, 9, 0, 0x43300000});
    emf.bitmap(5, 5, 30, -20, fourColors(), 0x660046).add(22, {6}).text(30, 20, "Kern");
    emf.add(118,
            {0, 0, -1, -1, 3, 1, 2, 1, 1, 0x10ff, 0, 50, 9, 0x7000, 5, 9, 30, 0, 0xff, 0, 1, 2});
    emf.add(75, {64, 2, 32, 1, 2, 32, 0, 0, 0, 0, 3, 3, 9, 9, 20, 5, 50, 30})
        .add(95, {3, 0, 0, 0, 0, 0x10007, 2, 0, 0x8000, 0, 2, 3, 5})
        .add(37, {3});
    emf.add(85, {0, 0, -1, -1, 4, 0x50001, 0x10030, 0x200020, 0x90002}).add(34, {-1});
    return emf.file(60, 40);
}

} // namespace kvn::test
