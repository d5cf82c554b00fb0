#include "imaging/operations/cipher/cipher_keys.h"

#include <sodium.h>

#include <algorithm>

#include "basic/error.h"

namespace kvn::imaging {
namespace {

// Different for every kind of picture, so that no table of guesses serves for all.
std::array<std::uint8_t, crypto_pwhash_SALTBYTES> saltFor(int bitsPerPixel, int width, int height) {
    const std::string kind = "picture cipher, " + std::to_string(bitsPerPixel) + " bits, " +
                             std::to_string(width) + " x " + std::to_string(height);
    std::array<std::uint8_t, crypto_pwhash_SALTBYTES> salt;
    crypto_generichash(salt.data(), salt.size(), reinterpret_cast<const std::uint8_t*>(kind.data()),
                       kind.size(), nullptr, 0);
    return salt;
}

} // namespace

CipherKey::~CipherKey() {
    sodium_memzero(bytes.data(), bytes.size());
}

CipherKeys::CipherKeys(const std::string& text, int bitsPerPixel, int width, int height) {
    static const bool ready = sodium_init() >= 0;
    if (!ready) throw RuntimeError(errors::invalidCall, "The cipher is not available", "Imaging");
    if (text.empty()) throw RuntimeError(errors::invalidCall, "The key is empty", "Imaging");
    const auto salt = saltFor(bitsPerPixel, width, height);
    constexpr std::size_t size = sizeof(CipherKey::bytes);
    std::array<std::uint8_t, 5 * size> all;
    const int failed =
        crypto_pwhash(all.data(), all.size(), text.data(), text.size(), salt.data(),
                      crypto_pwhash_OPSLIMIT_INTERACTIVE, crypto_pwhash_MEMLIMIT_INTERACTIVE,
                      crypto_pwhash_ALG_ARGON2ID13);
    const std::uint8_t* from = all.data();
    for (CipherKey* key : {&rounds[0], &rounds[1], &rounds[2], &rounds[3], &stream}) {
        std::copy_n(from, size, key->bytes.begin());
        from += size;
    }
    sodium_memzero(all.data(), all.size());
    if (failed) throw RuntimeError(errors::outOfMemory, "Out of memory", "Imaging");
}

} // namespace kvn::imaging
