#include "imaging/codecs/metafile/emf_records.h"

#include <array>

#include "imaging/codecs/metafile/emf_record.h"

namespace kvn::imaging::metafile {

namespace {

constexpr std::size_t typeCount = 128;

std::array<EmfHandler, typeCount> handlers() {
    std::array<EmfHandler, typeCount> table{};
    for (const auto& group : {emfStateRecords(), emfObjectRecords(), emfFigureRecords(),
                              emfBitmapRecords(), emfTextRecords()})
        for (const EmfEntry& entry : group)
            table[entry.type] = entry.handler;
    return table;
}

} // namespace

void playEmfRecord(Drawing& drawing, std::uint32_t type, std::span<const std::uint8_t> record) {
    static const auto table = handlers();
    if (type < typeCount && table[type]) table[type](drawing, {type, record});
}

} // namespace kvn::imaging::metafile
