// Engine values in the form the trace has them, and in the form operations take them.
#pragma once

#include <QJsonValue>
#include <QString>
#include <QVariant>

#include "engine/image.h"
#include "imaging/operation.h"

namespace kvn::engine::detail {

QJsonValue traced(const Color& color); // "#rrggbbaa"
QJsonValue traced(const Color* color); // null for nothing
QJsonValue traced(const Image& image); // "@name", null for nothing
QJsonValue traced(const Point& point); // [x, y]
QJsonValue traced(const QList<Color>& palette);

imaging::Rgba rgbaOf(const Color& color);
Color colorOf(const imaging::Rgba& color, quint8 paletteIndex = 0);

// Numbers, texts, booleans, Color, Point, Image, Table; an invalid variant is nothing. Throws
// RuntimeError(typeMismatch) for anything else, objectNotSet for an empty image.
imaging::Value valueOf(const QVariant& argument);
QJsonValue tracedVariant(const QVariant& argument);

} // namespace kvn::engine::detail
