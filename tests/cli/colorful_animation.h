// SPDX-License-Identifier: MIT
// An animation that loses something in every palette.
#pragma once

#include <string>

namespace kfx::test {

// An animated PNG of 64 x 48 pixels in moving colours that no palette holds exactly, with a comment. With
// `transparent`, a disc in front of nothing.
void WriteColorful(const std::string& path, int frames, bool transparent);

}  // namespace kfx::test
