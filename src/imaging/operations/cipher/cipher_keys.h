// What a picture is enciphered with, made from the text that the user types.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace kvn::imaging {

// Wiped when it goes. Not copied, so that there is nothing else to wipe.
struct CipherKey {
    std::array<std::uint8_t, 32> bytes{};

    CipherKey() = default;
    ~CipherKey();
    CipherKey(const CipherKey&) = delete;
    CipherKey& operator=(const CipherKey&) = delete;
};

struct CipherKeys {
    std::array<CipherKey, 4> rounds;
    CipherKey stream; // for pictures without rounds

    // By Argon2id (A. Biryukov, D. Dinu, D. Khovratovich, 2016), in 64 MiB and two passes: a guess
    // costs the same. The salt is what the picture cannot hide anyway, its depth and its size.
    // Throws RuntimeError: invalidCall for an empty text, outOfMemory.
    CipherKeys(const std::string& text, int bitsPerPixel, int width, int height);
};

} // namespace kvn::imaging
