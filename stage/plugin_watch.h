// SPDX-License-Identifier: MIT
// Whether the plug-in still does something. The window looks once a second while the plug-in is open; looks
// are counted and not the time, so that a computer that has slept does not make a plug-in look hung.
#pragma once

#include <cstdint>

namespace kfx::stage {

// What is seen of the plug-in's thread at one look.
struct PluginSigns {
    bool answers = false;        // it has handled a message since the look before
    bool isInHost = false;       // it waits for Stage, or Stage copies frames for it
    bool isBuilding = false;     // what it has begun to hand over is not complete
    bool isStopped = false;      // the user has asked for the end of that build
    uint64_t requests = 0;       // that it has made
    uint64_t processorTime = 0;  // that it has used
};

struct PluginWatch {
    PluginSigns last;
    int idleLooks = 0;  // in a row, without any sign
    int busyLooks = 0;  // in a row, with no other sign than that it computes
};

constexpr unsigned kLookMilliseconds = 1000;
constexpr int kMostIdleLooks = 15;
constexpr int kMostBusyLooks =
    120;  // the preview of a large picture may take long; a build may take any time

// Takes a look into account. True: the plug-in does not answer, and is not at work for its user either.
bool NoteLook(PluginWatch* watch, const PluginSigns& signs);

}  // namespace kfx::stage
