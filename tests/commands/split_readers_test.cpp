// SPDX-License-Identifier: MIT
// Surveys and parts that are cut or changed at every byte. This program counts what it allocates.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "commands/command_line.h"
#include "commands/fingerprint.h"
#include "commands/part_file.h"
#include "commands/survey_text.h"
#include "tests/support/counted_memory.h"

namespace kfx::commands {
namespace {

using test::PeakOf;

constexpr size_t kHashDigits = 32;

std::string SmallSurvey() {
    CommandLine line;
    std::string text;
    EXPECT_EQ(ParseCommandLine({"apply", "x.gif", "-o", "y.gif", "--effect=Bump", "--effect=Normalize"}, {},
                               &line, &text),
              ParseOutcome::Run);
    Survey survey;
    survey.frames = 3;
    survey.source = std::string(kHashDigits, '7');
    survey.facts.stages.resize(2);
    survey.facts.stages[1].gathered = {.isKnown = true, .summary = 123456789};
    survey.facts.palette.isKnown = true;
    survey.facts.palette.colorCount = survey.facts.palette.reservedIndex = 200;
    return SurveyTextOf(line, survey);
}

// Two frames with alpha, palettes and all that the first part has. The first frame's pixels have this index.
std::string SmallPart(uint8_t index = 1) {
    constexpr int kWidth = 7, kHeight = 5;
    PartFile part;
    part.survey = "survey";
    part.count = 2;
    part.built.width = kWidth;
    part.built.height = kHeight;
    part.built.palette = {{1, 2, 3}, {4, 5, 6}};
    part.built.comment = "made";
    part.record.comment = "given";
    part.record.metadata.exif = {1, 2, 3};
    for (int f = 0; f < 2; ++f) {
        BuiltFrame frame;
        frame.indexed = f == 0;
        if (frame.indexed) frame.palette = part.built.palette;
        frame.transparentIndex = f == 0 ? 5 : 0;
        frame.pixels.assign(size_t{kWidth} * kHeight * (f == 0 ? 1 : 3), index);
        SourceFrame source;
        source.delay = 4;
        source.milliseconds = 40;
        if (f == 1) source.alpha.assign(size_t{kWidth} * kHeight, 128);
        part.built.frames.push_back(frame);
        part.record.frames.push_back(source);
    }
    const std::vector<uint8_t> file = EncodePart(part);
    return {file.begin(), file.end()};
}

// As somebody makes it who wants the change not to be seen.
std::string WithRightFingerprint(std::string survey) {
    constexpr char kStart[] = "\n;fingerprint ";
    const size_t at = survey.find(kStart);
    const size_t end = at == std::string::npos ? at : survey.find('\n', at + 1);
    if (end == std::string::npos || end - at < sizeof kStart - 1 + kHashDigits) return survey;
    const std::string bare = survey.substr(0, at) + survey.substr(end);
    return survey.replace(at + sizeof kStart - 1, kHashDigits, HashOfText(bare));
}

std::string WithRightHash(std::string part) {
    if (part.size() < kHashDigits) return part;
    part.resize(part.size() - kHashDigits);
    return part + HashOfText(part);
}

// Reads; whatever the text says, no more memory is taken than its size allows. False: it is refused, with a
// clause.
bool IsTakenSurvey(const std::string& text) {
    Survey survey;
    std::string error;
    bool isTaken = false;
    const size_t peak = PeakOf([&] { isTaken = ReadSurvey(text, &survey, &error); });
    EXPECT_LT(peak, 100000 + 100 * text.size());
    EXPECT_EQ(error.empty(), isTaken);
    return isTaken;
}

bool IsTakenPart(const std::string& text) {
    constexpr size_t kMostUnpacked = 1100;  // bytes of pixels, of one packed byte
    const std::vector<uint8_t> file(text.begin(), text.end());
    PartFile part;
    BuiltAnimation built;
    SourceRecord record;
    std::string error;
    bool isTaken = false;
    const size_t peak = PeakOf([&] {
        isTaken = DecodePart(file, &part, &error) && DecodeFrames(file, part, &built, &record, &error);
    });
    EXPECT_LT(peak, 100000 + kMostUnpacked * file.size());
    EXPECT_TRUE(isTaken || !error.empty());
    return isTaken;
}

using Reading = bool (*)(const std::string&);
using Mending = std::string (*)(std::string);

// Every cut, and every byte changed in several ways. `mend` makes the hash right again.
void TryAllDamage(const std::string& whole, Reading isTaken, Mending mend) {
    ASSERT_TRUE(isTaken(whole));
    ASSERT_EQ(mend(whole), whole);
    for (size_t size = 0; size < whole.size(); ++size) {
        ASSERT_FALSE(isTaken(whole.substr(0, size))) << "cut to " << size << " bytes";
        isTaken(mend(whole.substr(0, size)));
    }
    for (size_t at = 0; at < whole.size(); ++at) {
        const auto byte = static_cast<unsigned char>(whole[at]);
        for (const unsigned value : {byte ^ 1u, byte ^ 0x80u, byte ^ 0xFFu, 0u, 0x7Fu, 0xFFu}) {
            if (value == byte) continue;
            std::string changed = whole;
            changed[at] = static_cast<char>(value);
            ASSERT_FALSE(isTaken(changed)) << "byte " << at << " is " << value;
            isTaken(mend(changed));
        }
    }
}

TEST(SplitReaders, No_cut_or_changed_survey_is_taken) {
    TryAllDamage(SmallSurvey(), IsTakenSurvey, WithRightFingerprint);
}

TEST(SplitReaders, Indices_are_those_of_the_palette_or_transparent) {
    for (const uint8_t index : {uint8_t{0}, uint8_t{1}, uint8_t{5}})
        EXPECT_TRUE(IsTakenPart(SmallPart(index)));
    for (const uint8_t index : {uint8_t{2}, uint8_t{4}, uint8_t{6}, uint8_t{255}})
        EXPECT_FALSE(IsTakenPart(SmallPart(index))) << int{index};
}

// Parts are read twice, and may be another file by then.
TEST(SplitReaders, Frames_of_a_file_that_is_no_part_any_more_are_not_read) {
    const std::string text = SmallPart();
    PartFile part;
    BuiltAnimation built;
    SourceRecord record;
    std::string error;
    ASSERT_TRUE(DecodePart({text.begin(), text.end()}, &part, &error)) << error;
    EXPECT_FALSE(DecodeFrames({'G', 'I', 'F'}, part, &built, &record, &error));
    EXPECT_EQ(error, "this is no part of an animation; kestrel apply makes one with --survey");
    EXPECT_TRUE(built.frames.empty());
}

TEST(SplitReaders, No_cut_or_changed_part_is_taken) { TryAllDamage(SmallPart(), IsTakenPart, WithRightHash); }

}  // namespace
}  // namespace kfx::commands
