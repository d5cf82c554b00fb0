// The rows in their order with the names of their picture files, and the page that shows them.
#pragma once

#include <string>
#include <vector>

#include "rows.h"

namespace kvn::gallery {

struct Entry {
    const Section* section = nullptr;
    const Row* row = nullptr;
    std::string operation; // the one that is shown: the last of the row
    // "photo" and "drawing", or the one picture that is worked on.
    std::vector<std::string> sources;
    // File names, those of the first source first.
    std::vector<std::string> pictures;
};

std::vector<Entry> entries();

// In Markdown, without colours of its own: it reads on dark and on light ground.
std::string pageText(const std::vector<Entry>& entries);

} // namespace kvn::gallery
