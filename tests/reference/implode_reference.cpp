// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include "tests/reference/bilinear_reference.h"

namespace kfx::test {

ImageHandle ReferenceImplode(ImageHandle source, const KernelInput& input) {
    return ReferenceImplosion(source, input.values[0] / 100.0, input.values[1], input.values[2],
                              input.background);
}

}  // namespace kfx::test
