// Operation arguments from the words of a command line.
#pragma once

#include <QStringList>
#include <vector>

#include "imaging/operation.h"

namespace kvn::probe {

// One operation and its arguments.
struct Step {
    const imaging::Operation* operation = nullptr;
    std::vector<imaging::Value> values;
};

// Words up to the end, operations separated by a lone "+". Colours are #rrggbb or #rrggbbaa,
// points x,y, matrices rows with ';' and columns with ',', images file names, "nothing" is none.
// An undo label behind the arguments is accepted and passed over. Throws RuntimeError.
std::vector<Step> stepsFrom(const QStringList& words);

} // namespace kvn::probe
