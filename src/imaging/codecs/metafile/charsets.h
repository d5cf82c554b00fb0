// Text of old files as Unicode: by character set, and by what fonts of symbols show.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kvn::imaging::metafile {

struct Character {
    char32_t code = 0;
    std::size_t first = 0; // where it begins in the text, in the text's own units
};

// `charset` is the font's number for it.
std::vector<Character> decodeBytes(std::span<const std::uint8_t> text, int charset);
std::vector<Character> decodeUtf16(std::span<const std::uint8_t> text);
std::string utf8Of(const std::vector<Character>& text);

// What a font of symbols shows for a byte, or the same byte in the private area of Unicode; the
// character itself for fonts that are not known for that.
char32_t symbolOf(char32_t code, std::string_view font, int charset);

} // namespace kvn::imaging::metafile
