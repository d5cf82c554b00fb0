#include "rows.h"

namespace kvn::gallery {
namespace {

// A piece of 36 pixels, five times as large: the forms of the filters show.
constexpr Row enlarged(const char* caption, const char* words) {
    return {.caption = caption, .words = words, .first = "Geometry.Crop 72 36 36 27"};
}
constexpr Row enlargements[] = {
    enlarged("Bi-Linear", "Geometry.Resize 180 0 0"),
    enlarged("Bi-Cubic", "Geometry.Resize 180 0 1"),
    enlarged("Simple", "Geometry.Resize 180 0 2"),
    enlarged("Decimate", "Geometry.Resize 180 0 3"),
    enlarged("Default", "Geometry.Resize 180 0 4"),
    enlarged("Box Filter", "Geometry.Resize 180 0 5"),
    enlarged("Triangle Filter", "Geometry.Resize 180 0 6"),
    enlarged("Hamming Filter", "Geometry.Resize 180 0 7"),
    enlarged("Triangle Filter", "Geometry.Resize 180 0 8"),
    enlarged("Gaussian Filter", "Geometry.Resize 180 0 9"),
    enlarged("Bell Filter", "Geometry.Resize 180 0 10"),
    enlarged("B-Spline Filter", "Geometry.Resize 180 0 11"),
    enlarged("Cubic1 Filter", "Geometry.Resize 180 0 12"),
    enlarged("Cubic2 Filter", "Geometry.Resize 180 0 13"),
    enlarged("Triangle Filter", "Geometry.Resize 180 0 14"),
    enlarged("Lanczos3 Filter", "Geometry.Resize 180 0 15"),
    enlarged("Mitchell Filter", "Geometry.Resize 180 0 16"),
    enlarged("Sinc Filter", "Geometry.Resize 180 0 17"),
    enlarged("Hermite Filter", "Geometry.Resize 180 0 18"),
    enlarged("Triangle Filter", "Geometry.Resize 180 0 19"),
    enlarged("Hanning Filter", "Geometry.Resize 180 0 20"),
    enlarged("Catrom Filter", "Geometry.Resize 180 0 21"),
};
constexpr Row reduced(const char* caption, const char* words) {
    return {.caption = caption, .words = words};
}
constexpr Row reductions[] = {
    reduced("Bi-Linear", "Geometry.Resize 100 0 0"),
    reduced("Bi-Cubic", "Geometry.Resize 100 0 1"),
    reduced("Simple", "Geometry.Resize 100 0 2"),
    reduced("Decimate", "Geometry.Resize 100 0 3"),
    reduced("Default", "Geometry.Resize 100 0 4"),
    reduced("Box Filter", "Geometry.Resize 100 0 5"),
    reduced("Triangle Filter", "Geometry.Resize 100 0 6"),
    reduced("Hamming Filter", "Geometry.Resize 100 0 7"),
    reduced("Triangle Filter", "Geometry.Resize 100 0 8"),
    reduced("Gaussian Filter", "Geometry.Resize 100 0 9"),
    reduced("Bell Filter", "Geometry.Resize 100 0 10"),
    reduced("B-Spline Filter", "Geometry.Resize 100 0 11"),
    reduced("Cubic1 Filter", "Geometry.Resize 100 0 12"),
    reduced("Cubic2 Filter", "Geometry.Resize 100 0 13"),
    reduced("Triangle Filter", "Geometry.Resize 100 0 14"),
    reduced("Lanczos3 Filter", "Geometry.Resize 100 0 15"),
    reduced("Mitchell Filter", "Geometry.Resize 100 0 16"),
    reduced("Sinc Filter", "Geometry.Resize 100 0 17"),
    reduced("Hermite Filter", "Geometry.Resize 100 0 18"),
    reduced("Triangle Filter", "Geometry.Resize 100 0 19"),
    reduced("Hanning Filter", "Geometry.Resize 100 0 20"),
    reduced("Catrom Filter", "Geometry.Resize 100 0 21"),
};
constexpr Row shape[] = {
    {"Crop", "Geometry.Crop 50 30 100 90"},
    {"AutoCrop", "Geometry.AutoCrop 1 nothing", Source::Small, 1,
     "Geometry.ResizeCanvas 220 175 #3060a0 20 20"},
    {"Flip, Horizontal", "Geometry.Flip 0"},
    {"Flip, Vertical", "Geometry.Flip 1"},
    {"Rotate", "Geometry.Rotate 90 #000000 0"},
    {"Rotate 10", "Geometry.Rotate 10 #000000 0"},
    {"Rotate -45", "Geometry.Rotate -45 #ffffff 0"},
    {"Rotate 180", "Geometry.Rotate 180 #000000 0"},
    {"Skew, Horizontal", "Geometry.Skew 0 40 #ffffff false"},
    {"Skew, Vertical", "Geometry.Skew 1 40 #ffffff false"},
    {"Skew, Horizontal, fast", "Geometry.Skew 0 40 #ffffff true"},
    {"Skew, Vertical, fast", "Geometry.Skew 1 40 #ffffff true"},
    {"Resize Canvas", "Geometry.ResizeCanvas 200 155 #3060a0 5 15"},
    {"Add Border", "Geometry.ResizeCanvas 200 155 #000000 10 10"},
    {"AutoDeskew", "Geometry.AutoDeskew 2 4 1 0 0 0 0", Source::Page},
};
constexpr Row outline[] = {
    {"Perspective, Right to Left", "Geometry.Perspective 0,299 0,0 399,75 399,225 1",
     Source::Large},
    {"Perspective, Bottom to Top", "Geometry.Perspective 100,225 0,0 399,0 300,225 1",
     Source::Large},
    {"Perspective, Right Bottom to Left", "Geometry.Perspective 0,299 0,0 325,299 325,375 1",
     Source::Large},
    {"Perspective, Right Bottom to Top", "Geometry.Perspective 300,299 0,0 399,0 399,299 1",
     Source::Large},
    {"Perspective, Center to Left",
     "Geometry.PerspectiveMap 0,299 0,0 399,75 399,225 0,299 0,0 399,0 399,299 0", Source::Large},
    {"Perspective, Center",
     "Geometry.PerspectiveMap 100,225 0,0 399,0 300,225 0,299 0,0 399,0 399,299 0", Source::Large},
    {"Warp Image", "Geometry.Warp 150 200 260 100", Source::Large},
};
constexpr Row fewColors[] = {
    {"Dither, 2 Colors", "Geometry.Dither 2 true true"},
    {"Dither, 4 Colors", "Geometry.Dither 4 true true"},
    {"Dither, 8 Colors", "Geometry.Dither 8 true true"},
    {"Dither, 16 Colors", "Geometry.Dither 16 true true"},
    {"Dither, 32 Colors", "Geometry.Dither 32 true true"},
    {"Dither, 64 Colors", "Geometry.Dither 64 true true"},
    {"Dither, 128 Colors", "Geometry.Dither 128 true true"},
    {"Dither, 256 Colors", "Geometry.Dither 256 true true"},
    {"Web Palette", "Geometry.ApplyPalette palette-web.png false"},
    {"Web Palette, dithered", "Geometry.ApplyPalette palette-web.png true"},
    {"System Palette", "Geometry.ApplyPalette palette-system.png false"},
    {"System Palette, dithered", "Geometry.ApplyPalette palette-system.png true"},
    {"16 Color Palette", "Geometry.ApplyPalette palette-sixteen.png false"},
    {"16 Color Palette, dithered", "Geometry.ApplyPalette palette-sixteen.png true"},
    {"Black & White Palette", "Geometry.ApplyPalette palette-bilevel.png false"},
    {"Black & White Palette, dithered", "Geometry.ApplyPalette palette-bilevel.png true"},
    {"Replace Color", "Geometry.ReplaceColor #ffffff #30a030 1 true"},
    {"Replace Color, tolerance 40", "Geometry.ReplaceColor #ffffff #30a030 40 true"},
    {"Replace Color, opacity 0", "Geometry.ReplaceColor #ffffff #30a030 40 false"},
};
// At 0 and 255 the whole range is used and only pictures that leave some of it change.
constexpr Row histogram[] = {
    {"Histogram Stretch", "Geometry.HistogramStretch 0 255 7"},
    {"Histogram Stretch of a dull picture", "Geometry.HistogramStretch 0 255 7", Source::Small, 1,
     "Effects.BrightnessContrast 10 -40 -1"},
    {"Histogram Stretch 40 to 200, Red", "Geometry.HistogramStretch 40 200 1"},
    {"Histogram Stretch 40 to 200, Magenta", "Geometry.HistogramStretch 40 200 5"},
    {"Histogram Stretch 40 to 200, White", "Geometry.HistogramStretch 40 200 7"},
    {"Histogram Equalize", "Geometry.HistogramEqualize 0 255 7"},
    {"Histogram Equalize 40 to 200, Red", "Geometry.HistogramEqualize 40 200 1"},
    {"Histogram Equalize 40 to 200, Magenta", "Geometry.HistogramEqualize 40 200 5"},
    {"Histogram Equalize 40 to 200, White", "Geometry.HistogramEqualize 40 200 7"},
};
constexpr Row edgesAndShadows[] = {
    {"Bevel Edge", "Geometry.BevelEdge 10 140 140 80 80 100"},
    {"Bevel Edge, size 25, not smooth", "Geometry.BevelEdge 25 140 140 80 80 0"},
    {"Drop Shadow, Custom", "Geometry.DropShadow 10 10 #0000007d 255 true"},
    {"Drop Shadow, Right-Bottom light", "Geometry.DropShadow 10 10 nothing 255 true"},
    {"Drop Shadow, Right-Bottom Heavy", "Geometry.DropShadow 10 10 nothing 63 true"},
    {"Drop Shadow, Extra Heavy", "Geometry.DropShadow 3 3 nothing 255 false"},
    {"Drop Shadow, Right-Bottom Color", "Geometry.DropShadow 20 30 #ffff007f 255 true"},
    {"Drop Shadow, Left-Bottom Color", "Geometry.DropShadow -10 10 #ff80c07f 255 true"},
    {"Drop Shadow of what is not white", "Geometry.DropShadow 10 10 #0000007d 255 true",
     Source::Small, 1, "Channels.AlphaByColor #ffffff 5 0 255 0 0 0"},
    {"Emboss Shape", "Geometry.EmbossShape 5 45 100 #000000ff #ffffffff"},
    {"Emboss Shape of what is not white", "Geometry.EmbossShape 5 45 100 #000000ff #ffffffff",
     Source::Small, 1, "Channels.AlphaByColor #ffffff 5 0 255 0 0 0"},
};
constexpr Row strokes[] = {
    {"Crackle, mode 0", "Geometry.Crackle 50 0"},
    {"Crackle, mode 1", "Geometry.Crackle 50 1"},
    {"Crackle, mode 2", "Geometry.Crackle 50 2"},
    {"Crackle, mode 3", "Geometry.Crackle 50 3"},
    {"Crackle, mode 4", "Geometry.Crackle 50 4"},
    {"Gauzy, Custom", "Geometry.Gauzy 20 20 20 -1"},
    {"Gauzy, Meduim", "Geometry.Gauzy 50 60 50 0"},
    {"Gauzy, Light Black", "Geometry.Gauzy 50 60 100 2"},
    {"Gauzy, Heavy", "Geometry.Gauzy 50 60 50 1"},
    {"Gauzy, Light White", "Geometry.Gauzy 20 60 50 3"},
    {"Gauzy, Desaturated", "Geometry.Gauzy 20 20 20 0"},
    {"Gauzy, Full Color", "Geometry.Gauzy 20 20 20 1"},
    {"Gauzy, High Contrast", "Geometry.Gauzy 20 20 20 2"},
    {"Gauzy, Max", "Geometry.Gauzy 20 20 20 3"},
    {"Gauzy, Min", "Geometry.Gauzy 20 20 20 4"},
    {"Motion Blur, Linear", "Geometry.MotionBlur 10 2 90 0"},
    {"Motion Blur, Radial", "Geometry.MotionBlur 10 2 90 1"},
    {"Motion Blur, Zoom", "Geometry.MotionBlur 10 2 90 2"},
    {"Motion Blur, Linear, 30 degrees", "Geometry.MotionBlur 25 5 30 0"},
    {"Scribble, Custom", "Geometry.Scribble 20 0 false"},
    {"Scribble, Heavy", "Geometry.Scribble 100 0 true"},
    {"Scribble, Extra Heavy", "Geometry.Scribble 50 1 true"},
    {"Scribble, Noisy", "Geometry.Scribble 50 2 true"},
    {"Scribble, Random", "Geometry.Scribble 30 3 false"},
    {"Scribble, Filtered", "Geometry.Scribble 20 1 false"},
    {"Scribble, Posterized", "Geometry.Scribble 20 2 false"},
    {"Scribble, Despeckled", "Geometry.Scribble 20 3 false"},
    {"Stipple, Custom", "Geometry.Stipple 20 0 false"},
    {"Stipple, Noisy", "Geometry.Stipple 50 0 true"},
    {"Stipple, Glass", "Geometry.Stipple 100 3 true"},
    {"Stipple, Noisy Glass", "Geometry.Stipple 75 4 true"},
    {"Stipple, Extra Noisy", "Geometry.Stipple 20 1 false"},
    {"Stipple, Maximum", "Geometry.Stipple 20 2 false"},
    {"Stipple, Geometric Mean", "Geometry.Stipple 20 3 false"},
    {"Stipple, Yp Mean", "Geometry.Stipple 20 4 false"},
};
constexpr Row made[] = {
    {"Hugo Noise", "Geometry.HugoNoise 100 100 3 50 50", Source::None},
    {"Hugo Noise, finer", "Geometry.HugoNoise 200 150 5 80 25", Source::None},
    {"Perlin Noise", "Geometry.PerlinNoise 100 100 50", Source::None},
    {"Perlin Noise, size 25", "Geometry.PerlinNoise 200 150 25", Source::None},
    {"Gradient", "Geometry.Gradient 200 150 5 #ff8000 #0040c0 0,0 199,149 0 1 0", Source::None},
};
constexpr Row cipher[] = {
    {"Encrypt", "Geometry.Encrypt kestrel", Source::Page},
    {"Encrypt, color", "Geometry.Encrypt kestrel"},
    {"Encrypt, then Decrypt", "Geometry.Decrypt kestrel", Source::Page, 1,
     "Geometry.Encrypt kestrel"},
    {"Decrypt with another key", "Geometry.Decrypt falcon", Source::Page, 1,
     "Geometry.Encrypt kestrel"},
};

constexpr Section sections[] = {
    {"Shape", shape},
    {"Enlarging by each method", enlargements},
    {"Reducing by each method", reductions},
    {"Onto another outline", outline},
    {"Few colors", fewColors},
    {"Histogram", histogram},
    {"Edges and shadows", edgesAndShadows},
    {"Strokes and blur", strokes},
    {"Made from nothing", made},
    {"Under a key", cipher},
};

} // namespace

std::span<const Section> geometrySections() {
    return sections;
}

} // namespace kvn::gallery
