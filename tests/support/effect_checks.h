// SPDX-License-Identifier: MIT
// What every effect's test does alike: the product's kernel against its reference, and against an allocator
// that refuses.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

#include "framework/effect.h"
#include "tests/support/pictures.h"

namespace kfx::test {

using Values = std::vector<int32_t>;  // one for each control of the effect's record, in its order

constexpr uint32_t kTestBackground = 0x20C0FF;  // three different channels, so that swapped ones show

KernelInput MakeInput(const Values& values, uint32_t background, KernelCache* cache);

// The kernel's result, with a cache of its own.
Picture Apply(const Effect& effect, ImageHandle source, const Values& values,
              uint32_t background = kTestBackground);

// The kernel gives the reference's picture under these values: with and without AVX2, on a first frame and on
// a later one that finds the tables in the cache; and leaves its source as it was.
::testing::AssertionResult SameAsReference(const Effect& effect, ImageHandle source, const Values& values,
                                           uint32_t background = kTestBackground);

// The same on random and shaded pictures of all tricky sizes.
void ExpectReferenceOnTrickyPictures(const Effect& effect, const Values& values);

// One animation's frames may differ in size, and one cache serves them all: each picture comes out as it does
// with a cache of its own, also when its size comes back. The same for other settings on pictures of one
// size.
void ExpectOneCacheServesAllFrames(const Effect& effect, const Values& values, const Values& others);

// Refuses each allocation of the kernel in turn: it gives its picture, or `fallback` where the effect has
// one, or none, and leaves nothing allocated or locked. Does nothing where memory is the system's.
void ExpectRefusedMemoryIsSurvived(const Effect& effect, ImageHandle source, const Values& values,
                                   ImageHandle fallback = nullptr);

// Runs the kernel with each value in turn replaced by zero, small, negative and huge numbers; all that is
// asked is that it comes back, and with a picture of the source's size or none.
void ExpectAnyValueIsSurvived(const Effect& effect, const Values& values);

}  // namespace kfx::test
