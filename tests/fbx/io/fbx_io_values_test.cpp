// Every kind of value, through every form of file.
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/fbx/io/opened_io.h"

namespace {

using testing::ElementsAre;

struct Form {
  const char* name;
  FbxFormat format;
};

class EveryForm : public testing::TestWithParam<Form> {
 protected:
  const FbxFormat& Format() const { return GetParam().format; }
  FbxIO::BinaryType Type() const {
    return Format().version >= 7500 || Format().wideOffsets ? FbxIO::eBinary64 : FbxIO::eBinary32;
  }
  OpenedIO Open(FbxRecords records) const {
    return OpenedIO(MakeFile(std::move(records), Format()), Type());
  }
};

INSTANTIATE_TEST_SUITE_P(
    FbxIO, EveryForm,
    testing::Values(Form{"Narrow", {}}, Form{"NarrowBig", {.bigEndian = true, .compress = true}},
                    Form{"Wide", {.version = 7500, .compress = true}},
                    Form{"WideBig", {.version = 7700, .bigEndian = true}},
                    Form{"Between", {.version = 7450, .wideOffsets = true}},
                    Form{"NoFooterNeeded", {.version = 7100, .compress = true}},
                    Form{"Ascii", {.ascii = true}},
                    Form{"AsciiWide", {.ascii = true, .version = 7500}}),
    [](const auto& form) { return form.param.name; });

TEST_P(EveryForm, GivesScalarsInOrder) {
  OpenedIO file = Open(
      {{"V", {7, int64_t{-5'000'000'000}, 2.5, 0.1F, "text", int16_t{-3}, int8_t{-4}, 'T', true}}});
  ASSERT_TRUE(file.isRead) << file.status.GetErrorString();
  EXPECT_EQ(file.io.GetFileVersionNumber(), Format().version);
  ASSERT_TRUE(file.io.FieldReadBegin("V"));
  EXPECT_EQ(file.io.FieldReadGetCount(), 9);
  EXPECT_EQ(file.io.FieldReadI(), 7);
  EXPECT_EQ(file.io.FieldReadLL(), -5'000'000'000);
  EXPECT_EQ(file.io.FieldReadD(), 2.5);
  EXPECT_EQ(file.io.FieldReadF(), 0.1F);
  EXPECT_EQ(file.io.FieldReadC(), "text");
  EXPECT_EQ(file.io.FieldReadShort(), -3);
  EXPECT_EQ(file.io.FieldReadByte(), -4);
  EXPECT_EQ(file.io.FieldReadCH(), 'T');
  EXPECT_EQ(file.io.FieldReadGetRemain(), 1);
  EXPECT_TRUE(file.io.FieldReadB());
  // Past the last value everything is the default.
  EXPECT_EQ(file.io.FieldReadI(), 0);
  EXPECT_EQ(file.io.FieldReadC(), "");
  EXPECT_EQ(file.io.FieldReadGetType(), 'S');
  EXPECT_EQ(file.io.FieldReadGetRemain(), 0);
}

TEST_P(EveryForm, GivesArrays) {
  std::vector<double> many(50000);
  for (size_t i = 0; i < many.size(); ++i) many[i] = std::sqrt(static_cast<double>(i));
  const std::vector<float> floats = {1.5F, -0.1F};
  const std::vector<int32_t> ints = {0, 1, -3};
  const std::vector<int64_t> longs = {int64_t{1} << 40};
  const std::vector<bool> bools = {true, false, true};
  const std::vector<uint8_t> bytes = {1, 200};
  const std::vector<int16_t> shorts = {-2, 300};
  OpenedIO file = Open({{"d", {many}},
                        {"f", {floats}},
                        {"i", {ints}},
                        {"l", {longs}},
                        {"b", {bools}},
                        {"c", {bytes}},
                        {"h", {shorts}}});
  const auto expectArray = [&]<typename T>(const char* name, const std::vector<T>& expected) {
    std::vector<T> read;
    EXPECT_TRUE(file.io.FieldReadArray(name, read)) << name;
    EXPECT_EQ(read, expected) << name;
  };
  expectArray("d", many);
  expectArray("f", floats);
  expectArray("i", ints);
  expectArray("i", std::vector<uint32_t>{0, 1, 0xFFFFFFFD});
  expectArray("l", longs);
  expectArray("b", bools);
  expectArray("c", bytes);
  expectArray("h", shorts);

  // The vector that an array doesn't come into is left empty.
  EXPECT_FALSE(file.io.FieldReadArray("absent", many));
  EXPECT_TRUE(many.empty());
}

TEST_P(EveryForm, GivesRawBytesAndLargeTexts) {
  const std::string raw("\0\xFF\x10 raw", 7);
  const std::string large = std::string(70000, 'a') + "z";
  OpenedIO file = Open({{"R", {FbxRaw{raw}}}, {"S", {large, "behind"}}});
  ASSERT_TRUE(file.io.FieldReadBegin("R"));
  EXPECT_EQ(file.io.FieldReadR(), raw);
  ASSERT_TRUE(file.io.FieldReadBegin("S"));
  EXPECT_EQ(file.io.FieldReadC(), large);
  EXPECT_EQ(file.io.FieldReadC(), "behind");
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
  ASSERT_TRUE(io.FieldReadBegin("Objects"));
  EXPECT_TRUE(io.FieldReadIsBlock());
  ASSERT_TRUE(io.FieldReadBlockBegin());
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

TEST_P(EveryForm, FlushesTinyNumbers) {
  // 2^-125 and 2^-1021 are the smallest that stay.
  OpenedIO file = Open({{"F", {1e-40F, 0x1p-125F, 0x1p-126F, -1.0F}},
                        {"D", {0x1p-1022, 0x1p-1021, -0x1p-1022, 1e-300}}});
  ASSERT_TRUE(file.io.FieldReadBegin("F"));
  float floats[4];
  file.io.FieldReadFn(floats, 4);
  EXPECT_THAT(floats, ElementsAre(0.0F, 0x1p-125F, 0.0F, -1.0F));
  double doubles[4];
  file.io.FieldRead4D("D", doubles, nullptr);
  EXPECT_THAT(doubles, ElementsAre(0.0, 0x1p-1021, 0.0, 1e-300));
}

TEST_P(EveryForm, GivesVectorsAndTimesOrTheirDefaults) {
  OpenedIO file = Open({{"V", {1.0, 2.0, 3.0}}, {"T", {int64_t{5}, int64_t{46186158000}}}});
  const double one[3] = {1.0, 1.0, 1.0};
  double out[3] = {};
  file.io.FieldRead3D("V", out, one);
  EXPECT_THAT(out, ElementsAre(1.0, 2.0, 3.0));
  file.io.FieldRead3D("Absent", out, nullptr);
  EXPECT_THAT(out, ElementsAre(1.0, 2.0, 3.0));
  file.io.FieldRead3D("Absent", out, one);
  EXPECT_THAT(out, ElementsAre(1.0, 1.0, 1.0));
  EXPECT_EQ(file.io.FieldReadTS("T").start.Get(), 5);
  EXPECT_EQ(file.io.FieldReadTS("T").stop.GetSecondDouble(), 1.0);
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
  const auto read = [](const std::string& stored) {
    OpenedIO file(MakeFile({{"N", {stored}}}));
    std::string first(file.io.FieldReadC("N"));
    EXPECT_EQ(first, file.io.FieldReadC("N")) << "reading again changes nothing";
    return first;
  };
  EXPECT_EQ(read(std::string("Cube\0\1Model", 11)), "Model::Cube");
  EXPECT_EQ(read(std::string("Cube\0\2Model", 11)), "Cube");
  EXPECT_EQ(read(std::string("\0\1Model", 7)), "Model::");
  EXPECT_EQ(read(std::string("Cube\0\1", 6)), "::Cube");
  EXPECT_EQ(read(std::string("Cube\0", 5)), "Cube");
  // A writer that counts the NUL behind its string.
  EXPECT_EQ(read(std::string("Cube\0\1Model\0", 12)), "Model::Cube");
  EXPECT_EQ(read(std::string("A\0\1B\0\1C", 7)), "B::A");
  EXPECT_EQ(read(std::string(5000, 'n') + std::string("\0\1Model", 7)),
            "Model::" + std::string(5000, 'n'));
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
