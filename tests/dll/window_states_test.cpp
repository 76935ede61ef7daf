// SPDX-License-Identifier: MIT
// The window is closed in four ways in each of thirteen states: everything is given back, once. A build is
// not ended by Cancel or the close box; the window then stays until it is closed again.
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "resources/resource_ids.h"
#include "tests/dll/support/own_dialog.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/tried.h"

namespace kfx::test {
namespace {

// On the window's thread.
void CancelIt() { SendMessageA(OwnDialog(), WM_COMMAND, IDCANCEL, 0); }
void CloseIt() { SendMessageA(OwnDialog(), WM_CLOSE, 0, 0); }
void DestroyItsOwner() { DestroyWindow(GetWindow(OwnDialog(), GW_OWNER)); }

struct Way {
    const char* name;
    void (*close)();
};
const Way kWays[] = {{"Cancel", CancelIt},
                     {"CloseBox", CloseIt},
                     {"Destroy", DestroyOwnDialog},
                     {"OwnerDestroyed", DestroyItsOwner}};

// What the user does until the host is asked this, inside which the window is closed.
struct State {
    const char* name;
    int press;  // 0: nothing
    HostRequest request;
    int occurrence = 1;
    bool hasSource = true;
};
const State kStates[] = {
    {"Opening", 0, HostRequest::GetWindowSize, 1, false},
    {"ReopeningTheSource", 0, HostRequest::OpenAnimation},
    {"WithoutSource", IDC_HELP_BUTTON, HostRequest::ShowHelp, 1, false},
    {"WithSource", IDC_HELP_BUTTON, HostRequest::ShowHelp},
    {"Selecting", IDC_SELECT, HostRequest::OpenAnimation, 2},
    {"ChoosingAColour", IDC_BACKGROUND_COLOR, HostRequest::ChooseColor},
    {"StartOfABuild", IDC_BUILD, HostRequest::Progress},
    {"Effect", IDC_BUILD, HostRequest::Progress, 3},
    {"Quantizing", IDC_BUILD, HostRequest::SetStatusText, 3},
    {"Remapping", IDC_BUILD, HostRequest::Progress, 9},
    {"Task", IDC_BUILD, HostRequest::NewTask},
    {"Frame", IDC_BUILD, HostRequest::AddImage, 2},
    {"EndOfABuild", IDC_BUILD, HostRequest::CloseTask},
};

class ClosedInAState : public testing::TestWithParam<std::tuple<State, Way>> {};

TEST_P(ClosedInAState, Everything_is_given_back_once) {
    const auto& [state, way] = GetParam();
    FakeHost host;
    host.Serve(ShadedFrames(3), PluginPath());
    bool reached = false;
    const auto close = [&, closeIt = way.close] {
        reached = true;
        closeIt();
    };
    const auto act = [&] { host.Act(state.request, close, state.occurrence); };
    SessionOptions options;
    options.configuration = "MainEffect = 1\nTruecolour = 0\nMainSupercompress = 1\n";
    if (state.hasSource) options.configuration += "FileNamePath = " + PluginPath() + "\n";
    if (!state.press || state.request == HostRequest::OpenAnimation) act();
    PluginSession session(host, options);
    if (state.press && session.IsOpen()) {
        if (state.request != HostRequest::OpenAnimation) act();
        session.Press(state.press);
        session.Settle();
    }
    session.Close();
    EXPECT_EQ(session.WaitUntilClosed(), 1u);
    EXPECT_TRUE(reached);
    EXPECT_TRUE(session.Messages().empty());
    EXPECT_TRUE(session.RunningTimers().empty());
    EXPECT_NE(session.ConfigurationText(), "");
    ExpectNothingLeft();
    AddTried("closed windows");
}

INSTANTIATE_TEST_SUITE_P(All, ClosedInAState,
                         testing::Combine(testing::ValuesIn(kStates), testing::ValuesIn(kWays)),
                         [](const auto& test) {
                             return std::string(std::get<0>(test.param).name) + "By" +
                                    std::get<1>(test.param).name;
                         });

}  // namespace
}  // namespace kfx::test
