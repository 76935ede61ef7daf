// SPDX-License-Identifier: MIT
// The preview of whatever a host hands over, by every effect with any settings, scaled to a window of any
// size. The input is a record of choices and the animation block.
#include <algorithm>
#include <cstdlib>

#include "kernels/scaler.h"
#include "tests/fuzz/block_changes.h"
#include "tests/fuzz/choices.h"

extern "C" {
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed);
}

using namespace kfx;
using test::Choices;

namespace {

// As the window scales it: down to the larger of two percentages that make it fit, which may be 0.
void ScaleToFit(ImageHandle picture, const Choices& choices) {
    int32_t percentage = 100;
    {
        const ImageLock lock(picture);
        if (!lock) return;
        percentage = static_cast<int32_t>(std::min(int64_t{choices.width} * 100 / lock->width,
                                                   int64_t{choices.height} * 100 / lock->height));
    }
    if (percentage < 100) FreeMemory(ScaleByPercentage(picture, percentage, percentage));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Choices choices;
    if (!test::TakeChoices(&data, &size, &choices)) return 0;
    choices.effect = static_cast<uint8_t>(choices.effect % EffectCount());

    const test::NothingLeft nothingLeft;
    const Effect* effect = test::ChooseEffect(choices);
    const MemoryOwner source(test::TakeBlock(data, size));
    const test::ChosenRefusals refusals(choices);
    EffectRunContext context = {};
    context.width = choices.width;
    context.height = choices.height;
    context.source = source.memory;
    if (PreviewEffect(*effect, &context) != 1) std::abort();
    const MemoryOwner picture(context.image);
    if (picture.memory) ScaleToFit(picture.memory, choices);
    return 0;
}

size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed) {
    return test::MutateBlock(data, size, maxSize, seed, sizeof(Choices));
}
