// SPDX-License-Identifier: MIT
// A host editor for tests: answers every request as told and keeps each as one readable line. It needs no
// window: builds are tested with it natively, and the plug-in's window under Wine.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "framework/movable_memory.h"
#include "host/host_records.h"

namespace kfx::test {

// A frame as AddImage handed it over.
struct HandedFrame {
    AddImageRecord record;
    std::vector<uint8_t> bitmap;  // header, colour table and rows of the picture
};

// One at a time. The plug-in calls from the window's thread, tests look from theirs.
class FakeHost {
public:
    FakeHost();
    ~FakeHost();
    FakeHost(const FakeHost&) = delete;
    FakeHost& operator=(const FakeHost&) = delete;

    // The record for PLUGIN16DoBuild; tests may change it before the window opens.
    HostContext context = {};

    // Called at the start of each request, on the thread that asks.
    std::function<void()> onRequest;
    // Called with each block that OpenAnimation answers: it belongs to the plug-in from now on.
    std::function<void(MemoryHandle)> onHandOver;

    // OpenAnimation answers a copy of this block; empty: 0. `path` comes back in the request unless it asked
    // for one.
    void Serve(const std::vector<uint8_t>& block, const std::string& path = "C:\\source.gif");

    // The request with this code is answered with 0 at its nth occurrence (from 1) after now.
    void Refuse(HostRequest request, int occurrence);

    // Does something inside the nth request (from 1) after now that is of this kind, before it is answered.
    // An earlier action is forgotten.
    void Act(HostRequest request, const std::function<void()>& action, int occurrence = 1);

    // The same inside the nth request after now, whatever it is.
    void ActAtRequest(int number, const std::function<void()>& action);

    // Every request is answered with 0.
    void RefuseAll();

    // What ChooseColor and GetWindowSize put into their records.
    uint32_t chosenColor = 0x112233;
    uint32_t rememberedWidth = 0;
    uint32_t rememberedHeight = 0;

    // Everything that happened, in order: requests (see tests/support/host_transcript.h) and message boxes,
    // as in
    //   MSG "Memory error"
    std::vector<std::string> Transcript();
    void ClearTranscript();
    void AddLine(const std::string& line);

    // How many requests have been answered since the beginning.
    size_t CountAnswers();

    // The lines of one request only.
    std::vector<std::string> Requests(HostRequest request);

    // What AddImage handed over, and the pictures alone.
    std::vector<HandedFrame> HandedFrames();
    std::vector<std::vector<uint8_t>> Frames();

    // The record that opened the last task; zeros: none was.
    FileObjectRecord LastTask();

    // The colour palette that ChooseColor offered last.
    std::vector<uint8_t> OfferedPalette();

private:
    static uint64_t Callback(uint64_t target, uint32_t request, uint64_t word, uint64_t pointer);
    uint64_t Answer(uint64_t target, uint32_t request, uint64_t word, uint64_t pointer);
    std::string Take(HostRequest request, uint64_t pointer, uint64_t* answer);
    std::string TakeOpenAnimation(OpenAnimationRequest* request, uint64_t* answer);
    std::string TakeColorChoice(ChooseColorRequest* request, bool accepted);

    std::mutex mutex_;
    std::vector<std::string> transcript_;
    std::vector<HandedFrame> frames_;
    std::vector<uint8_t> block_;
    std::vector<uint8_t> offeredPalette_;
    std::string path_;
    size_t answers_ = 0;
    std::function<void(HostRequest)> action_;
    std::map<uint32_t, int> refusals_;  // request code: occurrences until the refusal
    bool refusesAll_ = false;
    FileObjectRecord task_ = {};
    uint64_t taskAddress_ = 0;  // of the record that opened the task
};

}  // namespace kfx::test
