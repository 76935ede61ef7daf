// SPDX-License-Identifier: MIT
// Paths in a code page whose characters take two bytes, the second of which may be a backslash by number:
// they are split between characters, not in the middle of one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "resources/resource_ids.h"
#include "tests/dll/support/plugin_session.h"

namespace kfx::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

#define TABLE "\x95\x5C"  // one character of code page 932

SessionOptions InJapanese(const std::string& text) {
    SessionOptions options = WithConfiguration(text);
    options.japanese = true;
    return options;
}

TEST(Paths, The_folder_of_a_document_ends_before_its_whole_name) {
    FakeHost host;
    PluginSession session(host, InJapanese("CurrentFileName = C:\\" TABLE "\\some " TABLE "x.kx1\n"));
    session.Command(IDM_DOCUMENT_OPEN);
    session.Command(IDM_DOCUMENT_SAVE_AS);
    ASSERT_THAT(session.AskedPaths(), SizeIs(2));
    for (const AskedPath& asked : session.AskedPaths()) EXPECT_EQ(asked.folder, "C:\\" TABLE "\\");
}

TEST(Paths, A_name_that_only_ends_like_untitled_is_a_name) {
    FakeHost host;
    PluginSession session(host, InJapanese("CurrentFileName = C:\\none\\" TABLE "untitled.kx1\n"));
    session.Command(IDM_DOCUMENT_SAVE);
    EXPECT_THAT(session.AskedPaths(), IsEmpty()) << "saved without asking";
    EXPECT_THAT(session.Messages(), ElementsAre("There has been an error creating the requested file."))
        << "where there is no such folder";
}

TEST(Paths, A_folder_whose_last_character_ends_in_that_byte_gets_its_backslash) {
    FakeHost host;
    SessionOptions options = InJapanese("MainEffect = 3\n");
    options.shiftHeld = true;
    PluginSession session(host, options);
    const std::string folder = session.DocumentsFolder().substr(0, session.DocumentsFolder().rfind("Doc"));
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("OpenPath = " + folder + TABLE "\\\r\n"));
    EXPECT_THAT(session.ConfigurationText(),
                HasSubstr("CurrentFileName = " + folder + TABLE "\\untitled.kx1\r\n"));
}

}  // namespace
}  // namespace kfx::test
