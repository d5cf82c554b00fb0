#include "imaging/operations/support/swizzle_rows.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/operations/support/swizzle_rows.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

#ifndef KVN_SWIZZLE_ROWS_ONCE
#define KVN_SWIZZLE_ROWS_ONCE
namespace kvn::imaging {

// Four pixels at once: where each byte comes from among 16 (128 and above: nowhere), and what is
// put in its place then.
struct QuadPlan {
    alignas(16) std::uint8_t from[16];
    alignas(16) std::uint8_t fill[16];
};

} // namespace kvn::imaging
#endif

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Reads and writes 16 bytes for every four pixels, of which the next four overwrite some.
void moveQuads(const std::uint8_t* in, std::size_t inStep, std::uint8_t* out, std::size_t outStep,
               std::size_t quads, const QuadPlan& plan) {
#if HWY_TARGET == HWY_SCALAR
    for (; quads > 0; --quads, in += inStep, out += outStep)
        for (std::size_t i = 0; i < outStep; ++i)
            out[i] = plan.from[i] < 16 ? in[plan.from[i]] : plan.fill[i];
#else
    const hn::FixedTag<std::uint8_t, 16> d;
    const auto from = hn::Load(d, plan.from), fill = hn::Load(d, plan.fill);
    for (; quads > 0; --quads, in += inStep, out += outStep)
        hn::StoreU(hn::Or(hn::TableLookupBytesOr0(hn::LoadU(d, in), from), fill), d, out);
#endif
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(moveQuads);

namespace {

QuadPlan planOf(int inChannels, int outChannels, const std::array<int, 4>& from,
                std::uint8_t alpha) {
    QuadPlan plan{};
    for (int i = 0; i < outChannels * 4; ++i) {
        const int pixel = i / outChannels, channel = i % outChannels;
        const bool alphaWanted = from[outChannels <= 2 && channel == 1 ? 3 : channel] == 3;
        const bool missing = alphaWanted && inChannels % 2 == 1;
        int place = inChannels - 1;
        if (!alphaWanted) place = inChannels <= 2 ? 0 : from[channel];
        plan.from[i] = missing ? 128 : static_cast<std::uint8_t>(pixel * inChannels + place);
        plan.fill[i] = missing ? alpha : std::uint8_t{0};
    }
    return plan;
}

} // namespace

void swizzleRow(const PixelRow& row, const std::array<int, 4>& from, std::uint8_t alpha) {
    const QuadPlan plan = planOf(row.inChannels, row.outChannels, from, alpha);
    const auto inStep = static_cast<std::size_t>(row.inChannels) * 4;
    const auto outStep = static_cast<std::size_t>(row.outChannels) * 4;
    const auto move = HWY_DYNAMIC_DISPATCH(moveQuads);
    // The last pixels go through buffers, so that nothing beyond the row is touched.
    constexpr int most = 20;
    const int quads = std::max(0, row.count - 16) / 4, rest = row.count - quads * 4;
    move(row.in, inStep, row.out, outStep, static_cast<std::size_t>(quads), plan);
    std::uint8_t in[most * 4 + 16] = {}, out[most * 4 + 16];
    const auto done = static_cast<std::size_t>(quads), bytes = static_cast<std::size_t>(rest);
    std::memcpy(in, row.in + done * inStep, bytes * inStep / 4);
    move(in, inStep, out, outStep, (bytes + 3) / 4, plan);
    std::memcpy(row.out + done * outStep, out, bytes * outStep / 4);
}

} // namespace kvn::imaging
#endif
