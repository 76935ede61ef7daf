// SPDX-License-Identifier: MIT
// The records exchanged with the host editor. All are byte-packed and little-endian; the host reads and
// writes them by offset, so every offset is proven here.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kfx {

constexpr char kPluginName[] = "Kestrel FX #1";
constexpr uint32_t kPluginInterfaceVersion = 0x1000;  // major 16 in bits 8..15, minor 0 in bits 0..7
constexpr uint32_t kOldestHostMajorVersion = 16;

enum class HostRequest : uint32_t {
    NewTask = 1,
    AddImage = 2,
    AddComment = 3,
    CloseTask = 4,
    NewTestTask = 5,
    ShowHelp = 9,
    SetStatusText = 10,
    ChooseColor = 11,
    Progress = 13,
    OpenAnimation = 16,
    GetWindowSize = 21,
};

// The host's service function: context (0, or the address of the FileObjectRecord for requests 2, 3 and 4),
// request, word argument, pointer-or-value argument. Nonzero is success unless the request says otherwise.
using HostCallback = uint64_t (*)(uint64_t context, uint32_t request, uint64_t word, uint64_t pointer);

constexpr uint8_t kHostTakesSupercompressed = 1;
constexpr uint8_t kHostTakesTrueColor = 2;

#pragma pack(push, 1)

struct PluginInfo {
    uint32_t size;  // set by the host; the record may be larger than this declaration
    uint32_t version;
    char name[261];
    char notice[1];  // to the end of the record
};
static_assert(sizeof(PluginInfo) == 270, "PluginInfo");
static_assert(offsetof(PluginInfo, version) == 4, "PluginInfo.version");
static_assert(offsetof(PluginInfo, name) == 8, "PluginInfo.name");
static_assert(offsetof(PluginInfo, notice) == 269, "PluginInfo.notice");

struct HostContext {
    uint32_t size;
    uint32_t version;
    uint32_t buttonStyle;  // 0 system buttons, 1..3 the plug-in's looks, anything above like 1
    uint32_t unread12;
    HostCallback callback;
    uint64_t unread24;
    uint8_t capabilities;  // kHostTakes...
};
static_assert(sizeof(HostContext) == 33, "HostContext");
static_assert(offsetof(HostContext, version) == 4, "HostContext.version");
static_assert(offsetof(HostContext, buttonStyle) == 8, "HostContext.buttonStyle");
static_assert(offsetof(HostContext, unread12) == 12, "HostContext.unread12");
static_assert(offsetof(HostContext, callback) == 16, "HostContext.callback");
static_assert(offsetof(HostContext, unread24) == 24, "HostContext.unread24");
static_assert(offsetof(HostContext, capabilities) == 32, "HostContext.capabilities");

struct OpenAnimationRequest {
    char magic[4];  // "pMNA"
    uint32_t size;
    uint32_t version;
    uint32_t flags;
    uint64_t owner;
    char path[260];
    uint8_t reserved[68];
};
static_assert(sizeof(OpenAnimationRequest) == 352, "OpenAnimationRequest");
static_assert(offsetof(OpenAnimationRequest, size) == 4, "OpenAnimationRequest.size");
static_assert(offsetof(OpenAnimationRequest, version) == 8, "OpenAnimationRequest.version");
static_assert(offsetof(OpenAnimationRequest, flags) == 12, "OpenAnimationRequest.flags");
static_assert(offsetof(OpenAnimationRequest, owner) == 16, "OpenAnimationRequest.owner");
static_assert(offsetof(OpenAnimationRequest, path) == 24, "OpenAnimationRequest.path");
static_assert(offsetof(OpenAnimationRequest, reserved) == 284, "OpenAnimationRequest.reserved");

struct ChooseColorRequest {
    uint32_t size;
    uint32_t version;
    const uint8_t* palette;  // 256 red-green-blue triples
    uint64_t value;
    uint32_t color;  // 0x00BBGGRR, in and out
    uint32_t reserved;
    uint64_t owner;
};
static_assert(sizeof(ChooseColorRequest) == 40, "ChooseColorRequest");
static_assert(offsetof(ChooseColorRequest, version) == 4, "ChooseColorRequest.version");
static_assert(offsetof(ChooseColorRequest, palette) == 8, "ChooseColorRequest.palette");
static_assert(offsetof(ChooseColorRequest, value) == 16, "ChooseColorRequest.value");
static_assert(offsetof(ChooseColorRequest, color) == 24, "ChooseColorRequest.color");
static_assert(offsetof(ChooseColorRequest, reserved) == 28, "ChooseColorRequest.reserved");
static_assert(offsetof(ChooseColorRequest, owner) == 32, "ChooseColorRequest.owner");

struct FileObjectRecord {
    uint32_t size;
    uint32_t version;
    uint64_t window;
    uint32_t zero16;
    uint32_t bitsPerPixel;
    uint32_t width;
    uint32_t height;
    uint8_t palette[768];  // red, green, blue
    uint32_t zero800;
    uint32_t frameCount;
    uint8_t zero808[264];
    uint32_t reservedIndex;
    uint8_t zero1076[4];
};
static_assert(sizeof(FileObjectRecord) == 1080, "FileObjectRecord");
static_assert(offsetof(FileObjectRecord, version) == 4, "FileObjectRecord.version");
static_assert(offsetof(FileObjectRecord, window) == 8, "FileObjectRecord.window");
static_assert(offsetof(FileObjectRecord, zero16) == 16, "FileObjectRecord.zero16");
static_assert(offsetof(FileObjectRecord, bitsPerPixel) == 20, "FileObjectRecord.bitsPerPixel");
static_assert(offsetof(FileObjectRecord, width) == 24, "FileObjectRecord.width");
static_assert(offsetof(FileObjectRecord, height) == 28, "FileObjectRecord.height");
static_assert(offsetof(FileObjectRecord, palette) == 32, "FileObjectRecord.palette");
static_assert(offsetof(FileObjectRecord, zero800) == 800, "FileObjectRecord.zero800");
static_assert(offsetof(FileObjectRecord, frameCount) == 804, "FileObjectRecord.frameCount");
static_assert(offsetof(FileObjectRecord, zero808) == 808, "FileObjectRecord.zero808");
static_assert(offsetof(FileObjectRecord, reservedIndex) == 1072, "FileObjectRecord.reservedIndex");
static_assert(offsetof(FileObjectRecord, zero1076) == 1076, "FileObjectRecord.zero1076");

struct AddImageRecord {
    uint32_t size;
    uint32_t version;
    uint64_t image;  // handle of a WorkingImage; stays the plug-in's
    uint32_t zero16;
    uint32_t localBackground;
    uint64_t zero24;
    int32_t frameValue;  // the source frame's third field
    uint32_t index;
    int32_t transparentIndex;  // -1: none
    uint8_t zero44[68];
};
static_assert(sizeof(AddImageRecord) == 112, "AddImageRecord");
static_assert(offsetof(AddImageRecord, version) == 4, "AddImageRecord.version");
static_assert(offsetof(AddImageRecord, image) == 8, "AddImageRecord.image");
static_assert(offsetof(AddImageRecord, zero16) == 16, "AddImageRecord.zero16");
static_assert(offsetof(AddImageRecord, localBackground) == 20, "AddImageRecord.localBackground");
static_assert(offsetof(AddImageRecord, zero24) == 24, "AddImageRecord.zero24");
static_assert(offsetof(AddImageRecord, frameValue) == 32, "AddImageRecord.frameValue");
static_assert(offsetof(AddImageRecord, index) == 36, "AddImageRecord.index");
static_assert(offsetof(AddImageRecord, transparentIndex) == 40, "AddImageRecord.transparentIndex");
static_assert(offsetof(AddImageRecord, zero44) == 44, "AddImageRecord.zero44");

#pragma pack(pop)

}  // namespace kfx
