// SPDX-License-Identifier: MIT
#include "host/floating_point_state.h"

#if defined(_MSC_VER) && defined(_M_X64)
#include <intrin.h>
#endif

namespace kfx {
namespace {

// Written by the guards on the window's thread only: `inCore` at every change between host and core,
// `hostState` at every change from host to core.
bool inCore = false;
FloatingPointState hostState = {};

}  // namespace

#if defined(__GNUC__) && defined(__x86_64__)

// FNSTENV does not wait for a pending exception and masks them all, so that FLDENV, which would wait, finds
// none.
FloatingPointState ReadFloatingPointState() {
    FloatingPointState state;
    __asm__ volatile("fnstenv %0\n\tfldenv %0\n\tstmxcsr %1"
                     : "=m"(state.x87), "=m"(state.mxcsr)
                     :
                     : "memory");
    return state;
}

// FNINIT, which does not wait either, clears pending exceptions. An exception that is pending and unmasked in
// the new state is raised by the next instruction that computes, as it would have been without this call.
void SetFloatingPointState(const FloatingPointState& state) {
    __asm__ volatile("fninit\n\tfldenv %0\n\tldmxcsr %1" : : "m"(state.x87), "m"(state.mxcsr) : "memory");
}

void SetCoreFloatingPoint() {
    // The control word that FNINIT sets is the core's.
    __asm__ volatile("fninit\n\tldmxcsr %0" : : "m"(kCoreMxcsr) : "memory");
}

#elif defined(_MSC_VER) && defined(_M_X64)

// This compiler makes no x87 code for this processor.
FloatingPointState ReadFloatingPointState() { return {_mm_getcsr(), {}}; }
void SetFloatingPointState(const FloatingPointState& state) { _mm_setcsr(state.mxcsr); }
void SetCoreFloatingPoint() { _mm_setcsr(kCoreMxcsr); }

#elif defined(__i386__) || defined(_M_IX86)

#error "32-bit x86 has floating-point controls that nothing here reads or sets; build for 64-bit x86."

#else

// No other processor that the plug-in runs on starts its threads with other controls.
FloatingPointState ReadFloatingPointState() { return {}; }
void SetFloatingPointState(const FloatingPointState&) {}
void SetCoreFloatingPoint() {}

#endif

CoreFloatingPoint::CoreFloatingPoint() : entered(!inCore) {
    if (!entered) return;
    hostState = ReadFloatingPointState();
    inCore = true;
    SetCoreFloatingPoint();
}

CoreFloatingPoint::~CoreFloatingPoint() {
    if (!entered) return;
    inCore = false;
    SetFloatingPointState(hostState);
}

HostFloatingPoint::HostFloatingPoint() : left(inCore) {
    if (!left) return;
    inCore = false;
    SetFloatingPointState(hostState);
}

HostFloatingPoint::~HostFloatingPoint() {
    if (!left) return;
    hostState = ReadFloatingPointState();
    inCore = true;
    SetCoreFloatingPoint();
}

}  // namespace kfx
