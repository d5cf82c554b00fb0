// A colour as the editor passes it. Copies refer to the same colour object.
#pragma once

#include <QtGlobal>
#include <functional>
#include <memory>

namespace kvn::engine {

class Color {
  public:
    Color(); // opaque black
    Color(quint8 red, quint8 green, quint8 blue, quint8 alpha = 255, quint8 paletteIndex = 0);

    quint8 Red() const;
    quint8 Green() const;
    quint8 Blue() const;
    quint8 Alpha() const;
    quint8 PaletteIndex() const;
    void AlphaSet(quint8 alpha);
    // 24 bits, red in the low byte, then green, then blue. Alpha stays.
    void setRgb(quint32 value);
    quint32 RgbGet() const;

    // The colour as an operation takes it.
    struct Channels {
        quint8 red = 0, green = 0, blue = 0, alpha = 255;
    };
    Channels channels() const;

    // Called after each write with the name of the written property and its value. For colours
    // that belong to an object whose calls are recorded.
    void setWriteHook(std::function<void(const char* property, quint32 value)> hook);

  private:
    struct Data;
    std::shared_ptr<Data> data_;
};

struct Point {
    int x = 0;
    int y = 0;
};

} // namespace kvn::engine
