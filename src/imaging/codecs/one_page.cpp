#include "imaging/codecs/one_page.h"

#include "basic/error.h"
#include "imaging/codecs/blacken.h"

namespace kvn::imaging {

const Page& onlyPage(std::span<const Page> pages, std::string_view format) {
    if (pages.size() != 1)
        throw RuntimeError(errors::invalidCall,
                           "A " + std::string(format) + " file holds one picture.", "Export");
    return pages.front();
}

void requireSides(const Raster& raster, int longest, std::string_view format) {
    if (raster.width() <= longest && raster.height() <= longest) return;
    throw RuntimeError(errors::invalidCall,
                       "The picture of " + std::to_string(raster.width()) + " x " +
                           std::to_string(raster.height()) + " pixels is too large for a " +
                           std::string(format) + " file: its sides may have up to " +
                           std::to_string(longest) + " pixels.",
                       "Export");
}

void blackenMissingRows(const View& view, const Palette& palette, int rows, bool topDown,
                        std::string_view format, std::vector<std::string>& warnings) {
    const int missing = view.height - rows;
    if (missing <= 0) return;
    blacken(view, palette, {0, topDown ? rows : 0, view.width, missing});
    warnings.push_back("The " + std::string(format) +
                       " file is cut off: " + std::to_string(missing) + " of " +
                       std::to_string(view.height) + " rows are missing.");
}

} // namespace kvn::imaging
