// SPDX-License-Identifier: MIT
// What a plug-in does wrong is said in one sentence, answered with its exit code, and leaves nothing behind.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <windows.h>

#include "tests/cli/failing_commands.h"
#include "tests/cli/program.h"
#include "tests/cli/test_files.h"
#include "tests/cli/wrong_commands.h"
#include "tests/driven/user_settings.h"

namespace kfx::test {
namespace {

using ::testing::HasSubstr;

struct PluginErrors : FailingCommands {
    std::string Failing(int exitCode, std::vector<std::string> arguments) const {
        arguments.emplace_back("--through-plugin");
        return FailingCommands::Failing(exitCode, arguments);
    }
};

TEST_F(PluginErrors, Options_of_the_plugin_need_its_engine) {
    for (const std::vector<std::string>& option :
         {std::vector<std::string>{"--plugin", "other.dll"}, {"--show-window"}, {"--timeout", "9"}}) {
        std::vector<std::string> arguments = Apply({"--effect", "Bump"});
        arguments.insert(arguments.end(), option.begin(), option.end());
        const ProgramResult result = RunKestrel(arguments);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.err, "kestrel: " + option[0] + " needs --through-plugin as well.\n");
    }
    EXPECT_THAT(Failing(2, Apply({"--effect", "Bump", "--timeout", "soon"})), HasSubstr("--timeout"));
}

TEST_F(PluginErrors, The_driven_engine_says_the_same_as_the_direct_one) {
    ExpectSentences(WrongCommands(folder.path), folder.path, {"--through-plugin"});
}

TEST_F(PluginErrors, What_only_the_direct_engine_can_do_is_refused) {
    for (const char* option : {"--colors=40", "--max-size=1M"}) {
        const std::string said = Failing(2, Apply({"--effect", "Bump", option}));
        EXPECT_THAT(said, HasSubstr(std::string(option).substr(0, std::string(option).find('='))));
        EXPECT_THAT(said, HasSubstr("leave out --through-plugin."));
    }
}

TEST_F(PluginErrors, A_missing_plugin_is_named) {
    EXPECT_THAT(Failing(5, Apply({"--effect", "Bump", "--plugin", folder.path + "no.dll"})),
                HasSubstr("no.dll"));
}

TEST_F(PluginErrors, A_dll_that_is_no_plugin_is_refused) {
    EXPECT_THAT(Failing(5, Apply({"--effect", "Bump", "--plugin", "C:\\windows\\system32\\kernel32.dll"})),
                HasSubstr("not a plug-in"));
    EXPECT_THAT(Failing(5, Apply({"--effect", "Bump", "--plugin", input})),
                HasSubstr("is not a 64-bit Windows plug-in"));
}

TEST_F(PluginErrors, A_plugins_message_is_reported) {
    _putenv("KFX_MISBEHAVIOUR=message");
    EXPECT_THAT(Failing(5, Apply({"--effect", "Bump", "--plugin", FileBesideTest("misbehaving_plugin.dll")})),
                HasSubstr("the plug-in says: It is raining."));
}

TEST_F(PluginErrors, A_plugin_that_closes_itself_is_reported) {
    _putenv("KFX_MISBEHAVIOUR=return");
    EXPECT_THAT(Failing(5, Apply({"--effect", "Bump", "--plugin", FileBesideTest("misbehaving_plugin.dll")})),
                HasSubstr("closed itself"));
}

TEST_F(PluginErrors, A_plugin_that_ends_the_process_is_reported) {
    for (const std::string way : {"exit", "ExitProcess", "TerminateProcess"}) {
        _putenv(("KFX_MISBEHAVIOUR=" + way).c_str());
        EXPECT_THAT(
            Failing(5, Apply({"--effect", "Bump", "--plugin", FileBesideTest("misbehaving_plugin.dll")})),
            HasSubstr("has ended the command before it was done (exit code 0)"))
            << way;
        const auto report = RunKestrelForJson(Apply(
            {"--through-plugin", "--effect", "Bump", "--plugin", FileBesideTest("misbehaving_plugin.dll")}));
        EXPECT_EQ(report["exitCode"], 5) << way;
    }
}

TEST_F(PluginErrors, What_a_plugin_writes_to_the_pipe_is_no_report) {
    _putenv("KFX_MISBEHAVIOUR=report");
    EXPECT_THAT(Failing(5, Apply({"--effect", "Bump", "--plugin", FileBesideTest("misbehaving_plugin.dll")})),
                HasSubstr("the plug-in has ended the command before it was done (exit code 0)"));
}

TEST_F(PluginErrors, A_plugin_that_crashes_is_reported) {
    _putenv("KFX_MISBEHAVIOUR=crash");
    EXPECT_THAT(Failing(5, Apply({"--effect", "Bump", "--plugin", FileBesideTest("misbehaving_plugin.dll")})),
                HasSubstr("(exit code 0xC0000005)"));
    // The C library says something itself here.
    _putenv("KFX_MISBEHAVIOUR=abort");
    const ProgramResult aborted =
        RunThroughPlugin(Apply({"--effect", "Bump", "--plugin", FileBesideTest("misbehaving_plugin.dll")}));
    EXPECT_EQ(aborted.exitCode, 5);
    EXPECT_THAT(aborted.err, HasSubstr("(exit code 3)"));
}

TEST_F(PluginErrors, A_plugin_that_hangs_in_a_message_is_given_up) {
    _putenv("KFX_MISBEHAVIOUR=window");
    const HANDLE chosen = CreateEventA(nullptr, TRUE, FALSE, "KfxMisbehavingChosen");
    ResetEvent(chosen);
    EXPECT_THAT(Failing(6, Apply({"--effect", "Bump", "--timeout", "1", "--plugin",
                                  FileBesideTest("misbehaving_plugin.dll")})),
                HasSubstr("stopped answering (1 s"));
    EXPECT_EQ(WaitForSingleObject(chosen, 0), WAIT_OBJECT_0) << "the plug-in was not sent the message";
    CloseHandle(chosen);
}

TEST_F(PluginErrors, A_plugin_that_hangs_is_given_up) {
    _putenv("KFX_MISBEHAVIOUR=hang");
    EXPECT_THAT(Failing(6, Apply({"--effect", "Bump", "--timeout", "1", "--plugin",
                                  FileBesideTest("misbehaving_plugin.dll")})),
                HasSubstr("stopped answering"));
}

}  // namespace
}  // namespace kfx::test
