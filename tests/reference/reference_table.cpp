// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include <cstring>

namespace kfx::test {
namespace {

struct Row {
    const Effect* effect;
    EffectKernel reference;
};

#define KFX_REFERENCE_ROW(name) {.effect = &k##name, .reference = Reference##name},
constexpr Row kReferences[] = {KFX_FOR_EACH_EFFECT(KFX_REFERENCE_ROW)};
#undef KFX_REFERENCE_ROW

}  // namespace

EffectKernel ReferenceOf(const char* effect) {
    for (const Row& row : kReferences)
        if (std::strcmp(row.effect->name, effect) == 0) return row.reference;
    return nullptr;
}

}  // namespace kfx::test
