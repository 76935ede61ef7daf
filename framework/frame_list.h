// SPDX-License-Identifier: MIT
// FrameList: the decoded source animation, a count and a growable block of 56-byte entries. The build owns it
// and every image and mask in it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "framework/working_image.h"

namespace kfx {

#pragma pack(push, 1)
struct FrameEntry {
    ImageHandle image;
    ImageHandle changeMask;    // null: none
    int32_t field3;            // passed to the host with the frame
    int32_t transparentIndex;  // -1: none
    int32_t field1;
    int32_t field2;
    int32_t field4;
    uint8_t zero36[20];
};

struct FrameList {
    MemoryHandle entries;  // null while empty
    int32_t count;
};
#pragma pack(pop)
static_assert(sizeof(FrameEntry) == 56, "FrameEntry");
static_assert(offsetof(FrameEntry, changeMask) == 8, "FrameEntry.changeMask");
static_assert(offsetof(FrameEntry, field3) == 16, "FrameEntry.field3");
static_assert(offsetof(FrameEntry, transparentIndex) == 20, "FrameEntry.transparentIndex");
static_assert(offsetof(FrameEntry, field1) == 24, "FrameEntry.field1");
static_assert(offsetof(FrameEntry, field2) == 28, "FrameEntry.field2");
static_assert(offsetof(FrameEntry, field4) == 32, "FrameEntry.field4");
static_assert(offsetof(FrameEntry, zero36) == 36, "FrameEntry.zero36");
static_assert(offsetof(FrameList, count) == 8, "FrameList.count");

// Adds a copy of the entry at the end. False: memory ran out, the list is as before and the entry's image
// still the caller's.
bool AppendFrame(FrameList* list, const FrameEntry& entry);

// Copies entry `index` out of, or back into, the list. False: no such entry, or the list could not be locked.
bool GetFrame(const FrameList& list, int32_t index, FrameEntry* entry);
bool PutFrame(const FrameList& list, int32_t index, const FrameEntry& entry);

// Frees every image and mask and the list itself, which is empty afterwards.
void FreeFrames(FrameList* list);

}  // namespace kfx
