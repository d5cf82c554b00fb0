// The nine ways in which new alpha values meet the present ones: for masks, constants and colours
// turned into alpha, and for drawing pictures that have alpha.
#pragma once

#include <algorithm>
#include <cstdint>

namespace kvn::imaging {

// The numbers go through every layer unchanged.
enum class AlphaMerge : int {
    Replace = 0,
    MostOpaque = 1,
    MostTransparent = 2,
    Add = 3,      // at most 255
    Subtract = 4, // the new value from the present one, at least 0
    And = 5,      // bit by bit
    Or = 6,
    Xor = 7,
    KeepExisting = 8,
};
inline constexpr int alphaMergeCount = 9;

constexpr std::uint8_t mergedAlpha(AlphaMerge how, int present, int fresh) {
    switch (how) {
    case AlphaMerge::Replace:
        return static_cast<std::uint8_t>(fresh);
    case AlphaMerge::MostOpaque:
        return static_cast<std::uint8_t>(std::max(present, fresh));
    case AlphaMerge::MostTransparent:
        return static_cast<std::uint8_t>(std::min(present, fresh));
    case AlphaMerge::Add:
        return static_cast<std::uint8_t>(std::min(present + fresh, 255));
    case AlphaMerge::Subtract:
        return static_cast<std::uint8_t>(std::max(present - fresh, 0));
    case AlphaMerge::And:
        return static_cast<std::uint8_t>(present & fresh);
    case AlphaMerge::Or:
        return static_cast<std::uint8_t>(present | fresh);
    case AlphaMerge::Xor:
        return static_cast<std::uint8_t>(present ^ fresh);
    case AlphaMerge::KeepExisting:
        break;
    }
    return static_cast<std::uint8_t>(present);
}

} // namespace kvn::imaging
