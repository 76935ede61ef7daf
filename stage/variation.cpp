// SPDX-License-Identifier: MIT
#include "stage/variation.h"

namespace kfx::stage {
namespace {

// Places in a range are 64-bit fractions of it: whole numbers give the same walk on every machine, and they
// wrap by themselves.
using Place = uint64_t;
constexpr Place kHalf = Place{1} << 63;
constexpr Place kNear = Place{1} << 61;  // an eighth: too little to be clearly different

// The powers of 1 / r as fractions, where r is the root of x^(d+1) = x + 1 for d parameters.
constexpr Place kSteps[kMostControls][kMostControls] = {
    {0x9E3779B97F4A7C15},
    {0xC13FA9A902A6328F, 0x91E10DA5C79E7B1C},
    {0xD1B54A32D192ED03, 0xABC98388FB8FAC02, 0x8CB92BA72F3D8DD7},
    {0xDB4F0B9175AE2165, 0xBBE0563303A4615F, 0xA0F2EC75A1FE1575, 0x89E182857D9ED688},
    {0xE19B01AA9D42C633, 0xC6D1D6C8ED0C9631, 0xAF36D01EF7518DBB, 0x9A69443F36F710E6, 0x881403B9339BD42D},
    {0xE60E2B722B53AEEB, 0xCEBD76D9EDB6A8EF, 0xB9C9AA3A51D00B65, 0xA6F5777F6F88983F, 0x9609C71EB7D03F7A,
     0x86D516E50B04AB1B},
};

// A well-mixed number for each input (the finalizer of SplitMix64).
uint64_t Mixed(uint64_t number) {
    number += 0x9E3779B97F4A7C15;
    number = (number ^ number >> 30) * 0xBF58476D1CE4E5B9;
    number = (number ^ number >> 27) * 0x94D049BB133111EB;
    return number ^ number >> 31;
}

int ValueAt(const CuratedRange& range, Place place) {
    const uint64_t count = static_cast<uint64_t>(range.most - range.least) + 1;
    return range.least + static_cast<int>((place >> 32) * count >> 32);
}

// Where the middle of a value's share of the range is; the start for what lies outside.
Place PlaceOf(const CuratedRange& range, int value) {
    if (value < range.least || value > range.most) return 0;
    const uint64_t count = static_cast<uint64_t>(range.most - range.least) + 1;
    return (2 * static_cast<uint64_t>(value - range.least) + 1) * (~Place{0} / (2 * count));
}

// The parameter's number in the panel.
size_t NumberOf(const EffectDescription& effect, const char* parameter) {
    size_t number = 0;
    while (effect.parameters[number].name != parameter) ++number;
    return number;
}

// The looks of one effect stand together.
struct Looks {
    const CuratedLook* first;
    size_t count;
};

Looks LooksOf(const EffectDescription& effect) {
    size_t count = 0;
    const CuratedLook* look = CuratedLooks(&count);
    const CuratedLook* const end = look + count;
    while (look != end && effect.name != look->effect) ++look;
    Looks looks = {look, 0};
    while (look != end && effect.name == look->effect) ++looks.count, ++look;
    return looks;
}

// Where the walk through a look begins for its parameter k. A walk that would begin near the default begins
// half a range away from it.
Place StartOf(const EffectDescription& effect, const CuratedLook& look, size_t k, uint64_t seed) {
    const CuratedRange& range = look.ranges[k];
    const int standard = effect.parameters[NumberOf(effect, range.parameter)].value;
    const Place start = Mixed(seed + k);
    const Place distance = start - PlaceOf(range, standard);
    const bool isNear = standard >= range.least && standard <= range.most &&
                        (distance < kNear || distance > Place{0} - kNear);
    return isNear ? start + kHalf : start;
}

}  // namespace

bool HasVariations(const EffectDescription& effect) { return LooksOf(effect).count > 0; }

EffectSettings VariationAt(const std::vector<EffectDescription>& effects, size_t effect, uint64_t seed,
                           uint64_t number) {
    const EffectDescription& description = effects[effect];
    EffectSettings settings = DefaultSettings(effects, effect);
    const Looks looks = LooksOf(description);
    if (number == 0 || looks.count == 0) return settings;
    const CuratedLook& look = looks.first[(number - 1) % looks.count];
    const uint64_t round = (number - 1) / looks.count;
    size_t moving = 0;
    while (moving < kMostControls && look.ranges[moving].parameter) ++moving;
    for (size_t k = 0; k < moving; ++k) {
        const CuratedRange& range = look.ranges[k];
        const Place place =
            StartOf(description, look, k, Mixed(seed) + effect) + round * kSteps[moving - 1][k];
        settings.values[NumberOf(description, range.parameter)] = ValueAt(range, place);
    }
    return settings;
}

}  // namespace kfx::stage
