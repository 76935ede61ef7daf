// SPDX-License-Identifier: MIT
#include "effects/effect_table.h"

#include <array>
#include <utility>

#include "effects/effects.h"
#include "framework/panel.h"

namespace kfx {
namespace {

#define KFX_EFFECT_ROW(name) &k##name,
constexpr const Effect* kEffects[] = {KFX_FOR_EACH_EFFECT(KFX_EFFECT_ROW)};
#undef KFX_EFFECT_ROW
constexpr size_t kCount = std::size(kEffects);

// No effect has a background colour of its own: -1 says so.
int32_t AnswerNothing(void*, int32_t) { return -1; }

int32_t IgnoreNotification(void*, uint32_t) { return 1; }

// The operations are not told for which row they are called, so each row gets its own instance of them.
template <size_t kRow>
EffectDescriptor MakeDescriptor() {
    EffectDescriptor row = {};
    row.name = kEffects[kRow]->name;
    row.init = [](EffectInitContext* context) {
        return int32_t{InitializePanel(*kEffects[kRow], context->window)};
    };
    row.preview = [](EffectRunContext* context) { return PreviewEffect(*kEffects[kRow], context); };
    row.build = [](EffectBuildContext* context) { return BuildEffect(*kEffects[kRow], context); };
    row.query = AnswerNothing;
    row.notify = IgnoreNotification;
    row.controls = kEffects[kRow]->controls.ids;
    return row;
}

template <size_t... kRows>
std::array<EffectDescriptor, kCount> MakeTable(std::index_sequence<kRows...>) {
    return {MakeDescriptor<kRows>()...};
}

// The effects' records are initialised at compile time, so the order in which files are initialised does not
// matter.
const std::array<EffectDescriptor, kCount> kTable = MakeTable(std::make_index_sequence<kCount>());

}  // namespace

const Effect* EffectAt(size_t index) { return index < kCount ? kEffects[index] : nullptr; }

const EffectDescriptor* DescriptorAt(size_t index) { return index < kCount ? &kTable[index] : nullptr; }

size_t EffectCount() { return kCount; }

}  // namespace kfx
