// SPDX-License-Identifier: MIT
#include "commands/source_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "media/utf8_path.h"
#include "tests/cli/test_files.h"

namespace kfx::commands {
namespace {

using test::TemporaryFolder;
using test::WriteText;

using Names = std::vector<std::string>;

struct FoundSources : ::testing::Test {
    const TemporaryFolder folder;
    CommandLine line;
    Failure failure;
    InputUse use = InputUse::OneAnimation;

    void Make(const Names& names) const {
        for (const std::string& name : names) WriteText(folder.path + name, "x");
    }
    Names InFolder(Names names) const {
        for (std::string& name : names) name.insert(0, folder.path);
        return names;
    }
    bool Find(const Names& inputs) {
        failure = {};
        line.inputs = InFolder(inputs);
        return FindSources(use, &line, &failure);
    }
    // The files of a source, without the folder.
    Names FilesOf(size_t source) const {
        Names names;
        for (const std::string& file : line.sources.at(source).files) {
            EXPECT_EQ(file.find(folder.path), 0u) << file;
            names.push_back(file.substr(folder.path.size()));
        }
        return names;
    }
    // The failure's sentence without the folder.
    std::string Error() const {
        EXPECT_EQ(failure.error.find(folder.path), 0u) << failure.error;
        return failure.error.substr(std::min(folder.path.size(), failure.error.size()));
    }
};

TEST(NumberOrder, Numbers_count_by_their_value) {
    const Names ordered = {"a",
                           "a0",
                           "a01.png",
                           "a1.png",
                           "a2.png",
                           "a10.png",
                           "a10b1",
                           "a10b02",
                           "a10b3",
                           "a100.png",
                           "ab",
                           "b-1-2",
                           "b-1-10",
                           "b-2-1",
                           "b99999999999999999999",
                           "b100000000000000000000",
                           "c\xC3\xA9"};
    for (size_t i = 0; i < ordered.size(); ++i) {
        for (size_t k = 0; k < ordered.size(); ++k)
            EXPECT_EQ(IsBeforeByNumber(ordered[i], ordered[k]), i < k) << ordered[i] << ", " << ordered[k];
    }
}

TEST_F(FoundSources, A_file_is_its_own_source) {
    Make({"a-000.png", "a-001.png"});
    ASSERT_TRUE(Find({"a-000.png"})) << failure.error;
    ASSERT_EQ(line.sources.size(), 1u);
    EXPECT_EQ(FilesOf(0), Names{"a-000.png"});
    // Reading says what is wrong with it.
    ASSERT_TRUE(Find({"unknown.png"}));
    EXPECT_EQ(FilesOf(0), Names{"unknown.png"});
}

TEST_F(FoundSources, A_place_for_a_number_names_all_files_that_have_one_there) {
    Make({"a-10.png", "a-9.png", "a-8.png", "a-x.png", "a-.png", "a-9.gif", "b-1.png", "a-010.png",
          "a-9b.png"});
    ASSERT_TRUE(Find({"a-%d.png"})) << failure.error;
    ASSERT_EQ(line.sources.size(), 1u);
    EXPECT_EQ(FilesOf(0), (Names{"a-8.png", "a-9.png", "a-10.png"}));
    EXPECT_EQ(line.inputs, InFolder({"a-8.png", "a-9.png", "a-10.png"}));
    EXPECT_EQ(line.sources[0].note, "");
}

TEST_F(FoundSources, A_width_is_filled_with_zeros) {
    Make({"a098.png", "a99.png", "a099.png", "a0099.png", "a100.png", "a1000.png", "a0100.png"});
    ASSERT_TRUE(Find({"a%03d.png"})) << failure.error;
    EXPECT_EQ(FilesOf(0), (Names{"a098.png", "a099.png", "a100.png", "a1000.png"}));
    EXPECT_EQ(line.sources[0].note,
              folder.path + "a%03d.png: 899 of the numbers from 98 to 1000 are missing.");
}

TEST_F(FoundSources, A_missing_number_is_told) {
    Make({"1.png", "2.png", "4.png"});
    ASSERT_TRUE(Find({"%d.png"})) << failure.error;
    EXPECT_EQ(line.sources[0].note, folder.path + "%d.png: 1 of the numbers from 1 to 4 is missing.");
}

TEST_F(FoundSources, Numbers_beyond_all_bounds_are_taken) {
    Make({"99999999999999999999.png", "3.png"});
    ASSERT_TRUE(Find({"%d.png"})) << failure.error;
    EXPECT_EQ(FilesOf(0), (Names{"3.png", "99999999999999999999.png"}));
}

TEST_F(FoundSources, An_existing_file_is_never_a_pattern) {
    Make({"a%d.png", "a1.png"});
    ASSERT_TRUE(Find({"a%d.png"})) << failure.error;
    EXPECT_EQ(FilesOf(0), Names{"a%d.png"});
}

TEST_F(FoundSources, Wildcards_are_replaced_in_the_order_of_numbers) {
    Make({"a1.png", "a10.png", "a2.png", "ab.png", "a2.gif", ".a3.png"});
    line.join = true;
    ASSERT_TRUE(Find({"a*.png"})) << failure.error;
    EXPECT_EQ(FilesOf(0), (Names{"a1.png", "a2.png", "a10.png", "ab.png"}));
    ASSERT_TRUE(Find({"a?.*"})) << failure.error;
    EXPECT_EQ(FilesOf(0), (Names{"a1.png", "a2.gif", "a2.png", "ab.png"}));
    ASSERT_TRUE(Find({"*1*n*"})) << failure.error;
    EXPECT_EQ(FilesOf(0), (Names{"a1.png", "a10.png"}));
    line.join = false;
    ASSERT_TRUE(Find({"ab*"})) << "one file needs no joining";
    EXPECT_EQ(FilesOf(0), Names{"ab.png"});
}

TEST_F(FoundSources, Capitals_matter_where_they_matter_to_the_system) {
    Make({"Photo1.JPG", "Photo2.JPG"});
    const bool found = std::filesystem::exists(PathOf(folder.path + "photo1.jpg"));
    line.join = true;
    for (const char* pattern : {"photo%d.jpg", "photo?.jpg"}) {
        EXPECT_EQ(Find({pattern}), found);
        EXPECT_EQ(found ? FilesOf(0) : Names(), found ? (Names{"Photo1.JPG", "Photo2.JPG"}) : Names());
    }
}

TEST_F(FoundSources, A_folder_names_its_pictures) {
    std::filesystem::create_directory(PathOf(folder.path + "sub"));
    std::filesystem::create_directory(PathOf(folder.path + "empty"));
    std::filesystem::create_directory(PathOf(folder.path + "sub/a3.png"));
    Make({"sub/a10.JPG", "sub/a9.webp", "sub/notes.txt", "sub/.a1.png", "empty/readme"});
    line.delay = 40;
    for (const char* name : {"sub", "sub/"}) {
        ASSERT_TRUE(Find({name})) << failure.error;
        EXPECT_EQ(FilesOf(0), (Names{"sub/a9.webp", "sub/a10.JPG"}));
    }
    EXPECT_FALSE(Find({"empty"}));
    EXPECT_EQ(Error(), "empty: this is a folder without pictures.");
    EXPECT_EQ(failure.exitCode, kExitBadInput);
}

TEST_F(FoundSources, A_pattern_without_files_is_an_error) {
    Make({"a1.png"});
    for (const char* pattern :
         {"b%d.png", "a%02d.png", "b*.png", "a??.png", "unknown/*.png", "unknown/%d.png"}) {
        EXPECT_FALSE(Find({pattern}));
        EXPECT_EQ(Error(), pattern + std::string(": no file has such a name."));
        EXPECT_EQ(failure.exitCode, kExitBadInput);
    }
}

TEST_F(FoundSources, Several_files_are_joined_on_request_only) {
    Make({"a1.png", "a2.png", "b.png"});
    EXPECT_FALSE(Find({"a*"}));
    EXPECT_EQ(Error(),
              "a*: names 2 files; --join makes them one animation, -o FOLDER/ takes a result for "
              "each.");
    EXPECT_EQ(failure.exitCode, kExitBadCommand);
    EXPECT_FALSE(Find({"b.png", "a1.png"}));
    EXPECT_EQ(failure.error,
              "there are several inputs; --join makes them one animation, -o FOLDER/ takes a result for "
              "each.");
    line.join = true;
    ASSERT_TRUE(Find({"b.png", "a%d.png"})) << failure.error;
    ASSERT_EQ(line.sources.size(), 1u);
    EXPECT_EQ(FilesOf(0), (Names{"b.png", "a1.png", "a2.png"})) << "in the order as given";
}

TEST_F(FoundSources, What_a_shell_sorted_as_text_is_put_in_order) {
    line.join = true;
    ASSERT_TRUE(Find({"a1.png", "a10.png", "a2.png"}));
    EXPECT_EQ(FilesOf(0), (Names{"a1.png", "a2.png", "a10.png"}));
    EXPECT_EQ(line.sources[0].note, "the files are joined in the order of their numbers.");
    for (const Names& given :
         {Names{"a10.png", "a9.png", "a8.png"}, Names{"a10.png", "b2.png"}, Names{"a1.png", "a2.png"}}) {
        ASSERT_TRUE(Find(given));
        EXPECT_EQ(FilesOf(0), given);
        EXPECT_EQ(line.sources[0].note, "");
    }
}

TEST_F(FoundSources, A_sheet_has_two_sources_and_a_gallery_takes_the_first_picture) {
    Make({"a1.png", "a2.png", "b1.png", "b2.png"});
    use = InputUse::Each;
    ASSERT_TRUE(Find({"a%d.png", "b%d.png"})) << failure.error;
    ASSERT_EQ(line.sources.size(), 2u);
    EXPECT_EQ(FilesOf(1), (Names{"b1.png", "b2.png"}));
    EXPECT_FALSE(Find({"a*.png", "b1.png"}));
    use = InputUse::FirstPicture;
    ASSERT_TRUE(Find({"a*.png"})) << failure.error;
    EXPECT_EQ(FilesOf(0), Names{"a1.png"});
    ASSERT_TRUE(Find({}));
    EXPECT_TRUE(line.sources.empty());
}

}  // namespace
}  // namespace kfx::commands
