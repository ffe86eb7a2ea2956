// Which files open, and what their heads and tails say.
#include <cstdlib>
#include <iterator>
#include <limits>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "fbx/io/stored_value.h"
#include "tests/fbx/io/opened_io.h"
#include "tests/support/temp_dir.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string Replaced(std::string bytes, std::string_view find, std::string_view replace) {
  const size_t at = bytes.find(find);
  EXPECT_NE(at, std::string::npos);
  return bytes.replace(at, find.size(), replace);
}

TEST(FbxIOOpen, BothMagicTextsReadAlike) {
  const std::string bytes = MakeFile({{"A", {1}}});
  EXPECT_EQ(OpenedIO(Replaced(bytes, "Kaydara FBX Binary  ", "Autodesk FBX Binary ")).isRead, true);
  OpenedIO other(Replaced(bytes, "Kaydara", "Kaydora"));
  EXPECT_FALSE(other.isOpen);
  EXPECT_EQ(other.status.GetCode(), FbxStatus::eFailure);
}

TEST(FbxIOOpen, OffsetWidthMustFitTheVersion) {
  const auto opens = [](FbxFormat format, FbxIO::BinaryType type) {
    OpenedIO file(MakeFile({{"A", {1}}}, format), type);
    // A mismatch is silent, so that the other width can be tried.
    EXPECT_FALSE(file.status.Error());
    return file.isRead;
  };
  EXPECT_TRUE(opens({.version = 7400}, FbxIO::eBinary32));
  EXPECT_FALSE(opens({.version = 7400}, FbxIO::eBinary64));
  EXPECT_TRUE(opens({.version = 7500}, FbxIO::eBinary64));
  EXPECT_FALSE(opens({.version = 7500}, FbxIO::eBinary32));
  EXPECT_TRUE(opens({.version = 7450}, FbxIO::eBinary32));
  EXPECT_TRUE(opens({.version = 7450, .wideOffsets = true}, FbxIO::eBinary64));
  EXPECT_FALSE(opens({.ascii = true, .version = 7500}, FbxIO::eBinary32));
  EXPECT_FALSE(opens({.ascii = true, .version = 7400}, FbxIO::eBinary64));
  // The wrong one of the two widths between is noticed at the first record.
  EXPECT_FALSE(OpenedIO(MakeFile({}, {.version = 7450}), FbxIO::eBinary64).isOpen);
}

TEST(FbxIOOpen, VersionsThatWereNotAskedForAreRefused) {
  FbxStatus status;
  FbxIO io(FbxIO::eBinary32, status);
  EXPECT_FALSE(io.ProjectOpen(std::string_view(MakeFile({}))));
  EXPECT_EQ(status.GetCode(), FbxStatus::eInvalidFileVersion);
}

TEST(FbxIOOpen, HeaderBlockFillsTheInfo) {
  for (const int headerVersion : {1003, 1001}) {
    OpenedIO file(WriteFbx({{"FBXHeaderExtension",
                             {headerVersion},
                             {{"FBXHeaderVersion", {headerVersion}},
                              {"FBXVersion", {7300}},
                              {"CurrentCameraResolution", {}, {{"CameraResolutionH", {200.0}}}},
                              {"CreationTimeStamp", {}, {{"Version", {1000}}, {"Year", {2024}}}},
                              {"Creator", {"builder"}},
                              {"OtherFlags", {}, {{"FlagPLE", {1}}}}}}}));
    EXPECT_EQ(file.io.GetFileVersionNumber(), 7300) << "in the place of the header's";
    EXPECT_EQ(file.info.defaultRenderResolution.height, 200.0);
    const std::string rest = file.info.creator.Text() +
                             std::to_string(file.info.creationTimeStamp.year) +
                             (file.info.ple ? "ple" : "");
    EXPECT_EQ(rest, headerVersion == 1003 ? "builder2024ple" : "0");
  }
}

TEST(FbxIOOpen, EncryptedFilesAreRefused) {
  const auto open = [](int type) {
    return WriteFbx(
        {{"FBXHeaderExtension", {}, {{"FBXVersion", {7400}}, {"EncryptionType", {type}}}}});
  };
  OpenedIO encrypted(open(1));
  EXPECT_EQ(encrypted.status.GetCode(), FbxStatus::eInvalidFile);
  OpenedIO unknown(open(2));
  EXPECT_EQ(unknown.status.GetCode(), FbxStatus::eFailure);
  EXPECT_STREQ(unknown.status.GetErrorString(), "Encryption type is not supported");
}

TEST(FbxIOOpen, IdTimeAndFooterAreNeverMissed) {
  const FbxRecord id("FileId", {FbxRaw{std::string(16, 'x')}});
  const FbxRecord time("CreationTime", {"2024-01-01 00:00:00:000"});
  for (const FbxRecords& about : {FbxRecords{}, {id}, {time}, {id, time}}) {
    for (const bool footer : {false, true}) {
      FbxRecords records = {{"FBXHeaderExtension", {}, {{"FBXVersion", {7400}}}}, {"A", {1}}};
      records.insert(records.begin() + 1, about.begin(), about.end());
      OpenedIO file(WriteFbx(records, {.footer = footer}));
      EXPECT_TRUE(file.isRead);
      EXPECT_EQ(file.io.FieldReadI("A"), 1);
    }
  }
}

TEST(FbxIOOpen, FilesCutBehindTheirLastRecordAreRead) {
  for (const int version : {7400, 7500}) {
    const FbxFormat format = {.version = version};
    const auto type = version < 7500 ? FbxIO::eBinary32 : FbxIO::eBinary64;
    const std::string bytes = MakeFile({{"A", {1}, {{"B", {2}}}}}, format);
    const std::string bare =
        MakeFile({{"A", {1}, {{"B", {2}}}}}, {.version = version, .footer = false});
    const size_t last = bare.size() - (version < 7500 ? 13 : 25);
    for (size_t size = last; size <= bytes.size(); ++size) {
      OpenedIO cut(bytes.substr(0, size), type);
      ASSERT_TRUE(cut.isRead) << size;
      EXPECT_EQ(cut.io.FieldReadI("A"), 1) << size;
      EXPECT_EQ(cut.io.ProjectGetSectionCount(), 1) << size;
    }
    for (size_t size = last - 30; size < last; ++size) {
      OpenedIO cut(bytes.substr(0, size), type);
      EXPECT_FALSE(cut.isRead) << size;
      EXPECT_EQ(cut.status.GetCode(), FbxStatus::eInvalidFile);
    }
  }
}

TEST(FbxIOOpen, AsciiFirstLines) {
  const auto version = [](const std::string& line) {
    OpenedIO file(line + "\nA: 1\n");
    return file.isOpen ? file.io.GetFileVersionNumber() : -1;
  };
  const std::vector<std::pair<const char*, int>> cases = {
      {"; FBX 6.1.0 Project FILE", 6100},
      {"; Other 5.2 project file", 5200},
      {"; Filmbox 2.7 project file", 2001},
      {"; Filmbox 4.5 project file", 4050},
      {"; Filmbox 3.5 project file", 3500},
      {"; FBX 7.4.0 object file", -1},
      {"# FBX 7.4.0 project file", -1},
      {"; FBX 7,4.0 project file", -1},
      {"; FBX 7.4,0 project file", -1},
      {"", -1},
      {"\xEF\xBB\xBF; FBX 7.1.0 project file", 7100},
      {"\r\n \n; FBX 7.2.0 project file", 7200},
      {"\xEF\xBB\xBF\n\n; FBX 7.3.0 project file", 7300},
      {"\n\xEF\xBB\xBF; FBX 7.3.0 project file", -1}};
  for (const auto& [line, expected] : cases) EXPECT_EQ(version(line), expected) << line;

  // Only so much of the line is looked at, but all of it is a comment.
  OpenedIO wordy("; FBX 7.4.0 project file" + std::string(100, ' ') + "B: 2\nA: 1\n");
  EXPECT_EQ(wordy.io.FieldGetCount(), 1);
  EXPECT_EQ(wordy.io.FieldReadI("A"), 1);
}

TEST(FbxIOOpen, FilesOnDisk) {
  TempDir folder;
  FbxStatus status;
  FbxIO io(FbxIO::eBinary32, status);
  io.Fbx7Support(true);
  const std::string absent = folder.File("absent.fbx");
  const std::string before = MakeFile({{"A", {1}}});
  EXPECT_TRUE(io.ProjectOpen(std::string_view(before), true));
  EXPECT_FALSE(io.ProjectOpen(absent.c_str()));
  EXPECT_EQ(io.FieldReadI("A"), 0);
  EXPECT_EQ(status.GetErrorString(), "Unable to open file " + absent);
  EXPECT_FALSE(io.ProjectOpen(folder.Path().c_str())) << "a folder";
  const std::string pipe = folder.File("pipe.fbx");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_FALSE(io.ProjectOpen(pipe.c_str())) << "a pipe that nobody writes into";

  const std::string empty = folder.Write("empty.fbx", "");
  EXPECT_FALSE(io.ProjectOpen(empty.c_str()));
  EXPECT_EQ(status.GetCode(), FbxStatus::eFailure);
  EXPECT_EQ(status.GetErrorString(), "File is corrupted " + empty);
}

// Every kind of value, through every form of file.

class EveryForm : public testing::TestWithParam<FbxFormat> {
 protected:
  static OpenedIO Open(FbxRecords records) {
    const FbxFormat& format = GetParam();
    const bool isWide = format.version >= 7500 || format.wideOffsets;
    return OpenedIO(MakeFile(std::move(records), format),
                    isWide ? FbxIO::eBinary64 : FbxIO::eBinary32);
  }
};

INSTANTIATE_TEST_SUITE_P(
    FbxIO, EveryForm,
    testing::Values(FbxFormat{}, FbxFormat{.bigEndian = true, .compress = true},
                    FbxFormat{.version = 7700, .bigEndian = true},
                    FbxFormat{.version = 7450, .compress = true, .wideOffsets = true},
                    FbxFormat{.ascii = true}, FbxFormat{.ascii = true, .version = 7500}));

TEST_P(EveryForm, FindsManyNamesAgain) {
  FbxRecords records;
  for (int i = 0; i < 90; ++i) records.push_back({"F" + std::to_string(i % 40), {i}});
  OpenedIO file = Open(records);
  for (int i = 0; i < 40; ++i) {
    const std::string name = "F" + std::to_string(i);
    EXPECT_EQ(file.io.FieldGetInstanceCount(name), i < 10 ? 3 : 2);
    EXPECT_EQ(file.io.FieldReadI(name), i);
  }
}

TEST_P(EveryForm, GivesValuesInOrder) {
  const std::string raw("\0\xFF\x10 raw", 7);
  const std::string large = std::string(70000, 'a') + "z";
  // 2^-125 and 2^-1021 are the smallest that stay.
  OpenedIO file = Open({{"V",
                         {7, int64_t{-5'000'000'000}, 0.1F, 0x1p-125F, 0x1p-126F, "text",
                          int16_t{-3}, int8_t{-4}, 'T', FbxRaw{raw}, large, true}},
                        {"D", {0x1p-1022, 0x1p-1021, -0x1p-1022, 1e-300}},
                        {"T", {int64_t{5}, int64_t{46186158000}}},
                        {"i", {std::vector<int32_t>{0, 1, -3}}},
                        {"b", {std::vector<bool>{true, false}}},
                        {"c", {std::vector<uint8_t>{1, 200}}},
                        {"h", {std::vector<int16_t>{-2, 300}}}});
  FbxIO& io = file.io;
  EXPECT_EQ(io.GetFileVersionNumber(), GetParam().version);
  ASSERT_TRUE(io.FieldReadBegin("V")) << file.status.GetErrorString();
  EXPECT_EQ(io.FieldReadGetCount(), 12);
  EXPECT_EQ(io.FieldReadI(), 7);
  EXPECT_EQ(io.FieldReadLL(), -5'000'000'000);
  float floats[3];
  io.FieldReadFn(floats, 3);
  EXPECT_THAT(floats, ElementsAre(0.1F, 0x1p-125F, 0.0F));
  EXPECT_EQ(io.FieldReadC(), "text");
  EXPECT_EQ(io.FieldReadShort(), -3);
  EXPECT_EQ(io.FieldReadByte(), -4);
  EXPECT_EQ(io.FieldReadCH(), 'T');
  EXPECT_EQ(io.FieldReadR(), raw);
  EXPECT_EQ(io.FieldReadC(), large);
  EXPECT_EQ(io.FieldReadGetRemain(), 1);
  EXPECT_TRUE(io.FieldReadB());
  // Past the last value everything is the default.
  EXPECT_EQ(io.FieldReadI(), 0);
  EXPECT_EQ(io.FieldReadC(), "");
  EXPECT_EQ(io.FieldReadGetType(), 'S');
  EXPECT_EQ(io.FieldReadGetRemain(), 0);

  double doubles[4];
  io.FieldRead4D("D", doubles, nullptr);
  double copy[4];
  io.FieldRead4D("Absent", copy, doubles);
  io.FieldRead4D("Absent", copy, nullptr);
  EXPECT_THAT(copy, ElementsAre(0.0, 0x1p-1021, 0.0, 1e-300));
  EXPECT_EQ(io.FieldReadTS("T").start.Get(), 5);
  EXPECT_EQ(io.FieldReadTS("T").stop.GetSecondDouble(), 1.0);
  std::vector<uint32_t> unsigneds;
  std::vector<bool> bools;
  std::vector<uint8_t> bytes;
  std::vector<int16_t> shorts;
  EXPECT_TRUE(io.FieldReadArray("i", unsigneds) && io.FieldReadArray("b", bools) &&
              io.FieldReadArray("c", bytes) && io.FieldReadArray("h", shorts));
  EXPECT_THAT(unsigneds, ElementsAre(0U, 1U, 0xFFFFFFFDU));
  EXPECT_THAT(bools, ElementsAre(true, false));
  EXPECT_THAT(bytes, ElementsAre(1, 200));
  EXPECT_THAT(shorts, ElementsAre(-2, 300));
  // The vector that an array doesn't come into is left empty.
  EXPECT_FALSE(io.FieldReadArray("absent", shorts));
  EXPECT_TRUE(shorts.empty());
}

TEST_P(EveryForm, WalksNestedListsAndReturns) {
  OpenedIO file = Open({{"Objects",
                         {},
                         {{"Model", {1}, {{"Version", {232}}}},
                          {"Geometry", {2}},
                          {"Model", {3}, {{"Version", {233}}}},
                          {"Another", {4}}}},
                        {"Last", {9}}});
  FbxIO& io = file.io;
  EXPECT_FALSE(io.FieldReadBegin("Model"));
  ASSERT_TRUE(io.FieldReadBegin("Objects") && io.FieldReadIsBlock() && io.FieldReadBlockBegin());
  // Names are sorted; records of one name keep their order.
  ASSERT_EQ(io.FieldGetCount(), 3);
  const std::vector<std::string_view> names = {"Another", "Geometry", "Model", ""};
  for (int32_t i = 0; i < 4; ++i) EXPECT_EQ(io.FieldGetName(i), names[static_cast<size_t>(i)]);
  ASSERT_EQ(io.FieldGetInstanceCount("Model"), 2);
  ASSERT_TRUE(io.FieldReadBegin("Model"));
  for (int32_t k = 0; k < 2; ++k) {
    EXPECT_EQ(io.FieldReadI(), 1 + 2 * k);
    ASSERT_TRUE(io.FieldReadBlockBegin());
    EXPECT_EQ(io.FieldReadI("Version", 100), 232 + k);
    EXPECT_EQ(io.FieldReadI("Absent", 100), 100);
    io.FieldReadBlockEnd();
    io.FieldReadEnd();
  }
  // Past the last record there is nothing to read.
  EXPECT_EQ(io.FieldReadI(), 0);
  EXPECT_FALSE(io.FieldReadBlockBegin());
  ASSERT_TRUE(io.FieldReadBegin(2, 1));
  EXPECT_EQ(io.FieldReadI(), 3);
  EXPECT_FALSE(io.FieldReadBegin("Model", 2));
  EXPECT_FALSE(io.FieldReadBegin("Geometry") && io.FieldReadBlockBegin());
  io.FieldReadBlockEnd();
  EXPECT_EQ(io.FieldReadI("Last"), 9);
}

// Names are remembered from list to list, and small lists are taken whole.
TEST_P(EveryForm, ListsOweNothingToThoseBefore) {
  const std::vector<std::string> orders = {"ABC", "ABC", "BCA", "AC", "ABC", "AAB", "C", "ABCD"};
  FbxRecords lists;
  for (int copies = 1; copies < 60; copies = copies * 3 / 2 + 1) {
    for (const std::string& order : orders) {
      FbxRecord& list = lists.emplace_back("List");
      for (int i = 0; i < copies * static_cast<int>(order.size()); ++i) {
        const auto letter = static_cast<size_t>(i) % order.size();
        list.Add({std::string(1, order[letter]), {i, "text"}});
      }
    }
  }
  using Numbers = std::map<std::string, std::vector<int32_t>>;
  OpenedIO file = Open(lists);
  for (size_t l = 0; l < lists.size(); ++l) {
    Numbers expected;
    for (const FbxRecord& record : lists[l].children) {
      expected[record.name].push_back(std::get<int32_t>(record.values[0]));
    }
    ASSERT_TRUE(file.io.FieldReadBegin("List", static_cast<int32_t>(l)));
    ASSERT_TRUE(file.io.FieldReadBlockBegin());
    Numbers read;
    for (int32_t field = 0; field < file.io.FieldGetCount(); ++field) {
      const std::string name(file.io.FieldGetName(field));
      for (int32_t k = 0; k < file.io.FieldGetInstanceCount(name); ++k) {
        ASSERT_TRUE(file.io.FieldReadBegin(name, k));
        read[name].push_back(file.io.FieldReadI());
        EXPECT_EQ(file.io.FieldReadC(), "text");
      }
    }
    EXPECT_EQ(read, expected) << "list " << l;
    file.io.FieldReadBlockEnd();
  }
}

TEST(FbxIOValues, OlderArraysArePlainLists) {
  OpenedIO file(MakeFile({{"V", {1, 0, 2}}}, {.version = 6100}));
  std::vector<bool> bools;
  EXPECT_TRUE(file.io.FieldReadArray("V", bools));
  EXPECT_THAT(bools, ElementsAre(true, false, true));
}

TEST(FbxIOValues, WrongTypesReadAsDefaults) {
  OpenedIO file(
      MakeFile({{"T", {2.0}}, {"V", {"text", 1, 2.0, 3, 4.5, 6.5F, std::vector<float>{1.0F}}}}));
  EXPECT_EQ(file.io.FieldReadT("T").GetSecondDouble(), 2.0) << "a time may be seconds";
  ASSERT_TRUE(file.io.FieldReadBegin("V"));
  EXPECT_EQ(file.io.FieldReadI(), 0);
  EXPECT_EQ(file.io.FieldReadC(), "");
  EXPECT_EQ(file.io.FieldReadLL(), 0);
  EXPECT_EQ(file.io.FieldReadD(), 0.0);
  // The two widths of real numbers convert.
  EXPECT_EQ(file.io.FieldReadF(), 4.5F);
  EXPECT_EQ(file.io.FieldReadD(), 6.5);
  EXPECT_EQ(file.io.FieldReadGetType(), 'f');
  std::vector<double> doubles;
  EXPECT_FALSE(file.io.FieldReadArray(doubles));
}

TEST(FbxIOValues, ObjectNamesAreUnpacked) {
  const std::string many(5000, 'n');
  const std::vector<std::pair<std::string, std::string>> cases = {
      {std::string("Cube\0\1Model", 11), "Model::Cube"},
      {std::string("Cube\0\2Model", 11), "Cube"},
      {std::string("\0\1Model", 7), "Model::"},
      {std::string("Cube\0\1", 6), "::Cube"},
      {std::string("Cube\0", 5), "Cube"},
      // A writer that counts the NUL behind its string.
      {std::string("Cube\0\1Model\0", 12), "Model::Cube"},
      {std::string("A\0\1B\0\1C", 7), "B::A"},
      {many + std::string("\0\1Model", 7), "Model::" + many}};
  for (const auto& [stored, expected] : cases) {
    OpenedIO file(MakeFile({{"N", {stored}}}));
    EXPECT_EQ(file.io.FieldReadC("N"), expected);
    EXPECT_EQ(file.io.FieldReadC("N"), expected) << "reading again changes nothing";
  }
}

// The grammar of ASCII files.

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
  OpenedIO file(MakeAscii("A: \"" + name + "\", 1 {\n B: \"" + name + "\"\n C: 2\n}\nD: 3\n"));
  EXPECT_EQ(file.io.FieldReadI("D"), 3);
  ASSERT_TRUE(file.io.FieldReadBegin("A"));
  EXPECT_EQ(file.io.FieldReadC(), name);
  EXPECT_EQ(file.io.FieldReadI(), 1);
  ASSERT_TRUE(file.io.FieldReadBlockBegin());
  EXPECT_EQ(file.io.FieldReadC("B"), name);
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

// Arrays of numbers only are parsed where they stand; a comment leaves them to the general way.
TEST(FbxIOAscii, PlainArraysReadAsAllOthersDo) {
  const auto read = [](const std::string& block) {
    OpenedIO file(MakeAscii("A: *4 {" + block + "B: 7\n"));
    std::vector<double> out;
    file.io.FieldReadArray("A", out);
    EXPECT_EQ(file.io.FieldReadI("B"), block.ends_with("}\n") ? 7 : 0);
    return out;
  };
  const char* const pieces[] = {"1",  "-2.5e3", "+",     ".",      "e",      "-", "0x10", "7",
                                ",",  " ",      "\n",    "\t",     ",",      " ", ",",    ",",
                                "b:", "a:",     "\"3\"", "\n;4\n", "&quot;", "@"};
  std::mt19937 random(20240229);
  size_t arrays = 0;
  for (int round = 0; round < 3000; ++round) {
    // Half of them of common characters, and with as many values as they should have.
    const size_t kinds = round % 2 == 0 ? 4 : std::size(pieces);
    std::string block = random() % 16 == 0 ? "\n b:" : "\n a: ";
    for (int i = 0; i < 4 || random() % 4 != 0; ++i) {
      block += std::string(pieces[random() % kinds]) + pieces[8 + random() % 8];
    }
    if (random() % 16 != 0) block += "}\n";
    const std::vector<double> values = read(block);
    EXPECT_EQ(values, read("\n;" + block)) << block;
    if (!values.empty()) ++arrays;
  }
  EXPECT_GT(arrays, 100U);
  // Longer than what is seen of a file at once.
  const std::string zeros(10000, '0');
  EXPECT_THAT(read("a:1," + zeros + "2,3," + zeros + "}\n"), ElementsAre(1.0, 2.0, 3.0, 0.0));
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
