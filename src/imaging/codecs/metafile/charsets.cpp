#include "imaging/codecs/metafile/charsets.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <iconv.h>

namespace kvn::imaging::metafile {

namespace {

constexpr int symbolCharset = 2;

const char* codePageOf(int charset) {
    static constexpr std::pair<int, const char*> pages[] = {
        {77, "MACINTOSH"}, {128, "CP932"},  {129, "CP949"},  {130, "JOHAB"},
        {134, "GBK"},      {136, "BIG5"},   {161, "CP1253"}, {162, "CP1254"},
        {163, "CP1258"},   {177, "CP1255"}, {178, "CP1256"}, {186, "CP1257"},
        {204, "CP1251"},   {222, "CP874"},  {238, "CP1250"}, {255, "CP437"}};
    for (const auto& [number, name] : pages)
        if (number == charset) return name;
    return "CP1252";
}

class Converter {
  public:
    explicit Converter(const char* from) : handle_(iconv_open("UCS-4LE", from)) {}
    ~Converter() {
        if (isOpen()) iconv_close(handle_);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // The character of just these bytes, 0 if they are none.
    char32_t operator()(std::span<const std::uint8_t> bytes) const {
        if (!isOpen()) return bytes.size() == 1 ? bytes[0] : 0;
        std::array<char, 4> in{};
        std::ranges::copy(bytes, in.begin());
        std::array<unsigned char, 8> out{};
        char* from = in.data();
        char* to = reinterpret_cast<char*>(out.data());
        std::size_t left = bytes.size(), room = out.size();
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        if (iconv(handle_, &from, &left, &to, &room) != 0 || left != 0 || room != 4) return 0;
        return out[0] | char32_t{out[1]} << 8 | char32_t{out[2]} << 16;
    }

  private:
    bool isOpen() const { return handle_ != reinterpret_cast<iconv_t>(-1); }
    iconv_t handle_;
};

// The Symbol font from 0x20 and from 0xa0 on; 0xfffd where it has nothing.
constexpr std::u32string_view symbolLow =
    U" !∀#∃%&∋()∗+,−./"
    U"0123456789:;<=>?≅ΑΒΧΔΕΦΓΗΙϑΚΛΜΝΟΠΘΡΣΤΥςΩΞΨΖ[∴]⊥_‾αβχδεφγηιϕκλμνοπθρστυϖωξψζ{|}∼";
constexpr std::u32string_view symbolHigh = U"€ϒ′≤⁄∞ƒ♣♦♥♠↔←↑→↓°±″≥×∝∂•÷≠≡≈…⏐⎯↵ℵℑℜ℘⊗⊕∅∩∪⊃⊇⊄⊂⊆∈∉∠∇®©™∏"
                                           U"√⋅¬∧∨⇔⇐⇑⇒⇓◊⟨®©™∑⎛⎜⎝⎡⎢⎣⎧⎨⎩⎪\uFFFD⟩∫⌠⎮⌡⎞⎟⎠⎤⎥⎦⎫⎬⎭";
static_assert(symbolLow.size() == 0x7f - 0x20 && symbolHigh.size() == 0xff - 0xa0);

// The marks that other fonts of symbols are mostly used for.
struct Mark {
    std::string_view font; // lower case
    unsigned char byte;
    char32_t code;
};
constexpr Mark marks[] = {
    {"wingdings", 0x6c, U'●'}, {"wingdings", 0x6e, U'■'}, {"wingdings", 0x6f, U'□'},
    {"wingdings", 0x71, U'❑'}, {"wingdings", 0x75, U'◆'}, {"wingdings", 0x76, U'❖'},
    {"wingdings", 0x9f, U'•'}, {"wingdings", 0xa7, U'▪'}, {"wingdings", 0xa8, U'◻'},
    {"wingdings", 0xd8, U'➢'}, {"wingdings", 0xdf, U'←'}, {"wingdings", 0xe0, U'→'},
    {"wingdings", 0xe1, U'↑'}, {"wingdings", 0xe2, U'↓'}, {"wingdings", 0xf0, U'⇨'},
    {"wingdings", 0xfb, U'✗'}, {"wingdings", 0xfc, U'✓'}, {"wingdings", 0xfe, U'☑'},
    {"mt extra", 0x4b, U'…'},  {"mt extra", 0x4c, U'⋯'},  {"mt extra", 0x4d, U'⋮'},
    {"mt extra", 0x4e, U'⋰'},  {"mt extra", 0x4f, U'⋱'},  {"mt extra", 0x68, U'ℏ'},
    {"mt extra", 0x6c, U'ℓ'}};

} // namespace

std::vector<Character> decodeBytes(std::span<const std::uint8_t> text, int charset) {
    std::vector<Character> out;
    if (charset == symbolCharset) {
        for (std::size_t i = 0; i < text.size(); ++i)
            out.push_back({text[i], i});
        return out;
    }
    const Converter converter(codePageOf(charset));
    for (std::size_t i = 0; i < text.size();) {
        std::size_t size = 1;
        char32_t code = text[i] < 0x80 ? text[i] : converter(text.subspan(i, 1));
        if (code == 0 && text[i] >= 0x80 && i + 1 < text.size()) {
            code = converter(text.subspan(i, 2));
            if (code != 0) size = 2;
        }
        out.push_back({code != 0 ? code : text[i], i});
        i += size;
    }
    return out;
}

std::vector<Character> decodeUtf16(std::span<const std::uint8_t> text) {
    std::vector<Character> out;
    const auto unit = [&](std::size_t i) -> char32_t {
        return text[2 * i] | char32_t{text[2 * i + 1]} << 8;
    };
    const std::size_t count = text.size() / 2;
    for (std::size_t i = 0; i < count; ++i) {
        const char32_t high = unit(i), low = i + 1 < count ? unit(i + 1) : 0;
        const bool pair = high >= 0xd800 && high < 0xdc00 && low >= 0xdc00 && low < 0xe000;
        const bool alone = !pair && high >= 0xd800 && high < 0xe000;
        out.push_back({pair    ? 0x10000 + ((high - 0xd800) << 10) + (low - 0xdc00)
                       : alone ? 0xfffd
                               : high,
                       i});
        if (pair) ++i;
    }
    return out;
}

std::string utf8Of(const std::vector<Character>& text) {
    std::string out;
    for (const Character& character : text) {
        const char32_t c = character.code;
        const auto tail = [&](int shift) { out += static_cast<char>(0x80 | (c >> shift & 0x3f)); };
        if (c == 0) break;
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xc0 | c >> 6);
        } else if (c < 0x10000) {
            out += static_cast<char>(0xe0 | c >> 12);
            tail(6);
        } else {
            out += static_cast<char>(0xf0 | (c >> 18 & 7));
            tail(12);
            tail(6);
        }
        if (c >= 0x80) tail(0);
    }
    return out;
}

char32_t symbolOf(char32_t code, std::string_view font, int charset) {
    std::string lower(font);
    std::ranges::transform(lower, lower.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const char32_t byte = code >= 0xf000 && code < 0xf100 ? code - 0xf000 : code;
    if (byte > 0xff) return code;
    for (const Mark& mark : marks)
        if (mark.byte == byte && lower.starts_with(mark.font)) return mark.code;
    const bool other = lower.starts_with("wingdings") || lower.starts_with("webdings") ||
                       lower.starts_with("mt extra");
    const bool symbol = lower == "symbol" || (charset == symbolCharset && !other);
    if (symbol && byte >= 0x20 && byte < 0x7f) return symbolLow[byte - 0x20];
    if (symbol && byte >= 0xa0 && byte < 0xff) return symbolHigh[byte - 0xa0];
    return byte;
}

} // namespace kvn::imaging::metafile
