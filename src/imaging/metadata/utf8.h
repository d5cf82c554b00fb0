// Between UTF-8, which the program speaks, and the one-byte texts of older formats.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kvn::imaging {

bool isUtf8(std::string_view text);
std::string utf8FromLatin1(std::string_view text);
// Nothing if a character has no place in Latin-1, or the text is not UTF-8.
std::optional<std::string> latin1FromUtf8(std::string_view text);

} // namespace kvn::imaging
