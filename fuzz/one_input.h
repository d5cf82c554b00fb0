// What all fuzz targets share: the time that one input may take, and old memory made visible.
#pragma once

#include <cstdint>
#include <ctime>

namespace kvn::fuzz {

// Ends the program with a message if its life took more processor time than one damaged file may.
// Processor time, since the machine may be busy with other things.
class InputClock {
  public:
    InputClock() : start_(seconds()) {}
    ~InputClock();
    InputClock(const InputClock&) = delete;
    InputClock& operator=(const InputClock&) = delete;

    static double seconds();

  private:
    double start_;
};

// Blocks of memory up to 64 KB are handed out filled with this byte from now on.
void fillNewMemoryWith(std::uint8_t byte);

} // namespace kvn::fuzz
