// The run lengths of a PCX picture, which can be decoded from any place on.
//
// A byte of 0xC0 and above starts a run and tells its length; the next byte is what is repeated.
// Runs may go on from line to line, so only the bytes before tell where a line starts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "imaging/task.h"

namespace kvn::imaging {

class PcxRuns {
  public:
    // Goes through all of the data once to find places where decoding can start.
    PcxRuns(std::span<const std::uint8_t> data, Task& task);

    // How many bytes the data give.
    std::uint64_t size() const { return size_; }

    // A place in the decoded bytes that moves forwards.
    class Reader {
      public:
        // `out` of read() has as many bytes behind its end, which may be written to.
        static constexpr std::size_t slack = 16;

        // `from` is at most size().
        Reader(const PcxRuns& runs, std::uint64_t from);
        // Fills `out`, with zeros from where the data end.
        void read(std::uint8_t* out, std::size_t size);
        // Where in the data the next run starts.
        std::size_t position() const { return static_cast<std::size_t>(at_ - begin_); }

      private:
        const std::uint8_t* begin_;
        const std::uint8_t* at_;
        const std::uint8_t* end_;
        std::size_t run_ = 0; // what is left of the last run
        std::uint8_t value_ = 0;
    };

  private:
    // The start of a run, or of a byte that stands for itself, and of what it gives.
    struct Place {
        std::size_t in = 0;
        std::uint64_t out = 0;
    };

    std::span<const std::uint8_t> data_;
    std::vector<Place> places_;
    std::uint64_t size_ = 0;
};

} // namespace kvn::imaging
