// SPDX-License-Identifier: MIT
// Whole builds of whatever a host hands over: every effect with any settings, every kind of output, a host
// that refuses, memory that runs out. The input is a record of choices and the animation block.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "builder/build_driver.h"
#include "host/host_records.h"
#include "tests/fuzz/block_changes.h"
#include "tests/fuzz/choices.h"

extern "C" {
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed);
}

using namespace kfx;
using test::Choices;

namespace {

// What the host has seen of one build.
struct Seen {
    uint32_t requests;
    uint32_t refused;  // number of the request that is answered with 0, from 1; 0: none
    uint32_t images;
    uint32_t messages;
    bool taskIsOpen;
};

Seen seen = {};             // the host's service function has no other memory
volatile uint32_t sum = 0;  // keeps the reading from being optimised away

void Expect(bool holds) {
    if (!holds) std::abort();
}

template <typename T>
T RecordAt(uint64_t address) {
    T record;
    std::memcpy(&record, reinterpret_cast<const void*>(static_cast<uintptr_t>(address)), sizeof record);
    return record;
}

// A host that reads every byte it is handed, whatever memory is refused to the plug-in meanwhile.
void ReadImage(const AddImageRecord& record) {
    const UncountedMemory uncounted;
    const ImageLock lock(reinterpret_cast<ImageHandle>(static_cast<uintptr_t>(record.image)));
    Expect(lock.image && lock->width > 0 && lock->height > 0);
    const auto* bytes = reinterpret_cast<const uint8_t*>(lock.image);
    const auto size = sizeof *lock.image + ColorTableBytes(lock.image) +
                      StrideOf(lock.image) * static_cast<size_t>(lock->height);
    Expect(MemorySize(lock.memory) >= size);
    for (size_t i = 0; i < size; ++i) sum = sum + bytes[i];
}

uint64_t Answer(uint64_t, uint32_t request, uint64_t, uint64_t pointer) {
    const bool isRefused = ++seen.requests == seen.refused;
    switch (static_cast<HostRequest>(request)) {
        case HostRequest::NewTask:
        case HostRequest::NewTestTask:
            Expect(!seen.taskIsOpen && RecordAt<FileObjectRecord>(pointer).frameCount > 0);
            seen.taskIsOpen = !isRefused;
            break;
        case HostRequest::AddImage:
            Expect(seen.taskIsOpen);
            ++seen.images;
            ReadImage(RecordAt<AddImageRecord>(pointer));
            break;
        case HostRequest::CloseTask:
            Expect(seen.taskIsOpen);
            seen.taskIsOpen = false;
            break;
        default:
            break;
    }
    return !isRefused;
}

BuildOptions OptionsFrom(const Choices& choices) {
    BuildOptions options = {};
    options.customPalette = choices.output & 1;
    options.dither = choices.output & 2;
    options.supercompress = choices.output & 4;
    options.fastRemap = choices.output & 8;
    options.trueColor = (choices.output & 0x30) == 0x30;
    options.localBackground = choices.output & 0x40;
    options.addComment = choices.extras & test::kExtraComment;
    options.paletteChoice = choices.palette % 11;
    options.ditherBrightness = choices.dither[0] < 200 ? choices.dither[0] : INT32_MAX;
    options.ditherContrast = choices.dither[1] < 200 ? choices.dither[1] : INT32_MIN;
    options.mostColors = choices.mostColors < 3 ? 0 : choices.mostColors;
    BuildMode mode = choices.output & 0x80 ? BuildMode::Test : BuildMode::Build;
    if (choices.extras & test::kExtraPreset) mode = BuildMode::Plain;
    return OptionsForMode(options, mode);
}

int32_t Build(BuildEnvironment environment, const BuildOptions& options, const Choices& choices) {
    seen = {};
    seen.refused = choices.refusedRequest;
    const test::ChosenRefusals refusals(choices);
    const int32_t built = RunBuild(environment, options);
    Expect(!seen.taskIsOpen && seen.messages == (built ? 0u : 1u));
    return built;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Choices choices;
    if (!test::TakeChoices(&data, &size, &choices)) return 0;

    const test::NothingLeft nothingLeft;
    test::ChooseEffect(choices);
    EffectDescriptor effect = {};
    if (const EffectDescriptor* row = DescriptorAt(choices.effect)) effect = *row;
    if (choices.extras & test::kExtraEffectBackground)
        effect.query = [](void*, int32_t) { return int32_t{0x302010}; };
    const MemoryOwner source(test::TakeBlock(data, size));
    HostContext host = {};
    host.callback = Answer;
    BuildEnvironment environment = {.window = nullptr,
                                    .host = &host,
                                    .source = source.memory,
                                    .effect = &effect,
                                    .showMessage = [](void*, BuildMessage) { ++seen.messages; }};
    const BuildOptions options = OptionsFrom(choices);
    WholeAnimation whole;
    if (choices.extras & test::kExtraParts) {
        whole.use = WholeUse::Find;
        environment.whole = &whole;
        if (!Build(environment, options, choices)) return 0;
        whole.use = WholeUse::Hold;
        whole.hasSeveralFrames = choices.width & 1;
        whole.framesBefore = choices.height % 3;
    }
    Build(environment, options, choices);
    return 0;
}

size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed) {
    return test::MutateBlock(data, size, maxSize, seed, sizeof(Choices));
}
