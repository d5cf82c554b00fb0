#include "page.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <string_view>

namespace kvn::gallery {
namespace {

constexpr const char* preface =
    R"(# Gallery

Every operation of the imaging layer at the numbers that the menus give it, and in each of its modes.
Under each name stands the call, as `kvn-probe run` takes it in this folder. Most rows work on 180 pixels
of width and show every pixel; distortions work on 400 and are shown at half the size. Where a picture
is clear, a chequered ground shows.

Made by `kvn-gallery docs/gallery`; `kvn-gallery docs/gallery --check` tells whether an operation or a
picture is missing.

The photograph (`photo.jpg`, 400 x 300, reduced): "Picture 1A" by Trevor "Freespace", 2018, licensed
under [CC BY 4.0](https://creativecommons.org/licenses/by/4.0/); the pictures made of it stand under the
same licence. All other pictures are drawn by the tool and stand under the project's licence.

| photograph | drawing |
|---|---|
| <img src="photo.jpg" width="400"> | <img src="drawing.png" width="400"> |
)";

std::vector<std::string> sourcesOf(Source source) {
    switch (source) {
    case Source::Small:
    case Source::Large:
        return {"photo", "drawing"};
    case Source::Photo:
        return {"photo"};
    case Source::Face:
        return {"face"};
    case Source::Page:
        return {"page"};
    case Source::Indexes:
        return {"indexes"};
    case Source::None:
        return {"made"};
    }
    return {};
}

// The word that begins the last operation.
std::string lastOperation(std::string_view words) {
    const std::size_t plus = words.rfind(" + ");
    if (plus != std::string_view::npos) words.remove_prefix(plus + 3);
    return std::string(words.substr(0, words.find(' ')));
}

// "Effects.Blur", 3: "effects-blur-3".
std::string stemOf(std::string_view operation, int number) {
    std::string stem;
    for (const char c : operation)
        stem += c == '.' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return stem + '-' + std::to_string(number);
}

std::string calls(const Row& row) {
    std::string text = *row.first ? std::string(row.first) + " + " : std::string();
    return text + row.words;
}

void addRow(std::string& page, const Entry& entry) {
    page += "| **" + std::string(entry.row->caption) + "**<br>`" + calls(*entry.row) + "` |";
    // What they are made of, if it does not stand above all tables.
    if (entry.row->source == Source::Face || entry.row->source == Source::Page)
        page += " <img src=\"" + entry.sources.front() + ".png\" width=\"200\">";
    for (const std::string& picture : entry.pictures)
        page += " ![](" + picture + ")";
    page += " |\n";
}

} // namespace

std::vector<Entry> entries() {
    std::vector<Entry> all;
    std::map<std::string, int> rowsOf;
    for (const auto sections :
         {effectSections(), geometrySections(), transformSections(), channelSections()})
        for (const Section& section : sections)
            for (const Row& row : section.rows) {
                Entry entry{&section, &row, lastOperation(row.words), sourcesOf(row.source), {}};
                const std::string stem = stemOf(entry.operation, ++rowsOf[entry.operation]);
                for (const std::string& source : entry.sources)
                    for (int page = 1; page <= row.pages; ++page)
                        entry.pictures.push_back(
                            stem + '-' + source +
                            (row.pages > 1 ? '-' + std::to_string(page) : std::string()) + ".jpg");
                all.push_back(std::move(entry));
            }
    return all;
}

std::string pageText(const std::vector<Entry>& entries) {
    std::string page = preface;
    const Section* section = nullptr;
    for (const Entry& entry : entries) {
        if (entry.section != section) {
            section = entry.section;
            page +=
                "\n## " + std::string(section->title) + "\n\n| operation | pictures |\n|---|---|\n";
        }
        addRow(page, entry);
    }
    return page;
}

} // namespace kvn::gallery
