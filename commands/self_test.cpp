// SPDX-License-Identifier: MIT
#include "commands/self_test.h"

#include <utility>

#include "commands/direct_engine.h"
#include "commands/fingerprint.h"
#include "commands/pipeline.h"
#include "framework/cpu.h"
#include "framework/random.h"

namespace kfx::commands {
namespace {

constexpr int kWidth = 64;
constexpr int kHeight = 48;
constexpr int kFrames = 3;

// The clock stands still for a scope.
struct StoppedClock {
    StoppedClock() { HoldClock(kSelfTestSecond); }
    ~StoppedClock() { ReleaseClock(); }
    StoppedClock(const StoppedClock&) = delete;
    StoppedClock& operator=(const StoppedClock&) = delete;
};

// The kernels compute on one path for a scope. AVX2 is allowed at the start of the program.
struct ChosenPath {
    explicit ChosenPath(ComputePath path) { AllowAvx2(path == ComputePath::Avx2); }
    ~ChosenPath() { AllowAvx2(true); }
    ChosenPath(const ChosenPath&) = delete;
    ChosenPath& operator=(const ChosenPath&) = delete;
};

// Shading, a disc that moves, hard stripes and grain: what the effects treat differently.
void DrawPixel(int x, int y, int frame, uint32_t grain, uint8_t* pixel) {
    const int disc = (x - 18 - 12 * frame) * (x - 18 - 12 * frame) + (y - 20) * (y - 20);
    const bool isStripe = y > 34 && (x + 2 * frame) / 5 % 2 == 0;
    int red = 4 * x, green = 255 - 5 * y, blue = 2 * (x + y);
    if (disc < 130) {
        red = 250 - disc;
        green = 60 + disc / 2;
        blue = 20;
    } else if (isStripe) {
        red = 24;
        green = 30;
        blue = 90;
    }
    const int levels[3] = {red, green, blue};
    for (int c = 0; c < 3; ++c) {
        const int level = levels[c] + static_cast<int>(grain >> (16 + 4 * c) & 7) - 4;
        pixel[c] = static_cast<uint8_t>(level < 0 ? 0 : level > 255 ? 255 : level);
    }
    pixel[3] = 255;
}

std::vector<Setting> SettingsOf(const std::string& list) {
    std::vector<Setting> settings;
    for (size_t start = 0; start < list.size();) {
        const size_t equals = list.find('=', start);
        const size_t end = std::min(list.find(", ", start), list.size());
        settings.push_back({list.substr(start, equals - start), list.substr(equals + 1, end - equals - 1)});
        start = end + 2;
    }
    return settings;
}

}  // namespace

std::string NameOf(const SelfTestRow& row) {
    if (!row.palette) return row.effect;
    return std::string(row.palette) + (row.dither ? ", dithered" : "") +
           (row.supercompress ? ", supercompressed" : "");
}

EffectChoice ChoiceOf(const SelfTestRow& row) { return {row.effect, SettingsOf(row.settings)}; }

Animation DrawSelfTestSource() {
    Animation source;
    source.width = kWidth;
    source.height = kHeight;
    source.loopCount = kLoopForever;
    uint32_t grain = 1;
    for (int f = 0; f < kFrames; ++f) {
        Frame frame;
        frame.delay = 10;
        frame.pixels.resize(size_t{4} * kWidth * kHeight);
        uint8_t* pixel = frame.pixels.data();
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x, pixel += 4) {
                grain = grain * 1664525 + 1013904223;
                DrawPixel(x, y, f, grain, pixel);
            }
        }
        source.frames.push_back(std::move(frame));
    }
    return source;
}

bool BuildSelfTest(const SelfTestRow& row, Animation* result, Failure* failure) {
    const StoppedClock clock;
    CommandLine line;
    line.effects = {ChoiceOf(row)};
    line.palette = row.palette ? row.palette : "";
    line.trueColor = !row.palette;
    line.dither = row.dither;
    line.supercompress = row.supercompress;
    Animation source = DrawSelfTestSource();
    HostSession session;
    session.source = &source;
    EngineStart start;
    start.session = &session;
    if (row.palette) start.capabilities = kHostTakesSupercompressed;
    const OpenEngine engine(kDirectEngine, start, failure);
    std::vector<Job> jobs;
    if (!engine || !ResolveJobs(line, false, kDirectEngine, engine.opened, &jobs, failure) ||
        !kDirectEngine.build(engine.opened, jobs.front(), false, failure)) {
        return false;
    }
    *result = PlayBuilt(session.built, session.record);
    return true;
}

bool HasAvx2() {
    const ChosenPath path(ComputePath::Avx2);
    return UseAvx2();
}

bool RunSelfTest(const std::vector<SelfTestRow>& rows, std::vector<SelfTestResult>* results,
                 Failure* failure) {
    std::vector<ComputePath> paths = {ComputePath::Plain};
    if (HasAvx2()) paths.push_back(ComputePath::Avx2);
    for (const ComputePath path : paths) {
        const ChosenPath chosen(path);
        for (const SelfTestRow& row : rows) {
            Animation result;
            if (!BuildSelfTest(row, &result, failure)) return false;
            results->push_back({&row, path, FingerprintOf(result)});
        }
    }
    return true;
}

}  // namespace kfx::commands
