// SPDX-License-Identifier: MIT
// FrameList: the decoded source animation, a count and a growable block of 56-byte entries. The build owns it
// and every image and mask in it. Their handles are kept a second time where no lock can be refused, so that
// they can always be freed.
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

// What an entry owns.
struct OwnedImages {
    ImageHandle image;
    ImageHandle changeMask;
};

struct FrameList {
    MemoryHandle entries;  // null until the first append has allocated it
    int32_t count;
    int32_t ownedRoom;   // how many entries `owned` has room for
    OwnedImages* owned;  // a fixed table: of each entry, written together with it
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
static_assert(offsetof(FrameList, owned) == 16, "FrameList.owned");

// Adds a copy of the entry at the end. False: memory ran out or the list could not be locked; it is as
// before, and the entry's image still belongs to the caller.
bool AppendFrame(FrameList* list, const FrameEntry& entry);

// Copies entry `index` out of, or back into, the list. False: no such entry, or the list could not be locked
// and is as before: what PutFrame should have added to it still belongs to the caller.
bool GetFrame(const FrameList& list, int32_t index, FrameEntry* entry);
bool PutFrame(const FrameList& list, int32_t index, const FrameEntry& entry);

// Puts the entry back with `image` in its image's place and frees the one of the two that the list does not
// own afterwards: the old one, or, when the list could not be locked (false), the new one.
bool ReplaceImage(const FrameList& list, int32_t index, FrameEntry entry, ImageHandle image);

// Frees every image and mask and the list itself, which is empty afterwards. Needs no lock.
void FreeFrames(FrameList* list);

}  // namespace kfx
