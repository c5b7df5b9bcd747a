#include "Platform/Foundation/InstructionSet_p.h"

namespace platform {

InstructionSet bestInstructionSet()
{
#if ZR_HAS_AVX2
    static const bool hasAvx2 =
        __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") && __builtin_cpu_supports("popcnt");
    if (hasAvx2)
        return InstructionSet::Avx2;
#endif
    return InstructionSet::Plain;
}

} // namespace platform
