// Palette files: 256 entries of red, green and blue, a byte each that holds six bits, no header.
#pragma once

#include <QByteArray>
#include <QList>
#include <optional>

#include "engine/color.h"

namespace kvn::effects {

inline constexpr int paletteEntries = 256;
inline constexpr int paletteFileSize = paletteEntries * 3;

// The colours of a file's content; bytes that are missing count as 0. Nothing if any byte needs
// more than six bits.
std::optional<QList<engine::Color>> paletteColors(const QByteArray& bytes);

} // namespace kvn::effects
