// SPDX-License-Identifier: MIT
// Options that would change nothing in the result.
#pragma once

#include "commands/command_line.h"
#include "commands/exit_codes.h"

namespace kfx::commands {

// The one effect that takes random numbers.
inline constexpr char kRandomEffect[] = "Water Drops";

// Whether each option of apply that is for some effects or palettes only has one of them beside it. To be
// asked of a line as the user gives it: what a recipe holds may do nothing, and a line that takes over a
// settings document or a recipe is not judged. False: `*failure` names the option that would do nothing and
// what it is for. Effects and palettes with unknown names are refused elsewhere.
bool CheckIdleOptions(const CommandLine& line, Failure* failure);

}  // namespace kfx::commands
