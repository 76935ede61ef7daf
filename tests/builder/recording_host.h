// SPDX-License-Identifier: MIT
// A host for builds: answers every request, refuses those it is told to, and writes each as one readable
// line.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "builder/build_driver.h"
#include "framework/frame_list.h"

namespace kfx::test {

struct ReceivedFrame {
    std::vector<uint8_t> bitmap;  // header, colour table, rows
    AddImageRecord record;
};

struct RecordingHost {
    RecordingHost();
    RecordingHost(const RecordingHost&) = delete;
    RecordingHost& operator=(const RecordingHost&) = delete;

    HostContext context = {};
    // The occurrence (from 1) of this request that is answered with 0.
    uint32_t refusedRequest = 0;
    int refusedOccurrence = 0;

    std::vector<std::string> lines;
    std::vector<BuildMessage> messages;
    std::vector<ReceivedFrame> frames;
    FileObjectRecord task = {};
    size_t (*countLocks)() = nullptr;  // where given: asked at each request
    size_t mostLocks = 0;
};

// Builds the source animation `block` as the effect leaves it; the lines end with "RET" and what the build
// returned. A null effect: frames unchanged, decoded by an effect of the usual kind.
int32_t BuildWith(RecordingHost* host, const std::vector<uint8_t>& block, const BuildOptions& options,
                  const EffectDescriptor* effect = nullptr);

// What the window's built-in values stand for: palette 6, comment on, the rest off.
BuildOptions BuiltInOptions();

}  // namespace kfx::test
