// Files as lines of text, and back.
#include "listview/source/text_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/temp_dir.h"

namespace {

TextFile Decoded(std::string_view bytes) {
  TextFile file;
  std::string why;
  EXPECT_TRUE(DecodeText(bytes, file, &why)) << why;
  return file;
}

std::string Refused(std::string_view bytes) {
  TextFile file;
  std::string why;
  EXPECT_FALSE(DecodeText(bytes, file, &why));
  return why;
}

// What is written of a file that nobody edited.
std::string Unedited(std::string_view bytes) {
  const TextFile file = Decoded(bytes);
  return EncodeText(file, file.text);
}

TEST(TextFile, IsUtf8WhereAllOfItIs) {
  const TextFile file = Decoded("caf\xC3\xA9\n");
  EXPECT_FALSE(file.latin1);
  EXPECT_EQ(file.text, "caf\xC3\xA9\n");
}

TEST(TextFile, IsLatin1WhereAByteIsNotUtf8) {
  const TextFile file = Decoded("caf\xE9\n");
  EXPECT_TRUE(file.latin1);
  EXPECT_EQ(file.text, "caf\xC3\xA9\n");
}

TEST(TextFile, IsWrittenAsItWasRead) {
  const std::string all = [] {
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte)
      if (byte != '\r') bytes += static_cast<char>(byte);
    return bytes;
  }();
  for (const std::string_view bytes :
       {std::string_view(), std::string_view("a"), std::string_view("a\nb\n"),
        std::string_view("a\r\nb\r\n"), std::string_view("a\rb\r"),
        std::string_view("\xEF\xBB\xBFint a;\r\n"), std::string_view("caf\xE9\r\n"),
        std::string_view("caf\xC3\xA9"), std::string_view(all)})
    EXPECT_EQ(Unedited(bytes), bytes);
}

TEST(TextFile, LinesAreCountedWhateverEndsThem) {
  EXPECT_EQ(Decoded("1\n2\r\n3\r4").text, "1\n2\n3\n4");
}

TEST(TextFile, TheLineEndOfMostLinesIsWrittenForAll) {
  const TextFile file = Decoded("1\r\n2\r\n3\n4");
  EXPECT_EQ(EncodeText(file, file.text), "1\r\n2\r\n3\r\n4");
}

TEST(TextFile, TheByteOrderMarkIsNoPartOfTheText) {
  const TextFile file = Decoded("\xEF\xBB\xBFint a;");
  EXPECT_EQ(file.text, "int a;");
  EXPECT_EQ(EncodeText(file, "int b;"), "\xEF\xBB\xBFint b;");
}

TEST(TextFile, ACharacterThatLatin1LacksMakesTheWholeFileUtf8) {
  const TextFile file = Decoded("caf\xE9");
  EXPECT_EQ(EncodeText(file, "caf\xC3\xA9 2 \xE2\x82\xAC"), "caf\xC3\xA9 2 \xE2\x82\xAC");
}

TEST(TextFile, ASeparatorThatOnlyTextControlsKnowMovesNoLine) {
  for (const char* separator : {"\xE2\x80\xA9", "\xEF\xB7\x90", "\xEF\xB7\x91"}) {
    const std::string bytes = std::string("a") + separator + "b\nc";
    const TextFile file = Decoded(bytes);
    EXPECT_EQ(file.text.find(separator), file.text.npos);
    EXPECT_EQ(EncodeText(file, file.text), bytes);
  }
}

TEST(TextFile, AFileWithZeroBytesIsNotText) {
  EXPECT_EQ(Refused(std::string_view("ab\0cd", 5)), "The file is not text: it holds zero bytes.");
}

TEST(TextFile, AHugeFileIsRefused) {
  std::string bytes;
  const std::string line = std::string(63, 'x') + "\n";
  while (bytes.size() < TextFile::kLargestBytes) bytes += line;
  Decoded(bytes);
  bytes += '\n';
  EXPECT_EQ(Refused(bytes), "The file is too large to be shown: more than 16 MB.");
}

TEST(TextFile, AnEndlessLineIsRefused) {
  const std::string line(TextFile::kLongestLineBytes, 'x');
  Decoded(line + "\n" + line);
  EXPECT_EQ(Refused("a\n" + line + "x"),
            "The file has a line that is too long to be shown: more than 256 KB.");
}

TEST(TextFile, AFileOfTooManyLinesIsRefusedWhateverEndsThem) {
  for (const std::string end : {"\n", "\r", "\r\n"}) {
    std::string bytes;
    for (std::size_t line = 1; line < TextFile::kMostLines; ++line) bytes += end;
    EXPECT_EQ(Unedited(bytes + "last" + end), bytes + "last" + end);
    EXPECT_EQ(Refused(bytes + "last" + end + "x"),
              "The file has too many lines to be shown: more than 1,000,000.");
    EXPECT_EQ(Refused(bytes + end + end),
              "The file has too many lines to be shown: more than 1,000,000.");
  }
}

TEST(TextFile, IsReadFromTheDisk) {
  const TempDir directory;
  TextFile file;
  std::string why;
  EXPECT_TRUE(ReadTextFile(directory.File("a.c", "int a;\n"), file, &why));
  EXPECT_EQ(file.text, "int a;\n");
}

TEST(TextFile, AHugeFileIsNotReadWhole) {
  const TempDir directory;
  const std::string path = directory.File("big.c", "");
  ASSERT_EQ(truncate(path.c_str(), off_t{1} << 40), 0);
  TextFile file;
  std::string why;
  EXPECT_FALSE(ReadTextFile(path, file, &why));
  EXPECT_EQ(why, "The file is too large to be shown: more than 16 MB.");
}

TEST(TextFile, WhatIsNoRegularFileIsRefusedAndNotWaitedFor) {
  const TempDir directory;
  TextFile file;
  std::string why;
  EXPECT_FALSE(ReadTextFile(directory.Path(), file, &why));
  EXPECT_EQ(why, "Is a directory");
  ASSERT_EQ(mkfifo(directory.File("pipe").c_str(), 0600), 0);
  EXPECT_FALSE(ReadTextFile(directory.File("pipe"), file, &why));
  EXPECT_EQ(why, "Not a regular file");
  EXPECT_FALSE(ReadTextFile(directory.File("missing"), file, &why));
  EXPECT_EQ(why, "No such file or directory");
}

}  // namespace
