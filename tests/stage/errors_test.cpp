// SPDX-License-Identifier: MIT
// What goes wrong is said in one sentence, answered with its exit code, and leaves nothing behind.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <windows.h>

#include "tests/stage/stage_process.h"
#include "tests/stage/test_animations.h"

namespace kfx::test {
namespace {

using ::testing::HasSubstr;

struct Errors : ::testing::Test {
    TemporaryFolder folder;
    std::string input = folder.path + "in.gif";

    void SetUp() override { WriteTestGif(input, 2); }

    std::string Failing(int exitCode, const std::vector<std::string>& arguments) const {
        const auto before = FilesIn(folder.path);
        const StageResult result = RunStage(arguments);
        EXPECT_EQ(result.exitCode, exitCode) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_EQ(FilesIn(folder.path), before) << "nothing is left behind";
        return result.err;
    }

    std::vector<std::string> Apply(const std::vector<std::string>& more) const {
        std::vector<std::string> arguments = {"apply", input, "-o", folder.path + "out.gif"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
};

TEST_F(Errors, AMissingInputIsNamed) {
    EXPECT_THAT(
        Failing(3, {"apply", folder.path + "no.gif", "-o", folder.path + "out.gif", "--effect", "Bump"}),
        HasSubstr("no.gif"));
}

TEST_F(Errors, AFileThatIsNoAnimationIsRefused) {
    WriteText(folder.path + "text.gif", "GIF is what this is not");
    EXPECT_THAT(
        Failing(3, {"apply", folder.path + "text.gif", "-o", folder.path + "out.gif", "--effect", "Bump"}),
        HasSubstr("text.gif"));
}

TEST_F(Errors, ACutFileIsBuiltFromItsCompleteFramesWithANote) {
    const std::string whole = ReadText(input);
    WriteText(folder.path + "cut.gif", whole.substr(0, whole.size() - 40));
    const auto report = RunStageForJson(
        {"apply", folder.path + "cut.gif", "-o", folder.path + "out.gif", "--effect", "Bump"});
    EXPECT_EQ(report["frames"], 1);
    EXPECT_EQ(report["notes"].size(), 1u);
}

TEST_F(Errors, AnUnknownEffectIsAnsweredWithTheNearest) {
    EXPECT_THAT(Failing(2, Apply({"--effect", "Embosss"})), HasSubstr("did you mean Emboss?"));
}

TEST_F(Errors, AnUnknownParameterIsAnsweredWithTheNearestOrAll) {
    EXPECT_THAT(Failing(2, Apply({"--effect", "Emboss", "--set", "Dept=20", "--set", "Radios=9"})),
                HasSubstr("\"Radios\"; did you mean Radius?"));
    EXPECT_THAT(Failing(2, Apply({"--effect", "Emboss", "--set", "Wavelength=9"})),
                HasSubstr("Radius and Depth"));
    EXPECT_THAT(Failing(2, Apply({"--effect", "Neon", "--set", "Radius=9"})),
                HasSubstr("there is none here"));
}

TEST_F(Errors, AValueOutOfRangeIsAnsweredWithTheRange) {
    EXPECT_THAT(Failing(2, Apply({"--effect", "Emboss", "--set", "Radius=46"})), HasSubstr("4 to 45"));
    EXPECT_THAT(Failing(2, Apply({"--effect", "Emboss", "--set", "Radius=3"})), HasSubstr("4 to 45"));
    EXPECT_THAT(Failing(2, Apply({"--effect", "Emboss", "--set", "Radius=9x"})), HasSubstr("4 to 45"));
    EXPECT_THAT(Failing(2, Apply({"--effect", "Swirl", "--set", "Angle=1441"})), HasSubstr("-1440 to 1440"));
    EXPECT_THAT(Failing(2, Apply({"--effect", "Normalize", "--set", "Distributed=maybe"})),
                HasSubstr("on or off"));
    EXPECT_THAT(Failing(2, Apply({"--effect", "HSB and Channels", "--set", "Channels=Up"})),
                HasSubstr("Left 1"));
}

TEST_F(Errors, AnUnknownPaletteIsAnsweredWithTheNearest) {
    EXPECT_THAT(Failing(2, Apply({"--effect", "Bump", "--palette", "215-color safe"})),
                HasSubstr("216-color safe"));
}

TEST_F(Errors, TheOriginalPaletteNeedsASourceWithOne) {
    ASSERT_EQ(RunStage({"sample", folder.path + "sample.gif"}).exitCode, 0);
    EXPECT_THAT(Failing(2, {"apply", folder.path + "sample.gif", "-o", folder.path + "out.gif", "--effect",
                            "Bump", "--palette", "original"}),
                HasSubstr("no palette of its own"));
}

TEST_F(Errors, AnOutputThatCannotBeWrittenIsFoundBeforeTheWork) {
    EXPECT_THAT(Failing(4, {"apply", input, "-o", folder.path + "none\\out.gif", "--effect", "Bump"}),
                HasSubstr("cannot be written"));
    EXPECT_THAT(Failing(4, {"gallery", input, "-o", folder.path + "none\\out.png"}),
                HasSubstr("cannot be written"));
    EXPECT_THAT(Failing(4, {"sheet", input, input, "-o", folder.path + "none\\out.png"}),
                HasSubstr("out.png"));
}

TEST_F(Errors, AMissingPluginIsNamed) {
    EXPECT_THAT(Failing(5, Apply({"--effect", "Bump", "--plugin", folder.path + "no.dll"})),
                HasSubstr("no.dll"));
}

TEST_F(Errors, ADllThatIsNoPluginIsRefused) {
    EXPECT_THAT(Failing(5, Apply({"--effect", "Bump", "--plugin", "C:\\windows\\system32\\kernel32.dll"})),
                HasSubstr("not a plug-in"));
    EXPECT_THAT(Failing(5, Apply({"--effect", "Bump", "--plugin", input})), HasSubstr("cannot be loaded"));
}

TEST_F(Errors, AnErrorIsAJsonObjectForScripts) {
    const auto report = RunStageForJson(Apply({"--effect", "Embosss"}));
    EXPECT_EQ(report["exitCode"], 2);
    EXPECT_THAT(report["error"].get<std::string>(), HasSubstr("Emboss"));
    EXPECT_EQ(RunStageForJson({"apply"})["exitCode"], 2);
}

TEST_F(Errors, APluginsMessageIsReported) {
    _putenv("KFX_MISBEHAVIOUR=message");
    EXPECT_THAT(Failing(5, Apply({"--effect", "Bump", "--plugin", FileBesideTest("misbehaving_plugin.dll")})),
                HasSubstr("the plug-in says: It is raining."));
}

TEST_F(Errors, APluginThatClosesItselfIsReported) {
    _putenv("KFX_MISBEHAVIOUR=return");
    EXPECT_THAT(Failing(5, Apply({"--effect", "Bump", "--plugin", FileBesideTest("misbehaving_plugin.dll")})),
                HasSubstr("closed itself"));
}

TEST_F(Errors, APluginThatEndsTheProcessIsReported) {
    for (const std::string way : {"exit", "ExitProcess", "TerminateProcess"}) {
        _putenv(("KFX_MISBEHAVIOUR=" + way).c_str());
        EXPECT_THAT(
            Failing(5, Apply({"--effect", "Bump", "--plugin", FileBesideTest("misbehaving_plugin.dll")})),
            HasSubstr("has ended the command before it was done (exit code 0)"))
            << way;
        const auto report = RunStageForJson(
            Apply({"--effect", "Bump", "--plugin", FileBesideTest("misbehaving_plugin.dll")}));
        EXPECT_EQ(report["exitCode"], 5) << way;
    }
}

TEST_F(Errors, WhatAPluginWritesToThePipeIsNoReport) {
    _putenv("KFX_MISBEHAVIOUR=report");
    EXPECT_THAT(Failing(5, Apply({"--effect", "Bump", "--plugin", FileBesideTest("misbehaving_plugin.dll")})),
                HasSubstr("the plug-in has ended the command before it was done (exit code 0)"));
}

TEST_F(Errors, APluginThatCrashesIsReported) {
    _putenv("KFX_MISBEHAVIOUR=crash");
    EXPECT_THAT(Failing(5, Apply({"--effect", "Bump", "--plugin", FileBesideTest("misbehaving_plugin.dll")})),
                HasSubstr("(exit code 0xC0000005)"));
    // The C library says something itself here.
    _putenv("KFX_MISBEHAVIOUR=abort");
    const StageResult aborted =
        RunStage(Apply({"--effect", "Bump", "--plugin", FileBesideTest("misbehaving_plugin.dll")}));
    EXPECT_EQ(aborted.exitCode, 5);
    EXPECT_THAT(aborted.err, HasSubstr("(exit code 3)"));
}

TEST_F(Errors, APluginThatHangsInAMessageIsGivenUp) {
    _putenv("KFX_MISBEHAVIOUR=window");
    const HANDLE chosen = CreateEventA(nullptr, TRUE, FALSE, "KfxMisbehavingChosen");
    ResetEvent(chosen);
    EXPECT_THAT(Failing(6, Apply({"--effect", "Bump", "--timeout", "1", "--plugin",
                                  FileBesideTest("misbehaving_plugin.dll")})),
                HasSubstr("stopped answering (1 s"));
    EXPECT_EQ(WaitForSingleObject(chosen, 0), WAIT_OBJECT_0) << "the plug-in was not sent the message";
    CloseHandle(chosen);
}

TEST_F(Errors, APluginThatHangsIsGivenUp) {
    _putenv("KFX_MISBEHAVIOUR=hang");
    EXPECT_THAT(Failing(6, Apply({"--effect", "Bump", "--timeout", "1", "--plugin",
                                  FileBesideTest("misbehaving_plugin.dll")})),
                HasSubstr("stopped answering"));
}

}  // namespace
}  // namespace kfx::test
