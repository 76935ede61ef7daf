// SPDX-License-Identifier: MIT
#include "documents/document_text.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/temporary_file.h"

namespace kfx {
namespace {

constexpr char kHeader[] =
    ";This is a document created by Kestrel FX #1 Plugin by Quorvane Labs - do not edit.\n";

struct TextFile {
    explicit TextFile(const std::string& text = "") : file(test::OpenTemporaryFile()) {
        std::fwrite(text.data(), 1, text.size(), file);
        std::rewind(file);
    }
    ~TextFile() { std::fclose(file); }
    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;

    std::string Text() const {
        std::rewind(file);
        std::string text;
        for (int c; (c = std::fgetc(file)) != EOF;) text += static_cast<char>(c);
        return text;
    }
    std::FILE* const file;
};

using Lines = std::vector<std::pair<int, std::string>>;

Lines ReadLines(const std::string& text) {
    const TextFile document(text);
    Lines lines;
    char line[kDocumentLineBytes];
    while (const int id = ReadDocumentLine(document.file, line)) lines.emplace_back(id, line);
    return lines;
}

TEST(DocumentText, A_document_is_written_byte_for_byte) {
    const TextFile document;
    WriteDocumentStart(document.file);
    WriteNumberLine(document.file, "SCROLL", 193, -1485);
    WriteUnsignedLine(document.file, "CLRBTN", 54, 4294967295u);
    WriteTextLine(document.file, "TXTFLD", 41, "C:\\a b=c.gif ");
    WriteDocumentEnd(document.file);
    EXPECT_EQ(document.Text(), std::string(kHeader) +
                                   ";Start of document\n"
                                   "SCROLL193=-1485\n"
                                   "CLRBTN54=4294967295\n"
                                   "TXTFLD41=C:\\a b=c.gif \n"
                                   ";End of document\n");
}

TEST(DocumentText, The_first_line_must_name_product_and_maker) {
    EXPECT_TRUE(ReadDocumentStart(TextFile(kHeader).file));
    EXPECT_TRUE(ReadDocumentStart(TextFile("Quorvane Labs: anything, Kestrel FX #1 Plugin").file));
    EXPECT_FALSE(ReadDocumentStart(TextFile("SCROLL193=1485\n").file));
    EXPECT_FALSE(ReadDocumentStart(TextFile(";Kestrel FX #1 Plugin\n;Quorvane Labs\n").file));
    EXPECT_FALSE(ReadDocumentStart(TextFile(";Quorvane Labs\n").file));
    EXPECT_FALSE(ReadDocumentStart(TextFile(";kestrel fx #1 plugin by quorvane labs\n").file));
    EXPECT_FALSE(ReadDocumentStart(TextFile("\n").file));
}

TEST(DocumentText, An_empty_file_passes_and_holds_no_lines) {
    const TextFile document;
    EXPECT_TRUE(ReadDocumentStart(document.file));
    char line[kDocumentLineBytes];
    EXPECT_EQ(ReadDocumentLine(document.file, line), 0);
}

TEST(DocumentText, Lines_lose_their_ends_and_give_their_identifier) {
    EXPECT_EQ(ReadLines("SCROLL193=1485\r\nCHKBOX19=1\nTXTFLD41= a \r\r\nLSTBOX7=0"),
              (Lines{{193, "SCROLL193=1485"}, {19, "CHKBOX19=1"}, {41, "TXTFLD41= a "}, {7, "LSTBOX7=0"}}));
}

TEST(DocumentText, Comments_are_skipped_and_lines_after_the_end_still_count) {
    EXPECT_EQ(ReadLines(";SCROLL1=1\nSCROLL2=2\n;End of document\nSCROLL3=3\n"),
              (Lines{{2, "SCROLL2=2"}, {3, "SCROLL3=3"}}));
}

TEST(DocumentText, Lines_without_an_identifier_are_passed_over) {
    EXPECT_EQ(ReadLines("\nSCROLL\nSCROLLx=5\nSCROLL0=5\nSCROLL-4=5\nabc\nSCROLL5\n"),
              (Lines{{5, "SCROLL5"}}));
}

// The identifier is read from the seventh character on, whatever stands before it.
TEST(DocumentText, Lines_below_seven_characters_are_ignored) {
    EXPECT_TRUE(ReadLines("S=5\nABCDE1\n12\n").empty());
    EXPECT_EQ(ReadLines("ABCDEF1\n"), (Lines{{1, "ABCDEF1"}}));
}

TEST(DocumentText, A_longer_line_is_read_in_pieces) {
    const std::string start = "TXTFLD41=" + std::string(kDocumentLineBytes - 1 - 9, 'x');
    const Lines lines = ReadLines(start + "SCROLL3=7\n");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].second, start);
    EXPECT_EQ(lines[1].second, "SCROLL3=7");
}

std::string ValueOf(const char* line, const char* kindWord) {
    const char* value = FindLineValue(line, kindWord);
    return value ? value : "(none)";
}

TEST(DocumentText, Kinds_are_compared_without_regard_to_case) {
    EXPECT_EQ(ValueOf("scroll193=1485", "SCROLL"), "1485");
    EXPECT_EQ(ValueOf("SCROLL193=1485", "SCROLL"), "1485");
    EXPECT_EQ(ValueOf("CHKBOX193=1485", "SCROLL"), "(none)");
    EXPECT_EQ(ValueOf("SCROL", "SCROLL"), "(none)");
}

TEST(DocumentText, The_value_stands_behind_all_equals_signs_and_spaces) {
    EXPECT_EQ(ValueOf("SCROLL193= =1485", "SCROLL"), "1485");
    EXPECT_EQ(ValueOf("SCROLL193==  ==5", "SCROLL"), "5");
    EXPECT_EQ(ValueOf("TXTFLD41=a=b ", "TXTFLD"), "a=b ");
    EXPECT_EQ(ValueOf("SCROLL193 =5", "SCROLL"), "5");
    EXPECT_EQ(ValueOf("SCROLL193=", "SCROLL"), "");
    EXPECT_EQ(ValueOf("SCROLL193 5", "SCROLL"), "(none)");
}

}  // namespace
}  // namespace kfx
