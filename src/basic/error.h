// The one failure type of the program: a number, a description and a source, as the user sees
// them in an error box. Every layer throws it; the nearest handler reports it.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace kvn {

class RuntimeError : public std::runtime_error {
  public:
    RuntimeError(std::int32_t number, const std::string& description, std::string source);

    std::int32_t number() const { return number_; }
    std::string description() const { return what(); }
    const std::string& source() const { return source_; }

    // A stopped operation: every report passes it over in silence.
    bool isSilent() const;

  private:
    std::int32_t number_;
    std::string source_;
};

namespace errors {
inline constexpr std::int32_t overflow = 6;
inline constexpr std::int32_t outOfMemory = 7;
inline constexpr std::int32_t subscriptOutOfRange = 9;
inline constexpr std::int32_t typeMismatch = 13;
inline constexpr std::int32_t invalidCall = 5;
inline constexpr std::int32_t fileNotFound = 53;
inline constexpr std::int32_t deviceIo = 57;
inline constexpr std::int32_t diskFull = 61;
inline constexpr std::int32_t permissionDenied = 70;
inline constexpr std::int32_t pathAccess = 75;
inline constexpr std::int32_t objectNotSet = 91;
inline constexpr std::int32_t memberNotFound = 438;
inline constexpr std::int32_t invalidPicture = 481;
// 0x8004029A as the signed number that a box would print.
inline constexpr std::int32_t cancelled = static_cast<std::int32_t>(0x8004029Au);
} // namespace errors

} // namespace kvn
