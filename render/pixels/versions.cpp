// Which version of each loop is in use.
#include "render/pixels/versions.h"

#include <algorithm>

namespace talx {
namespace {

Versions versionsUpTo([[maybe_unused]] InstructionSet limit) {
    Versions versions{};
    takePlainRowConverters(versions);
    takePlainIconBlend(versions);
#ifdef TALX_X86_VERSIONS
    if (limit >= InstructionSet::Avx2) {
        takeAvx2RowConverters(versions);
        takeAvx2IconBlend(versions);
        takeAvx2Kernels(versions);
    }
    if (limit >= InstructionSet::Avx512) {
        takeAvx512RowConverters(versions);
        takeAvx512IconBlend(versions);
        takeAvx512Kernels(versions);
    }
#endif
    return versions;
}

const Versions plain = versionsUpTo(InstructionSet::Plain);
Versions active = versionsUpTo(bestInstructionSet());

} // namespace

const Versions& activeVersions() {
    return active;
}

const Versions& plainVersions() {
    return plain;
}

InstructionSet bestInstructionSet() {
#ifdef TALX_X86_VERSIONS
    __builtin_cpu_init();
    if (!__builtin_cpu_supports("avx2"))
        return InstructionSet::Plain;
    const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vbmi");
    return avx512 ? InstructionSet::Avx512 : InstructionSet::Avx2;
#else
    return InstructionSet::Plain;
#endif
}

void limitInstructionSet(InstructionSet limit) {
    active = versionsUpTo(std::min(limit, bestInstructionSet()));
}

} // namespace talx
