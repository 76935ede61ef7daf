// SPDX-License-Identifier: MIT
// One effect on all frames of an animation, on one thread, beside others: it reads no settings but those that
// it is given, and serves no host.
#pragma once

#include <atomic>
#include <cstdint>

#include "commands/exit_codes.h"
#include "media/animation.h"
#include "stage/wall_settings.h"

namespace kfx::stage {

// Puts the result in the animation's place, in true colour, with its times; alpha follows the effect, as in
// the commands (commands/alpha_ways.h). The same pictures as the direct engine's, with random numbers from
// the clock's second. `stop` is looked at before each frame; each frame that is done adds one to
// `*framesDone` (some effects do a transparent frame twice). False: it was told to stop, or `*failure` says
// why; the animation is lost. Throws std::bad_alloc where a vector does.
bool ApplyEffect(const EffectDescription& effect, const EffectSettings& settings,
                 const std::atomic<bool>& stop, std::atomic<uint64_t>* framesDone, Animation* animation,
                 commands::Failure* failure);

}  // namespace kfx::stage
