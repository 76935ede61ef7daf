// SPDX-License-Identifier: MIT
#pragma once

namespace kfx::test {

// Gives the test a console of its own, whose interrupts the test itself ignores. It stays until the program
// ends: giving it up would close the files that the test reports to.
bool OpenOwnConsole();

}  // namespace kfx::test
