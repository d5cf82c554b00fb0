#include "basic/numbers.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

#include "basic/error.h"

namespace kvn {
namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

// The length of the number at the start of `text`; 0 if there is none.
std::size_t numberLength(std::string_view text) {
    const auto digit = [&](std::size_t i) {
        return i < text.size() && std::isdigit(static_cast<unsigned char>(text[i]));
    };
    std::size_t i = !text.empty() && (text[0] == '+' || text[0] == '-') ? 1 : 0;
    const std::size_t first = i;
    while (digit(i))
        ++i;
    std::size_t digits = i - first;
    if (i < text.size() && text[i] == '.') {
        ++i;
        for (; digit(i); ++i)
            ++digits;
    }
    if (digits == 0) return 0;
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        std::size_t j = i + 1;
        if (j < text.size() && (text[j] == '+' || text[j] == '-')) ++j;
        if (digit(j)) {
            while (digit(j))
                ++j;
            i = j;
        }
    }
    return i;
}

template <typename Integer>
Integer checkedInteger(double value) {
    const double rounded = roundHalfEven(value);
    if (!(rounded >= std::numeric_limits<Integer>::min() &&
          rounded <= std::numeric_limits<Integer>::max()))
        throw RuntimeError(errors::overflow, "Overflow", "Kestrelvane");
    return static_cast<Integer>(rounded);
}

} // namespace

double numericPrefix(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    text = text.substr(0, numberLength(text));
    const bool negative = !text.empty() && text.front() == '-';
    if (!text.empty() && (text.front() == '+' || negative)) text.remove_prefix(1);
    double value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range)
        value = text.find_first_of("eE") != std::string_view::npos && text.find("-") != text.npos
                    ? 0
                    : std::numeric_limits<double>::infinity();
    return negative ? -value : value;
}

bool isNumericText(std::string_view text) {
    text = trimmed(text);
    return !text.empty() && numberLength(text) == text.size();
}

double roundHalfEven(double value) {
    // The rounding mode of the process is never changed, so this is ties-to-even.
    return std::nearbyint(value);
}

std::uint8_t toByte(double value) {
    return checkedInteger<std::uint8_t>(value);
}
std::int16_t toInt16(double value) {
    return checkedInteger<std::int16_t>(value);
}
std::int32_t toInt32(double value) {
    return checkedInteger<std::int32_t>(value);
}

double numberFromText(std::string_view text) {
    if (!isNumericText(text))
        throw RuntimeError(errors::typeMismatch, "Type mismatch", "Kestrelvane");
    return numericPrefix(text);
}

bool booleanFromText(std::string_view text) {
    std::string lower(trimmed(text));
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (lower == "true") return true;
    if (lower == "false") return false;
    return numberFromText(text) != 0;
}

std::string booleanText(bool value) {
    return value ? "True" : "False";
}

std::string numberText(double value) {
    if (value == 0) return "0";
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
}

std::string oneDecimalText(double value) {
    const double tenths = std::round(std::abs(value) * 10);
    const double whole = std::floor(tenths / 10);
    const int decimal = static_cast<int>(tenths - whole * 10);
    char buffer[340];
    std::snprintf(buffer, sizeof buffer, "%.0f", whole);
    std::string text = whole == 0 ? "" : buffer;
    text += '.';
    if (decimal != 0) text += static_cast<char>('0' + decimal);
    return value < 0 && tenths != 0 ? "-" + text : text;
}

} // namespace kvn
