// SPDX-License-Identifier: MIT
// Fast variants of kernels: marked for the compiler, and chosen once at run time. Every one gives the bytes
// of the plain path; FMA is never used, since a fused multiply-add rounds once where the results are defined
// to round twice.
#pragma once

// A build without the fast variants sets this to 0 (cmake/check-plain does).
#ifndef KFX_HAS_AVX2
#if defined(__GNUC__) && defined(__x86_64__)
#define KFX_HAS_AVX2 1
#else
#define KFX_HAS_AVX2 0
#endif
#endif

#if KFX_HAS_AVX2
#define KFX_AVX2 __attribute__((target("avx2")))
#else
#define KFX_AVX2
#endif

// For a loop that is written once and compiled twice: it is inlined, and so compiled for the instruction set
// of the function that calls it. See Fastest().
#if defined(__GNUC__)
#define KFX_INLINE inline __attribute__((always_inline))
#else
#define KFX_INLINE inline
#endif

namespace kfx {

// Whether the AVX2 variants may run: the processor and the system support them and nobody has switched them
// off. Any thread may ask.
bool UseAvx2();

// Switches the AVX2 variants off (or on again where supported) for all threads, so that tests and benchmarks
// can compare both paths.
void AllowAvx2(bool allowed);

template <auto kLoop>
struct CompiledTwice;

template <typename Result, typename... Parameters, Result (*kLoop)(Parameters...)>
struct CompiledTwice<kLoop> {
    KFX_AVX2 static Result Avx2(Parameters... parameters) { return kLoop(parameters...); }
};

// The function `kLoop`, which is declared KFX_INLINE, compiled for AVX2 where that may be used and for the
// plain instruction set otherwise. Loops whose arithmetic is the same in lanes need nothing else:
//     Fastest<ScaleRow>()(row, count);
template <auto kLoop>
inline decltype(kLoop) Fastest() {
    return UseAvx2() ? CompiledTwice<kLoop>::Avx2 : kLoop;
}

}  // namespace kfx
