#include "engine/palette.h"

#include <QJsonArray>

#include "engine/detail/page_list.h"
#include "engine/detail/runner.h"
#include "engine/detail/trace_values.h"
#include "imaging/palette_presets.h"

namespace kvn::engine {

struct Palette::Own {
    Engine& engine;
    TraceIdentity who;
    imaging::Palette colors;
};

namespace {

// The operation of that name on the picture, which has no label in the contract and so no step.
void changePicture(const detail::PageRef& page, const char* name,
                   const std::vector<imaging::Value>& values, const QJsonArray& args) {
    detail::PageList& list = detail::listOf(page);
    const imaging::Operation& operation = *imaging::findOperation(name);
    detail::changeState(list, {QString::fromLatin1(name), args, "no undo", {}},
                        [&](detail::ListState& next, imaging::Task& task) {
                            auto pages = imaging::runOperation(
                                operation, detail::pageOf(page).raster, values, task);
                            detail::replaceContent(detail::pageForReplacing(next, list, page.page),
                                                   std::move(pages.front()));
                        });
}

} // namespace

Palette::Palette(Engine& engine, const QString& traceName)
    : own_(std::make_shared<Own>(Own{engine, {-1, traceName}, {}})) {}

Palette::Palette(detail::PageRef page) : page_(std::move(page)) {}

void Palette::Entry(quint8 index, const Color& color) {
    const QJsonArray args{int{index}, detail::traced(color)};
    const imaging::Rgba value = detail::rgbaOf(color);
    if (!own_) return changePicture(page_, "Palette.Entry", {std::int64_t{index}, value}, args);
    detail::recordCall(own_->engine, own_->who, "Palette.Entry", args,
                       [&] { own_->colors.set(index, value); });
}

void Palette::LoadPreset(int preset) {
    if (!own_) return changePicture(page_, "Palette.LoadPreset", {std::int64_t{preset}}, {preset});
    detail::recordCall(own_->engine, own_->who, "Palette.LoadPreset", {preset},
                       [&] { own_->colors = imaging::presetPalette(preset); });
}

int Palette::Count() const {
    return static_cast<int>(Colors().size());
}

QList<Color> Palette::Colors() const {
    QList<Color> list;
    const imaging::Palette& colors = own_ ? own_->colors : detail::pageOf(page_).raster.palette();
    for (std::size_t i = 0; i < colors.size(); ++i)
        list.append(detail::colorOf(colors[i], static_cast<quint8>(i)));
    return list;
}

} // namespace kvn::engine
