// SPDX-License-Identifier: MIT
#include "effects/effect_table.h"

#include <array>
#include <utility>

#include "effects/bump.h"
#include "effects/emboss.h"
#include "effects/explode.h"
#include "effects/gaussian_blur.h"
#include "effects/glass_block.h"
#include "effects/hsb_channels.h"
#include "effects/implode.h"
#include "effects/lens_flare.h"
#include "effects/motion_blur.h"
#include "effects/neon.h"
#include "effects/normalize.h"
#include "effects/obscure.h"
#include "effects/oil_painting.h"
#include "effects/radial_blur.h"
#include "effects/raster.h"
#include "effects/ripple.h"
#include "effects/solarize.h"
#include "effects/swirl.h"
#include "effects/water_drops.h"
#include "effects/zoom_blur.h"
#include "framework/panel.h"

namespace kfx {
namespace {

constexpr const EffectRecord* kRecords[] = {
    &kBumpEffect,        &kEmbossEffect,   &kExplodeEffect,     &kGaussianBlurEffect, &kGlassBlockEffect,
    &kHsbChannelsEffect, &kImplodeEffect,  &kLensFlareEffect,   &kMotionBlurEffect,   &kNeonEffect,
    &kNormalizeEffect,   &kObscureEffect,  &kOilPaintingEffect, &kRadialBlurEffect,   &kRasterEffect,
    &kRippleEffect,      &kSolarizeEffect, &kSwirlEffect,       &kWaterDropsEffect,   &kZoomBlurEffect,
};
constexpr size_t kCount = std::size(kRecords);

// No effect answers a background colour of its own.
int32_t AnswerNothing(void*, int32_t) { return -1; }

int32_t IgnoreNotification(void*, uint32_t) { return 1; }

// The protocol's operations do not say for which row they are called, so each row gets its own instance of
// them.
template <size_t kRow>
EffectDescriptor MakeDescriptor() {
    EffectDescriptor row = {};
    row.name = kRecords[kRow]->name;
    row.init = [](EffectInitContext* context) {
        return int32_t{InitializePanel(*kRecords[kRow], context->window)};
    };
    row.preview = [](EffectRunContext* context) { return PreviewEffect(*kRecords[kRow], context); };
    row.build = [](EffectBuildContext* context) { return BuildEffect(*kRecords[kRow], context); };
    row.query = AnswerNothing;
    row.notify = IgnoreNotification;
    row.controls = kRecords[kRow]->controlIds;
    return row;
}

template <size_t... kRows>
std::array<EffectDescriptor, kCount> MakeTable(std::index_sequence<kRows...>) {
    return {MakeDescriptor<kRows>()...};
}

// The records are constant-initialised, so this needs no order among the files' initialisers.
const std::array<EffectDescriptor, kCount> kTable = MakeTable(std::make_index_sequence<kCount>());

}  // namespace

const EffectRecord* EffectAt(size_t index) { return index < kCount ? kRecords[index] : nullptr; }

const EffectDescriptor* DescriptorAt(size_t index) { return index < kCount ? &kTable[index] : nullptr; }

size_t EffectCount() { return kCount; }

}  // namespace kfx
