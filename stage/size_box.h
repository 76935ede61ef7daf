// SPDX-License-Identifier: MIT
// The box that asks for a file's size.
#pragma once

#include <cstdint>
#include <string>

#include <windows.h>

namespace kfx::stage {

// A size as a user writes it.
struct WantedSize {
    std::string number = "2";
    int unit = 1;  // row of kSizeUnits
};

inline constexpr const char* kSizeUnits[] = {"KB", "MB"};

enum SizeControl { kSizeNumber = 500, kSizeUnit };

// The bytes of a number with its unit; the number may have a decimal comma, or a unit of its own. False: it
// is no size.
bool BytesOfSize(const WantedSize& size, uint64_t* bytes);

// "2 MB", in the unit of its own if the number has one.
std::string TextOfSize(const WantedSize& size);

// Asks until the answer is a size. False: the user cancelled.
bool AskForSize(HWND owner, WantedSize* size);

}  // namespace kfx::stage
