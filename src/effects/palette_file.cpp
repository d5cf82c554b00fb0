#include "effects/palette_file.h"

#include <algorithm>

namespace kvn::effects {
namespace {

constexpr int largest = 63, scale = 4;

} // namespace

std::optional<QList<engine::Color>> paletteColors(const QByteArray& bytes) {
    const QByteArray whole = bytes.leftJustified(paletteFileSize, '\0', true);
    const auto value = [&](int i) { return static_cast<quint8>(whole[i]); };
    QList<engine::Color> colors;
    for (int i = 0; i < paletteFileSize; i += 3) {
        if (std::max({value(i), value(i + 1), value(i + 2)}) > largest) return {};
        const auto full = [&](int at) { return static_cast<quint8>(value(at) * scale); };
        colors += engine::Color(full(i), full(i + 1), full(i + 2));
    }
    return colors;
}

} // namespace kvn::effects
