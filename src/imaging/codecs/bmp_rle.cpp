#include "imaging/codecs/bmp_rle.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace kvn::imaging {

namespace {

class Unpacker {
  public:
    Unpacker(std::span<const std::uint8_t> data, int bits, bool topDown, View target)
        : data_(data), bits_(bits), topDown_(topDown), target_(target) {}

    int run() {
        while (y_ < target_.height && at_ + 2 <= data_.size()) {
            const int count = data_[at_];
            const int value = data_[at_ + 1];
            if (count > 0) {
                ++at_; // the run's value is read where it stands
                repeat(count);
            } else {
                at_ += 2;
                if (value == 1) return target_.height;
                if (!escape(value)) break;
            }
        }
        return std::min(y_ + (x_ > 0), target_.height);
    }

  private:
    bool escape(int value) {
        if (value == 0) {
            x_ = 0;
            ++y_;
        } else if (value == 2) {
            if (at_ + 2 > data_.size()) return false;
            x_ += data_[at_];
            y_ += data_[at_ + 1];
            at_ += 2;
        } else {
            literal(value);
        }
        return true;
    }

    std::uint8_t* row() { return target_.row(topDown_ ? y_ : target_.height - 1 - y_); }
    int room(int count) const {
        return static_cast<int>(std::clamp<std::int64_t>(target_.width - x_, 0, count));
    }

    void repeat(int count) {
        const int n = room(count);
        const std::uint8_t* value = data_.data() + at_;
        if (bits_ == 8) {
            if (n > 0) std::memset(row() + x_, value[0], static_cast<std::size_t>(n));
        } else if (bits_ == 4) {
            for (int i = 0; i < n; ++i)
                row()[x_ + i] = i % 2 == 0 ? value[0] >> 4 : value[0] & 15;
        } else if (at_ + 3 <= data_.size()) {
            for (int i = 0; i < n; ++i)
                putColor(x_ + i, value);
        }
        at_ += bits_ == 24 ? 3 : 1;
        x_ += count;
    }

    // Literal pixels, padded to an even number of bytes.
    void literal(int count) {
        const std::size_t bytes =
            static_cast<std::size_t>(count) * bits_ / 8 + (bits_ == 4 && count % 2 != 0);
        const int there =
            static_cast<int>(std::min<std::uint64_t>(count, (data_.size() - at_) * 8 / bits_));
        const int n = room(there);
        const std::uint8_t* value = data_.data() + at_;
        if (bits_ == 8) {
            if (n > 0) std::memcpy(row() + x_, value, static_cast<std::size_t>(n));
        } else if (bits_ == 4) {
            for (int i = 0; i < n; ++i)
                row()[x_ + i] = i % 2 == 0 ? value[i / 2] >> 4 : value[i / 2] & 15;
        } else {
            for (int i = 0; i < n; ++i)
                putColor(x_ + i, value + 3 * i);
        }
        at_ = std::min(at_ + bytes + bytes % 2, data_.size());
        x_ += count;
    }

    void putColor(std::int64_t x, const std::uint8_t* bgr) {
        std::uint8_t* pixel = row() + 3 * x;
        pixel[0] = bgr[2];
        pixel[1] = bgr[1];
        pixel[2] = bgr[0];
    }

    std::span<const std::uint8_t> data_;
    int bits_;
    bool topDown_;
    View target_;
    std::size_t at_ = 0;
    std::int64_t x_ = 0; // runs may go on far past the line
    int y_ = 0;
};

constexpr std::size_t longestRun = 255;

std::size_t runLength(std::span<const std::uint8_t> line, std::size_t at) {
    const std::size_t most = std::min(line.size() - at, longestRun);
    std::size_t n = 1;
    while (n < most && line[at + n] == line[at])
        ++n;
    return n;
}

void putLiteral(std::span<const std::uint8_t> bytes, Bytes& out) {
    // Fewer than three cannot be told from the escapes: they go as runs of one.
    if (bytes.size() < 3) {
        for (const std::uint8_t byte : bytes) {
            out.push_back(1);
            out.push_back(byte);
        }
        return;
    }
    out.push_back(0);
    out.push_back(static_cast<std::uint8_t>(bytes.size()));
    out.insert(out.end(), bytes.begin(), bytes.end());
    if (bytes.size() % 2 != 0) out.push_back(0);
}

} // namespace

int unpackBmpRuns(std::span<const std::uint8_t> data, int bits, bool topDown, View target) {
    return Unpacker(data, bits, topDown, target).run();
}

void packBmpLine(std::span<const std::uint8_t> line, Bytes& out) {
    // Shorter runs inside a literal cost more than they save.
    constexpr std::size_t worthRun = 4;
    std::size_t at = 0;
    while (at < line.size()) {
        const std::size_t run = runLength(line, at);
        if (run >= worthRun) {
            out.push_back(static_cast<std::uint8_t>(run));
            out.push_back(line[at]);
            at += run;
            continue;
        }
        std::size_t end = at + run;
        while (end < line.size() && end - at < longestRun) {
            const std::size_t next = runLength(line, end);
            if (next >= worthRun) break;
            end = std::min(end + next, at + longestRun);
        }
        putLiteral(line.subspan(at, end - at), out);
        at = end;
    }
    out.push_back(0);
    out.push_back(0);
}

} // namespace kvn::imaging
