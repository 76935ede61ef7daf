// SPDX-License-Identifier: MIT
#include "tests/builder/build_run.h"

#include <algorithm>
#include <thread>

#include "framework/memory_guards.h"
#include "framework/source_animation.h"
#include "tests/support/animation_blocks.h"

namespace kfx::test {
namespace {

// The callback for messages has no place for a pointer of ours; set during a build.
FakeHost* currentHost = nullptr;
BuildRun* currentRun = nullptr;

void NoteMessage(void*, BuildMessage message) {
    constexpr const char* kTexts[] = {"Memory error", "Error creating new task.",
                                      "There has been an error adding an image to the current file object."};
    currentRun->messages.push_back(message);
    currentHost->AddLine(std::string("MSG \"") + kTexts[static_cast<int>(message)] + "\"");
}

int32_t DecodeUnchanged(EffectBuildContext* context) {
    return DecodeAllFrames(context->source, context->frames) != DecodeResult::Incomplete;
}

int32_t NoBackground(void*, int32_t) { return -1; }

}  // namespace

int32_t BuildWith(BuildRun* run, const std::vector<uint8_t>& block, const BuildOptions& options,
                  const EffectDescriptor* effect) {
    FakeHost host;
    if (run->refusedRequest)
        host.Refuse(static_cast<HostRequest>(run->refusedRequest), run->refusedOccurrence);
    const std::thread::id own = std::this_thread::get_id();
    host.onRequest = [run, own] {
        if (std::this_thread::get_id() != own) run->askedElsewhere = true;
        if (run->countLocks) run->mostLocks = std::max(run->mostLocks, run->countLocks());
        if (run->onRequest) run->onRequest();
    };
    EffectDescriptor unchanged = {};
    unchanged.name = "Unchanged";
    unchanged.build = DecodeUnchanged;
    unchanged.query = NoBackground;
    const MemoryOwner source(MakeMemory(block));
    int window = 0;
    const BuildEnvironment environment = {.window = &window,
                                          .host = &host.context,
                                          .source = source.memory,
                                          .effect = effect ? effect : &unchanged,
                                          .showMessage = NoteMessage,
                                          .runner = run->runner};
    currentHost = &host;
    currentRun = run;
    const int32_t result = RunBuild(environment, options);
    currentHost = nullptr;
    currentRun = nullptr;
    run->lines = host.Transcript();
    run->lines.push_back("RET " + std::to_string(result));
    run->frames = host.HandedFrames();
    run->task = host.LastTask();
    return result;
}

BuildOptions BuiltInOptions() {
    BuildOptions options = {};
    options.paletteChoice = 6;
    options.addComment = true;
    options.ditherBrightness = 20;
    options.ditherContrast = 20;
    return options;
}

}  // namespace kfx::test
