// SPDX-License-Identifier: MIT
// One build and everything that its host and its user have seen.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "builder/build_driver.h"
#include "tests/support/fake_host.h"

namespace kfx::test {

struct BuildRun {
    // Before the build: the occurrence (from 1) of this request is answered with 0.
    uint32_t refusedRequest = 0;
    int refusedOccurrence = 0;
    size_t (*countLocks)() = nullptr;     // where given: asked at each request
    void (*onRequest)() = nullptr;        // where given: called at each request
    const FrameRunner* runner = nullptr;  // the build's

    // After it.
    std::vector<std::string> lines;  // the host's, messages, and "RET " with what the build returned
    std::vector<BuildMessage> messages;
    std::vector<HandedFrame> frames;
    FileObjectRecord task = {};   // zeros: none was opened
    size_t mostLocks = 0;         // of what countLocks answered
    bool askedElsewhere = false;  // some request came on another thread than the build's
};

// Builds the source animation `block` as the effect leaves it. A null effect: frames unchanged, decoded by an
// effect of the usual kind. Answers what the build returned.
int32_t BuildWith(BuildRun* run, const std::vector<uint8_t>& block, const BuildOptions& options,
                  const EffectDescriptor* effect = nullptr);

// What the window's built-in values stand for: palette 6, comment on, the rest off.
BuildOptions BuiltInOptions();

}  // namespace kfx::test
