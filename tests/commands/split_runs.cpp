// SPDX-License-Identifier: MIT
#include "tests/commands/split_runs.h"

#include <algorithm>
#include <utility>

#include "commands/direct_engine.h"
#include "commands/report.h"
#include "media/animation_writer.h"
#include "tests/cli/test_animations.h"

namespace kfx::commands {
namespace {

// Colours that change from frame to frame, some of them half transparent.
Animation SoftAnimation() {
    Animation soft;
    soft.width = 21;
    soft.height = 17;
    for (int f = 0; f < kFrames; ++f) {
        Frame frame;
        frame.delay = 4 + f;
        frame.transparent = true;
        for (int i = 0; i < soft.width * soft.height; ++i) {
            const int x = i % soft.width;
            for (const int value : {i * 3 + f * 20, i * i / 31, 255 - i % 200})
                frame.pixels.push_back(static_cast<uint8_t>(value));
            frame.pixels.push_back(x < 5 + f % 3 ? 0 : x < 9 ? static_cast<uint8_t>(40 * (x - 3)) : 255);
        }
        soft.frames.push_back(std::move(frame));
    }
    return soft;
}

// An animation whose later frames alone are transparent.
Animation LateHoles() {
    Animation late = SoftAnimation();
    for (int f = 0; f < kFrames - 2; ++f) {
        Frame& frame = late.frames[static_cast<size_t>(f)];
        frame.transparent = false;
        for (size_t i = 3; i < frame.pixels.size(); i += 4) frame.pixels[i] = 255;
    }
    return late;
}

}  // namespace

void Split::SetUp() {
    std::string error;
    test::WriteTestGif(Path("plain.gif"), kFrames);
    test::WriteTestGif(Path("holes.gif"), kFrames, true);
    ASSERT_TRUE(WriteApng(Path("soft.apng"), SoftAnimation(), &error)) << error;
    ASSERT_TRUE(WriteApng(Path("late.apng"), LateHoles(), &error)) << error;
}

Report Split::Run(const Arguments& arguments) {
    CommandLine line;
    std::string text;
    if (ParseCommandLine(arguments, {}, &line, &text) != ParseOutcome::Run)
        return FailedReport(kExitBadCommand, text);
    return RunCommand(line, {kDirectEngine});
}

void Split::Succeed(const Arguments& arguments) {
    const Report report = Run(arguments);
    ASSERT_EQ(report.exitCode, kExitDone) << report.error << " " << ::testing::PrintToString(arguments);
}

void Split::Survey(const std::string& source, const std::string& format, const Arguments& options) const {
    Arguments arguments = {"survey", Path(source), "-o", Path("whole.survey"), "--force", "--format", format};
    arguments.insert(arguments.end(), options.begin(), options.end());
    Succeed(arguments);
}

Arguments Split::Part(const std::string& source, const std::string& name, const std::string& frames) const {
    return {
        "apply",    Path(source), "-o", Path(name + ".kpart"), "--force", "--survey", Path("whole.survey"),
        "--frames", frames};
}

void Split::MakeAndJoin(const std::string& source, const std::vector<int>& starts, int frames,
                        const std::string& output) const {
    Arguments join = {"join", "-o", output, "--force"};
    for (size_t i = 0; i < starts.size(); ++i) {
        if (starts[i] >= frames) continue;
        const int end = i + 1 < starts.size() ? std::min(starts[i + 1], frames) : frames;
        const std::string name = std::to_string(starts[i]);
        Succeed(Part(source, name, name + "-" + std::to_string(end - 1)));
        join.insert(i % 2 == 0 ? join.end() : join.begin() + 1, Path(name + ".kpart"));
    }
    Succeed(join);
}

}  // namespace kfx::commands
