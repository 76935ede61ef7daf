// SPDX-License-Identifier: MIT
// Surveys, parts and joins that are refused: one sentence, an exit code, and no file changed.
#include <gmock/gmock.h>

#include <algorithm>

#include "commands/fingerprint.h"
#include "commands/part_file.h"
#include "commands/report.h"
#include "commands/survey_text.h"
#include "media/recipe_note.h"
#include "tests/commands/split_runs.h"

namespace kfx::commands {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

// What `arguments` answer, which fail with this exit code and change no file.
struct SplitRefusals : Split {
    void SetUp() override {
        Split::SetUp();
        Survey("plain.gif", "gif", {"--effect=Emboss", "--dither"});
        Succeed(Part("plain.gif", "a", "0-4"));
        Succeed(Part("plain.gif", "b", "5-8"));
    }

    std::string Failing(int exitCode, const Arguments& arguments) const {
        const std::vector<std::string> before = test::FilesIn(folder.path);
        const Report report = Run(arguments);
        EXPECT_EQ(report.exitCode, exitCode) << report.error;
        EXPECT_EQ(test::FilesIn(folder.path), before);
        std::string said = report.error;
        for (size_t at = 0; (at = said.find(folder.path)) != std::string::npos;)
            said.erase(at, folder.path.size());
        return said;
    }

    Arguments Join(const Arguments& parts) const {
        Arguments arguments = {"join", "-o", Path("out.gif")};
        for (const std::string& part : parts) arguments.push_back(Path(part));
        return arguments;
    }
};

TEST_F(SplitRefusals, Parts_that_are_missing_or_double_are_named) {
    Succeed(Part("plain.gif", "c", "4-6"));
    Succeed(Part("plain.gif", "d", "8"));
    EXPECT_EQ(Failing(3, Join({"a.kpart"})),
              "frames 5 to 8 are missing; make the parts that have them, and join all parts.");
    EXPECT_EQ(Failing(3, Join({"d.kpart"})),
              "frames 0 to 7 are missing; make the parts that have them, and join all parts.");
    EXPECT_EQ(Failing(3, Join({"c.kpart", "d.kpart"})),
              "frames 0 to 3 and frame 7 are missing; make the parts that have them, and join all parts.");
    EXPECT_EQ(Failing(3, Join({"b.kpart", "c.kpart", "a.kpart"})),
              "frame 4 is both in a.kpart and in c.kpart; leave one of them out.");
    EXPECT_EQ(Failing(3, Join({"a.kpart", "b.kpart", "a.kpart"})),
              "frames 0 to 4 are both in a.kpart and in a.kpart; leave one of them out.");
}

TEST_F(SplitRefusals, Parts_of_other_surveys_and_other_files_are_told_apart) {
    Survey("plain.gif", "gif", {"--effect=Emboss"});
    Succeed(Part("plain.gif", "other", "5-8"));
    EXPECT_EQ(Failing(3, Join({"a.kpart", "other.kpart"})),
              "other.kpart: is of another survey than a.kpart; make all parts with one survey.");
    EXPECT_EQ(Failing(3, Join({"a.kpart", "plain.gif"})),
              "plain.gif: this is no part of an animation; kestrel apply makes one with --survey.");
    EXPECT_THAT(Failing(3, Join({"a.kpart", "none.kpart"})),
                StartsWith("none.kpart: the file cannot be opened"));
    EXPECT_EQ(Failing(2, {"join", Path("a.kpart"), Path("b.kpart"), "-o", Path("out.webp")}),
              "these parts are for --format gif: --format gif and the ending of \"out.webp\" contradict each "
              "other.");
    test::WriteText(Path("out.gif"), "there");
    EXPECT_THAT(Failing(4, Join({"a.kpart", "b.kpart"})), HasSubstr("out.gif"));
    EXPECT_EQ(Failing(4, {"join", Path("a.kpart"), Path("b.kpart"), "-o", Path("a.kpart"), "--force"}),
              "a.kpart: the result cannot replace its own source; choose another name.");
}

TEST_F(SplitRefusals, A_cut_or_changed_part_is_damaged) {
    const std::string whole = test::ReadText(Path("a.kpart"));
    for (const size_t size : {size_t{8}, size_t{20}, whole.size() / 2, whole.size() - 1}) {
        test::WriteText(Path("cut.kpart"), whole.substr(0, size));
        EXPECT_EQ(Failing(3, Join({"cut.kpart", "b.kpart"})),
                  "cut.kpart: this part is damaged; make it again.")
            << size;
    }
    for (size_t at = 8; at < whole.size(); at += 97) {
        std::string changed = whole;
        changed[at] = static_cast<char>(changed[at] ^ 1);
        test::WriteText(Path("cut.kpart"), changed);
        EXPECT_EQ(Failing(3, Join({"cut.kpart", "b.kpart"})),
                  "cut.kpart: this part is damaged; make it again.")
            << at;
    }
}

TEST_F(SplitRefusals, Damaged_parts_with_a_right_hash_lose_nothing) {
    const std::string text = test::ReadText(Path("a.kpart"));
    const std::vector<uint8_t> whole(text.begin(), text.end());
    PartFile part;
    BuiltAnimation built;
    SourceRecord record;
    std::string error;
    const auto put = [](const std::string& hash, std::vector<uint8_t>* file) {
        std::copy(hash.begin(), hash.end(), file->end() - 32);
    };
    for (size_t at = 8; at + 32 < whole.size(); at += 7) {
        for (const uint8_t value : {uint8_t{0}, uint8_t{1}, uint8_t{127}, uint8_t{255}}) {
            std::vector<uint8_t> changed = whole;
            changed[at] = value;
            put(HashOfBytes(changed.data(), changed.size() - 32), &changed);
            // Whatever it says: nothing is read behind the file, and no memory is taken that it cannot fill.
            if (DecodePart(changed, &part, &error)) DecodeFrames(changed, part, &built, &record, &error);
            built = {};
            record = {};
        }
    }
}

TEST_F(SplitRefusals, A_survey_that_is_damaged_changed_or_none_is_refused) {
    const std::string whole = test::ReadText(Path("whole.survey"));
    const Arguments part = Part("plain.gif", "new", "0-4");
    const auto say = [&](const std::string& text) {
        test::WriteText(Path("whole.survey"), text);
        return Failing(3, part);
    };
    EXPECT_EQ(say(""), "whole.survey: this is no survey; kestrel survey makes one.");
    EXPECT_EQ(say("GIF89a"), "whole.survey: this is no survey; kestrel survey makes one.");
    EXPECT_EQ(say(whole.substr(0, whole.size() - 5)), "whole.survey: this survey is damaged.");
    std::string newer = whole;
    newer.replace(newer.find(";kestrel 16.0a"), 14, ";kestrel 17.3c");
    EXPECT_EQ(say(newer),
              "whole.survey: kestrel 17.3c made this survey, and this is 16.0a; take one version "
              "for survey, parts and join.");
    for (size_t at = 0; at < whole.size(); at += 37) {
        std::string changed = whole;
        changed[at] = changed[at] == '7' ? '8' : '7';
        EXPECT_THAT(say(changed), HasSubstr("whole.survey: ")) << at;
    }
}

TEST_F(SplitRefusals, Hostile_lines_with_a_right_fingerprint_are_refused) {
    CommandLine line;
    std::string text, error;
    ASSERT_EQ(ParseCommandLine({"apply", "x.gif", "-o", "y.gif", "--effect=Emboss"}, {}, &line, &text),
              ParseOutcome::Run);
    commands::Survey survey;
    survey.frames = 3;
    survey.facts.stages.resize(1);
    survey.facts.palette.isKnown = true;
    survey.facts.palette.colorCount = survey.facts.palette.reservedIndex = 3;
    survey.source = "0123";
    const std::string whole = SurveyTextOf(line, survey);
    ASSERT_TRUE(ReadSurvey(whole, &survey, &error)) << error;
    const auto replaced = [&](const std::string& from, const std::string& to) {
        std::string changed = whole;
        changed.replace(changed.find(from), from.size(), to);
        const size_t at = changed.find("\n;fingerprint ");
        const size_t end = changed.find('\n', at + 1);
        const std::string bare = changed.substr(0, at) + changed.substr(end);
        return changed.replace(at + 14, 32, HashOfText(bare));
    };
    std::string stages;
    for (int i = 0; i < 1001; ++i) stages += ";stage opaque\n";
    const std::string colors = whole.substr(whole.find(";colors"), 120);
    const std::pair<std::string, std::string> kLines[] = {
        {";frames 3", ";frames 0"},
        {";frames 3", ";frames 1000001"},
        {";stage opaque\n", stages},
        {";palette 8 3 3", ";palette 8 3 3\n;palette 8 3 3"},
        {colors, colors + colors},
        {";frames 3", ";frames -3"},
        {";frames 3", ";frames 99999999999999999999"},
        {";frames 3", ";frames"},
        {";survey 1", ";survey 2"},
        {";stage opaque", ";stage glass"},
        {";stage opaque", ";stage opaque gathered -1"},
        {";palette 8 3 3", ";palette 9 3 3"},
        {";palette 8 3 3", ";palette 0 0 0"},
        {";palette 8 3 3", ";palette 8 0 0"},
        {";palette 8 3 3", ";palette 8 3 4"},
        {";palette 8 3 3", ";palette 8 3"},
        {";palette 8 3 3", ";palette 2 200 200"},
        {";hidden 000000", ";hidden 00000"},
        {";hidden 000000", ";hidden 00000G"},
        {";colors 000000", ";colors 000000 000000"},
        {";colors", ";colours"},
    };
    ASSERT_EQ(colors.back(), '\n');
    EXPECT_TRUE(ReadSurvey(replaced(";frames 3", ";frames 4"), &survey, &error)) << error;
    EXPECT_TRUE(ReadSurvey(replaced(";stage opaque\n", stages.substr(14)), &survey, &error)) << error;
    for (const auto& [from, to] : kLines) EXPECT_FALSE(ReadSurvey(replaced(from, to), &survey, &error)) << to;
}

TEST_F(SplitRefusals, A_survey_that_would_not_be_read_back_is_not_made) {
    CommandLine line;
    std::string text, error;
    ASSERT_EQ(ParseCommandLine({"apply", "x.gif", "-o", "y.gif", "--effect=Emboss"}, {}, &line, &text),
              ParseOutcome::Run);
    commands::Survey survey;
    survey.frames = 3;
    survey.source = "0123";
    EXPECT_NE(SurveyTextOf(line, survey), "");
    survey.facts.stages.resize(6000);
    EXPECT_EQ(SurveyTextOf(line, survey), "");
    survey.facts.stages.clear();
    line.format.clear();
    EXPECT_EQ(SurveyTextOf(line, survey), "");
    EXPECT_FALSE(ReadSurvey(std::string(kMostRecipeBytes + 1, ';'), &survey, &error));
    EXPECT_EQ(error, "this is no survey; kestrel survey makes one.");
}

TEST_F(SplitRefusals, A_survey_that_is_not_there_is_told) {
    test::DeleteFileAt(Path("whole.survey"));
    EXPECT_EQ(Failing(3, Part("plain.gif", "new", "0-4")),
              "whole.survey: the file cannot be opened (there is no such file or folder).");
}

TEST_F(SplitRefusals, A_part_says_what_does_not_fit_its_survey) {
    const auto with = [&](Arguments arguments, const Arguments& more) {
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    };
    const Arguments part = Part("plain.gif", "new", "0-4");
    EXPECT_EQ(Failing(2, with(part, {"--effect=Neon"})),
              "--effect=Neon is not what whole.survey says; leave it out, or make a survey with it.");
    EXPECT_EQ(Failing(2, with(part, {"--supercompress"})),
              "--supercompress is not what whole.survey says; leave it out, or make a survey with it.");
    EXPECT_EQ(Failing(2, with(part, {"--format=webp"})),
              "--format=webp is not what whole.survey says; leave it out, or make a survey with it.");
    EXPECT_EQ(Failing(2, with(part, {"--seamless"})),
              "--seamless is not for a part of an animation; leave it out.");
    EXPECT_EQ(Failing(2, Part("plain.gif", "new", "3-9")),
              "--frames: there is no frame 9; the result of this survey has frames 0 to 8.");
    EXPECT_EQ(Failing(3, Part("holes.gif", "new", "0-4")),
              "holes.gif: is not what whole.survey is a survey of.");
    EXPECT_EQ(Failing(2, {"apply", Path("plain.gif"), "-o", Path("x.gif"), "--survey", Path("whole.survey"),
                          "--frames=1"}),
              "a part is no picture before kestrel join; name it *.kpart, not \"x.gif\".");
    EXPECT_EQ(
        Failing(2, {"apply", Path("plain.gif"), "-o", Path("x.kpart"), "--survey", Path("whole.survey")}),
        "a part needs the frames that it is to have, as --frames 0-99.");
    EXPECT_EQ(Failing(2, {"apply", Path("plain.gif"), "-o", Path("x.kpart"), "--effect=Neon"}),
              "a part needs --survey FILE, which kestrel survey makes.");
    EXPECT_EQ(Failing(2, {"survey", Path("plain.gif"), "-o", Path("x.survey"), "--effect=Neon"}),
              "a survey needs the format that the parts are joined to, as --format gif.");
    EXPECT_EQ(Failing(2, {"survey", Path("plain.gif"), "-o", Path("x.gif"), "--effect=Neon"}),
              "the output must end in .survey, not \"x.gif\".");
    test::WriteText(Path("s.kpart"), test::ReadText(Path("whole.survey")));
    EXPECT_EQ(Failing(4, {"apply", Path("plain.gif"), "-o", Path("s.kpart"), "--survey", Path("s.kpart"),
                          "--frames=0-4", "--force"}),
              "s.kpart: the result cannot replace its own source; choose another name.");
    // The same options may be said again.
    Succeed(with(part, {"--effect=emb", "--dither", "--format=gif"}));
}

TEST_F(SplitRefusals, A_part_that_is_there_is_passed_over_when_it_is_the_right_one) {
    Arguments part = {"apply",    Path("plain.gif"),    "-o",       Path("a.kpart"),
                      "--survey", Path("whole.survey"), "--frames", "0-4"};
    EXPECT_THAT(Failing(4, part), HasSubstr("a.kpart"));
    part.emplace_back("--skip-done");
    const Report report = Run(part);
    EXPECT_EQ(report.exitCode, kExitDone) << report.error;
    EXPECT_THAT(report.text, EndsWith("a.kpart: is there already.\n"));
    EXPECT_EQ(report.result["skipped"], true);
    part[7] = "0-5";
    EXPECT_EQ(Failing(4, part),
              "a.kpart: is there, but it has other frames; --force together with --skip-done makes it anew.");
    test::WriteText(Path("a.kpart"), "half");
    EXPECT_EQ(Failing(4, part),
              "a.kpart: is there, but it is damaged; --force together with --skip-done makes it anew.");
    part.emplace_back("--force");
    Succeed(part);
}

}  // namespace
}  // namespace kfx::commands
