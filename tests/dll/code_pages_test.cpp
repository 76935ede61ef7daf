// SPDX-License-Identifier: MIT
// Documents and sources whose names are in the system's code page, and such as it cannot say. The session's
// own folders have characters of the page in every test.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "media/utf8_path.h"
#include "resources/resource_ids.h"
#include "tests/dll/support/plugin_session.h"
#include "tests/support/page_words.h"

namespace kfx::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace fs = std::filesystem;

// A new folder below that of the documents, with its backslash.
std::string MakeFolderInside(const PluginSession& session) {
    const std::string folder = FromPage(session.DocumentsFolder()) + NameInside("\\");
    fs::create_directories(PathOf(folder));
    return ToPage(folder);
}

TEST(CodePages, A_document_is_saved_opened_and_remembered) {
    FakeHost host;
    PluginSession session(host);
    const std::string folder = MakeFolderInside(session);
    const std::string document = folder + ToPage(NameInside(".kx1"));
    session.AnswerFileDialog(document);
    session.Command(IDM_DOCUMENT_SAVE_AS);
    EXPECT_TRUE(fs::exists(PathOf(FromPage(folder) + NameInside(".kx1")))) << "under its name, not its bytes";
    session.Scroll(IDC_SWIRL_ANGLE, SB_LINERIGHT);
    session.Command(IDM_DOCUMENT_SAVE);
    session.Scroll(IDC_SWIRL_ANGLE, SB_LINERIGHT);
    ASSERT_EQ(session.PositionOf(IDC_SWIRL_ANGLE), 1487);
    session.Command(IDM_DOCUMENT_OPEN);
    EXPECT_EQ(session.PositionOf(IDC_SWIRL_ANGLE), 1486);
    EXPECT_THAT(session.Messages(), IsEmpty());
    session.Command(IDM_DOCUMENT_SAVE_AS);
    ASSERT_THAT(session.AskedPaths(), SizeIs(3)) << "Save asks for no name";
    for (const size_t later : {1u, 2u}) {
        EXPECT_EQ(session.AskedPaths()[later].file, document);
        EXPECT_EQ(session.AskedPaths()[later].folder, folder);
    }
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("CurrentFileName = " + document + "\r\n"));
    size_t files = 0;
    for (const auto& entry : fs::directory_iterator(PathOf(FromPage(folder))))
        files += entry.exists() ? 1 : 0;
    EXPECT_EQ(files, 1u);
}

TEST(CodePages, The_previous_source_is_found_by_its_name) {
    FakeHost host;
    host.Serve(OneFrame());
    std::string path;
    SessionOptions options;
    options.prepare = [&](const std::string& configuration) {
        path = configuration.substr(0, configuration.rfind('\\') + 1) + ToPage(NameInside(".gif"));
        WriteTextFile(path, "");
        WriteTextFile(configuration, "ReloadPreviousSession = 1\nFileNamePath = " + path + "\n");
        host.Serve(OneFrame(), path);
    };
    PluginSession session(host, options);
    EXPECT_THAT(host.Requests(HostRequest::OpenAnimation), ElementsAre(HasSubstr("path=\"" + path + "\"")));
    EXPECT_EQ(session.TextOf(IDC_SOURCE_PATH), path);
    const std::string document = session.DocumentsFolder() + "source.kx1";
    session.AnswerFileDialog(document);
    session.Command(IDM_DOCUMENT_SAVE_AS);
    EXPECT_THAT(ReadTextFile(document), HasSubstr("\nTXTFLD41=" + path + "\r\n"));
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("FileNamePath = " + path + "\r\n"));
}

// The system's dialogs put question marks in the places of what the page does not have.
TEST(CodePages, A_name_that_the_page_cannot_say_is_told_and_changes_nothing) {
    FakeHost host;
    PluginSession session(host);
    const std::string folder = MakeFolderInside(session);
    session.AnswerFileDialog(folder + "b?r.kx1");
    session.Command(IDM_DOCUMENT_SAVE_AS);
    session.Command(IDM_DOCUMENT_OPEN);
    EXPECT_THAT(session.Messages(), ElementsAre("There has been an error creating the requested file.",
                                                "There has been an error opening the requested file."));
    EXPECT_TRUE(fs::is_empty(PathOf(FromPage(folder))));
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("CurrentFileName = untitled.kx1\r\n"));
}

}  // namespace
}  // namespace kfx::test
