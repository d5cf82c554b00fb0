#include "imaging/codecs/gif_lzw.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace kvn::imaging {

namespace {

constexpr int widest = 12;

class CodeReader {
  public:
    explicit CodeReader(std::span<const std::uint8_t> data) : data_(data) {}

    // The next code of `width` bits, -1 at the end.
    int next(int width) {
        if (held_ < width) refill();
        if (held_ < width) return -1;
        const int code = static_cast<int>(bits_ & ((1u << width) - 1));
        bits_ >>= width;
        held_ -= width;
        return code;
    }

  private:
    void refill() {
        while (held_ <= 56 && at_ < data_.size()) {
            bits_ |= std::uint64_t{data_[at_++]} << held_;
            held_ += 8;
        }
    }

    std::span<const std::uint8_t> data_;
    std::size_t at_ = 0;
    std::uint64_t bits_ = 0;
    int held_ = 0;
};

// A string of the table is a stretch of the output: every string is an earlier one and the byte
// that followed it there.
struct Stretch {
    std::size_t start;
    std::size_t length;
};

class Decoder {
  public:
    Decoder(std::span<const std::uint8_t> data, int codeSize, std::uint8_t* out, std::size_t count)
        : codes_(data), clear_(1 << codeSize), out_(out), count_(count) {
        reset();
    }

    std::size_t run() {
        while (done_ < count_) {
            const int code = codes_.next(width_);
            if (code < 0 || code == clear_ + 1) break;
            if (code == clear_)
                reset();
            else if (!emit(code))
                break;
        }
        return done_;
    }

  private:
    void reset() {
        width_ = std::countr_zero(static_cast<unsigned>(clear_)) + 1;
        next_ = clear_ + 2;
        hasPrevious_ = false;
    }

    bool emit(int code) {
        const std::size_t start = done_;
        if (hasPrevious_ && next_ < 1 << widest) {
            strings_[static_cast<std::size_t>(next_)] = {previous_.start, previous_.length + 1};
            if (++next_ == 1 << width_ && width_ < widest) ++width_;
        }
        if (code < clear_) {
            out_[done_++] = static_cast<std::uint8_t>(code);
        } else {
            if (code >= next_) return false;
            copy(strings_[static_cast<std::size_t>(code)]);
        }
        previous_ = {start, done_ - start};
        hasPrevious_ = true;
        return true;
    }

    // Source and target overlap by one byte where a string is the previous one and its own first
    // byte; copying upwards is right then too.
    void copy(Stretch from) {
        const std::size_t length = std::min(from.length, count_ - done_);
        const std::uint8_t* source = out_ + from.start;
        std::uint8_t* target = out_ + done_;
        if (target - source >= 8)
            for (std::size_t i = 0; i < length; i += 8)
                std::memcpy(target + i, source + i, 8);
        else
            for (std::size_t i = 0; i < length; ++i)
                target[i] = source[i];
        done_ += length;
    }

    CodeReader codes_;
    int clear_;
    std::uint8_t* out_;
    std::size_t count_;
    std::size_t done_ = 0;
    int width_ = 0;
    int next_ = 0;
    Stretch previous_{};
    bool hasPrevious_ = false;
    std::array<Stretch, 1 << widest> strings_;
};

} // namespace

std::size_t unpackGifLzw(std::span<const std::uint8_t> data, int codeSize, std::uint8_t* out,
                         std::size_t count) {
    if (codeSize < 1 || codeSize > 8) return 0;
    return Decoder(data, codeSize, out, count).run();
}

} // namespace kvn::imaging
