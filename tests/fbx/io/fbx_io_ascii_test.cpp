// The grammar of ASCII files.
#include <cstdlib>
#include <limits>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/io/stored_value.h"
#include "tests/fbx/io/opened_io.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(FbxIOAscii, TokensLinesAndComments) {
  struct Case {
    std::string text;
    const char* name;
    std::vector<std::string> values;
    int32_t instance = 0;
  };
  const std::vector<Case> cases = {
      {"N: \"a:b\", \"\", \"a,b\", c\n", "N", {"a:b", "", "a,b", "c"}},
      {"My Field : 1\nOther: 2", "My Field", {"1"}},
      {"\" A \t\" : 1", " A", {"1"}},
      {"A: 1 2,3 ,4,,5\n", "A", {"1", "2", "3", "4", "5"}},
      {"A:1\nA: 2", "A", {"2"}, 1},
      {"A:\r\nB: 1\r\n", "A", {}},
      {"A: \"x&quot;y&lf;z&cr;&amp;\"", "A", {"x\"y\nz\r&amp;"}},
      // Escapes are replaced one kind after the other.
      {"A: \"&l&quot;f;\"", "A", {"&l\"f;"}},
      {"A: \"never closed", "A", {"never closed"}},
      {std::string("A: \"x\0y\"", 8), "A", {"x"}},
      {"A: 1,\n   2,\n\n3\n  ,4\nB: 5", "A", {"1", "2", "3", "4"}},
      // An indented line without a comma around begins anew, blanks in its name or not.
      {"A: 1\n  My B: 2\n", "A", {"1"}},
      {"A: 1\n  My B: 2\n", "My B", {"2"}},
      {"A: 1\n ; B: 2 { \" \n;\nC: 3", "A", {"1"}},
      {"A: 1 ;2\n", "A", {"1", ";2"}},
  };
  for (const Case& c : cases) {
    OpenedIO file(MakeAscii(c.text));
    ASSERT_TRUE(file.io.FieldReadBegin(c.name, c.instance)) << c.text;
    std::vector<std::string> values;
    while (file.io.FieldReadGetRemain() > 0) values.emplace_back(file.io.FieldReadC());
    EXPECT_EQ(values, c.values) << c.text;
  }
}

TEST(FbxIOAscii, Blocks) {
  const std::string text =
      "A: \"{\", 1 {\n"
      "  ; }\n"
      "  B: \"}\" { C: 2 }\n"
      "  D: 3\n"
      "} E: 4 {}\n"
      "F: {\n G: 5\n} {\n G: 6\n}\n"
      "H: 7";
  OpenedIO file(MakeAscii(text));
  FbxIO& io = file.io;
  ASSERT_TRUE(file.isRead);
  EXPECT_EQ(io.FieldReadI("E"), 4);
  EXPECT_EQ(io.FieldReadI("H"), 7);
  ASSERT_TRUE(io.FieldReadBegin("A"));
  EXPECT_EQ(io.FieldReadGetCount(), 2);
  ASSERT_TRUE(io.FieldReadBlockBegin());
  EXPECT_EQ(io.FieldReadI("D"), 3);
  ASSERT_TRUE(io.FieldReadBegin("B"));
  EXPECT_EQ(io.FieldReadC(), "}");
  ASSERT_TRUE(io.FieldReadBlockBegin());
  EXPECT_EQ(io.FieldReadI("C"), 2);
  io.FieldReadBlockEnd();
  io.FieldReadBlockEnd();
  // A block without a name of its own is another record of the last one.
  ASSERT_EQ(io.FieldGetInstanceCount("F"), 2);
  ASSERT_TRUE(io.FieldReadBegin("F", 1) && io.FieldReadBlockBegin());
  EXPECT_EQ(io.FieldReadI("G"), 6);
}

// A quoted text runs to its closing quote, whatever its lines look like.
TEST(FbxIOAscii, TextsOverSeveralLines) {
  const std::string name = "two\n  ; lines {\r\n}";
  const std::string text = "A: \"" + name + "\", 1 {\n B: \"" + name + "\" {\n C: 2\n }\n}\nD: 3\n";
  OpenedIO file(MakeAscii(text));
  EXPECT_EQ(file.io.FieldReadI("D"), 3);
  ASSERT_TRUE(file.io.FieldReadBegin("A"));
  EXPECT_EQ(file.io.FieldReadC(), name);
  EXPECT_EQ(file.io.FieldReadI(), 1);
  ASSERT_TRUE(file.io.FieldReadBlockBegin());
  ASSERT_TRUE(file.io.FieldReadBegin("B"));
  EXPECT_EQ(file.io.FieldReadC(), name);
  ASSERT_TRUE(file.io.FieldReadBlockBegin());
  EXPECT_EQ(file.io.FieldReadI("C"), 2);
}

TEST(FbxIOAscii, OddBlocks) {
  // Blocks that aren't closed end with the file.
  OpenedIO file(MakeAscii("A: 1 {\n B: 2 {\n C: 3\n"));
  ASSERT_TRUE(file.io.FieldReadBegin("A") && file.io.FieldReadBlockBegin());
  ASSERT_TRUE(file.io.FieldReadBegin("B") && file.io.FieldReadBlockBegin());
  EXPECT_EQ(file.io.FieldReadI("C"), 3);
  // One closed too often ends the document.
  OpenedIO closed(MakeAscii("A: 1\n}\nB: 2\n"));
  EXPECT_EQ(closed.io.FieldReadI("A"), 1);
  EXPECT_FALSE(closed.io.FieldReadBegin("B"));
  // Stray marks lead nowhere.
  OpenedIO stray(MakeAscii("A: 70@\nB: 1 @ 2 {\n C: 3\n}\n"));
  EXPECT_FALSE(stray.io.FieldReadBegin("A") && stray.io.FieldReadBlockBegin());
  ASSERT_TRUE(stray.io.FieldReadBegin("B") && stray.io.FieldReadBlockBegin());
  EXPECT_EQ(stray.io.FieldReadI("C"), 3);
}

TEST(FbxIOAscii, Arrays) {
  const auto read = [](const std::string& text) {
    OpenedIO file(MakeAscii("V: " + text));
    std::vector<double> out = {99.0};
    const bool isRead = file.io.FieldReadArray("V", out);
    EXPECT_EQ(isRead, !out.empty());
    return out;
  };
  EXPECT_THAT(read("*3 {\n a: 1,-2.5,\n3e2\n}"), ElementsAre(1.0, -2.5, 300.0));
  EXPECT_THAT(read("*2 { a: x, 1e-310 }"), ElementsAre(0.0, 0.0));
  const std::vector<const char*> refused = {"*3 { a: 1,2 }",
                                            "*1 { a: 1,2 }",
                                            "*2 { a: 1\n a: 2 }",
                                            "*2 { a: 1,2\n b: }",
                                            "*0 { a: }",
                                            "*-1 { a: 1 }",
                                            "*9000000000000000000 { a: 1 }",
                                            "2 { a: 1,2 }",
                                            "*1"};
  for (const char* text : refused) EXPECT_THAT(read(text), IsEmpty()) << text;

  OpenedIO file(MakeAscii("V: *2, 7 { a: 1,-1 }"));
  ASSERT_TRUE(file.io.FieldReadBegin("V"));
  EXPECT_EQ(file.io.FieldReadGetType(), 'a');
  std::vector<bool> bools;
  EXPECT_TRUE(file.io.FieldReadArray(bools));
  EXPECT_THAT(bools, ElementsAre(true, true));
  EXPECT_EQ(file.io.FieldReadGetType(), 'S') << "numbers are text";
  EXPECT_EQ(file.io.FieldReadI(), 7);
}

TEST(FbxIOAscii, NumbersReadAsTheCLibraryReadsThem) {
  EXPECT_EQ(ParseUnsigned(" +42x"), 42U);
  EXPECT_EQ(static_cast<int32_t>(ParseUnsigned("-7")), -7);
  EXPECT_EQ(ParseUnsigned("99999999999999999999"), std::numeric_limits<uint64_t>::max());
  EXPECT_EQ(ParseUnsigned("word"), 0U);
  EXPECT_EQ(ParseSigned("-9223372036854775808"), std::numeric_limits<int64_t>::min());
  EXPECT_EQ(ParseSigned("9223372036854775808"), std::numeric_limits<int64_t>::max());
  EXPECT_EQ(ParseSigned("-"), 0);

  std::istringstream texts(
      "1.5| \t-2e3,|+.5|5.|1e|1e+|0x1.8p1|0x|-0x10|--1|+-1|inf|-INF|1.#INF|1e400|-1e400|1e-400|"
      "4.9e-324|0.1d||e5|1,5|123456789012345678901234567890");
  for (std::string text; std::getline(texts, text, '|');) {
    EXPECT_EQ(ParseReal(text), std::atof(text.c_str())) << text;
  }
  const std::string zeros(400, '0');
  EXPECT_EQ(ParseReal("0." + zeros + "1"), 0.0);
  EXPECT_EQ(ParseReal("1" + zeros), std::numeric_limits<double>::infinity());
  EXPECT_EQ(ParseReal("1" + zeros + "e-99999999999999999999"), 0.0);
  EXPECT_EQ(ParseReal("0." + zeros + "1e401"), 1.0);
}

}  // namespace
