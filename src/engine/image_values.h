// Letting engine values travel in a QVariant, for calls by name.
#pragma once

#include <QMetaType>
#include <vector>

#include "engine/image.h"

namespace kvn::engine {

// A table of numbers, row by row, as filters and byte tables take it.
struct Table {
    int rows = 0;
    int columns = 0;
    std::vector<double> values;
};

} // namespace kvn::engine

Q_DECLARE_METATYPE(kvn::engine::Color)
Q_DECLARE_METATYPE(kvn::engine::Point)
Q_DECLARE_METATYPE(kvn::engine::Image)
Q_DECLARE_METATYPE(kvn::engine::Table)
Q_DECLARE_METATYPE(QList<kvn::engine::Color>)
