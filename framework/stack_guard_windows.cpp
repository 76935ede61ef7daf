// SPDX-License-Identifier: MIT
// What the compiler calls where a function has written past its own arrays (-fstack-protector) or is about to
// write past a buffer whose size it knows (_FORTIFY_SOURCE). It is compiled without either.
#include <cstdint>

#include <x86intrin.h>

extern "C" {

// The value between a function's arrays and its return address. A text that runs over cannot repeat it: its
// lowest byte is zero.
std::uintptr_t __stack_chk_guard = 0x2b992ddfa2320000;

// Before all other constructors: functions that have begun must find the value that they began with.
__attribute__((constructor(101))) static void ChooseStackGuard() {
    // The places of the stack and of this module are random in each process. The steps that mix the bits are
    // the last ones of the generator SplitMix64 (Steele, Lea, Flood: Fast Splittable Pseudorandom Number
    // Generators, 2014).
    std::uintptr_t bits = __rdtsc();
    bits ^= reinterpret_cast<std::uintptr_t>(&bits) << 16;
    bits ^= reinterpret_cast<std::uintptr_t>(&ChooseStackGuard) << 24;
    bits = (bits ^ (bits >> 30)) * 0xbf58476d1ce4e5b9;
    bits = (bits ^ (bits >> 27)) * 0x94d049bb133111eb;
    __stack_chk_guard = (bits ^ (bits >> 31)) & ~std::uintptr_t{0xff};
}

// Nothing returns to the damaged memory: an instruction that is none ends the process as any crash does.
// Unlike the system's own way to end at once it can be caught by a host that runs plug-ins guarded, as Stage
// does: the user's work must not end with the plug-in. Debuggers see the reason in ecx; the numbers are the
// system's.
[[noreturn]] static void Fail(unsigned reason) {
    __asm__ volatile("ud2" : : "c"(reason) : "memory");
    __builtin_unreachable();
}

[[noreturn]] void __stack_chk_fail() { Fail(2); /* FAST_FAIL_STACK_COOKIE_CHECK_FAILURE */ }

[[noreturn]] void __chk_fail() { Fail(8); /* FAST_FAIL_RANGE_CHECK_FAILURE */ }

}  // extern "C"
