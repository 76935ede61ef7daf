// SPDX-License-Identifier: MIT
// Pictures of Stage, run as its users run it.
#pragma once

#include <functional>
#include <string>

#include "media/animation_writer.h"

namespace kfx::screens {

// Gets each picture with its name. False ends the pictures.
using PictureTaker = std::function<bool(const std::string& name, const Picture& picture)>;

// Starts the program beside this one with the sample animation, takes pictures of its window in some views
// and of the plug-in's window in it, and closes it. False, with one sentence in `*error` unless it was the
// taker: it did not do what was asked.
bool ShowStage(const PictureTaker& take, std::string* error);

}  // namespace kfx::screens
