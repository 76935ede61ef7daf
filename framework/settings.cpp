// SPDX-License-Identifier: MIT
#include "framework/settings.h"

namespace kfx {

Settings settings;

}  // namespace kfx
