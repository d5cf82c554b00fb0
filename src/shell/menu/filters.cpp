#include "shell/menu/tree.h"

namespace kvn::shell::menu {

namespace {

constexpr Item blurItems[] = {
    active("mnuFiltersBlurAction", 0, "25%"),
    active("mnuFiltersBlurAction", 1, "50%"),
    active("mnuFiltersBlurAction", 2, "75%"),
    active("mnuFiltersBlurAction", 3, "100%"),
    active("mnuFiltersBlurAction", 4, "25% (Gaussian)"),
    active("mnuFiltersBlurAction", 5, "50% (Gaussian)"),
    active("mnuFiltersBlurAction", 6, "75% (Gaussian)"),
    active("mnuFiltersBlurAction", 7, "100% (Gaussian)"),
    active("mnuFiltersBlurAction", 8, "300% (Gaussian)"),
    active("mnuFiltersBlurAction", 9, "500% (Gaussian)"),
};

constexpr Item edgeItems[] = {
    active("mnuEdgeDetectionAction", 0, "25%"),
    active("mnuEdgeDetectionAction", 1, "50%"),
    active("mnuEdgeDetectionAction", 2, "75%"),
    active("mnuEdgeDetectionAction", 3, "100%"),
};

constexpr Item morphoItems[] = {
    active("mnuFiltersMorpho", 0, "Dilation"), active("mnuFiltersMorpho", 1, "Erosion"),
    active("mnuFiltersMorpho", 2, "Open"),     active("mnuFiltersMorpho", 3, "Close"),
    active("mnuFiltersMorpho", 4, "TopHat"),
};

constexpr Item negativeItems[] = {
    active("mnuFiltersNegativeWhite", "White"),
    active("mnuFiltersNegativeCols", 0, "Red"),
    active("mnuFiltersNegativeCols", 1, "Green"),
    active("mnuFiltersNegativeCols", 2, "Blue"),
    active("mnuFiltersNegativeColor", "By Color...")
        .opens("frmNegativeColor")
        .tip("Negative by a color of your choice"),
};

constexpr Item sharpenItems[] = {
    active("mnuFiltersSharpenAction", 0, "25%"),
    active("mnuFiltersSharpenAction", 1, "50%"),
    active("mnuFiltersSharpenAction", 2, "75%"),
    active("mnuFiltersSharpenAction", 3, "100%"),
};

constexpr Item softenItems[] = {
    active("mnuFiltersSoftenAction", 0, "25%"),
    active("mnuFiltersSoftenAction", 1, "50%"),
    active("mnuFiltersSoftenAction", 2, "75%"),
    active("mnuFiltersSoftenAction", 3, "100%"),
};

constexpr Item unsharpItems[] = {
    active("mnuFiltersUnsharpMaskAction", 0, "Normal"),
    active("mnuFiltersUnsharpMaskAction", 1, "Highlights"),
    active("mnuFiltersUnsharpMaskAction", 2, "Color Etch"),
    active("mnuFiltersUnsharpMaskAction", 3, "Halo Effect"),
};

constexpr Item customFilterItems[] = {
    active("mnuFiltersCustomFilterOilPainting", "Oil Painting")
        .tip("Make the picture look painted in oil"),
    active("mnuFiltersCustomFilterColorEmboss", "Color Relief")
        .tip("Make the picture a relief that keeps its colors"),
};

constexpr Item customMatrixItems[] = {
    active("mnuFiltersCustomMatrixNightLine", "Night Line").tip("Glowing lines on a dark ground"),
    active("mnuFiltersCustomMatrixPurpleHaze", "Purple Haze").tip("A hazy, dream-like picture"),
};

constexpr Item complexItems[] = {
    active("mnuFiltersDemosPatchWork", "PatchWork Mosaic").tip("Sew the picture from patches"),
    active("mnuFiltersDemosCharcoal", "Charcoal").tip("Redraw the picture with charcoal"),
    active("mnuFiltersDemosFlakyPaint", "Flaky Paint").tip("Make the picture look like old paint"),
};

constexpr Item vibrationItems[] = {
    active("mnuFiltersVibrationAction", 0, "25%"),
    active("mnuFiltersVibrationAction", 1, "50%"),
    active("mnuFiltersVibrationAction", 2, "75%"),
    active("mnuFiltersVibrationAction", 3, "100%"),
};

constexpr Item specialItems[] = {
    submenu("mnuFilters", 17, "Vibration", vibrationItems).tip("Blur as if the camera had shaken"),
    active("mnuFilters", 34, "Duotone...").tip("Show the picture in tones of one color"),
    active("mnuFilters", 36, "Halftone...").tip("Show the picture in printed dots"),
    active("mnuFilters", 38, "Tint...").tip("Shift the tint of all colors"),
};

constexpr Item gammaItems[] = {
    active("mnuFiltersGammaAction", 0, "Decrease a Little"),
    active("mnuFiltersGammaAction", 1, "Decrease a Lot"),
    active("mnuFiltersGammaAction", 2, "Increase a Little"),
    active("mnuFiltersGammaAction", 3, "Increase a Lot"),
};

constexpr Item intensityItems[] = {
    active("mnuFiltersIntensifyAction", 0, "Increase by 25"),
    active("mnuFiltersIntensifyAction", 1, "Increase by 50"),
    active("mnuFiltersIntensifyAction", 2, "Increase by 100"),
    active("mnuFiltersIntensifyAction", 3, "Decrease by 25"),
    active("mnuFiltersIntensifyAction", 4, "Decrease by 50"),
    active("mnuFiltersIntensifyAction", 5, "Decrease by 100"),
};

constexpr Item adjustItems[] = {
    active("mnuFilters", 0, "AutoBrightness").tip("Find good brightness and contrast"),
    active("mnuFilters", 2, "Brightness && Contrast...")
        .opens("frmBrightContrast")
        .tip("Change brightness and contrast"),
    submenu("mnuFilters", 7, "Gamma", gammaItems).tip("Make the middle tones lighter or darker"),
    submenu("mnuFilters", 8, "Intensity", intensityItems).tip("Make all tones lighter or darker"),
};

constexpr Item meanItems[] = {
    active("mnuFilters", 24, "Arithmetic Mean"),
    active("mnuFilters", 25, "Harmonic Mean"),
    active("mnuFilters", 30, "Geometric Mean"),
    active("mnuFilters", 26, "Yp Mean"),
};

constexpr Item items[] = {
    submenu("mnuFilters", 1, "Blur", blurItems).tip("Blur the picture"),
    active("mnuFilters", 3, "Colorize...").opens("frmColorize").tip("Give the picture one hue"),
    active("mnuFilters", 4, "Despeckle").tip("Remove small specks"),
    submenu("mnuFilters", 5, "Edge Detection", edgeItems).tip("Show the edges of the picture"),
    active("mnuFilters", 33, "Canny Edge Detector").tip("Show the edges as thin lines"),
    active("mnuFilters", 6, "Emboss...").tip("Make the picture a relief"),
    active("mnuFilters", 9, "Median Cut").tip("Remove noise, keep edges"),
    submenu("mnuFilters", 10, "Morpological Filters", morphoItems)
        .tip("Grow and shrink light areas"),
    active("mnuFilters", 11, "Mosaic...").tip("Build the picture from colored blocks"),
    submenu("mnuFilters", 12, "Negative", negativeItems).tip("Invert the colors"),
    active("mnuFilters", 13, "Red Eye Reduction").tip("Remove red eyes in the selection"),
    submenu("mnuFilters", 14, "Sharpen", sharpenItems).tip("Make the picture sharper"),
    submenu("mnuFilters", 15, "Soften", softenItems).tip("Make the picture softer"),
    submenu("mnuFilters", 16, "Unsharp Mask", unsharpItems).tip("Sharpen with a blurred mask"),
    line("mnuFilters", 18),
    submenu("mnuFilters", 19, "Custom Filter", customFilterItems).tip("Painting and relief"),
    submenu("mnuFilters", 20, "Custom Matrix", customMatrixItems).tip("Lines and haze"),
    submenu("mnuFilters", 22, "Complex Filters", complexItems)
        .tip("Patches, charcoal and old paint"),
    submenu("mnuSpecialFilters", "Special Filters", specialItems)
        .tip("Shake, two tones, printed dots and tint"),
    submenu("mnuAdjustFilters", "Adjustment Filters", adjustItems)
        .tip("Brightness, contrast, gamma and intensity"),
    active("mnuFilters", 23, "Normalized Difference")
        .tip("Compare the red channel with the green one"),
    submenu("mnuMeanFilters", "Mean Filters", meanItems).tip("Smooth with one of four means"),
    active("mnuFilters", 31, "Noise...").tip("Add noise"),
    active("mnuFilters", 32, "Threshold").tip("Cut the tones at two levels"),
    active("mnuFilters", 35, "Posterize").tip("Show the picture in few tones"),
    active("mnuFilters", 37, "Solarize").tip("Invert the light tones"),
    active("mnuFilters", 39, "Saturation...").tip("Make the colors stronger or weaker"),
    active("mnuFilters", 40, "HighPass...").tip("Keep only fine detail"),
};

} // namespace

std::span<const Item> filtersMenu() {
    return items;
}

} // namespace kvn::shell::menu
