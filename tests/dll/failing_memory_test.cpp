// SPDX-License-Identifier: MIT
// The DLL with movable memory refused through its import table: allocations and locks of builds with every
// effect to every kind of output, of previews, of opening a source and of opening the window, once and from
// then on. What each frame may look like is shown by the native sweep; here it is the system's own
// memory, the window, its messages and its cursor.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <utility>

#include "resources/resource_ids.h"
#include "tests/dll/support/memory_ledger.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/import_patch.h"
#include "tests/support/pictures.h"
#include "tests/support/refused_effects.h"
#include "tests/support/tried.h"

namespace kfx::test {
namespace {

using testing::AnyOf;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kMemoryError[] = "Memory error";
constexpr char kNotOpened[] = "The animation you have selected could not be opened.";
constexpr int kEffects = 20;
constexpr size_t kFrames = 2;

// Message boxes are answered without being opened: thousands would take minutes. Cursors are looked at on
// their way.
std::mutex noteMutex;  // guards the notes
struct Notes {
    std::vector<std::string> messages;
    size_t cursorsSet = 0;
    HCURSOR before = nullptr;  // what the first one replaced
    HCURSOR last = nullptr;
};
Notes notes;
decltype(&DialogBoxParamA) openDialog = nullptr;

INT_PTR WINAPI AnswerAtOnce(HINSTANCE module, LPCSTR name, HWND parent, DLGPROC procedure, LPARAM text) {
    if (IS_INTRESOURCE(name) || std::strcmp(name, "MessageBox") != 0)
        return openDialog(module, name, parent, procedure, text);
    const std::lock_guard<std::mutex> lock(noteMutex);
    notes.messages.push_back(reinterpret_cast<const char*>(text));
    return IDOK;
}

HCURSOR WINAPI NoteCursor(HCURSOR cursor) {
    const HCURSOR before = SetCursor(cursor);
    const std::lock_guard<std::mutex> lock(noteMutex);
    if (notes.cursorsSet++ == 0) notes.before = before;
    notes.last = cursor;
    return before;
}

// They stay as long as the library.
void TakeBoxesAndCursors(HMODULE library) {
    for (const ImportSlot& import : ImportSlots(library)) {
        if (std::strcmp(import.function, "DialogBoxParamA") == 0) {
            openDialog =
                reinterpret_cast<decltype(&DialogBoxParamA)>(reinterpret_cast<uintptr_t>(*import.slot));
            WriteSlot(import.slot, AddressOfFunction(AnswerAtOnce));
        }
        if (std::strcmp(import.function, "SetCursor") == 0)
            WriteSlot(import.slot, AddressOfFunction(NoteCursor));
    }
}

Notes TakeNotes() {
    const std::lock_guard<std::mutex> lock(noteMutex);
    return std::exchange(notes, {});
}

// A way to refuse.
struct Kind {
    const char* name;
    void (*refuse)(size_t first, size_t last);
    size_t LedgerCounts::*attempts;
    bool andAllAfter;
};
constexpr Kind kKinds[] = {
    {"allocation", RefuseGlobalAllocations, &LedgerCounts::allocations, false},
    {"allocations from", RefuseGlobalAllocations, &LedgerCounts::allocations, true},
    {"lock", RefuseGlobalLocks, &LedgerCounts::locks, false},
    {"locks from", RefuseGlobalLocks, &LedgerCounts::locks, true},
};

// How far it is from one refused attempt to the next: every one with KFX_REFUSALS=all. The native sweep,
// which is quicker, always takes every one.
size_t StepOf(const Kind& kind) {
    const char* const wish = std::getenv("KFX_REFUSALS");
    if (wish && std::strcmp(wish, "all") == 0) return 1;
    return kind.refuse == RefuseGlobalLocks ? 23 : 5;
}

void CountRun(const Kind& kind) {
    AddTried(kind.refuse == RefuseGlobalLocks ? "refused locks" : "refused allocations");
}

// A kind of output, by the controls.
struct Output {
    const char* name;
    std::vector<int> checked;  // of the check boxes below
    int palette;
    bool fast = false;
};
constexpr int kOptions[] = {IDC_TRUE_COLOR, IDC_CUSTOM_PALETTE, IDC_DITHER, IDC_SUPERCOMPRESS};
const Output kOutputs[] = {
    {"TrueColour", {IDC_TRUE_COLOR}, 6},
    {"Fixed", {}, 6},
    {"FixedFast", {}, 6, true},
    {"FixedDither", {IDC_DITHER}, 6},
    {"FixedSupercompress", {IDC_SUPERCOMPRESS}, 6},
    {"Custom", {IDC_CUSTOM_PALETTE}, 6},
    {"CustomDither", {IDC_CUSTOM_PALETTE, IDC_DITHER}, 6},
    {"CustomSupercompress", {IDC_CUSTOM_PALETTE, IDC_SUPERCOMPRESS}, 6},
    {"Source", {}, 9},
    {"TwoColours", {}, 0},
    {"TwoColoursDither", {IDC_DITHER}, 0},
    {"SixteenColours", {}, 1},
    {"SixteenColoursDither", {IDC_DITHER}, 1},
};

std::vector<std::vector<uint8_t>> SourceFrames() {
    std::vector<std::vector<uint8_t>> frames;
    for (uint32_t i = 0; i < kFrames; ++i) frames.push_back(BytesOf(ShadedPicture(17, 15, i).handle));
    return frames;
}

std::vector<uint8_t> Source() {
    BlockOptions options;
    options.globalPalette = {0, 0, 0, 250, 250, 250, 200, 30, 30, 30, 200, 30};
    const std::vector<std::vector<uint8_t>> frames = SourceFrames();
    return MakeAnimationBlock({{frames[0]}, {frames[1]}}, options);
}

class FailingBuilds : public testing::TestWithParam<Output> {
protected:
    // A test build, at once.
    void Run(PluginSession& session, FakeHost& host) {
        host.ClearTranscript();
        TakeNotes();
        SendMessageA(session.Window(), WM_COMMAND, IDC_TEST, 0);
    }

    // A build that reports success has handed over every frame, each transformed or, in full colour, as it
    // came or, of an effect that may do so, all background; any other has said why, and has discarded the
    // task that it opened.
    void ExpectSound(FakeHost& host, const std::vector<std::vector<uint8_t>>& whole,
                     const std::string& effect, const std::string& name) {
        const Notes seen = TakeNotes();
        EXPECT_GT(seen.cursorsSet, 0u) << name;
        EXPECT_EQ(seen.last, seen.before) << name << ": the cursor is what it was";
        const std::vector<std::string> closes = host.Requests(HostRequest::CloseTask);
        if (closes.empty() || closes[0].find("value=1") == std::string::npos) {
            ASSERT_THAT(seen.messages, ElementsAre(kMemoryError)) << name;
            EXPECT_EQ(closes.empty(), host.Requests(HostRequest::NewTestTask).empty()) << name;
            EXPECT_LT(host.Frames().size(), kFrames) << name;
            return;
        }
        ASSERT_THAT(seen.messages, IsEmpty()) << name;
        const std::vector<std::vector<uint8_t>> frames = host.Frames();
        ASSERT_EQ(frames.size(), kFrames) << name;
        if (GetParam().checked != std::vector<int>{IDC_TRUE_COLOR}) return;
        const std::vector<std::vector<uint8_t>> source = SourceFrames();
        const std::vector<uint8_t> background = BytesOf(FlatPicture(17, 15, 0x7F7F7F).handle);
        for (size_t i = 0; i < kFrames; ++i)
            EXPECT_TRUE(frames[i] == whole[i] || frames[i] == source[i] ||
                        (MayBeAllBackground(effect) && frames[i] == background))
                << name << ", frame " << i;
    }

    // Refuses in that way; other attempts with the next effect.
    void Sweep(PluginSession& session, FakeHost& host, const Kind& kind,
               const std::vector<std::vector<uint8_t>>& whole, int effect) {
        const size_t step = StepOf(kind);
        const std::string effectName = session.ItemsOf(IDC_EFFECT).at(static_cast<size_t>(effect));
        for (size_t number = 1 + static_cast<size_t>(effect) % step;; number += step) {
            const std::string name = effectName + ", " + kind.name + " " + std::to_string(number);
            kind.refuse(number, kind.andAllAfter ? kAllAfter : number);
            Run(session, host);
            const LedgerCounts counts = CountLedger();
            kind.refuse(0, 0);
            ASSERT_NO_FATAL_FAILURE(ExpectSound(host, whole, effectName, name));
            ASSERT_EQ(counts.liveBlocks, 1u) << name << ": the source";
            ASSERT_EQ(counts.lockedBlocks, 0u) << name;
            ASSERT_EQ(counts.strangeFrees, 0u) << name;
            if (counts.*kind.attempts < number) return;
            CountRun(kind);
        }
    }
};

TEST_P(FailingBuilds, Fail_with_a_message_or_give_whole_frames_and_leave_the_window_usable) {
    const Output& output = GetParam();
    FakeHost host;
    host.Serve(Source());
    SessionOptions options;
    options.configuration = std::string("MainEffect = 0\nTruecolour = 0\n") +
                            (output.fast ? "FastRemap = 1\n" : "") +
                            "MainPalette = " + std::to_string(output.palette) + "\n";
    options.prepareLibrary = TakeBoxesAndCursors;
    options.clock = 12345;  // Water Drops takes its seed from it
    PluginSession session(host, options);
    session.Click(IDC_SELECT);
    for (const int option : kOptions) {
        const bool wanted = std::count(output.checked.begin(), output.checked.end(), option) > 0;
        if (session.IsChecked(option) != wanted) session.Click(option);
    }
    for (int effect = 0; effect < kEffects; ++effect) {
        session.Choose(IDC_EFFECT, effect);
        Run(session, host);
        const std::vector<std::vector<uint8_t>> whole = host.Frames();
        ASSERT_EQ(whole.size(), kFrames) << effect;
        for (const Kind& kind : kKinds) {
            Sweep(session, host, kind, whole, effect);
            if (HasFailure()) return;  // one is enough to look at
        }
        Run(session, host);
        EXPECT_EQ(host.Frames(), whole) << "afterwards all is as before";
    }
    EXPECT_EQ(session.TextOf(IDC_SOURCE_SIZE), "17 x 15");
    EXPECT_EQ(session.Close(), 1u);
    EXPECT_EQ(CountLedger().liveBlocks, 0u);
}

INSTANTIATE_TEST_SUITE_P(Outputs, FailingBuilds, testing::ValuesIn(kOutputs),
                         [](const auto& output) { return output.param.name; });

TEST(FailingMemory, A_preview_is_drawn_with_what_there_is_and_the_next_one_whole) {
    FakeHost host;
    host.Serve(MakeAnimationBlock({{BytesOf(ShadedPicture(90, 70, 1).handle)}}));
    SessionOptions options;
    options.prepareLibrary = TakeBoxesAndCursors;
    options.clock = 12345;
    PluginSession session(host, options);
    session.Click(IDC_SELECT);
    for (int effect = 0; effect < kEffects; ++effect) {
        session.Choose(IDC_EFFECT, effect);
        const std::vector<COLORREF> whole = session.DrawPreview(60, 50);
        for (const Kind& kind : kKinds)
            for (size_t number = 1;; ++number) {
                session.DrawPreview(50, 40);  // the kept picture is another one now
                const std::string name =
                    "effect " + std::to_string(effect) + ", " + kind.name + " " + std::to_string(number);
                TakeNotes();
                kind.refuse(number, kind.andAllAfter ? kAllAfter : number);
                const std::vector<COLORREF> drawn = session.DrawPreview(60, 50);
                const LedgerCounts counts = CountLedger();
                kind.refuse(0, 0);
                const Notes seen = TakeNotes();
                EXPECT_THAT(seen.messages, IsEmpty()) << name;
                EXPECT_GT(seen.cursorsSet, 0u) << name;
                EXPECT_EQ(seen.last, seen.before) << name << ": the cursor is what it was";
                ASSERT_EQ(counts.liveBlocks, 1u) << name;
                ASSERT_EQ(counts.lockedBlocks, 0u) << name;
                if (counts.*kind.attempts < number) {
                    EXPECT_EQ(drawn, whole) << name;
                    break;
                }
                CountRun(kind);
            }
        session.DrawPreview(50, 40);
        EXPECT_EQ(session.DrawPreview(60, 50), whole) << effect;
    }
}

TEST(FailingMemory, A_source_that_cannot_be_read_is_refused_and_the_earlier_one_stays) {
    FakeHost host;
    host.Serve(Source());
    SessionOptions options;
    options.prepareLibrary = TakeBoxesAndCursors;
    PluginSession session(host, options);
    session.Click(IDC_SELECT);
    host.Serve(MakeAnimationBlock({{BytesOf(ShadedPicture(30, 20, 1).handle)}}));
    size_t refused = 0;
    for (const Kind& kind : kKinds)
        for (size_t number = 1;; ++number) {
            const std::string before = session.TextOf(IDC_SOURCE_SIZE);
            TakeNotes();
            kind.refuse(number, kind.andAllAfter ? kAllAfter : number);
            SendMessageA(session.Window(), WM_COMMAND, IDC_SELECT, 0);
            const LedgerCounts counts = CountLedger();
            kind.refuse(0, 0);
            const Notes seen = TakeNotes();
            ASSERT_THAT(seen.messages, AnyOf(IsEmpty(), ElementsAre(kNotOpened)));
            if (!seen.messages.empty()) {
                EXPECT_EQ(session.TextOf(IDC_SOURCE_SIZE), before);
                ++refused;
            }
            ASSERT_EQ(counts.liveBlocks, 1u) << kind.name << number;
            ASSERT_EQ(counts.lockedBlocks, 0u) << kind.name << number;
            ASSERT_TRUE(session.IsEnabled(IDC_TEST));
            if (counts.*kind.attempts < number) break;
            CountRun(kind);
        }
    EXPECT_GE(refused, 2u) << "the lock under which a block is checked";
    host.ClearTranscript();
    session.Click(IDC_TEST);
    EXPECT_EQ(host.Frames().size(), 1u);
}

// Opening the window with its source, drawing it and closing it, with memory refused in between. Answers
// whether there was such an attempt.
bool OpenRefusing(const Kind& kind, size_t number) {
    const std::string name = std::string(kind.name) + " " + std::to_string(number);
    FakeHost host;
    host.Serve(Source(), PluginPath());
    SessionOptions options;
    options.configuration = "MainEffect = 1\nFileNamePath = " + PluginPath() + "\n";
    options.prepareLibrary = [&](HMODULE library) {
        TakeBoxesAndCursors(library);
        TakeNotes();
        kind.refuse(number, kind.andAllAfter ? kAllAfter : number);
    };
    PluginSession session(host, options);
    const LedgerCounts counts = CountLedger();
    kind.refuse(0, 0);
    EXPECT_THAT(TakeNotes().messages, AnyOf(IsEmpty(), ElementsAre(kNotOpened))) << name;
    EXPECT_TRUE(session.IsOpen()) << name;
    EXPECT_EQ(counts.lockedBlocks, 0u) << name;
    // Whatever was refused, the window can be used.
    session.Click(IDC_SELECT);
    session.Click(IDC_TEST);
    EXPECT_EQ(host.Frames().size(), kFrames) << name;
    EXPECT_EQ(session.Close(), 1u) << name;
    EXPECT_EQ(CountLedger().liveBlocks, 0u) << name;
    EXPECT_EQ(CountLedger().strangeFrees, 0u) << name;
    const bool reached = counts.*kind.attempts >= number;
    if (reached) CountRun(kind);
    return reached;
}

TEST(FailingMemory, A_window_opens_without_memory_for_its_source_and_can_be_used) {
    for (const Kind& kind : kKinds) {
        const size_t step = kind.refuse == RefuseGlobalLocks ? StepOf(kind) / 4 + 1 : 1;
        for (size_t number = 1; OpenRefusing(kind, number) && !HasFailure();) number += step;
    }
}

}  // namespace
}  // namespace kfx::test
