// SPDX-License-Identifier: MIT
#include "tests/builder/recording_host.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "framework/memory_guards.h"
#include "framework/source_animation.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/host_transcript.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

RecordingHost* current = nullptr;   // the callback has no place for a pointer of ours; set during a build
const void* currentTask = nullptr;  // the record that opened the task

template <typename T>
const T* At(uint64_t pointer) {
    return reinterpret_cast<const T*>(static_cast<uintptr_t>(pointer));
}

std::string Describe(HostRequest request, uint64_t pointer) {
    switch (request) {
        case HostRequest::SetStatusText:
        case HostRequest::AddComment:
            return DescribeText(At<char>(pointer));
        case HostRequest::NewTask:
        case HostRequest::NewTestTask:
            currentTask = At<void>(pointer);
            current->task = *At<FileObjectRecord>(pointer);
            return DescribeTask(current->task);
        case HostRequest::AddImage: {
            const auto& record = *At<AddImageRecord>(pointer);
            const auto image = reinterpret_cast<ImageHandle>(static_cast<uintptr_t>(record.image));
            current->frames.push_back({BytesOf(image), record});
            EXPECT_EQ(MemorySize(image), current->frames.back().bitmap.size());
            return DescribeFrame(record, current->frames.back().bitmap);
        }
        default:
            return DescribePointer(pointer);
    }
}

uint64_t Answer(uint64_t target, uint32_t request, uint64_t word, uint64_t pointer) {
    if (current->countLocks) current->mostLocks = std::max(current->mostLocks, current->countLocks());
    const bool refused = request == current->refusedRequest && --current->refusedOccurrence == 0;
    const std::string to = !target ? "0" : At<void>(target) == currentTask ? "record" : "UNKNOWN";
    current->lines.push_back(
        RequestLine(to, request, word, Describe(static_cast<HostRequest>(request), pointer), !refused));
    return refused ? 0 : 1;
}

void NoteMessage(void*, BuildMessage message) {
    constexpr const char* kTexts[] = {"Memory error", "Error creating new task.",
                                      "There has been an error adding an image to the current file object."};
    current->messages.push_back(message);
    current->lines.push_back(std::string("MSG \"") + kTexts[static_cast<int>(message)] + "\"");
}

int32_t DecodeUnchanged(EffectBuildContext* context) {
    return DecodeAllFrames(context->source, context->frames) != DecodeResult::Incomplete;
}

int32_t NoBackground(void*, int32_t) { return -1; }

}  // namespace

RecordingHost::RecordingHost() {
    context.size = sizeof context;
    context.version = kPluginInterfaceVersion;
    context.callback = Answer;
}

int32_t BuildWith(RecordingHost* host, const std::vector<uint8_t>& block, const BuildOptions& options,
                  const EffectDescriptor* effect) {
    EffectDescriptor unchanged = {};
    unchanged.name = "Unchanged";
    unchanged.build = DecodeUnchanged;
    unchanged.query = NoBackground;
    const MemoryOwner source(MakeMemory(block));
    int window = 0;
    const BuildEnvironment environment = {.window = &window,
                                          .host = &host->context,
                                          .source = source.memory,
                                          .effect = effect ? effect : &unchanged,
                                          .showMessage = NoteMessage};
    current = host;
    currentTask = nullptr;
    const int32_t result = RunBuild(environment, options);
    current = nullptr;
    host->lines.push_back("RET " + std::to_string(result));
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
