#include "converter/driver/option_parser.h"

#include <array>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "converter/driver/usage.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::array<OptionDescriptor, 5> kTable{{
    {1, "v", "verbose", ArgumentCheck::kNone, "-v \tsay more"},
    {2, "r", "root", ArgumentCheck::kRequired, "-r=name --root=name \twhere to start from"},
    {3, "z", "", ArgumentCheck::kRequired, "-z file \tread a file"},
    {4, "", "up", ArgumentCheck::kRequired, " --up \tthe up axis"},
    {0, "", "", ArgumentCheck::kNone, "\nUSAGE:\n  one two three four five six seven"},
}};

// What was parsed, as "index" or "index=value", then "|" and the positional words, or the error.
std::vector<std::string> Parse(const std::vector<std::string>& words) {
  const OptionParser parser(kTable, words);
  std::vector<std::string> seen;
  for (const ParsedOption& option : parser.Options()) {
    std::string text = std::to_string(option.row->index);
    if (option.arg) text.append("=").append(*option.arg);
    seen.push_back(text);
  }
  if (!parser.Error().empty()) {
    seen.push_back(parser.Error());
  } else if (!parser.Positional().empty()) {
    seen.emplace_back("|");
    seen.insert(seen.end(), parser.Positional().begin(), parser.Positional().end());
  }
  return seen;
}

TEST(OptionParser, OptionsEndAtTheFirstOtherWord) {
  EXPECT_THAT(Parse({}), IsEmpty());
  EXPECT_THAT(Parse({"-v", "file", "-v"}), ElementsAre("1", "|", "file", "-v"));
  EXPECT_THAT(Parse({"-v", "-", "-v"}), ElementsAre("1", "|", "-", "-v"));
  EXPECT_THAT(Parse({"-v", "", "-v"}), ElementsAre("1", "|", "", "-v"));
  EXPECT_THAT(Parse({"-v", "--", "-v"}), ElementsAre("1", "|", "-v"));  // "--" itself is dropped
}

TEST(OptionParser, LongNamesMatchInFullAndTakeAValue) {
  EXPECT_THAT(Parse({"--root=a=b", "x"}), ElementsAre("2=a=b", "|", "x"));
  EXPECT_THAT(Parse({"--root", "-v", "x"}), ElementsAre("2=-v", "|", "x"));
  EXPECT_THAT(Parse({"--roo=a"}), ElementsAre("0"));
  EXPECT_THAT(Parse({"--roots=a"}), ElementsAre("0"));
  EXPECT_THAT(Parse({"--=a", "x"}), ElementsAre("0", "|", "x"));  // no row has the empty name
  EXPECT_THAT(Parse({"--v"}), ElementsAre("0"));
  EXPECT_THAT(Parse({"--verbose=3", "x"}), ElementsAre("1", "|", "x"));  // keeps no value
}

TEST(OptionParser, ShortOptionsCluster) {
  EXPECT_THAT(Parse({"-vvx", "w"}), ElementsAre("1", "1", "0", "|", "w"));
  EXPECT_THAT(Parse({"-vrHips", "w"}), ElementsAre("1", "2=Hips", "|", "w"));
  EXPECT_THAT(Parse({"-vr", "Hips", "w"}), ElementsAre("1", "2=Hips", "|", "w"));
  EXPECT_THAT(Parse({"-z=list.txt"}), ElementsAre("3==list.txt"));  // the "=" is part of it
  EXPECT_THAT(Parse({"-up"}), ElementsAre("0", "0"));  // one dash never starts a long name
}

TEST(OptionParser, AMissingValueStopsTheParsing) {
  EXPECT_THAT(Parse({"-v", "--root=", "-v"}),
              ElementsAre("1", "Option '--root=' requires an argument\n"));
  EXPECT_THAT(Parse({"--root"}), ElementsAre("Option '--root' requires an argument\n"));
  EXPECT_THAT(Parse({"--root", "", "x"}), ElementsAre("Option '--root' requires an argument\n"));
  EXPECT_THAT(Parse({"-vz"}), ElementsAre("1", "Option 'z' requires an argument\n"));
}

TEST(UsageScreen, AlignsWrapsAndMovesTheLastColumn) {
  // The column is as wide as the widest cell that leaves 75% of the line; wider ones push their
  // last cell to a line of its own.
  EXPECT_EQ(UsageScreen(kTable, 32, 50, 75),
            "-v      say more\n"
            "-r=name --root=name\n"
            "        where to start from\n"
            "-z file read a file\n"
            " --up   the up axis\n"
            "\n"
            "USAGE:\n"
            "  one two three four five six\n"
            "  seven\n");
  // No room at all still prints every word.
  EXPECT_THAT(UsageScreen(kTable, -1, 50, 75), testing::StartsWith("-v\nsay\nmore\n"));
}

}  // namespace
