// SPDX-License-Identifier: MIT
// Every animation file reader, behind the one that tells the formats apart.
#include "tests/fuzz/animation_promises.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    kfx::test::ReadAnimationOrAbort(data, size);
    return 0;
}
