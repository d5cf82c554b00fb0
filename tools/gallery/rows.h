// What the gallery shows: every operation at the numbers that the menus give it, each mode once.
// A row is data; what the pictures are made of stands in pictures.h.
#pragma once

#include <span>

namespace kvn::gallery {

// What a row's operations are run on, and at which size it is shown.
enum class Source {
    Small,   // photograph and drawing, 180 pixels wide, shown pixel by pixel
    Large,   // the same, 400 pixels wide, shown at half the size
    Photo,   // the photograph alone, 400 pixels wide, shown at half the size
    Face,    // a drawn face with red pupils
    Page,    // a scanned page, one bit, turned by three degrees
    Indexes, // swatches of all palette entries
    None,    // pictures made from nothing
};

struct Row {
    const char* caption;
    // As kvn-probe takes them, in the gallery's folder: operations separated by +. The last one is
    // the one shown, unless others are named below.
    const char* words;
    Source source = Source::Small;
    int pages = 1;          // pictures that come out
    const char* first = ""; // operations that only prepare the picture
};

struct Section {
    const char* title;
    std::span<const Row> rows;
};

std::span<const Section> effectSections();
std::span<const Section> geometrySections();
std::span<const Section> transformSections();
std::span<const Section> channelSections();

} // namespace kvn::gallery
