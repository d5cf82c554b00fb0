#include "imaging/operations/cipher/wide_block.h"

#include <sodium.h>

#include <algorithm>
#include <vector>

namespace kvn::imaging {
namespace {

constexpr std::size_t leftBits = 256; // as many as a key has
constexpr std::size_t pieceBytes = 256 * 1024;

using Digest = CipherKey;

// BLAKE2b under a key; `purpose` keeps hashes of pixels and hashes of digests apart.
class Hash {
  public:
    Hash(const CipherKey& key, char purpose) {
        std::array<std::uint8_t, crypto_generichash_blake2b_PERSONALBYTES> personal{};
        personal[0] = static_cast<std::uint8_t>(purpose);
        crypto_generichash_blake2b_init_salt_personal(&state_, key.bytes.data(), key.bytes.size(),
                                                      sizeof(Digest::bytes), nullptr,
                                                      personal.data());
    }
    ~Hash() { sodium_memzero(&state_, sizeof state_); }
    Hash(const Hash&) = delete;
    Hash& operator=(const Hash&) = delete;

    void add(const std::uint8_t* bytes, std::size_t count) {
        crypto_generichash_blake2b_update(&state_, bytes, count);
    }
    void finish(Digest& digest) {
        crypto_generichash_blake2b_final(&state_, digest.bytes.data(), digest.bytes.size());
    }

  private:
    crypto_generichash_blake2b_state state_;
};

class WideBlock {
  public:
    WideBlock(const View& view, Task& task)
        : view_(view), task_(task), rowSize_(rowBytes(view.type, view.width)) {
        const auto bits = static_cast<std::size_t>(view.width) *
                          static_cast<std::size_t>(bitsPerPixel(view.type));
        if (bits % 8) lastByte_ = static_cast<std::uint8_t>(0xFF00 >> bits % 8);
        bits_ = bits * static_cast<std::size_t>(view.height);
        // The left part is the begin of the first row, or as many whole rows as it takes.
        if (bits >= leftBits)
            leftInRow_ = leftBits / 8;
        else
            leftRows_ = static_cast<int>((leftBits + bits - 1) / bits);
        const auto perPiece = std::max<std::size_t>(1, pieceBytes / rowSize_);
        pieceRows_ = static_cast<int>(std::min<std::size_t>(perPiece, 1 << 20));
    }

    bool hasBlock() const { return bits_ >= 2 * leftBits; }

    void streamOnly(const CipherKey& key) {
        leftRows_ = 0;
        leftInRow_ = 0;
        changeRight(key);
    }

    void encipher(const std::array<CipherKey, 4>& keys) {
        for (std::size_t round = 0; round < 4; round += 2) {
            const Task::Stage half(task_, round == 0 ? 0 : 0.5, round == 0 ? 0.5 : 1);
            Digest fromLeft, fromRight;
            hashLeft(keys[round], fromLeft);
            hashRight(&fromLeft, keys[round + 1], fromRight);
            changeLeft(fromRight);
        }
    }

    void decipher(const std::array<CipherKey, 4>& keys) {
        Digest fromLeft, fromRight;
        {
            const Task::Stage first(task_, 0, 0.4);
            hashRight(nullptr, keys[3], fromRight);
        }
        changeLeft(fromRight);
        hashLeft(keys[2], fromLeft);
        {
            const Task::Stage second(task_, 0.4, 0.85);
            hashRight(&fromLeft, keys[1], fromRight);
        }
        changeLeft(fromRight);
        hashLeft(keys[0], fromLeft);
        const Task::Stage third(task_, 0.85, 1);
        changeRight(fromLeft);
    }

  private:
    void changeBytes(int y, std::size_t from, std::size_t to, const CipherKey& key) {
        std::array<std::uint8_t, crypto_stream_xchacha20_NONCEBYTES> nonce{};
        for (std::size_t i = 0; i < sizeof y; ++i)
            nonce[i] = static_cast<std::uint8_t>(static_cast<unsigned>(y) >> 8 * i);
        std::uint8_t* row = view_.row(y);
        crypto_stream_xchacha20_xor(row + from, row + from, to - from, nonce.data(),
                                    key.bytes.data());
        row[rowSize_ - 1] &= lastByte_;
    }

    // How much of the row is the left part's.
    std::size_t leftOf(int y) const {
        if (y < leftRows_) return rowSize_;
        return y == 0 ? leftInRow_ : 0;
    }

    void hashLeft(const CipherKey& key, Digest& digest) const {
        Hash hash(key, 'l');
        for (int y = 0; y < std::max(1, leftRows_); ++y)
            hash.add(view_.row(y), leftOf(y));
        hash.finish(digest);
    }
    void changeLeft(const CipherKey& key) {
        for (int y = 0; y < std::max(1, leftRows_); ++y)
            changeBytes(y, 0, leftOf(y), key);
    }

    // Calls `work(piece, y0, y1)` for every piece of the right part.
    template <class Work>
    void eachPiece(const Work& work) {
        parallelRows(
            pieces(), task_,
            [&](int from, int to) {
                for (int piece = from; piece < to; ++piece)
                    work(piece, piece * pieceRows_,
                         std::min(view_.height, (piece + 1) * pieceRows_));
            },
            1);
    }
    int pieces() const { return (view_.height - 1) / pieceRows_ + 1; }

    void changeRows(int y0, int y1, const CipherKey& key) {
        for (int y = y0; y < y1; ++y)
            changeBytes(y, leftOf(y), rowSize_, key);
    }
    void changeRight(const CipherKey& key) {
        eachPiece([&](int, int y0, int y1) { changeRows(y0, y1, key); });
    }
    // Where there is a stream key, each piece is changed before it is hashed.
    void hashRight(const CipherKey* streamKey, const CipherKey& key, Digest& digest) {
        std::vector<Digest> digests(static_cast<std::size_t>(pieces()));
        eachPiece([&](int piece, int y0, int y1) {
            if (streamKey) changeRows(y0, y1, *streamKey);
            Hash hash(key, 'r');
            for (int y = y0; y < y1; ++y)
                hash.add(view_.row(y) + leftOf(y), rowSize_ - leftOf(y));
            hash.finish(digests[static_cast<std::size_t>(piece)]);
        });
        Hash all(key, 'd');
        for (const Digest& one : digests)
            all.add(one.bytes.data(), one.bytes.size());
        all.finish(digest);
    }

    View view_;
    Task& task_;
    std::size_t rowSize_;
    std::uint8_t lastByte_ = 0xFF; // the bits of a row's last byte that are pixels
    std::size_t bits_ = 0;
    int leftRows_ = 0;
    std::size_t leftInRow_ = 0;
    int pieceRows_ = 1;
};

void clearPadding(const View& view) {
    const int used = view.type == ImageType::Bit1 ? view.width % 8 : 0;
    if (used == 0) return;
    const std::size_t last = rowBytes(view.type, view.width) - 1;
    for (int y = 0; y < view.height; ++y)
        view.row(y)[last] &= static_cast<std::uint8_t>(0xFF00 >> used);
}

} // namespace

void cipherPixels(const View& view, const CipherKeys& keys, CipherDirection direction, Task& task) {
    clearPadding(view);
    WideBlock block(view, task);
    if (!block.hasBlock()) return block.streamOnly(keys.stream);
    if (direction == CipherDirection::Encipher)
        block.encipher(keys.rounds);
    else
        block.decipher(keys.rounds);
}

} // namespace kvn::imaging
