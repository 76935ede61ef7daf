// SPDX-License-Identifier: MIT
#include "commands/host_session.h"

#include <cstring>
#include <exception>
#include <utility>

#include "commands/text.h"
#include "framework/memory_guards.h"

namespace kfx::commands {
namespace {

// Set by BeginSession before the plug-in runs and cleared after it returned.
HostSession* current = nullptr;

template <typename Record>
Record* RecordAt(uint64_t pointer) {
    auto* record = reinterpret_cast<Record*>(static_cast<uintptr_t>(pointer));
    return record && record->size >= sizeof(Record) ? record : nullptr;
}

const char* TextAt(uint64_t pointer) {
    return reinterpret_cast<const char*>(static_cast<uintptr_t>(pointer));
}

void* HandleOf(uint64_t handle) { return reinterpret_cast<void*>(static_cast<uintptr_t>(handle)); }

// A movable block with the animation; 0 when memory ran out.
uint64_t MakeBlock(const Animation& animation) {
    const size_t bytes = AnimationBlockBytes(animation);
    if (bytes == 0) return 0;
    MemoryOwner memory(AllocateMemory(bytes));
    {
        const MemoryLock block(memory.memory);
        if (!block.address) return 0;
        WriteAnimationBlock(animation, static_cast<uint8_t*>(block.address));
    }
    return reinterpret_cast<uintptr_t>(memory.Release());
}

void PutPath(const std::string& path, OpenAnimationRequest* request) {
    const std::string text = ToPluginText(path);
    std::memset(request->path, 0, sizeof request->path);
    std::memcpy(request->path, text.data(),
                text.size() < sizeof request->path ? text.size() : sizeof request->path - 1);
}

// Reads what the plug-in names, or else what the user chooses, into the session.
bool LoadRequested(const OpenAnimationRequest& request, void* owner) {
    const HostActions& actions = current->actions;
    std::string path = FromPluginText(request.path);
    if (path.empty() && !(actions.chooseAnimation && actions.chooseAnimation(current, owner, &path)))
        return false;
    Animation loaded;
    std::string error;
    if (!ReadAnimation(path, &loaded, &error)) {
        if (actions.reportError) actions.reportError(current, owner, error);
        return false;
    }
    *current->source = std::move(loaded);
    current->sourcePath = path;
    if (actions.sourceOpened) actions.sourceOpened(current);
    return true;
}

uint64_t OpenAnimation(OpenAnimationRequest* request) {
    if (!request || std::memcmp(request->magic, "pMNA", 4) != 0) return 0;
    request->path[sizeof request->path - 1] = '\0';
    if (!current->offerSource && !LoadRequested(*request, HandleOf(request->owner))) return 0;
    current->offerSource = current->offerAgain;
    current->record = MakeSourceRecord(*current->source);
    const uint64_t block = MakeBlock(*current->source);
    if (!block) {
        ++current->animationsRefused;
        return 0;
    }
    if (!current->keepSource) *current->source = {};
    PutPath(current->sourcePath, request);
    ++current->animationsOpened;
    return block;
}

// Each status text, and the task's end, ends the time of an effect that was at work.
void NoteEffectTime(bool works) {
    const auto now = std::chrono::steady_clock::now();
    if (current->effectWorks) {
        current->effectMicroseconds +=
            std::chrono::duration_cast<std::chrono::microseconds>(now - current->effectSince).count();
    }
    current->effectSince = now;
    current->effectWorks = works;
}

uint64_t NewTask(const FileObjectRecord* task) { return task && BeginTask(*task, &current->built) ? 1 : 0; }

uint64_t AddImage(const AddImageRecord* frame) {
    if (!frame) return 0;
    const MemoryHandle memory = HandleOf(frame->image);
    const MemoryLock bitmap(memory);
    if (!bitmap.address) return 0;
    const auto* bytes = static_cast<const uint8_t*>(bitmap.address);
    return AddBuiltFrame(*frame, bytes, MemorySize(memory), &current->built) ? 1 : 0;
}

uint64_t AddComment(const char* text) {
    if (!text || !current->built.open) return 0;
    current->built.comment = FromPluginText(text);
    return 1;
}

uint64_t CloseTask(bool success) {
    NoteEffectTime(false);
    if (!current->built.open) return 0;
    current->built.open = false;
    current->built.complete = success;
    if (!success) current->built.frames.clear();
    if (success && current->actions.taskClosed) current->actions.taskClosed(current);
    ++current->tasksClosed;
    return 1;
}

void SetStatus(const char* text) {
    {
        const std::lock_guard<std::mutex> lock(current->statusLock);
        current->status = text ? text : "";
        NoteEffectTime(current->status == kEffectStatus);
    }
    if (current->actions.showProgress) current->actions.showProgress(current);
}

void SetProgress(uint64_t item, uint64_t total) {
    const int whole = current->progressWhole;
    current->progressCurrent = current->progressBefore + static_cast<int>(static_cast<int64_t>(item));
    current->progressTotal = whole > 0 ? whole : static_cast<int>(static_cast<int64_t>(total));
    if (current->actions.showProgress) current->actions.showProgress(current);
}

uint64_t ChooseColor(ChooseColorRequest* request) {
    if (!request || !request->palette || !current->actions.chooseColor) return 0;
    uint32_t color = request->color;
    if (!current->actions.chooseColor(current, HandleOf(request->owner), request->palette, &color)) return 0;
    request->color = color;
    return 1;
}

uint64_t ShowHelp(const char* reference) {
    if (!reference || !current->actions.showHelp) return 0;
    return current->actions.showHelp(current, FromPluginText(reference)) ? 1 : 0;
}

uint64_t WindowSize(uint64_t pointer) {
    auto* size = reinterpret_cast<uint32_t*>(static_cast<uintptr_t>(pointer));
    if (!size) return 0;
    size[0] = current->windowWidth;
    size[1] = current->windowHeight;
    return 1;
}

uint64_t Answer(HostRequest request, uint64_t word, uint64_t pointer) {
    switch (request) {
        case HostRequest::NewTask:
        case HostRequest::NewTestTask:
            return NewTask(RecordAt<FileObjectRecord>(pointer));
        case HostRequest::AddImage:
            return AddImage(RecordAt<AddImageRecord>(pointer));
        case HostRequest::AddComment:
            return AddComment(TextAt(pointer));
        case HostRequest::CloseTask:
            return CloseTask(word != 0);
        case HostRequest::ShowHelp:
            return ShowHelp(TextAt(pointer));
        case HostRequest::SetStatusText:
            SetStatus(TextAt(pointer));
            return 1;
        case HostRequest::ChooseColor:
            return ChooseColor(RecordAt<ChooseColorRequest>(pointer));
        case HostRequest::Progress:
            SetProgress(word, pointer);
            return 1;
        case HostRequest::OpenAnimation:
            // Its size stands behind its magic.
            return OpenAnimation(reinterpret_cast<OpenAnimationRequest*>(static_cast<uintptr_t>(pointer)));
        case HostRequest::GetWindowSize:
            return WindowSize(pointer);
    }
    return 0;
}

uint64_t Callback(uint64_t, uint32_t request, uint64_t word, uint64_t pointer) {
    if (!current) return 0;
    ++current->requestsAnswered;
    try {
        return Answer(static_cast<HostRequest>(request), word, pointer);
    } catch (const std::exception&) {
        return 0;  // out of memory; no exception may pass through the plug-in's functions
    }
}

}  // namespace

void BeginSession(HostSession* session, uint8_t capabilities) {
    session->context.size = sizeof session->context;
    session->context.version = kPluginInterfaceVersion;
    session->context.buttonStyle = 0;  // the system's own
    session->context.callback = Callback;
    session->context.capabilities = capabilities;
    current = session;
}

void EndSession() { current = nullptr; }

}  // namespace kfx::commands
