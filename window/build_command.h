// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

#include <cstdint>

#include "builder/build_driver.h"

namespace kfx {

// Builds the source animation with the options that the window's controls show, under the wait cursor. 1: the
// host has the whole animation; 0: a message has said why not.
int32_t Build(HWND window, const HostContext* host, BuildMode mode);

}  // namespace kfx
