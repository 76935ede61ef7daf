// SPDX-License-Identifier: MIT
// Whatever the system or the C runtime refuses the plug-in, the host lives on: its call returns, nothing
// hangs, and every movable block is freed.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "resources/resource_ids.h"
#include "tests/dll/import_refusals.h"
#include "tests/dll/support/memory_ledger.h"
#include "tests/dll/support/plugin_session.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/import_patch.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

std::vector<Refusal> AllRefusals() {
    std::vector<Refusal> all;
    for (const Section& section : RefusalSections())
        all.insert(all.end(), section.refusals.begin(), section.refusals.end());
    return all;
}

constexpr int kEmboss = 1;
constexpr int kHsbAndChannels = 5;
constexpr int kAboutClose = 1;
constexpr int kAboutHelp = 9;
constexpr int kAboutWebPage = 205;
constexpr char kHelpFailed[] = "There has been an error displaying the Help document.";

HostCallback answer = nullptr;  // the fake host's own service function
bool runAgain = false;          // inside the next request for progress

// A host that runs the plug-in once more inside a request, which is refused.
uint64_t RunAgainAndAnswer(uint64_t target, uint32_t request, uint64_t word, uint64_t pointer) {
    if (runAgain && static_cast<HostRequest>(request) == HostRequest::Progress) {
        runAgain = false;
        EXPECT_EQ(EntryOf(GetModuleHandleA("kfxplug1.dll"))(nullptr, nullptr), 0u);
    }
    return answer(target, request, word, pointer);
}

void Toggle(PluginSession& session, int checkBox) {
    if (const HWND control = session.Control(checkBox)) SendMessageA(control, BM_CLICK, 0, 0);
    session.Settle();
}

void UseAboutBox(PluginSession& session) {
    const HWND about = session.PressForBox(IDC_ABOUT, "About");
    if (!about) return;
    for (const int id : {kAboutHelp, kAboutWebPage, kAboutClose})
        SendMessageA(about, WM_COMMAND, static_cast<WPARAM>(id), 0);
    session.Settle();
}

// Everything that a window is used for, as far as it is there.
void UseWindow(PluginSession& session) {
    session.Command(IDC_SELECT);
    session.Choose(IDC_EFFECT, kHsbAndChannels);
    session.Choose(IDC_EFFECT, kEmboss);
    session.Scroll(IDC_EMBOSS_RADIUS, SB_LINERIGHT);
    SendMessageA(session.Window(), WM_MOUSEWHEEL, MAKEWPARAM(0, WHEEL_DELTA), 0);
    SendMessageA(session.Window(), WM_CONTEXTMENU,
                 reinterpret_cast<WPARAM>(session.Control(IDC_EMBOSS_RADIUS)), -1);
    SendMessageA(session.Control(IDC_CANCEL), WM_MOUSEMOVE, 0, 0);
    PostMessageA(session.Control(IDC_EMBOSS_RADIUS), WM_MOUSEMOVE, 0, 0);  // through the window's filter
    SendMessageA(session.Control(IDC_CANCEL), WM_MOUSELEAVE, 0, 0);
    session.Command(IDC_BACKGROUND_COLOR);
    session.DrawPreview(31, 23);
    Toggle(session, IDC_DITHER);
    Toggle(session, IDC_CUSTOM_PALETTE);
    runAgain = true;
    session.Command(IDC_TEST);
    runAgain = false;
    session.Command(IDC_HELP_BUTTON);
    UseAboutBox(session);
    session.AnswerFileDialog(session.DocumentsFolder() + "all.kx1");
    session.Command(IDC_OPEN_SAVE);
    session.Command(IDM_DOCUMENT_SAVE_AS);
    session.Command(IDM_DOCUMENT_OPEN);
}

std::vector<uint8_t> TwoFrames() {
    return MakeAnimationBlock(
        {{BytesOf(ShadedPicture(13, 13, 0).handle), {}}, {BytesOf(ShadedPicture(13, 13, 1).handle), {}}});
}

struct SessionRun {
    std::map<std::string, uint32_t> calls;
    std::vector<std::string> messages;
    size_t frames = 0;
    LedgerCounts memory = {};
};

// The number of the call that is refused, by function.
using RefusedCalls = std::map<std::string, uint32_t>;

// A whole session with these calls refused.
SessionRun RunWith(const RefusedCalls& refused) {
    static const std::vector<Refusal> refusals = AllRefusals();
    std::unique_ptr<RefusedImports> imports;
    SessionRun run;
    {
        FakeHost host;
        host.context.buttonStyle = 3;
        host.Serve(TwoFrames(), PluginPath());
        host.Refuse(HostRequest::ShowHelp, 1);
        answer = host.context.callback;
        host.context.callback = RunAgainAndAnswer;
        SessionOptions options;
        options.configuration =
            "MainEffect = 1\nTruecolour = 0\nSampleWindowKeyLine = 1\nFileNamePath = " + PluginPath() + "\n";
        options.prepareLibrary = [&](HMODULE library) {
            imports = std::make_unique<RefusedImports>(library, refusals);
            for (const auto& [function, call] : refused) imports->Refuse(function, call);
        };
        PluginSession session(host, options);
        UseWindow(session);
        run.frames = host.Frames().size();
        session.Close();
        run.messages = session.Messages();
        run.memory = CountLedger();
        for (const Refusal& refusal : refusals)
            run.calls[refusal.function] = imports->CallsTo(refusal.function);
    }
    return run;
}

const SessionRun& RunWithoutRefusal() {
    static const SessionRun run = RunWith({});
    return run;
}

// What one session refuses: the calls with this number to these functions.
struct Round {
    std::string name;
    uint32_t call;
    std::vector<std::string> functions;
};

std::ostream& operator<<(std::ostream& stream, const Round& round) { return stream << round.name; }

std::vector<Round> AllRounds() {
    std::vector<Round> rounds;
    for (const auto& [section, refusals] : RefusalSections()) {
        std::map<uint32_t, std::vector<std::string>> together;  // by the number of the call
        for (const Refusal& refusal : refusals)
            for (uint32_t call = 1; call <= refusal.firstCalls; ++call) {
                if (refusal.alone)
                    rounds.push_back(
                        {std::string(refusal.function) + std::to_string(call), call, {refusal.function}});
                else
                    together[call].push_back(refusal.function);
            }
        for (const auto& [call, functions] : together)
            rounds.push_back({std::string(section) + std::to_string(call), call, functions});
    }
    return rounds;
}

class RefusedImport : public testing::TestWithParam<Round> {};

TEST_P(RefusedImport, Refused_calls_end_no_host_and_lose_no_memory) {
    RefusedCalls refused;
    for (const std::string& function : GetParam().functions)
        if (RunWithoutRefusal().calls.at(function) >= GetParam().call) refused[function] = GetParam().call;
    const SessionRun run = RunWith(refused);
    EXPECT_EQ(run.memory.liveBlocks, 0u);
    EXPECT_EQ(run.memory.lockedBlocks, 0u);
    EXPECT_EQ(run.memory.strangeFrees, 0u);
    for (const auto& [function, call] : refused)
        EXPECT_GE(run.calls.at(function), call) << function << " was not called so often: refuse it alone";
}

INSTANTIATE_TEST_SUITE_P(All, RefusedImport, testing::ValuesIn(AllRounds()),
                         [](const auto& parameter) { return parameter.param.name; });

TEST(RefusedImports, A_session_calls_what_the_lists_say) {
    for (const auto& [function, calls] : RunWithoutRefusal().calls)
        EXPECT_EQ(calls == 0, kNotCalled.count(function) != 0) << function << ": " << calls << " calls";
}

// Every control of a panel counts: sliders, their labels and captions.
TEST(RefusedImports, A_panel_that_cannot_be_made_whole_is_reported_and_the_window_closes) {
    for (const char* function : {"CreateDialogParamA", "CreateWindowExA"}) {
        for (uint32_t call = 1; call <= 4; ++call) {
            SCOPED_TRACE(std::string(function) + ", call " + std::to_string(call));
            EXPECT_EQ(RunWith({{function, call}}).messages,
                      std::vector<std::string>{"This plugin could not be initialized"});
        }
    }
}

// The subclassed controls keep their own procedures in properties: without one they are not subclassed.
TEST(RefusedImports, A_control_that_cannot_be_dressed_or_bound_works_as_it_is) {
    const uint32_t calls = RunWithoutRefusal().calls.at("SetPropA");
    ASSERT_GT(calls, 8u);
    for (uint32_t call = 1; call <= 8; ++call) {
        SCOPED_TRACE(call);
        const SessionRun run = RunWith({{"SetPropA", call}});
        EXPECT_EQ(run.messages, RunWithoutRefusal().messages);
        EXPECT_EQ(run.frames, 2u);
    }
}

// The last window that is made is that of the tooltips.
TEST(RefusedImports, Without_tooltips_the_window_works_as_ever) {
    const uint32_t calls = RunWithoutRefusal().calls.at("CreateWindowExA");
    for (const auto& refused : {RefusedCalls{{"CreateWindowExA", calls}},
                                RefusedCalls{{"CreateWindowExA", calls}, {"InitCommonControlsEx", 1}},
                                RefusedCalls{{"SetWindowsHookExA", 1}}}) {
        const SessionRun run = RunWith(refused);
        EXPECT_EQ(run.messages, RunWithoutRefusal().messages);
        EXPECT_EQ(run.frames, 2u);
        EXPECT_EQ(run.calls.at("CreateWindowExA"), calls);
    }
}

TEST(RefusedImports, Cover_everything_that_the_library_imports_and_that_can_fail) {
    const HMODULE library = LoadLibraryA(PluginPath().c_str());
    ASSERT_TRUE(library);
    std::set<std::string> covered = kCannotFail;
    for (const Refusal& refusal : AllRefusals()) covered.insert(refusal.function);
    std::set<std::string> imported;
    for (const ImportSlot& import : ImportSlots(library)) imported.insert(import.function);
    FreeLibrary(library);
    EXPECT_EQ(covered, imported) << "each is in one of the lists, and nothing else";
}

TEST(RefusedImports, Nothing_refused_means_a_session_with_pictures_and_one_message) {
    const SessionRun& run = RunWithoutRefusal();
    EXPECT_EQ(run.frames, 2u);
    EXPECT_EQ(run.messages, std::vector<std::string>{kHelpFailed});
    EXPECT_GT(run.calls.at("CreateWindowExA"), 0u);
    EXPECT_GT(run.calls.at("SetDIBitsToDevice"), 0u);
    EXPECT_GT(run.calls.at("vfprintf") + run.calls.at("fwrite"), 0u);
}

}  // namespace
}  // namespace kfx::test
