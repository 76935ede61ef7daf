// SPDX-License-Identifier: MIT
// The processor's floating-point controls. They belong to the thread, and so to the host: it may round to
// fewer bits, round another way, flush small numbers to zero or stop at a division by zero. Results must not
// follow that, so the core runs under controls of its own (round to nearest, 64-bit x87 precision, nothing
// flushed, no exception raised), and whatever belongs to the host runs under the host's.
#pragma once

#include <cstdint>

namespace kfx {

// Controls and status flags of both units: MXCSR, and the x87 environment as FNSTENV lays it out (control
// word, status word, tags, place of the last instruction). Zeros on other processors.
struct FloatingPointState {
    uint32_t mxcsr;
    uint32_t x87[7];
};

constexpr uint16_t kCoreX87Control = 0x37F;
constexpr uint32_t kCoreMxcsr = 0x1F80;

// The calling thread's state, which stays as it is. Safe while an exception is pending.
FloatingPointState ReadFloatingPointState();

// Sets the whole state, status flags included. Safe while an exception is pending now or in the new state:
// none is raised by loading.
void SetFloatingPointState(const FloatingPointState& state);

// Sets the core's controls and clears the status flags.
void SetCoreFloatingPoint();

// Runs its scope under the core's controls and gives the caller's state back, flags included, at the end. For
// any thread.
struct OwnFloatingPoint {
    OwnFloatingPoint() : before(ReadFloatingPointState()) { SetCoreFloatingPoint(); }
    ~OwnFloatingPoint() { SetFloatingPointState(before); }
    OwnFloatingPoint(const OwnFloatingPoint&) = delete;
    OwnFloatingPoint& operator=(const OwnFloatingPoint&) = delete;

    const FloatingPointState before;
};

// The next two take turns on the window's thread, and only there: they share one copy of the host's state.
// They nest in any order, since the host's messages may call the plug-in and the plug-in the host. Where
// nothing is entered, as in a program without a host, HostFloatingPoint does nothing.

// An entry into the core. Inside the core already, it does nothing.
struct CoreFloatingPoint {
    CoreFloatingPoint();
    ~CoreFloatingPoint();
    CoreFloatingPoint(const CoreFloatingPoint&) = delete;
    CoreFloatingPoint& operator=(const CoreFloatingPoint&) = delete;

    const bool entered;
};

// A call out of the core to what belongs to the host: one of its functions, or a loop in which its windows
// get their messages. What the host changes there stays in force for it when the core is left.
struct HostFloatingPoint {
    HostFloatingPoint();
    ~HostFloatingPoint();
    HostFloatingPoint(const HostFloatingPoint&) = delete;
    HostFloatingPoint& operator=(const HostFloatingPoint&) = delete;

    const bool left;
};

}  // namespace kfx
