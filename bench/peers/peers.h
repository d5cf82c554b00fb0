// The same work by our operations and by other libraries, to be timed side by side. A library that
// was not found when the build was configured gives no work.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "imaging/raster.h"

namespace kvn::bench {

inline constexpr int threads = 2;

using Work = std::function<void()>;
using Works = std::map<std::string, Work>; // by the name of the case

// What all work on: 24-bit colour, one the half of the other on either side.
struct Pictures {
    imaging::Raster large; // 6000 x 4000
    imaging::Raster half;  // 3000 x 2000
};

// Each keeps its memory between runs, as a program that works on would.
Works ourWorks(const Pictures& pictures);
Works opencvWorks(const Pictures& pictures);      // the library's own calls
Works opencvStripWorks(const Pictures& pictures); // in sixteen bands, where a call allows it
Works vipsWorks(const Pictures& pictures);
Works magickWorks(const Pictures& pictures);

} // namespace kvn::bench
