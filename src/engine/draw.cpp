#include "engine/draw.h"

#include "engine/detail/page_list.h"
#include "engine/detail/runner.h"
#include "engine/detail/trace_values.h"
#include "imaging/compose.h"

namespace kvn::engine {
namespace {

void record(detail::PageList& list, const char* property, const QJsonValue& value) {
    detail::recordCall(list.engine(), list.who, property, {value});
}

} // namespace

void Draw::setAntialias(double amount) {
    record(*list_, "Draw.Antialias", amount);
    list_->pen.antialias = amount;
}
double Draw::Antialias() const {
    return list_->pen.antialias;
}

engine::Color Draw::Color() const {
    return list_->pen.color;
}

void Draw::setFillStyle(int style) {
    record(*list_, "Draw.FillStyle", style);
    list_->pen.fillStyle = style;
}
int Draw::FillStyle() const {
    return list_->pen.fillStyle;
}

void Draw::setLineStyle(int style) {
    record(*list_, "Draw.LineStyle", style);
    list_->pen.lineStyle = style;
}
int Draw::LineStyle() const {
    return list_->pen.lineStyle;
}

void Draw::setTexture(const engine::Image& picture) {
    record(*list_, "Draw.Texture", detail::traced(picture));
    list_->pen.texture = picture;
}

void Draw::setTextureMode(int mode) {
    record(*list_, "Draw.TextureMode", mode);
    list_->pen.textureMode = mode;
}
int Draw::TextureMode() const {
    return list_->pen.textureMode;
}

void Draw::setWidth(int pixels) {
    record(*list_, "Draw.Width", pixels);
    list_->pen.width = pixels;
}
int Draw::Width() const {
    return list_->pen.width;
}

void Draw::setMergeType(int type) {
    record(*list_, "Draw.MergeType", type);
    list_->pen.mergeType = type;
}
int Draw::MergeType() const {
    return list_->pen.mergeType;
}

void Draw::Image(const engine::Info& picture, int x, int y, const engine::Color* transparent,
                 double opacity, bool flag, const QString& label) {
    const QJsonArray args{
        detail::traced(picture.Image()), x, y, detail::traced(transparent), opacity, flag, label};
    imaging::DrawOptions options;
    if (transparent) options.transparent = detail::rgbaOf(*transparent);
    options.opacity = opacity;
    const QString name = detail::nameOfMaking(picture.ref(), "Draw Image");
    compose({"Draw.Image", args, label, name}, picture, x, y, options);
}

void Draw::MergeImage(const engine::Info& picture, int x, int y, const QString& label) {
    const QJsonArray args{detail::traced(picture.Image()), x, y, label};
    imaging::DrawOptions options;
    options.merge = static_cast<imaging::AlphaMerge>(list_->pen.mergeType);
    compose({"Draw.MergeImage", args, label, "Merge Image"}, picture, x, y, options);
}

void Draw::compose(const detail::Call& call, const engine::Info& picture, int x, int y,
                   const imaging::DrawOptions& options) {
    // Held by value: the picture may be a page of this very list.
    const imaging::Raster source =
        picture.ref().list && picture.ref().list->find(picture.ref().page)
            ? detail::pageOf(picture.ref()).raster
            : imaging::Raster{};
    detail::changeInPlace(*list_, call, {x, y, source.width(), source.height()},
                          [&](imaging::Raster& target, imaging::Task& task) {
                              detail::pageOf(picture.ref()); // says that there is no image
                              imaging::drawOver(target, source, {x, y}, options, task);
                          });
}

} // namespace kvn::engine
