// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "commands/command_row.h"
#include "commands/parser_words.h"

namespace kfx::commands {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using Arguments = std::vector<std::string>;

CommandLine Accept(const Arguments& arguments) {
    CommandLine line;
    std::string text;
    EXPECT_EQ(ParseCommandLine(arguments, {}, &line, &text), ParseOutcome::Run) << text;
    return line;
}

std::string Refuse(const Arguments& arguments) {
    CommandLine line;
    std::string text;
    EXPECT_EQ(ParseCommandLine(arguments, {}, &line, &text), ParseOutcome::Error);
    EXPECT_EQ(text.find('\n'), std::string::npos) << "one sentence";
    return text;
}

Arguments Apply(const std::string& output, const Arguments& more = {}) {
    Arguments arguments = {"apply", "in.gif", "-o", output, "--effect", "Emboss"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

TEST(CommandLine, Without_a_command_there_is_nothing_to_do) {
    EXPECT_THAT(Refuse({}), HasSubstr("a command is missing"));
}

TEST(CommandLine, Apply_takes_input_output_effect_and_parameters) {
    const CommandLine line = Accept(Apply("out.gif", {"--set", "Radius=9", "--set", "Depth=20"}));
    EXPECT_EQ(line.command, &kApplyCommand);
    EXPECT_EQ(line.inputs, Arguments{"in.gif"});
    EXPECT_EQ(line.output, "out.gif");
    ASSERT_EQ(line.effects.size(), 1u);
    EXPECT_EQ(line.effects[0].name, "Emboss");
    ASSERT_EQ(line.effects[0].settings.size(), 2u);
    EXPECT_EQ(line.effects[0].settings[1].name, "Depth");
    EXPECT_EQ(line.effects[0].settings[1].value, "20");
}

TEST(CommandLine, Parameters_belong_to_the_effect_before_them) {
    const CommandLine line =
        Accept({"apply", "--effect", "Emboss", "--set", "Radius=9", "in.gif", "--effect=Bump", "--effect",
                "Swirl", "--set=Angle=3", "-o", "out.gif", "--set", "Angle=4"});
    ASSERT_EQ(line.effects.size(), 3u);
    EXPECT_EQ(line.effects[0].name, "Emboss");
    ASSERT_EQ(line.effects[0].settings.size(), 1u);
    EXPECT_EQ(line.effects[0].settings[0].name, "Radius");
    EXPECT_EQ(line.effects[1].name, "Bump");
    EXPECT_TRUE(line.effects[1].settings.empty());
    EXPECT_EQ(line.effects[2].name, "Swirl");
    ASSERT_EQ(line.effects[2].settings.size(), 2u);
    EXPECT_EQ(line.effects[2].settings[1].value, "4");
}

TEST(CommandLine, Parameters_of_a_single_effect_may_stand_before_it) {
    const CommandLine line =
        Accept({"apply", "--set", "Radius=9", "in.gif", "-o", "out.gif", "--effect", "Emboss"});
    ASSERT_EQ(line.effects.size(), 1u);
    ASSERT_EQ(line.effects[0].settings.size(), 1u);
    EXPECT_EQ(Refuse({"apply", "--set", "Radius=9", "in.gif", "-o", "out.gif", "--effect", "Emboss",
                      "--effect", "Bump"}),
              "--set Radius=9 stands before the first --effect; put it behind the effect that it is for.");
}

TEST(CommandLine, Several_inputs_can_be_joined_and_timed) {
    const CommandLine line =
        Accept({"apply", "b.png", "a.png", "-o", "out.gif", "--effect", "Bump", "--join"});
    EXPECT_EQ(line.inputs, (Arguments{"b.png", "a.png"}));
    EXPECT_TRUE(line.join);
    EXPECT_EQ(line.delay, -1);
    EXPECT_EQ(Accept(Apply("out.gif", {"--delay", "655350"})).delay, 655350);
    EXPECT_FALSE(Accept(Apply("out.gif")).join);
    EXPECT_EQ(Refuse(Apply("out.gif", {"--delay", "0.5"})),
              "--delay takes whole numbers from 0 to 655350, not \"0.5\".");
}

TEST(CommandLine, A_leading_slash_begins_a_path) {
    const CommandLine line = Accept({"apply", "/tmp/in.gif", "-o", "/tmp/out.gif", "--effect", "Bump"});
    EXPECT_EQ(line.inputs, Arguments{"/tmp/in.gif"});
    EXPECT_EQ(line.output, "/tmp/out.gif");
}

TEST(CommandLine, A_gif_gets_a_computed_palette_unless_told_otherwise) {
    const CommandLine line = Accept(Apply("out.gif"));
    EXPECT_FALSE(line.trueColor);
    EXPECT_EQ(line.palette, "custom");
}

TEST(CommandLine, Webp_and_png_are_true_colour_unless_a_palette_option_is_given) {
    EXPECT_TRUE(Accept(Apply("out.webp")).trueColor);
    EXPECT_TRUE(Accept(Apply("out.PNG")).trueColor);
    EXPECT_FALSE(Accept(Apply("out.webp", {"--dither"})).trueColor);
    EXPECT_FALSE(Accept(Apply("out.webp", {"--palette", "original"})).trueColor);
}

TEST(CommandLine, A_gif_refuses_true_colour) {
    EXPECT_THAT(Refuse(Apply("out.gif", {"--true-color"})), HasSubstr("GIF cannot hold true colour"));
}

TEST(CommandLine, True_colour_excludes_palette_options) {
    EXPECT_THAT(Refuse(Apply("out.webp", {"--true-color", "--supercompress"})),
                HasSubstr("--true-color and --supercompress exclude each other"));
}

TEST(CommandLine, Other_output_endings_are_refused) {
    EXPECT_THAT(Refuse(Apply("out.jpg")), HasSubstr(".gif, .webp, .png, .apng or .y4m"));
    EXPECT_THAT(Refuse({"sheet", "a.gif", "b.gif", "-o", "c.gif"}), HasSubstr(".png"));
}

TEST(CommandLine, Mistyped_options_and_commands_are_answered_with_the_nearest_names) {
    EXPECT_THAT(Refuse({"apply", "in.gif", "-o", "out.gif", "--efect", "x"}),
                HasSubstr("did you mean --effect?"));
    EXPECT_THAT(Refuse({"aply"}), HasSubstr("did you mean apply?"));
}

TEST(CommandLine, What_is_missing_is_named) {
    EXPECT_THAT(Refuse({"apply", "in.gif", "-o", "out.gif"}), HasSubstr("--effect"));
    EXPECT_THAT(Refuse({"apply", "-o", "out.gif", "--effect", "Bump"}), HasSubstr("input"));
    EXPECT_THAT(Refuse({"--"}), HasSubstr("command"));
}

TEST(CommandLine, Parameters_must_be_name_and_value) {
    EXPECT_THAT(Refuse(Apply("out.gif", {"--set", "Radius"})), HasSubstr("NAME=VALUE"));
    EXPECT_THAT(Refuse(Apply("out.gif", {"--set", "=9"})), HasSubstr("NAME=VALUE"));
}

TEST(CommandLine, Numbers_out_of_range_are_refused) {
    EXPECT_THAT(Refuse(Apply("out.gif", {"--dither-contrast", "128"})), HasSubstr("0 to 127"));
}

TEST(CommandLine, Colours_are_red_green_blue_in_hexadecimal) {
    unsigned color = 0;
    EXPECT_TRUE(ParseColor("#102030", &color));
    EXPECT_EQ(color, 0x302010u);
    EXPECT_FALSE(ParseColor("10203", &color));
    EXPECT_FALSE(ParseColor("10203g", &color));
    EXPECT_THAT(Refuse(Apply("out.gif", {"--local-background", "red"})), HasSubstr("RRGGBB"));
    Accept(Apply("out.gif", {"--local-background", "none"}));
}

TEST(CommandLine, The_plugins_comment_is_added_only_on_request) {
    EXPECT_FALSE(Accept(Apply("out.gif")).comment);
    EXPECT_FALSE(Accept(Apply("out.gif", {"--no-comment"})).comment);
    EXPECT_TRUE(Accept(Apply("out.gif", {"--comment"})).comment);
}

TEST(CommandLine, Every_command_that_reads_takes_a_limit_for_it) {
    EXPECT_EQ(Accept(Apply("out.gif")).maxPixels, -1);
    EXPECT_EQ(Accept(Apply("out.gif", {"--max-pixels", "900"})).maxPixels, 900);
    EXPECT_EQ(Accept({"gallery", "in.gif", "-o", "out.png", "--max-pixels", "900"}).maxPixels, 900);
    EXPECT_EQ(Accept({"sheet", "a.gif", "b.gif", "-o", "out.png", "--max-pixels", "900"}).maxPixels, 900);
}

TEST(CommandLine, Options_of_a_format_are_numbers_and_go_with_it) {
    EXPECT_EQ(Accept(Apply("out.gif", {"--lossy", "40"})).lossy, 40);
    const CommandLine line = Accept(Apply("out.webp", {"--quality", "80", "--effort", "3"}));
    EXPECT_EQ(line.quality, 80);
    EXPECT_EQ(line.effort, 3);
    EXPECT_EQ(Accept(Apply("out.webp", {"--near-lossless", "60"})).nearLossless, 60);
    EXPECT_EQ(Accept(Apply("out.gif")).lossy, -1);
}

// Each option wrong in each way, and what is said then.
struct WrongCommand {
    Arguments arguments;
    const char* sentence;
};

TEST(CommandLine, Every_wrong_option_is_answered_in_plain_words) {
    std::vector<WrongCommand> rows = {
        {{"apply"}, "the input file is missing; see kestrel apply --help."},
        {{"apply", "in.gif"}, "--output FILE is missing; see kestrel apply --help."},
        {{"apply", "in.gif", "-o", "out.gif"},
         "--effect NAME is missing; to convert without an effect, add --format."},
        {{"apply", "a.png", "b.png", "-o", "out.gif"},
         "there are several inputs; --join makes them one animation, -o FOLDER/ takes a result for each."},
        {{"apply", "a.png", "b.png", "-o", "out/"},
         "--effect NAME is missing; to convert without an effect, add --format."},
        {{"apply", "", "-o", "out.gif", "--effect", "Bump"}, "an input has no name: its argument is empty."},
        {{"info"}, "the input file is missing; see kestrel info --help."},
        {{"compare", "a.gif"}, "the second file is missing; see kestrel compare --help."},
        {{"completions"}, "the shell is missing; see kestrel completions --help."},
        {{"apply", "in.gif", "-o", "out.gif", "--reverse", "--set", "a=b"},
         "--set needs an --effect, whose parameter it sets."},
        {{"apply", "in.gif", "-o", "out.gif", "--reverse", "--local-background", "none"},
         "--local-background needs an --effect."},
        {{"apply", "in.gif", "-o", "out.gif", "--reverse", "--edges", "extend"},
         "--edges needs an --effect."},
        {{"apply", "in.gif", "-o", "out.gif", "--reverse", "--comment"}, "--comment needs an --effect."},
        {{"apply", "in.gif", "-o", "out.gif", "--reverse", "--fast-remap"},
         "--fast-remap is for results on a palette; add --palette, or leave it out."},
        {{"sheet"}, "the source file is missing; see kestrel sheet --help."},
        {{"sheet", "a.gif"}, "the result file is missing; see kestrel sheet --help."},
        {{"sheet", "a.gif", "b.gif"}, "--output FILE is missing; see kestrel sheet --help."},
        {{"gallery"}, "--output FILE is missing; see kestrel gallery --help."},
        {{"sample"}, "--output FILE is missing; see kestrel sample --help."},
        {{"sample", "-o", "out.txt"}, "the output must end in .gif, .webp, .apng or .png, not \"out.txt\"."},
        {{"gallery", "-o", "out.y4m"}, "the output must end in .png, .gif, .webp or .apng, not \"out.y4m\"."},
        {{"gallery", "-o", "out.gif", "--size", "9x9"},
         "--size takes a width and a height from 16 to 2000, such as 160x120, not \"9x9\"."},
        {{"compare", "a.gif"}, "the second file is missing; see kestrel compare --help."},
        {{"compare", "a", "b", "--min-ssim", "2"},
         "--min-ssim takes a number from 0 to 1, such as 0.95, not \"2\"."},
        {{"compare", "a", "b", "-o", "c.gif"}, "the output must end in .png, not \"c.gif\"."},
        {{"sheet", "a", "b", "-o", "c.gif"}, "the output must end in .png, not \"c.gif\"."},
        {{"effects", "swirl", "more"}, "unexpected argument \"more\"."},
        {{"effects", "--colour"}, "unknown option \"--colour\"; see --help."},
        {Apply("result"),
         "the output must end in .gif, .webp, .png, .apng or .y4m, not \"result\"; or add --format, or end a "
         "folder's name "
         "in \"/\"."},
        {Apply("out.gif", {"--true-color"}),
         "a GIF cannot hold true colour; write .webp or .png, or leave out --true-color."},
        {Apply("out.webp", {"--comment"}), "only a GIF holds the plug-in's comment; leave out --comment."},
        {Apply("out.webp", {"--lossy", "9"}), "--lossy is for GIF files; leave it out, or write .gif."},
        {Apply("out.png", {"--lossy", "9"}), "--lossy is for GIF files; leave it out, or write .gif."},
        {Apply("out.gif", {"--quality", "9"}), "--quality is for WebP files; leave it out, or write .webp."},
        {Apply("out.png", {"--near-lossless", "9"}),
         "--near-lossless is for WebP files; leave it out, or write .webp."},
        {Apply("out.gif", {"--effort", "9"}),
         "--effort is for WebP, PNG and APNG files; leave it out, or write .webp or .png."},
        {Apply("out.y4m", {"--effort", "9"}),
         "--effort is for WebP, PNG and APNG files; leave it out, or write .webp or .png."},
        {Apply("out.png", {"--speed", "2"}),
         "--speed is for animations; leave it out, or write .gif, .webp or .apng."},
        {Apply("out.png", {"--fps", "2"}),
         "--fps is for animations; leave it out, or write .gif, .webp or .apng."},
        {Apply("out.png", {"--loop", "2"}),
         "--loop is for animations; leave it out, or write .gif, .webp or .apng."},
        {Apply("out.y4m", {"--loop", "2"}),
         "--loop is for animations, and video streams play once; leave it out."},
        {Apply("out.webp", {"--quality", "9", "--near-lossless", "9"}),
         "--quality and --near-lossless exclude each other."},
        {Apply("out.gif", {"--comment", "--no-comment"}), "--comment and --no-comment exclude each other."},
        {Apply("out.webp", {"--true-color", "--palette", "custom"}),
         "--true-color and --palette exclude each other."},
        {Apply("out.webp", {"--true-color", "--dither"}), "--true-color and --dither exclude each other."},
        {Apply("out.webp", {"--true-color", "--supercompress"}),
         "--true-color and --supercompress exclude each other."},
        {Apply("out.webp", {"--true-color", "--fast-remap"}),
         "--true-color and --fast-remap exclude each other."},
        {Apply("out.webp", {"--true-color", "--dither-contrast", "1"}),
         "--true-color and --dither-contrast exclude each other."},
        {Apply("out.webp", {"--fast-remap"}),
         "--fast-remap is for results on a palette; add --palette, or leave it out."},
        {Apply("out.png", {"--dither-brightness", "1"}),
         "--dither-brightness is for results on a palette; add --palette, or leave it out."},
        {Apply("out.gif", {"--local-background", "red"}),
         "--local-background takes a colour as RRGGBB or none, not \"red\"."},
        {Apply("out.gif", {"--set", "Radius"}), "--set takes NAME=VALUE, not \"Radius\"."},
    };
    for (const WrongCommand& row : rows) EXPECT_EQ(Refuse(row.arguments), row.sentence);
}

TEST(CommandLine, Every_number_is_answered_with_its_range_and_taken_once) {
    struct Number {
        const char* name;
        const char* output;
        int most;
        int least = 0;
    };
    for (const auto& [name, output, most, least] :
         {Number{"--dither-brightness", "out.gif", 255}, Number{"--dither-contrast", "out.gif", 127},
          Number{"--lossy", "out.gif", 200}, Number{"--max-pixels", "out.gif", 1000000, 1},
          Number{"--quality", "out.webp", 100}, Number{"--near-lossless", "out.webp", 100},
          Number{"--effort", "out.webp", 9}}) {
        const std::string start = std::string(name) + " takes whole numbers from " + std::to_string(least) +
                                  " to " + std::to_string(most) + ", not \"";
        for (const std::string& wrong : {std::to_string(most + 1), std::string("-1"), std::string("x"),
                                         std::string("1.5"), std::string("99999999999999999999")}) {
            EXPECT_EQ(Refuse(Apply(output, {name, wrong})), start + wrong + "\".");
        }
        EXPECT_EQ(Refuse(Apply(output, {name, "1", name, "2"})),
                  std::string(name) + " may be given only once.");
        EXPECT_EQ(Refuse(Apply(output, {name})), std::string(name) + " takes a value, " +
                                                     std::to_string(least) + "-" + std::to_string(most) +
                                                     "; see kestrel apply --help.");
    }
}

TEST(CommandLine, A_matte_is_a_colour_and_for_gif_files) {
    EXPECT_EQ(Accept(Apply("out.gif", {"--matte", "#102030"})).matte, "#102030");
    EXPECT_EQ(Refuse(Apply("out.gif", {"--matte", "none"})),
              "--matte takes a colour as RRGGBB, not \"none\".");
    EXPECT_EQ(
        Refuse(Apply("out.webp", {"--matte", "102030"})),
        "--matte is for GIF files, which hold no half-transparent pixels; leave it out, or write .gif.");
}

TEST(CommandLine, Edges_are_the_background_or_extended) {
    for (const char* name : {"extend", "Extend", "EXTEND"})
        EXPECT_EQ(Accept(Apply("out.gif", {"--edges", name})).edges, "extend");
    EXPECT_EQ(Accept(Apply("out.gif", {"--edges", "BackGround"})).edges, "background");
    EXPECT_EQ(Refuse(Apply("out.gif", {"--edges", "mirror"})),
              "--edges takes background or extend, not \"mirror\".");
}

TEST(CommandLine, Texts_are_taken_once_and_flags_take_no_value) {
    for (const char* name : {"--palette", "--edges", "--local-background", "--matte", "--output"}) {
        EXPECT_EQ(Refuse({"apply", "in.gif", "-o", "out.gif", "--effect", "Bump", name, "a", name, "b"}),
                  std::string(name) + " may be given only once.");
    }
    for (const char* name : {"--json", "--quiet", "--force", "--dither", "--supercompress", "--true-color",
                             "--fast-remap", "--comment", "--no-comment"}) {
        EXPECT_EQ(Refuse(Apply("out.gif", {std::string(name) + "=maybe"})),
                  std::string(name) + " takes no value.");
    }
}

TEST(CommandLine, Files_may_be_named_as_commands_are) {
    EXPECT_EQ(Accept({"apply", "sample", "-o", "out.gif", "--effect", "Bump"}).inputs, Arguments{"sample"});
}

TEST(CommandLine, Help_and_version_are_texts_and_no_errors) {
    CommandLine line;
    std::string text;
    EXPECT_EQ(ParseCommandLine({"--help"}, {}, &line, &text), ParseOutcome::ShowText);
    EXPECT_THAT(text, HasSubstr("Exit codes"));
    EXPECT_EQ(ParseCommandLine({"apply", "--help"}, {}, &line, &text), ParseOutcome::ShowText);
    EXPECT_THAT(text, HasSubstr("--supercompress"));
    EXPECT_THAT(text, HasSubstr("with a folder as output"));
    EXPECT_EQ(ParseCommandLine({"survey", "--help"}, {}, &line, &text), ParseOutcome::ShowText);
    EXPECT_THAT(text, Not(HasSubstr("with a folder as output"))) << "a survey is of one animation";
    EXPECT_EQ(ParseCommandLine({"--version"}, {}, &line, &text), ParseOutcome::ShowText);
}

void AddDepth(CLI::App* command, void* values) {
    AddNumber(command, "--depth", static_cast<int*>(values), 1, 9, "How deep");
}

TEST(CommandLine, A_programs_own_options_go_with_the_commands_that_use_an_engine) {
    int depth = 0;
    CommandLine line;
    std::string text;
    const OwnOptions own = {AddDepth, &depth};
    EXPECT_EQ(ParseCommandLine(Apply("out.gif", {"--depth", "7"}), own, &line, &text), ParseOutcome::Run);
    EXPECT_EQ(depth, 7);
    EXPECT_EQ(ParseCommandLine({"effects", "--depth", "soon"}, own, &line, &text), ParseOutcome::Error);
    EXPECT_THAT(text, HasSubstr("--depth"));
    EXPECT_EQ(ParseCommandLine({"sample", "a.gif", "--depth", "7"}, own, &line, &text), ParseOutcome::Error);
    EXPECT_EQ(text, "unknown option \"--depth\"; see --help.");
}

TEST(CommandLine, Endings_are_those_of_the_file_name) {
    EXPECT_EQ(EndingOf("a.b/c.GIF"), ".gif");
    EXPECT_EQ(EndingOf("a.b/c"), "");
    EXPECT_EQ(EndingOf("C:\\a.b\\c.webp"), ".webp");
}

}  // namespace
}  // namespace kfx::commands
