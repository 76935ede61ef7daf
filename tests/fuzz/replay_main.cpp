// SPDX-License-Identifier: MIT
// Runs a fuzz target without libFuzzer: every file of the named folders as it is, cut at many lengths,
// with single bytes changed and as the target's own mutator changes it. The damage is the same on every run,
// so a failure can be repeated.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

extern "C" {
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
// Only some targets have one.
__attribute__((weak)) size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize,
                                                     unsigned seed);
// What a target's own mutator calls for changes of any kind.
size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);
}

namespace {

using Bytes = std::vector<uint8_t>;

// Enough to meet every header field of a corpus file, few enough to stay within seconds under sanitizers.
constexpr size_t kDamagePerFile = 200;
constexpr unsigned kMutationsPerFile = 60;
constexpr size_t kRoomToGrow = 8192;  // for a target's own mutator

void RunOnce(const Bytes& bytes) {
    // An exact copy on the heap: reading one byte past the end is then an error that AddressSanitizer sees.
    const Bytes exact(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

void RunDamaged(const Bytes& original) {
    std::mt19937 random(static_cast<std::mt19937::result_type>(original.size()));
    const size_t cutStep = std::max<size_t>(1, original.size() / kDamagePerFile);
    for (size_t length = 0; length < original.size(); length += cutStep) {
        RunOnce(Bytes(original.begin(), original.begin() + static_cast<ptrdiff_t>(length)));
    }
    for (size_t i = 0; !original.empty() && i < kDamagePerFile; ++i) {
        Bytes damaged = original;
        // Headers stand at the front of everything that is parsed here: damage them twice as often.
        const size_t reach = i % 3 == 0 ? damaged.size() : std::min<size_t>(damaged.size(), 256);
        damaged[random() % reach] = static_cast<uint8_t>(random());
        RunOnce(damaged);
    }
}

void RunMutated(const Bytes& original) {
    if (!LLVMFuzzerCustomMutator) return;
    for (unsigned seed = 0; seed < kMutationsPerFile; ++seed) {
        Bytes mutated = original;
        mutated.resize(original.size() + kRoomToGrow);
        mutated.resize(LLVMFuzzerCustomMutator(mutated.data(), original.size(), mutated.size(), seed));
        RunOnce(mutated);
    }
}

}  // namespace

size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t) {
    for (size_t i = 0; i < size; i += 1 + size / 4) data[i] = static_cast<uint8_t>(data[i] * 5 + 1);
    return size;
}

int main(int argc, char** argv) {
    RunOnce({});
    size_t files = 0;
    for (int i = 1; i < argc; ++i) {
        std::vector<std::filesystem::path> paths;
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) paths.push_back(entry.path());
        std::sort(paths.begin(), paths.end());
        for (const auto& path : paths) {
            std::ifstream file(path, std::ios::binary);
            const Bytes bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
            RunOnce(bytes);
            RunDamaged(bytes);
            RunMutated(bytes);
            ++files;
        }
    }
    std::printf("%zu corpus files replayed, whole and damaged\n", files);
    if (argc > 1 && files == 0) {
        std::fprintf(stderr, "No corpus file was found.\n");
        return 1;
    }
    return 0;
}
