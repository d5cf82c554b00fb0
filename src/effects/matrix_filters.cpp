// Filters that are one table of coefficients.
#include <QVariant>
#include <array>

#include "document/frmMain.h"
#include "document/report.h"
#include "effects/groups.h"
#include "effects/matrices.h"

namespace kvn::effects {
namespace {

struct MatrixFilter {
    const char* operation;
    engine::Table (*table)();
    double divisor;
    int bias;
    std::optional<bool> flags; // both flags of a matrix; a filter has none
    const char* label;
};

engine::Table colorRelief() {
    return {3, 3, {3, 2, 1, 2, 0, -2, 1, -2, -5}};
}
engine::Table oilPainting() {
    return {5, 3, {-3, -3, -3, -1, -1, -1, 0, 0, 0, 1, 1, 1, 3, 3, 3}};
}
engine::Table purpleHaze() {
    return {3, 3, {0, 0, 1, -1, -2, -1, 0, 0, 1}};
}

constexpr MatrixFilter reliefFilter{"Effects.ApplyFilter", colorRelief, 10.0, 0, {},
                                    "Color Relief Filter"};
constexpr MatrixFilter oilFilter{"Effects.ApplyFilter", oilPainting, -0.3, 0, {},
                                 "Oil Painting Filter"};
constexpr MatrixFilter nightFilter{"Effects.ApplyMatrix", nightLineMatrix, 10.0, 7, false,
                                   "Night Line Matrix"};
constexpr MatrixFilter hazeFilter{"Effects.ApplyMatrix", purpleHaze, 7.0, 5, true,
                                  "Purple Haze Matrix"};

void apply(frmMain& document, const MatrixFilter& filter) {
    QVariantList arguments{QVariant::fromValue(filter.table()), filter.divisor, filter.bias};
    if (filter.flags) arguments << *filter.flags << *filter.flags;
    const auto error = resumeNext(document, [&](ResumeNext& run) {
        run.step([&] {
            runOnCopy(document, filter.operation, arguments, QString::fromLatin1(filter.label));
        });
    });
    if (error) document::reportNumberedError(document, *error);
}

constexpr document::Command commands[] = {
    {"FiltersCustomFilterOilPainting", [](frmMain& d, int) { apply(d, oilFilter); }},
    {"FiltersCustomFilterColorEmboss", [](frmMain& d, int) { apply(d, reliefFilter); }},
    {"FiltersCustomMatrixNightLine", [](frmMain& d, int) { apply(d, nightFilter); }},
    {"FiltersCustomMatrixPurpleHaze", [](frmMain& d, int) { apply(d, hazeFilter); }},
};

} // namespace

engine::Table nightLineMatrix() {
    return {3, 3, {-0.5, 0, -0.5, 0, 2, 0, -0.5, 0, -0.5}};
}

std::span<const document::Command> matrixFilters() {
    return commands;
}

} // namespace kvn::effects
