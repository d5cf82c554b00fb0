#include "imaging/metadata/utf8.h"

namespace kvn::imaging {

namespace {

// The character at `at`, which moves behind it; nothing if the bytes are none.
std::optional<char32_t> takeCharacter(std::string_view text, std::size_t& at) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned first = byte(at++);
    if (first < 0x80) return first;
    const int more = first >= 0xf0 ? 3 : first >= 0xe0 ? 2 : 1;
    if (first < 0xc2 || first > 0xf4) return {};
    char32_t value = first & (0x3fu >> more);
    for (int i = 0; i < more; ++i) {
        if (at >= text.size() || (byte(at) & 0xc0) != 0x80) return {};
        value = value << 6 | (byte(at++) & 0x3f);
    }
    constexpr char32_t least[] = {0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = value >= 0xd800 && value <= 0xdfff;
    if (value < least[more] || value > 0x10ffff || isSurrogate) return {};
    return value;
}

} // namespace

bool isUtf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();)
        if (!takeCharacter(text, at)) return false;
    return true;
}

std::string utf8FromLatin1(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            result += c;
            continue;
        }
        result += static_cast<char>(0xc0 | byte >> 6);
        result += static_cast<char>(0x80 | (byte & 0x3f));
    }
    return result;
}

std::optional<std::string> latin1FromUtf8(std::string_view text) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const auto character = takeCharacter(text, at);
        if (!character || *character > 0xff) return {};
        result += static_cast<char>(static_cast<unsigned char>(*character));
    }
    return result;
}

} // namespace kvn::imaging
