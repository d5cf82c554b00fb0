// Conversions between what a user types and what a command needs. Each follows one rule that the
// whole program shares: a number is the leading numeric part of its text, halves round to the
// even neighbour, and a value that does not fit is an overflow error.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kvn {

// The number at the start of `text`, blanks skipped: sign, digits, point, exponent. 0 if there is
// none. The decimal mark is the point, whatever the locale.
double numericPrefix(std::string_view text);

// True if the whole text, but for blanks around it, is one number. "2." is one; "", "-", "." and
// "12a" are none.
bool isNumericText(std::string_view text);

// To the nearest whole number, ties to the even one.
double roundHalfEven(double value);

// As roundHalfEven, then checked against the range of the type. Throws errors::overflow outside
// it, and for a value that is no number.
std::uint8_t toByte(double value);
std::int16_t toInt16(double value);
std::int32_t toInt32(double value);

// The whole text as a number. Throws errors::typeMismatch if it is none.
double numberFromText(std::string_view text);

// "True" or "False" in any case, or a number (0 is false). Throws errors::typeMismatch otherwise.
bool booleanFromText(std::string_view text);
std::string booleanText(bool value);

// The shortest decimal text that reads back as the same number, without a trailing point.
std::string numberText(double value);

// One optional decimal and a point that always stands: 1 -> "1.", 1.25 -> "1.3", 0 -> ".".
// Halves are rounded away from zero, as a number pattern does.
std::string oneDecimalText(double value);

} // namespace kvn
