// SPDX-License-Identifier: MIT
// The animation file readers, behind the one that tells the formats apart; the corpus chooses the format.
#include "tests/fuzz/animation_promises.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    kfx::test::ReadAnimationOrAbort(data, size);
    return 0;
}
