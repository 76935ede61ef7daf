// SPDX-License-Identifier: MIT
// Whole builds of whatever a host hands over. The first byte chooses the options, the second the palette; the
// rest is the animation block.
#include <cstdlib>
#include <cstring>

#include "builder/build_driver.h"
#include "framework/memory_guards.h"
#include "framework/movable_memory_native.h"
#include "host/host_records.h"

namespace {

volatile uint32_t sum = 0;  // keeps the reading from being optimised away

// A host that reads every byte it is handed.
uint64_t ReadAll(uint64_t, uint32_t request, uint64_t, uint64_t pointer) {
    if (request != static_cast<uint32_t>(kfx::HostRequest::AddImage)) return 1;
    kfx::AddImageRecord record;
    std::memcpy(&record, reinterpret_cast<const void*>(static_cast<uintptr_t>(pointer)), sizeof record);
    const kfx::ImageLock lock(reinterpret_cast<kfx::ImageHandle>(static_cast<uintptr_t>(record.image)));
    if (!lock.image) std::abort();
    const auto* bytes = reinterpret_cast<const uint8_t*>(lock.image);
    for (size_t i = 0; i < kfx::MemorySize(lock.memory); ++i) sum = sum + bytes[i];
    return 1;
}

kfx::BuildOptions OptionsFrom(uint8_t bits, uint8_t palette) {
    kfx::BuildOptions options = {};
    options.customPalette = bits & 1;
    options.dither = bits & 2;
    options.supercompress = bits & 4;
    options.fastRemap = bits & 8;
    options.trueColor = (bits & 0x30) == 0x30;
    options.localBackground = bits & 0x40;
    options.test = bits & 0x80;
    options.paletteChoice = palette % 11;
    options.ditherBrightness = palette;
    options.ditherContrast = 256 - palette;
    return options;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 3) return 0;
    const size_t before = kfx::CountMemory().liveBlocks;
    {
        const kfx::MemoryOwner source(kfx::AllocateMemory(size - 2));
        {
            const kfx::MemoryLock lock(source.memory);
            if (!lock.address) return 0;
            std::memcpy(lock.address, data + 2, size - 2);
        }
        kfx::HostContext host = {};
        host.callback = ReadAll;
        kfx::EffectDescriptor effect = {};
        effect.query = [](void*, int32_t) { return int32_t{0x302010}; };
        const kfx::BuildEnvironment environment = {.window = nullptr,
                                                   .host = &host,
                                                   .source = source.memory,
                                                   .effect = &effect,
                                                   .showMessage = [](void*, kfx::BuildMessage) {}};
        kfx::RunBuild(environment, OptionsFrom(data[0], data[1]));
    }
    if (kfx::CountMemory().liveBlocks != before || kfx::CountMemory().lockedBlocks != 0) std::abort();
    return 0;
}
