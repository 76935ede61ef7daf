// SPDX-License-Identifier: MIT
#include "tests/support/fake_host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "framework/working_image.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/host_transcript.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

FakeHost* currentHost = nullptr;  // the service function has no argument for it

}  // namespace

FakeHost::FakeHost() {
    context.size = sizeof context;
    context.version = kPluginInterfaceVersion;
    context.callback = Callback;
    context.capabilities = kHostTakesSupercompressed | kHostTakesTrueColor;
    currentHost = this;
}

FakeHost::~FakeHost() { currentHost = nullptr; }

void FakeHost::Serve(const std::vector<uint8_t>& block, const std::string& path) {
    const std::lock_guard<std::mutex> lock(mutex_);
    block_ = block;
    path_ = path;
}

void FakeHost::Refuse(HostRequest request, int occurrence) {
    const std::lock_guard<std::mutex> lock(mutex_);
    refusals_[static_cast<uint32_t>(request)] = occurrence;
}

void FakeHost::RefuseAll() {
    const std::lock_guard<std::mutex> lock(mutex_);
    refusesAll_ = true;
}

std::vector<std::string> FakeHost::Transcript() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return transcript_;
}

void FakeHost::ClearTranscript() {
    const std::lock_guard<std::mutex> lock(mutex_);
    transcript_.clear();
    frames_.clear();
}

void FakeHost::AddLine(const std::string& line) {
    const std::lock_guard<std::mutex> lock(mutex_);
    transcript_.push_back(line);
}

size_t FakeHost::CountAnswers() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return answers_;
}

std::vector<std::string> FakeHost::Requests(HostRequest request) {
    const std::string start = "REQ code=" + std::to_string(static_cast<uint32_t>(request)) + " ";
    std::vector<std::string> found;
    for (const std::string& line : Transcript())
        if (line.compare(0, start.size(), start) == 0) found.push_back(line);
    return found;
}

std::vector<HandedFrame> FakeHost::HandedFrames() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return frames_;
}

std::vector<std::vector<uint8_t>> FakeHost::Frames() {
    std::vector<std::vector<uint8_t>> pictures;
    for (HandedFrame& frame : HandedFrames()) pictures.push_back(std::move(frame.bitmap));
    return pictures;
}

FileObjectRecord FakeHost::LastTask() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return task_;
}

std::vector<uint8_t> FakeHost::OfferedPalette() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return offeredPalette_;
}

void FakeHost::Act(HostRequest request, const std::function<void()>& action, int occurrence) {
    action_ = [=](HostRequest asked) mutable {
        if (asked == request && --occurrence == 0) action();
    };
}

void FakeHost::ActAtRequest(int number, const std::function<void()>& action) {
    action_ = [=](HostRequest) mutable {
        if (--number == 0) action();
    };
}

uint64_t FakeHost::Callback(uint64_t target, uint32_t request, uint64_t word, uint64_t pointer) {
    return currentHost ? currentHost->Answer(target, request, word, pointer) : 0;
}

uint64_t FakeHost::Answer(uint64_t target, uint32_t request, uint64_t word, uint64_t pointer) {
    if (action_) action_(static_cast<HostRequest>(request));
    if (onRequest) onRequest();
    const std::lock_guard<std::mutex> lock(mutex_);
    ++answers_;
    const auto refusal = refusals_.find(request);
    const bool refused = refusal != refusals_.end() && --refusal->second == 0;
    uint64_t answer = refused || refusesAll_ ? 0 : 1;
    const char* targetName = target == 0 ? "0" : target == taskAddress_ ? "record" : "UNKNOWN";
    const std::string details = Take(static_cast<HostRequest>(request), pointer, &answer);
    transcript_.push_back(RequestLine(targetName, request, word, details, answer != 0));
    return answer;
}

// Takes the request's record, fills in what it asks for and answers its part of the line.
std::string FakeHost::Take(HostRequest request, uint64_t pointer, uint64_t* answer) {
    void* record = reinterpret_cast<void*>(pointer);
    switch (request) {
        case HostRequest::NewTask:
        case HostRequest::NewTestTask:
            taskAddress_ = pointer;
            task_ = *static_cast<const FileObjectRecord*>(record);
            return DescribeTask(task_);
        case HostRequest::AddImage: {
            const auto& frame = *static_cast<const AddImageRecord*>(record);
            const auto image = reinterpret_cast<ImageHandle>(frame.image);
            frames_.push_back({frame, BytesOf(image)});
            EXPECT_EQ(MemorySize(image), frames_.back().bitmap.size()) << "no more than the picture";
            return DescribeFrame(frame, frames_.back().bitmap);
        }
        case HostRequest::AddComment:
        case HostRequest::ShowHelp:
        case HostRequest::SetStatusText:
            return DescribeText(static_cast<const char*>(record));
        case HostRequest::ChooseColor:
            return TakeColorChoice(static_cast<ChooseColorRequest*>(record), *answer != 0);
        case HostRequest::OpenAnimation:
            return TakeOpenAnimation(static_cast<OpenAnimationRequest*>(record), answer);
        case HostRequest::GetWindowSize:
            if (*answer) {
                static_cast<uint32_t*>(record)[0] = rememberedWidth;
                static_cast<uint32_t*>(record)[1] = rememberedHeight;
            }
            return "size";
        case HostRequest::CloseTask:
        case HostRequest::Progress:
            break;
    }
    return DescribePointer(pointer);
}

std::string FakeHost::TakeOpenAnimation(OpenAnimationRequest* request, uint64_t* answer) {
    std::string details = DescribeOpenAnimation(*request);
    if (block_.empty()) *answer = 0;
    if (!*answer) return details;
    // A long path fills its field to the last byte, without a terminator.
    if (!request->path[0])
        std::memcpy(request->path, path_.c_str(), std::min(path_.size() + 1, sizeof request->path));
    const MemoryHandle memory = MakeMemory(block_);
    if (onHandOver) onHandOver(memory);
    *answer = reinterpret_cast<uint64_t>(memory);
    return details;
}

std::string FakeHost::TakeColorChoice(ChooseColorRequest* request, bool accepted) {
    offeredPalette_.assign(request->palette, request->palette + kPaletteBytes);
    std::string details = DescribeColorChoice(*request);
    if (accepted) request->color = chosenColor;
    return details;
}

}  // namespace kfx::test
