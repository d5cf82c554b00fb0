#include "imaging/operations/support/vbmi.h"

#define HWY_WANT_AVX3_DL
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/operations/support/vbmi.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

bool isVbmi() {
    return HWY_TARGET <= HWY_AVX3_DL;
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(isVbmi);

bool vbmi::hasVbmi() {
    return HWY_DYNAMIC_DISPATCH(isVbmi)();
}

} // namespace kvn::imaging
#endif
