// Where things stand in a TGA file of the second version, in bytes.
#pragma once

#include <cstddef>
#include <string_view>

namespace kvn::imaging::tga {

inline constexpr std::size_t headerSize = 18;

// At the very end: offsets of the extension and of the developer area, then the signature.
inline constexpr std::size_t footerSize = 26;
inline constexpr std::string_view signature("TRUEVISION-XFILE.\0", 18);

// Within the extension area.
inline constexpr std::size_t extensionSize = 495;
inline constexpr std::size_t commentAt = 43, commentLines = 4, commentWidth = 80;
inline constexpr std::size_t attributesAt = 494;

} // namespace kvn::imaging::tga
