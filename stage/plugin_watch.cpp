// SPDX-License-Identifier: MIT
#include "stage/plugin_watch.h"

namespace kfx::stage {

bool NoteLook(PluginWatch* watch, const PluginSigns& signs) {
    const PluginSigns before = watch->last;
    watch->last = signs;
    if (signs.answers || signs.isInHost || signs.requests != before.requests) {
        watch->idleLooks = watch->busyLooks = 0;
        return false;
    }
    const bool computes = signs.processorTime != before.processorTime;
    watch->idleLooks = computes ? 0 : watch->idleLooks + 1;
    const bool isWanted = signs.isBuilding && !signs.isStopped;
    watch->busyLooks = computes && isWanted ? 0 : watch->busyLooks + 1;
    return watch->idleLooks >= kMostIdleLooks || watch->busyLooks >= kMostBusyLooks;
}

}  // namespace kfx::stage
