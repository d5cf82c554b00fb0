#include "imaging/operations/support/result_size.h"

#include "basic/error.h"

namespace kvn::imaging {

Size checkedResultSize(double width, double height, const char* source) {
    const auto fits = [](double side) { return side >= 1 && side <= longestSide; };
    if (!fits(width) || !fits(height))
        throw RuntimeError(errors::invalidCall, "The result would be too large or empty", source);
    return {static_cast<int>(width), static_cast<int>(height)};
}

} // namespace kvn::imaging
