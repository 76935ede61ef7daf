// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include "tests/reference/bilinear_reference.h"

namespace kfx::test {

ImageHandle ReferenceExplode(ImageHandle source, const KernelInput& input) {
    // The negation is a 32-bit one: the least number stays as it is.
    const double negated = input.values[0] == INT32_MIN ? INT32_MIN : -input.values[0];
    return ReferenceImplosion(source, negated / 100, input.values[1], input.values[2], input.background);
}

}  // namespace kfx::test
