// SPDX-License-Identifier: MIT
#include "tests/dll/support/memory_ledger.h"

#include <map>
#include <mutex>

#include "tests/support/import_patch.h"

namespace kfx::test {
namespace {

std::mutex ledgerMutex;
std::map<HGLOBAL, size_t> ledgerLocks;  // every live block and how often it is locked
size_t strangeFrees;

// What is refused of one kind of attempts, counted from 1.
struct Refusals {
    size_t attempts, first, last;
};
Refusals allocations, locks;

// Call with the mutex held.
bool IsRefused(Refusals* refusals) {
    ++refusals->attempts;
    return refusals->first && refusals->attempts >= refusals->first && refusals->attempts <= refusals->last;
}

HGLOBAL WINAPI Allocate(UINT flags, SIZE_T bytes) {
    const std::lock_guard<std::mutex> lock(ledgerMutex);
    if (IsRefused(&allocations)) return nullptr;
    const HGLOBAL memory = GlobalAlloc(flags, bytes);
    if (memory) ledgerLocks[memory] = 0;
    return memory;
}

HGLOBAL WINAPI Resize(HGLOBAL memory, SIZE_T bytes, UINT flags) {
    const std::lock_guard<std::mutex> lock(ledgerMutex);
    if (IsRefused(&allocations)) return nullptr;
    const HGLOBAL moved = GlobalReAlloc(memory, bytes, flags);
    if (moved && moved != memory) {
        ledgerLocks[moved] = ledgerLocks[memory];
        ledgerLocks.erase(memory);
    }
    return moved;
}

HGLOBAL WINAPI Free(HGLOBAL memory) {
    const std::lock_guard<std::mutex> lock(ledgerMutex);
    if (ledgerLocks.erase(memory) == 0) ++strangeFrees;
    return GlobalFree(memory);
}

LPVOID WINAPI Lock(HGLOBAL memory) {
    const std::lock_guard<std::mutex> lock(ledgerMutex);
    if (IsRefused(&locks)) return nullptr;
    void* address = GlobalLock(memory);
    const auto found = ledgerLocks.find(memory);
    if (address && found != ledgerLocks.end()) ++found->second;
    return address;
}

BOOL WINAPI Unlock(HGLOBAL memory) {
    const std::lock_guard<std::mutex> lock(ledgerMutex);
    const auto found = ledgerLocks.find(memory);
    if (found != ledgerLocks.end() && found->second) --found->second;
    return GlobalUnlock(memory);
}

}  // namespace

struct MemoryLedger::Patches {
    explicit Patches(HMODULE module)
        : allocate(module, "GlobalAlloc", AddressOfFunction(Allocate)),
          resize(module, "GlobalReAlloc", AddressOfFunction(Resize)),
          free(module, "GlobalFree", AddressOfFunction(Free)),
          lock(module, "GlobalLock", AddressOfFunction(Lock)),
          unlock(module, "GlobalUnlock", AddressOfFunction(Unlock)) {}
    ImportPatch allocate, resize, free, lock, unlock;
};

MemoryLedger::MemoryLedger(HMODULE module) : patches(std::make_unique<Patches>(module)) {
    const std::lock_guard<std::mutex> lock(ledgerMutex);
    ledgerLocks.clear();
    strangeFrees = 0;
    allocations = locks = {};
}

MemoryLedger::~MemoryLedger() = default;

LedgerCounts CountLedger() {
    const std::lock_guard<std::mutex> lock(ledgerMutex);
    size_t locked = 0;
    for (const auto& [memory, count] : ledgerLocks) locked += count != 0;
    return {ledgerLocks.size(), locked, strangeFrees, allocations.attempts, locks.attempts};
}

void HandOver(HGLOBAL memory) {
    const std::lock_guard<std::mutex> lock(ledgerMutex);
    ledgerLocks[memory] = 0;
}

void RefuseGlobalAllocations(size_t first, size_t last) {
    const std::lock_guard<std::mutex> lock(ledgerMutex);
    allocations = {0, first, last};
}

void RefuseGlobalLocks(size_t first, size_t last) {
    const std::lock_guard<std::mutex> lock(ledgerMutex);
    locks = {0, first, last};
}

}  // namespace kfx::test
