#include "imaging/codecs/metafile/wmf_records.h"

#include <algorithm>
#include <unordered_map>

#include "imaging/codecs/metafile/wmf_record.h"

namespace kvn::imaging::metafile {

namespace {

std::unordered_map<std::uint32_t, WmfHandler> handlers() {
    std::unordered_map<std::uint32_t, WmfHandler> table;
    for (const auto& group :
         {wmfStateRecords(), wmfObjectRecords(), wmfFigureRecords(), wmfBitmapRecords()})
        for (const WmfEntry& entry : group)
            table[entry.function] = entry.handler;
    return table;
}

// SetMapMode, SetViewportOrg, SetViewportExt, OffsetViewportOrg, ScaleViewportExt.
bool belongsToDevice(std::uint32_t function) {
    constexpr std::uint32_t functions[] = {0x103, 0x20d, 0x20e, 0x211, 0x412};
    return std::ranges::find(functions, function) != std::end(functions);
}

} // namespace

void playWmfRecord(Drawing& drawing, std::uint32_t function, std::span<const std::uint8_t> record,
                   bool fixedWindow) {
    static const auto table = handlers();
    if (fixedWindow && belongsToDevice(function)) return;
    if (const auto entry = table.find(function); entry != table.end())
        entry->second(drawing, {function, record});
}

} // namespace kvn::imaging::metafile
