// The lists that more than one dialog offers. The number of the chosen item goes to the operation.
#pragma once

namespace kvn::effects {

// Three bits: red 1, green 2, blue 4.
inline constexpr const char* channelMasks[] = {"Black", "Red",     "Green", "Yellow",
                                               "Blue",  "Magenta", "Cyan",  "White (all colors)"};
inline constexpr int allChannels = 7;

} // namespace kvn::effects
