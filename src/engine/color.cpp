#include "engine/color.h"

namespace kvn::engine {

struct Color::Data {
    Channels channels;
    quint8 paletteIndex = 0;
    std::function<void(const char*, quint32)> writeHook;
};

Color::Color() : data_(std::make_shared<Data>()) {}

Color::Color(quint8 red, quint8 green, quint8 blue, quint8 alpha, quint8 paletteIndex) : Color() {
    data_->channels = {red, green, blue, alpha};
    data_->paletteIndex = paletteIndex;
}

quint8 Color::Red() const {
    return data_->channels.red;
}
quint8 Color::Green() const {
    return data_->channels.green;
}
quint8 Color::Blue() const {
    return data_->channels.blue;
}
quint8 Color::Alpha() const {
    return data_->channels.alpha;
}
quint8 Color::PaletteIndex() const {
    return data_->paletteIndex;
}
Color::Channels Color::channels() const {
    return data_->channels;
}

void Color::AlphaSet(quint8 alpha) {
    data_->channels.alpha = alpha;
    if (data_->writeHook) data_->writeHook("Color.AlphaSet", alpha);
}

void Color::setRgb(quint32 value) {
    data_->channels.red = static_cast<quint8>(value);
    data_->channels.green = static_cast<quint8>(value >> 8);
    data_->channels.blue = static_cast<quint8>(value >> 16);
    if (data_->writeHook) data_->writeHook("Color.Rgb", value & 0xFFFFFFu);
}

quint32 Color::RgbGet() const {
    const Channels& c = data_->channels;
    return c.red | quint32{c.green} << 8 | quint32{c.blue} << 16;
}

void Color::setWriteHook(std::function<void(const char*, quint32)> hook) {
    data_->writeHook = std::move(hook);
}

} // namespace kvn::engine
