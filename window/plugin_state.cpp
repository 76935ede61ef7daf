// SPDX-License-Identifier: MIT
#include "window/plugin_state.h"

namespace kfx {

PluginState plugin = {};

}  // namespace kfx
