#include <cmath>

#include "basic/error.h"
#include "basic/numbers.h"
#include "engine/image.h"
#include "imaging/byte_io.h"
#include "imaging/codecs/codec.h"

namespace kvn::engine {

Color Utility::ColorFromValue(quint32 value, quint8 alpha) const {
    return Color(static_cast<quint8>(value), static_cast<quint8>(value >> 8),
                 static_cast<quint8>(value >> 16), alpha);
}

Color Utility::MakeColor(quint8 red, quint8 green, quint8 blue, quint8 alpha) const {
    return Color(red, green, blue, alpha);
}

Point Utility::MakePoint(int x, int y) const {
    return {x, y};
}

Utility::Hsl Utility::RgbToHsl(quint8 red, quint8 green, quint8 blue) const {
    const imaging::Hsl hsl = imaging::hslFromRgb(red, green, blue);
    return {toByte(hsl.h), toByte(hsl.s), toByte(hsl.l)};
}

Color Utility::HslToRgb(double hue, double saturation, double luminance) const {
    const imaging::RgbReal c = imaging::rgbFromHsl({hue, saturation, luminance});
    return Color(toByte(c.r), toByte(c.g), toByte(c.b));
}

QString Utility::TypeName(int type, bool longForm) const {
    static constexpr const char* shortNames[] = {"1-bit",      "8-bit",  "8-bit Alpha", "Gray",
                                                 "Gray Alpha", "24-bit", "32-bit"};
    static constexpr const char* longNames[] = {"1-bit",
                                                "8-bit Colormapped",
                                                "8-bit Colormapped w/ Alpha",
                                                "8-bit Grayscale",
                                                "16-bit Grayscale w/ Alpha",
                                                "24-bit RGB",
                                                "32-bit RGB w/ Alpha"};
    if (!imaging::isImageType(type)) return {};
    return QString::fromLatin1(longForm ? longNames[type] : shortNames[type]);
}

Utility::FileFacts Utility::FileInfo(const QString& path) const {
    FileFacts facts;
    try {
        const imaging::FileBytes file(path.toStdString());
        const std::string extension = path.section(u'.', -1).toStdString();
        const imaging::Codec* codec = imaging::codecForContent(file.bytes(), extension);
        if (!codec) return facts;
        const std::vector<imaging::PageFacts> pages = codec->facts(file.bytes(), {});
        if (pages.empty()) return facts;
        facts = {true, static_cast<int>(codec->type()), static_cast<int>(pages.size()),
                 pages.front().width, pages.front().height};
    } catch (const RuntimeError&) {
        // A file that cannot be looked into is no image to the caller.
        facts = {};
    }
    return facts;
}

} // namespace kvn::engine
