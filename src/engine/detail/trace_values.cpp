#include "engine/detail/trace_values.h"

#include <QJsonArray>

#include "basic/error.h"
#include "engine/detail/page_list.h"
#include "engine/image_values.h"

namespace kvn::engine::detail {
namespace {

template <typename T>
bool holds(const QVariant& v) {
    return v.userType() == qMetaTypeId<T>();
}

} // namespace

QJsonValue traced(const Color& color) {
    const Color::Channels c = color.channels();
    return QString::asprintf("#%02x%02x%02x%02x", c.red, c.green, c.blue, c.alpha);
}

QJsonValue traced(const Color* color) {
    return color ? traced(*color) : QJsonValue();
}

QJsonValue traced(const Image& image) {
    return image.isNull() ? QJsonValue() : QJsonValue("@" + image.ref().list->who.on);
}

QJsonValue traced(const Point& point) {
    return QJsonArray{point.x, point.y};
}

QJsonValue traced(const QList<Color>& palette) {
    QJsonArray colors;
    for (const Color& color : palette)
        colors.append(traced(color));
    return colors;
}

imaging::Rgba rgbaOf(const Color& color) {
    const Color::Channels c = color.channels();
    return {c.red, c.green, c.blue, c.alpha};
}

Color colorOf(const imaging::Rgba& color, quint8 paletteIndex) {
    return Color(color.r, color.g, color.b, color.a, paletteIndex);
}

imaging::Value valueOf(const QVariant& v) {
    if (!v.isValid()) return imaging::Nothing{};
    if (holds<Color>(v)) return rgbaOf(v.value<Color>());
    if (holds<Point>(v)) return imaging::Point{v.value<Point>().x, v.value<Point>().y};
    if (holds<Image>(v))
        return std::make_shared<const imaging::Raster>(pageOf(v.value<Image>().ref()).raster);
    if (holds<Table>(v)) {
        const auto t = v.value<Table>();
        return imaging::Matrix{t.rows, t.columns, t.values};
    }
    if (holds<QList<Color>>(v)) {
        std::vector<imaging::Rgba> colors;
        for (const Color& c : v.value<QList<Color>>())
            colors.push_back(rgbaOf(c));
        return imaging::Palette(std::move(colors));
    }
    if (v.userType() == QMetaType::QByteArray) {
        const QByteArray bytes = v.toByteArray();
        imaging::Matrix table{1, static_cast<int>(bytes.size()), {}};
        for (const char byte : bytes)
            table.values.push_back(static_cast<quint8>(byte));
        return table;
    }
    switch (v.userType()) {
    case QMetaType::Bool:
        return v.toBool();
    case QMetaType::Double:
    case QMetaType::Float:
        return v.toDouble();
    case QMetaType::QString:
        return v.toString().toStdString();
    default:
        break;
    }
    if (v.canConvert<qlonglong>()) return std::int64_t{v.toLongLong()};
    throw RuntimeError(errors::typeMismatch, "Type mismatch", "Image");
}

QJsonValue tracedVariant(const QVariant& v) {
    if (holds<Color>(v)) return traced(v.value<Color>());
    if (holds<Point>(v)) return traced(v.value<Point>());
    if (holds<Image>(v)) return traced(v.value<Image>());
    if (holds<Table>(v)) {
        const auto t = v.value<Table>();
        QJsonArray rows;
        for (int r = 0; r < t.rows; ++r) {
            QJsonArray row;
            for (int c = 0; c < t.columns; ++c)
                row.append(t.values[static_cast<std::size_t>(r * t.columns + c)]);
            rows.append(row);
        }
        return rows;
    }
    if (holds<QList<Color>>(v)) return traced(v.value<QList<Color>>());
    if (v.userType() == QMetaType::QByteArray) {
        QJsonArray row;
        for (const char byte : v.toByteArray())
            row.append(int{static_cast<quint8>(byte)});
        return QJsonArray{row};
    }
    return QJsonValue::fromVariant(v);
}

} // namespace kvn::engine::detail
