// SPDX-License-Identifier: MIT
#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "tests/support/guarded_memory.h"
#include "tests/support/import_patch.h"

namespace kfx::test {
namespace {

constexpr size_t kPage = 4096;
constexpr uint8_t kMarker = 0xA5;  // in the bytes beside a block

// Where a block lies. Its pages are reserved, and those between the first and the last one committed.
struct Place {
    uint8_t* pages;
    size_t committed;
    uint8_t* address;
    size_t size;
    size_t locks;
};

std::mutex mutex;  // guards what follows
GuardSide guardSide;
std::unordered_map<HGLOBAL, Place> places;  // by their handles
size_t spoiledBytes, guardedBlocks;

char running[300];

uint8_t* InsideOf(const Place& place) { return place.pages + kPage; }

bool Map(size_t size, size_t alignment, Place* place) {
    if (size > SIZE_MAX / 2) return false;
    const size_t committed = (size + kPage - 1) / kPage * kPage;
    auto* const pages =
        static_cast<uint8_t*>(VirtualAlloc(nullptr, committed + 2 * kPage, MEM_RESERVE, PAGE_NOACCESS));
    if (!pages) return false;
    if (!VirtualAlloc(pages + kPage, committed, MEM_COMMIT, PAGE_READWRITE)) {
        VirtualFree(pages, 0, MEM_RELEASE);
        return false;
    }
    const size_t taken = (size + alignment - 1) / alignment * alignment;
    const size_t before = guardSide == GuardSide::Before ? 0 : committed - taken;
    *place = {pages, committed, pages + kPage + before, size, 0};
    std::memset(InsideOf(*place), kMarker, before);
    std::memset(place->address + size, kMarker, committed - before - size);
    ++guardedBlocks;
    return true;
}

void Unmap(const Place& place) {
    const auto spoiled = [](const uint8_t* from, const uint8_t* to) {
        return static_cast<size_t>(std::count_if(from, to, [](uint8_t byte) { return byte != kMarker; }));
    };
    spoiledBytes += spoiled(InsideOf(place), place.address);
    spoiledBytes += spoiled(place.address + place.size, InsideOf(place) + place.committed);
    VirtualFree(place.pages, 0, MEM_RELEASE);
}

// A movable block's handle is the address of a byte of its own, so that nobody takes it for the block's.
HGLOBAL WINAPI Allocate(UINT flags, SIZE_T bytes) {
    const std::lock_guard<std::mutex> lock(mutex);
    const bool movable = (flags & GMEM_MOVEABLE) != 0;
    Place place;
    if (!Map(bytes, movable ? 1 : 8, &place)) return nullptr;
    HGLOBAL handle = movable ? new char : static_cast<void*>(place.address);
    places[handle] = place;
    return handle;
}

HGLOBAL WINAPI Free(HGLOBAL memory) {
    const std::lock_guard<std::mutex> lock(mutex);
    const auto found = places.find(memory);
    if (found == places.end()) return GlobalFree(memory);
    const Place place = found->second;
    places.erase(found);
    Unmap(place);
    if (memory != place.address) delete static_cast<char*>(memory);
    return nullptr;
}

LPVOID WINAPI Lock(HGLOBAL memory) {
    const std::lock_guard<std::mutex> lock(mutex);
    const auto found = places.find(memory);
    if (found == places.end()) return GlobalLock(memory);
    ++found->second.locks;
    return found->second.address;
}

BOOL WINAPI Unlock(HGLOBAL memory) {
    const std::lock_guard<std::mutex> lock(mutex);
    const auto found = places.find(memory);
    if (found == places.end()) return GlobalUnlock(memory);
    if (found->second.locks) --found->second.locks;
    return found->second.locks != 0;
}

SIZE_T WINAPI Size(HGLOBAL memory) {
    const std::lock_guard<std::mutex> lock(mutex);
    const auto found = places.find(memory);
    return found == places.end() ? GlobalSize(memory) : found->second.size;
}

HGLOBAL WINAPI Resize(HGLOBAL memory, SIZE_T bytes, UINT flags) {
    const std::lock_guard<std::mutex> lock(mutex);
    const auto found = places.find(memory);
    if (found == places.end()) return GlobalReAlloc(memory, bytes, flags);
    Place moved;
    if (!Map(bytes, 1, &moved)) return nullptr;
    std::memcpy(moved.address, found->second.address, std::min<size_t>(bytes, found->second.size));
    Unmap(found->second);
    found->second = moved;
    return memory;
}

struct Patches {
    explicit Patches(HMODULE module)
        : allocate(module, "GlobalAlloc", AddressOfFunction(Allocate)),
          resize(module, "GlobalReAlloc", AddressOfFunction(Resize)),
          free(module, "GlobalFree", AddressOfFunction(Free)),
          lock(module, "GlobalLock", AddressOfFunction(Lock)),
          unlock(module, "GlobalUnlock", AddressOfFunction(Unlock)),
          size(module, "GlobalSize", AddressOfFunction(Size)) {}
    ImportPatch allocate, resize, free, lock, unlock, size;
};
std::unique_ptr<Patches> patches;
void* faultHandler = nullptr;

LONG CALLBACK OnFault(EXCEPTION_POINTERS* fault) {
    if (fault->ExceptionRecord->ExceptionCode != EXCEPTION_ACCESS_VIOLATION) return EXCEPTION_CONTINUE_SEARCH;
    std::fprintf(stderr, "A page beside a block was touched: %s\n", running);
    std::fflush(stderr);
    TerminateProcess(GetCurrentProcess(), 3);
    return EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

const char* NameOf(GuardSide side) { return side == GuardSide::Behind ? "behind" : "before"; }

GuardedMemory::GuardedMemory(GuardSide side) {
    guardSide = side;
    faultHandler = AddVectoredExceptionHandler(1, OnFault);
    patches = std::make_unique<Patches>(GetModuleHandleA(nullptr));
}

GuardedMemory::~GuardedMemory() {
    patches.reset();
    RemoveVectoredExceptionHandler(faultHandler);
}

void GuardSizesOf(HMODULE library) {
    for (const ImportSlot& import : ImportSlots(library))
        if (std::strcmp(import.function, "GlobalSize") == 0) WriteSlot(import.slot, AddressOfFunction(Size));
}

size_t CountSpoiledBytes() { return spoiledBytes; }
size_t CountGuardedBlocks() { return guardedBlocks; }

bool IsReadable(const void* address) {
    MEMORY_BASIC_INFORMATION page = {};
    return VirtualQuery(address, &page, sizeof page) && page.State == MEM_COMMIT &&
           !(page.Protect & (PAGE_NOACCESS | PAGE_GUARD));
}

void SayWhatRuns(const std::string& what) { std::snprintf(running, sizeof running, "%s", what.c_str()); }

}  // namespace kfx::test
