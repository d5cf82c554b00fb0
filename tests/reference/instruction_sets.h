// Runs a test once for every instruction set that this machine has and the kernels were built for.
#pragma once

#include <cstdint>
#include <hwy/targets.h>

namespace reference {

template <class Work>
void onEveryInstructionSet(const Work& work) {
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
        hwy::SetSupportedTargetsForTest(target);
        hwy::GetChosenTarget().Update(target);
        work();
    }
    hwy::SetSupportedTargetsForTest(0);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

} // namespace reference
