// SPDX-License-Identifier: MIT
// Surveys and parts of an animation, as apply and join read them. The hash of each input is made right first:
// without it nothing but the hash would be tried.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "commands/fingerprint.h"
#include "commands/part_file.h"
#include "commands/survey_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

using namespace kfx::commands;

namespace {

constexpr size_t kHashDigits = 32;
constexpr size_t kMostPixels = 1u << 20;

void Expect(bool holds) {
    if (!holds) std::abort();
}

void SetFingerprint(std::string* survey) {
    const std::string start = "\n;fingerprint ";
    const size_t at = survey->find(start);
    const size_t end = at == std::string::npos ? at : survey->find('\n', at + 1);
    if (end == std::string::npos || end - at < start.size() + kHashDigits) return;
    survey->replace(at + start.size(), kHashDigits, HashOfText(survey->substr(0, at) + survey->substr(end)));
}

void TrySurvey(std::string text) {
    SetFingerprint(&text);
    Survey survey;
    std::string error;
    if (!ReadSurvey(text, &survey, &error)) {
        Expect(!error.empty());
        return;
    }
    Expect(survey.frames > 0);
    const kfx::ComputedPalette& palette = survey.facts.palette;
    if (!palette.isKnown) return;
    Expect(palette.colorCount > 0 && palette.colorCount <= 1 << palette.bitsPerPixel);
}

bool SameFrames(const PartFile& part, const BuiltAnimation& built, const SourceRecord& record) {
    for (size_t i = 0; i < part.count; ++i) {
        const BuiltFrame &one = part.built.frames[i], &other = built.frames[i];
        if (one.pixels != other.pixels || one.indexed != other.indexed || one.palette != other.palette ||
            one.transparentIndex != other.transparentIndex ||
            part.record.frames[i].alpha != record.frames[i].alpha ||
            part.record.frames[i].delay != record.frames[i].delay)
            return false;
    }
    return true;
}

// What is taken is a part again, with the same frames.
void TryPart(std::vector<uint8_t> file) {
    if (file.size() >= kHashDigits) {
        const std::string hash = HashOfBytes(file.data(), file.size() - kHashDigits);
        std::memcpy(file.data() + file.size() - kHashDigits, hash.data(), kHashDigits);
    }
    PartFile part;
    std::string error;
    if (!DecodePart(file, &part, &error)) {
        Expect(!error.empty());
        return;
    }
    const auto pixels = static_cast<size_t>(part.built.width) * static_cast<size_t>(part.built.height);
    if (pixels > kMostPixels / part.count) return;  // larger ones take too long
    if (!DecodeFrames(file, part, &part.built, &part.record, &error)) {
        Expect(!error.empty());
        return;
    }
    const std::vector<uint8_t> again = EncodePart(part);
    PartFile read;
    BuiltAnimation built;
    SourceRecord record;
    Expect(DecodePart(again, &read, &error) && DecodeFrames(again, read, &built, &record, &error));
    Expect(read.first == part.first && read.count == part.count && SameFrames(part, built, record));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > 0 && data[0] == 'K')
        TryPart({data, data + size});
    else
        TrySurvey({data, data + size});
    return 0;
}
