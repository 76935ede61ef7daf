// SPDX-License-Identifier: MIT
#include "tests/dll/support/refused_imports.h"

#include <cstring>

#include "tests/support/import_patch.h"

namespace kfx::test {
namespace {

constexpr size_t kGateBytes = 96;

struct CodeWriter {
    uint8_t* next;

    void Bytes(std::initializer_list<int> bytes) {
        for (const int byte : bytes) *next++ = static_cast<uint8_t>(byte);
    }
    void Word(uint64_t word) {
        std::memcpy(next, &word, sizeof word);
        next += sizeof word;
    }
};

uint64_t NumberOf(const void* address) { return reinterpret_cast<uint64_t>(address); }

// Arguments stay where they are, in registers and on the stack: the gate uses none but the registers that a
// called function may overwrite, and jumps to the function itself.
void WriteGate(uint8_t* gate, const void* counter, const void* function, const Refusal& refusal) {
    CodeWriter code = {gate};
    code.Bytes({0x49, 0xBA});  // mov r10, counter
    code.Word(NumberOf(counter));
    code.Bytes({0xB8, 1, 0, 0, 0});                  // mov eax, 1
    code.Bytes({0xF0, 0x41, 0x0F, 0xC1, 0x02});      // lock xadd [r10], eax
    code.Bytes({0xFF, 0xC0});                        // inc eax: the number of this call
    code.Bytes({0x41, 0x3B, 0x42, 0x04, 0x74, 13});  // cmp eax, [r10 + 4]; je refuse
    code.Bytes({0x49, 0xBB});                        // mov r11, function
    code.Word(NumberOf(function));
    code.Bytes({0x41, 0xFF, 0xE3});                        // jmp r11
    if (refusal.worksFirst) {                              // refuse:
        code.Bytes({0x48, 0x83, 0xEC, 0x28, 0x49, 0xBB});  // sub rsp, 40; mov r11, function
        code.Word(NumberOf(function));
        code.Bytes({0x41, 0xFF, 0xD3, 0x48, 0x83, 0xC4, 0x28});  // call r11; add rsp, 40
    }
    code.Bytes({0x48, 0xB8});  // mov rax, answer
    code.Word(refusal.answer);
    code.Bytes({0xC3});  // ret
}

}  // namespace

RefusedImports::RefusedImports(HMODULE module, const std::vector<Refusal>& refusals) {
    const std::vector<ImportSlot> slots = ImportSlots(module);
    code_ = static_cast<uint8_t*>(
        VirtualAlloc(nullptr, slots.size() * kGateBytes, MEM_COMMIT | MEM_RESERVE, PAGE_EXECUTE_READWRITE));
    uint8_t* gate = code_;
    for (const ImportSlot& import : slots) {
        for (const Refusal& refusal : refusals) {
            if (std::strcmp(import.function, refusal.function) != 0) continue;
            WriteGate(gate, &counters_[refusal.function], *import.slot, refusal);
            WriteSlot(import.slot, gate);
            gate += kGateBytes;
        }
    }
    FlushInstructionCache(GetCurrentProcess(), code_, slots.size() * kGateBytes);
}

RefusedImports::~RefusedImports() { VirtualFree(code_, 0, MEM_RELEASE); }

void RefusedImports::Refuse(const std::string& function, uint32_t call) {
    const auto found = counters_.find(function);
    if (found != counters_.end()) found->second.refused = call;
}

uint32_t RefusedImports::CallsTo(const std::string& function) const {
    const auto found = counters_.find(function);
    return found == counters_.end() ? 0 : found->second.calls;
}

}  // namespace kfx::test
