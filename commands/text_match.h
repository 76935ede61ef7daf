// SPDX-License-Identifier: MIT
// Names as people type them against names as the plug-in's window shows them.
#pragma once

#include <string>
#include <vector>

namespace kfx::commands {

// The letters and digits of a name in lower case: "Center &X:" and "centerx" are the same name.
std::string PlainName(const std::string& name);

// The index of the name that `wanted` means: the same plain name, else the only one that begins with it.
// -1: none, or more than one.
int FindName(const std::string& wanted, const std::vector<std::string>& names);

// Up to three of the names, the most similar first; empty when none is similar.
std::vector<std::string> NearestNames(const std::string& wanted, const std::vector<std::string>& names);

// "a", "a or b", "a, b or c".
std::string JoinNames(const std::vector<std::string>& names, const std::string& lastWord = "or");

// `unknown KIND "WANTED"; did you mean ...?`, or all the names when none is similar. When several begin so:
// `ambiguous KIND "WANTED": it can be ...`.
std::string UnknownNameMessage(const std::string& kind, const std::string& wanted,
                               const std::vector<std::string>& names);

}  // namespace kfx::commands
