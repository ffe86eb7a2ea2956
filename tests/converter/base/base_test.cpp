#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "converter/base/complaint.h"
#include "converter/base/conversion_arguments.h"
#include "converter/base/names.h"
#include "converter/base/records.h"
#include "converter/driver/command_file.h"
#include "tests/support/printed.h"
#include "tests/support/temp_dir.h"

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(Records, LabelsValuesAndErrors) {
  EXPECT_EQ(Printed([] { AddOutput("MESH", "Body", false); }), "MESH: Body ");
  EXPECT_EQ(Printed([] { AddOutput("", "text", false); }), "text ");
  EXPECT_EQ(Printed([] { AddOutput("", true); }), "\n");
  EXPECT_EQ(Printed([] { AddOutput("START", INT64_MIN, false); }), "START: -9223372036854775808 ");
  EXPECT_EQ(Printed([] { AddError("no %s\n"); }), "ERROR: no %s\n\n");
}

TEST(Records, EncodedNames) {
  EXPECT_EQ(urlencode("a.b-c_d~e"), "a.b-c_d~e");
  EXPECT_EQ(urlencode("\t/%"), "% 9%2F%25");
  EXPECT_EQ(urlencode("\xC3\xA9"), "%FFFFFFC3%FFFFFFA9");
  EXPECT_EQ(urlencode(std::string_view("\0\x7f", 2)), "% 0%7F");
  EXPECT_EQ(encodeName(true, ""), "unnamed");
  EXPECT_EQ(encodeName(false, ""), "");
  EXPECT_THAT(QuotedList(std::vector<std::string>(20, "a")), EndsWith("'a', 'a'"));
  EXPECT_THAT(QuotedList(std::vector<std::string>(21, "a")), EndsWith("'a', 'a' and 1 more"));
}

TEST(Records, DumpOfACommand) {
  ConversionArguments args;
  args.exportObjectNames = {"Body", "Head"};  // not listed by the older form of command
  args.scaleFactor = 0.123456789F;
  EXPECT_THAT(args.toString(), HasSubstr("\texportObjectName = ALL OBJECTS\t"));
  EXPECT_THAT(args.toString(), HasSubstr("\tscaleFactor:0.123457\t"));
  args.commandVersion = 2;
  args.exportObjectName = "Body";
  args.scaleFactor = 1e-10F;
  args.type = static_cast<ObjectType>(MESH_OBJECT | NODE_OBJECT);
  EXPECT_THAT(
      args.toString(),
      HasSubstr("\texportObjectNames = \t0:Body\t1:Head\texportObjectName = Body\tshowLabels"));
  EXPECT_THAT(args.toString(), HasSubstr("\tscaleFactor:1e-10\t"));
  EXPECT_THAT(args.toString(), HasSubstr("\ttype =OUT OF RANGE\t"));
}

std::vector<std::string> WordsOf(std::string_view line) {
  std::vector<std::string> words;
  SplitCommandFileLine(line, words);
  return words;
}

TEST(Names, QuotesAndPieces) {
  EXPECT_EQ(removeUnneededDoubleQuotes("\"a b\""), "a b");
  EXPECT_EQ(removeUnneededDoubleQuotes("\"\""), "\"\"");  // too short to hold anything
  EXPECT_EQ(removeUnneededDoubleQuotes("\"ab"), "\"ab");
  EXPECT_EQ(removeUnneededDoubleQuotes("ab\""), "ab\"");
  EXPECT_THAT(Split("/a//b/", '/'), ElementsAre("", "a", "", "b", ""));
  EXPECT_THAT(Split("", '/'), ElementsAre(""));
  EXPECT_EQ(lastIndexOf("a/b/c", '/'), 3);
  EXPECT_EQ(lastIndexOf("abc", '/'), -1);
}

TEST(Names, PartsOfPaths) {
  EXPECT_EQ(getBaseFilenameFromFBXFileName("a/B.FBX"), "B.FBX");
  EXPECT_EQ(getBaseDirectoryFromFBXFileName("a/B.FBX"), "a/B");
  EXPECT_EQ(getBaseDirectoryFromFBXFileName("a.fbx.bak"), "a");
  EXPECT_EQ(getBaseDirectoryFromFBXFileName("a/b.obj"), "a/b.obj");
  EXPECT_EQ(getBaseDirectoryFromFBXFileName("abc"), "abc");
  EXPECT_EQ(getFileNameFromPath("C:\\models/skin.png"), "skin.png");
  EXPECT_EQ(getFileNameFromPath("models/t\\skin.png"), "skin.png");
}

TEST(Names, FilesOnDisk) {
  const TempDir dir;
  const std::string file = dir.Write("a.txt", "x");
  CheckDirectoryExistsAndCreate(dir.File("sub"));
  std::filesystem::create_symlink("nowhere", dir.File("dangling"));
  EXPECT_FALSE(fileExists(dir.File("dangling")));
  std::filesystem::create_symlink("ring", dir.File("ring"));
  EXPECT_FALSE(fileExists(dir.File("ring"))) << "its status can't be read";
  EXPECT_FALSE(fileExists(dir.File("a.txt/below")));
  EXPECT_THAT(ListFilesInDirectory(dir.Path()), ElementsAre(file));
  EXPECT_THAT(ListFilesInDirectory(file), IsEmpty());
  EXPECT_THAT(ListFilesInDirectory(dir.File("no")), IsEmpty());
}

TEST(CommandFile, WordsOfALine) {
  EXPECT_THAT(WordsOf(""), IsEmpty());
  EXPECT_THAT(WordsOf(" a.fbx  list mesh - "), ElementsAre("a.fbx", "list", "mesh", "-"));
  EXPECT_THAT(WordsOf("a\tb c"), ElementsAre("a\tb", "c"));  // a tab separates nothing
  // The last word keeps its quotes when it holds no blank.
  EXPECT_THAT(WordsOf(R"(list "ab")"), ElementsAre("list", "\"ab\""));
  // At the start of a line only the first character opens a quote; the closing one then opens ...
  EXPECT_THAT(WordsOf(R"(ab"cd ef" gh)"), ElementsAre("ab\"cd", " gh", "gh"));
  // ... further along any character of the next word does, and what stands before it is lost.
  EXPECT_THAT(WordsOf(R"(x ab"cd ef" gh)"), ElementsAre("x", "cd ef", "gh"));
  EXPECT_THAT(WordsOf(R"(a "" b)"), ElementsAre("a", "b"));
  EXPECT_THAT(WordsOf(R"(a "b"c d)"), ElementsAre("a", "b", "c", "d"));
  EXPECT_THAT(WordsOf(R"(a "b""c""d"e f)"), ElementsAre("a", "b", "c", "d", "e", "f"));
  // A quote that is never closed gives the rest of the line, and then its words again.
  EXPECT_THAT(WordsOf(R"("a b c)"), ElementsAre("a b c", "a", "b", "c"));
}

}  // namespace
