// SPDX-License-Identifier: MIT
#include "tests/cli/wrong_commands.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>

#include "media/utf8_path.h"
#include "tests/cli/test_files.h"
#include "tests/support/plain_message.h"

namespace kfx::test {

std::vector<WrongCommand> WrongCommands(const std::string& folder) {
    std::filesystem::create_directory(PathOf(folder + "folder.gif"));
    std::filesystem::create_directory(PathOf(folder + "folder.png"));
    WriteText(folder + "empty.gif", "");
    WriteText(folder + "there.gif", "mine");
    const std::string in = folder + "in.gif", out = folder + "out.gif", none = folder + "none/";
    const auto apply = [&](const std::string& effect, const std::vector<std::string>& more) {
        std::vector<std::string> arguments = {"apply", in, "-o", out, "--effect", effect};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    };
    return {
        {apply("R", {}), 2, "ambiguous effect \"R\": it can be Radial Blur, Raster or Ripple."},
        {apply("Embosss", {}), 2, "unknown effect \"Embosss\"; did you mean Emboss?"},
        {apply("Neon", {"--set", "Radius=9"}), 2, "Neon has no parameters."},
        {apply("Emboss", {"--set", "Radius=46"}), 2,
         "Radius of Emboss takes whole numbers from 4 to 45, not \"46\"."},
        {apply("Emboss", {"--set", "Radius= 9"}), 2,
         "Radius of Emboss takes whole numbers from 4 to 45, not \" 9\"."},
        {apply("Emboss", {"--set", "Radius=9", "--set", "radius=9"}), 2, "--set gives Radius twice."},
        {apply("Emboss", {"--set", "Radios=9"}), 2, "unknown parameter \"Radios\"; did you mean Radius?"},
        {apply("Emboss", {"--set", "Wavelength=9"}), 2,
         "unknown parameter \"Wavelength\"; there are Radius and Depth."},
        {apply("Ripple", {"--set", "Center=9"}), 2,
         "ambiguous parameter \"Center\": it can be Center X or Center Y."},
        {apply("Normalize", {"--set", "Distributed=maybe"}), 2,
         "Distributed of Normalize takes on or off, not \"maybe\"."},
        {apply("Bump", {"--palette", "25"}), 2,
         "ambiguous palette \"25\": it can be 256-color orthogonal, 256-color with gray or 256 gray levels."},
        {apply("Bump", {"--palette", "217-color safe"}), 2,
         "unknown palette \"217-color safe\"; did you mean 216-color safe?"},
        {{"apply", folder + "no.gif", "-o", out, "--effect", "Bump"},
         3,
         folder + "no.gif: the file cannot be opened (there is no such file or folder)."},
        {{"apply", folder + "folder.gif", "-o", out, "--effect", "Bump"},
         3,
         folder + "folder.gif: this is a folder without pictures."},
        {{"apply", folder + "empty.gif", "-o", out, "--effect", "Bump"},
         3,
         folder + "empty.gif: the file is empty."},
        {{"apply", in, "-o", none + "out.gif", "--effect", "Bump"},
         4,
         none + "out.gif: cannot be written: the folder " + none + " does not exist."},
        {{"gallery", in, "-o", folder + "folder.png"}, 4, folder + "folder.png: is a folder."},
        {{"apply", in, "-o", folder + "there.gif", "--effect", "Bump"},
         4,
         folder + "there.gif: the file exists; use --force to replace it."},
        {{"apply", in, "-o", in, "--effect", "Bump", "--force"},
         4,
         in + ": the result cannot replace its own source; choose another name."},
    };
}

void ExpectSentences(const std::vector<WrongCommand>& commands, const std::string& folder,
                     const std::vector<std::string>& more) {
    const auto before = FilesIn(folder);
    for (const WrongCommand& command : commands) {
        std::vector<std::string> arguments = command.arguments;
        arguments.insert(arguments.end(), more.begin(), more.end());
        const ProgramResult result = RunKestrel(arguments);
        EXPECT_EQ(result.exitCode, command.exitCode) << command.sentence;
        EXPECT_EQ(result.err, "kestrel: " + command.sentence + "\n");
        EXPECT_EQ(result.out, "") << command.sentence;
        EXPECT_EQ(LibraryWordIn(result.err), "") << command.sentence;
        const auto report = RunKestrelForJson(arguments);
        EXPECT_EQ(report["error"], command.sentence);
        EXPECT_EQ(report["exitCode"], command.exitCode) << command.sentence;
    }
    EXPECT_EQ(FilesIn(folder), before) << "nothing is left behind";
}

}  // namespace kfx::test
