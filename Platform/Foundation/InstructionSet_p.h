#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

namespace platform {

/// The instructions that a routine with several implementations uses. All implementations of a routine give
/// the same results; tests name one, everybody else takes the best.
enum class InstructionSet {
    Plain, ///< Portable C++.
    Avx2, ///< 32 bytes at a time, on x86-64 processors that have it.
};

/// The best that this processor has.
InstructionSet bestInstructionSet();

/// Whether AVX2 implementations can be compiled: GCC and Clang do so per function, whatever the rest is built
/// for.
#if defined(__x86_64__) && defined(__GNUC__)
#define ZR_HAS_AVX2 1
#define ZR_AVX2 __attribute__((target("avx2,bmi,popcnt")))
#else
#define ZR_HAS_AVX2 0
#endif

} // namespace platform
