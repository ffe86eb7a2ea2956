// Every kind of value, through every form of file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/fbx/io/opened_io.h"

namespace {

using testing::ElementsAre;

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
  EXPECT_EQ(io.FieldReadF(), 0.1F);
  EXPECT_EQ(io.FieldReadF(), 0x1p-125F);
  EXPECT_EQ(io.FieldReadF(), 0.0F);
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
  io.FieldRead4D("Absent", doubles, nullptr);
  EXPECT_THAT(doubles, ElementsAre(0.0, 0x1p-1021, 0.0, 1e-300));
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

TEST(FbxIOValues, NamesMayBeEmptyOrMany) {
  FbxRecords records = {{"", {1}}, {"Zebra", {2}}};
  for (int i = 999; i >= 0; --i) records.push_back({"Name" + std::to_string(i % 500), {i}});
  OpenedIO file(MakeFile(std::move(records)));
  EXPECT_EQ(file.io.FieldReadI(""), 1);
  EXPECT_EQ(file.io.FieldReadI("Zebra"), 2);
  EXPECT_EQ(file.io.FieldGetInstanceCount("Name77"), 2);
  ASSERT_TRUE(file.io.FieldReadBegin("Name77", 1));
  EXPECT_EQ(file.io.FieldReadI(), 77);
  EXPECT_EQ(file.io.FieldGetCount(), 504);
}

}  // namespace
