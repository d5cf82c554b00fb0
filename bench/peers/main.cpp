// bench_peers [PART OF A NAME ...]: milliseconds of our operations and of the same work by OpenCV,
// libvips and GraphicsMagick, on 24 megapixels in memory, two threads each, taken in turn, the
// fastest of seven or more runs; a table in Markdown, with how many times the fastest other's time
// ours is. Work of more than two seconds is done once. Without words everything runs.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <malloc.h>
#include <vector>

#include "bench/peers/peers.h"
#include "bench/photo.h"

namespace kvn::bench {

#ifndef KVN_PEER_VIPS
Works vipsWorks(const Pictures&) {
    return {};
}
#endif
#ifndef KVN_PEER_MAGICK
Works magickWorks(const Pictures&) {
    return {};
}
#endif

namespace {

// In the order of the table. Point operations are held against a copy.
struct Case {
    const char* name;
    bool point = false;
};
constexpr Case cases[] = {
    {"copy", true},
    {"invert", true},
    {"gamma", true},
    {"brightness and contrast", true},
    {"intensity", true},
    {"posterize", true},
    {"solarize", true},
    {"threshold", true},
    {"saturation", true},
    {"grey", true},
    {"duotone", true},
    {"replace a colour", true},
    {"swap red and blue", true},
    {"add to channels", true},
    {"add alpha", true},
    {"hue, saturation, lightness"},
    {"split into channels"},
    {"histogram equalize"},
    {"histogram stretch"},
    {"mosaic 10 x 10"},
    {"Gaussian noise"},
    {"Gaussian blur, sigma 2"},
    {"Gaussian blur, sigma 10"},
    {"Gaussian blur, sigma 20"},
    {"box blur 7 x 7"},
    {"median 3 x 3"},
    {"median 5 x 5"},
    {"median 9 x 9"},
    {"minimum 3 x 3"},
    {"maximum 3 x 3"},
    {"maximum 15 x 15"},
    {"open 3 x 3"},
    {"top hat 3 x 3"},
    {"sharpen 3 x 3"},
    {"unsharp mask, radius 2.4"},
    {"unsharp mask, radius 10"},
    {"Sobel edges"},
    {"Canny edges"},
    {"emboss"},
    {"3 x 3 table"},
    {"3 x 5 table"},
    {"motion blur, 10 px"},
    {"to 1500 x 1000, bilinear"},
    {"to 1500 x 1000, bicubic"},
    {"to 1500 x 1000, Lanczos3"},
    {"to 1500 x 1000, box"},
    {"to 1613 x 1075, box"},
    {"twice as large, bilinear"},
    {"twice as large, bicubic"},
    {"twice as large, Lanczos3"},
    {"flip across"},
    {"flip down"},
    {"rotate 90"},
    {"rotate 180"},
    {"rotate 30, bicubic"},
    {"skew"},
    {"perspective"},
    {"wider canvas"},
    {"waves"},
    {"ripple"},
    {"spin"},
    {"pinch"},
    {"to 256 colours, dithered"},
    {"to 16 colours, dithered"},
    {"gradient noise 2000 x 2000"},
};

double milliseconds(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

// One side of a case: the times of its runs.
struct Side {
    const Work* work = nullptr;
    std::vector<double> times;

    bool isSlow() const { return !times.empty() && times.front() > 2000; }
    // The least disturbed run.
    double best() const { return times.empty() ? 0 : std::ranges::min(times); }
};

// The sides take turns, so that a slow moment of the machine meets all of them. The first run of
// each brings memory and caches up and counts only if it is the only one.
void measure(std::vector<Side>& sides) {
    constexpr int fewest = 7, most = 25;
    constexpr double enough = 2000; // milliseconds
    double spent = 0;
    for (int i = 0; i <= fewest || (i <= most && spent < enough); ++i)
        for (Side& side : sides) {
            if (!side.work || side.isSlow()) continue;
            const double took = milliseconds(*side.work);
            spent += took;
            if (i == 1) side.times.clear();
            side.times.push_back(took);
        }
}

void printCell(double time) {
    if (time > 0)
        std::printf(" %.*f |", time < 100 ? 1 : 0, time);
    else
        std::printf(" |");
}

class Table {
  public:
    explicit Table(const Pictures& pictures)
        : works_{ourWorks(pictures), opencvWorks(pictures), opencvStripWorks(pictures),
                 vipsWorks(pictures), magickWorks(pictures)} {}

    void print(const Case& one) {
        std::vector<Side> sides;
        for (const Works& works : works_) {
            const auto found = works.find(one.name);
            sides.push_back({found == works.end() ? nullptr : &found->second, {}});
        }
        if (!sides.front().work) return;
        measure(sides);
        std::printf("| %s |", one.name);
        double ours = 0, best = 0;
        for (std::size_t i = 0; i < sides.size(); ++i) {
            const double time = sides[i].best();
            printCell(time);
            if (i == 0)
                ours = time;
            else if (time > 0 && (best == 0 || time < best))
                best = time;
        }
        best > 0 ? std::printf(" %.2f |", ours / best) : std::printf(" |");
        if (std::string_view(one.name) == "copy") copy_ = ours;
        one.point&& copy_ > 0 ? std::printf(" %.2f |\n", ours / copy_) : std::printf(" |\n");
        std::fflush(stdout);
    }

  private:
    std::vector<Works> works_;
    double copy_ = 0;
};

bool isWanted(const Case& one, int argc, char** argv) {
    if (argc < 2) return true;
    const std::string_view name = one.name;
    return std::any_of(argv + 1, argv + argc,
                       [&](const char* part) { return name.find(part) != std::string_view::npos; });
}

} // namespace
} // namespace kvn::bench

int main(int argc, char** argv) {
    using namespace kvn::bench;
    // Everyone's memory stays warm: freed blocks are not given back to the system.
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, -1);
    Table table({photo(), photo(kvn::imaging::ImageType::Rgb24, 3000, 2000)});
    std::puts(
        "| operation | ours | OpenCV | OpenCV in bands | libvips | GraphicsMagick | ours / best "
        "| ours / copy |\n|---|---|---|---|---|---|---|---|");
    for (const Case& one : cases)
        if (isWanted(one, argc, argv)) table.print(one);
    return 0;
}
