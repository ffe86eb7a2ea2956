// Files that lie. Nothing may crash, hang or take memory that the file doesn't account for.
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/fbx/io/opened_io.h"

namespace {

// Reads the next value as what it says it is.
void ReadValue(FbxIO& io) {
  std::vector<double> doubles;
  std::vector<int32_t> ints;
  std::vector<bool> bools;
  const char type = io.FieldReadGetType();
  if (type == 'd' || type == 'a') return static_cast<void>(io.FieldReadArray(doubles));
  if (type == 'i') return static_cast<void>(io.FieldReadArray(ints));
  if (type == 'b') return static_cast<void>(io.FieldReadArray(bools));
  if (type == 'R') return static_cast<void>(io.FieldReadR());
  if (type == 'D') return static_cast<void>(io.FieldReadD());
  if (type == 'L') return static_cast<void>(io.FieldReadT());
  io.FieldReadC();
}

// Opens everything and reads every value; returns the number of records.
size_t ReadAll(FbxIO& io, size_t budget = 20000) {
  size_t records = 0;
  for (int32_t field = 0; field < io.FieldGetCount() && records < budget; ++field) {
    const std::string name(io.FieldGetName(field));
    const int32_t count = io.FieldGetInstanceCount(name);
    for (int32_t k = 0; k < count && records < budget; ++k) {
      EXPECT_TRUE(io.FieldReadBegin(field, k));
      ++records;
      while (io.FieldReadGetRemain() > 0) ReadValue(io);
      if (io.FieldReadBlockBegin()) {
        records += ReadAll(io, budget - records);
        io.FieldReadBlockEnd();
      }
    }
  }
  return records;
}

std::string Victim(const FbxFormat& format) {
  std::vector<double> vertices(60);
  for (size_t i = 0; i < vertices.size(); ++i) vertices[i] = static_cast<double>(i % 7);
  return MakeFile({{"Objects",
                    {},
                    {{"Model", {int64_t{1}, "Model::Cube", "Mesh"}, {{"Version", {232}}}},
                     {"Geometry",
                      {int64_t{2}, "Geometry::", "Mesh"},
                      {{"Vertices", {vertices}},
                       {"Index", {std::vector<int32_t>{0, 1, -3}}},
                       {"Content", {FbxRaw{std::string(200, 'r')}}},
                       {"Flags", {std::vector<bool>{true}}}}}}},
                   {"Connections", {}, {{"C", {"OO", int64_t{1}, int64_t{0}}}}}},
                  format);
}

constexpr FbxFormat kForms[] = {
    {}, {.bigEndian = true}, {.version = 7500, .compress = true}, {.ascii = true}};

FbxIO::BinaryType TypeOf(const FbxFormat& format) {
  return format.version >= 7500 ? FbxIO::eBinary64 : FbxIO::eBinary32;
}

TEST(FbxIOHostile, FilesCutAnywhere) {
  for (const FbxFormat& format : kForms) {
    const std::string whole = Victim(format);
    OpenedIO good(whole, TypeOf(format));
    ASSERT_TRUE(good.isRead);
    const size_t records = ReadAll(good.io);
    for (size_t size = 0; size < whole.size(); ++size) {
      OpenedIO cut(whole.substr(0, size), TypeOf(format));
      if (cut.isRead) {
        // What is behind the cut is lost.
        EXPECT_LE(ReadAll(cut.io), records + 1) << size;
      } else if (size > 200) {
        EXPECT_TRUE(cut.status.Error()) << size;
      }
    }
  }
}

TEST(FbxIOHostile, BytesTurned) {
  std::mt19937 random(20240229);
  for (const FbxFormat& format : kForms) {
    const std::string whole = Victim(format);
    for (int round = 0; round < 2000; ++round) {
      std::string bytes = whole;
      for (int i = 0; i < 1 + round % 3; ++i) {
        bytes[random() % bytes.size()] = static_cast<char>(random());
      }
      OpenedIO file(bytes, TypeOf(format));
      if (file.isRead) ReadAll(file.io);
    }
  }
}

// A file of one record "A" with `valueBlock` as the values.
std::string WithValues(uint32_t count, const std::string& valueBlock) {
  std::string bytes = MakeFile({{"A", {FbxRaw{std::string(valueBlock.size() - 5, '?')}}}});
  const size_t record = bytes.find("\1A") - 12;
  for (size_t i = 0; i < 4; ++i) bytes[record + 4 + i] = static_cast<char>(count >> 8 * i);
  return bytes.replace(record + 14, valueBlock.size(), valueBlock);
}

// The four bytes of a number, behind `prefix`.
std::string Word(uint32_t word, std::string_view prefix = {}) {
  std::string bytes(prefix);
  for (int i = 0; i < 4; ++i) bytes += static_cast<char>(word >> 8 * i);
  return bytes;
}

TEST(FbxIOHostile, ValuesThatDontFit) {
  const std::string one = Word(1, "I");
  EXPECT_TRUE(OpenedIO(WithValues(2, one + one)).isRead);
  for (const uint32_t count : {3U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    OpenedIO file(WithValues(count, one + one));
    EXPECT_FALSE(file.isRead) << count;
    EXPECT_EQ(file.status.GetCode(), FbxStatus::eInvalidFile);
  }
  EXPECT_FALSE(OpenedIO(WithValues(1, Word(1, "?I"))).isRead) << "no such type";
  EXPECT_FALSE(OpenedIO(WithValues(2, Word(0xFFFFFFFF, "S") + one)).isRead);

  // A string's length is cut to the block; a number that doesn't fit is 0.
  OpenedIO text(WithValues(1, Word(0xFFFFFFFF, "S") + "abc"));
  ASSERT_TRUE(text.io.FieldReadBegin("A"));
  EXPECT_EQ(text.io.FieldReadStored(1), "") << "the same bytes may go on elsewhere";
  EXPECT_EQ(text.io.FieldReadC(), "abc");
  OpenedIO number(WithValues(2, one + "D1234567"));
  ASSERT_TRUE(number.io.FieldReadBegin("A"));
  EXPECT_EQ(number.io.FieldReadI(), 1);
  EXPECT_EQ(number.io.FieldReadD(), 0.0);
}

TEST(FbxIOHostile, ArraysOfTheSameBytesButOtherCountsOfValues) {
  const std::string array = Word(1, "l") + Word(0) + Word(8) + Word(7) + Word(0);
  const auto withKeys = [&](uint32_t count) {
    FbxRecord curve{"C", {}, {{"K", {std::vector<int64_t>{7}}}}};
    std::string bytes = MakeFile({curve, curve});
    const size_t record = bytes.rfind("\1K") - 12;
    for (size_t i = 0; i < 4; ++i) bytes[record + 4 + i] = static_cast<char>(count >> 8 * i);
    EXPECT_EQ(bytes.substr(record + 14, array.size()), array);
    return bytes;
  };
  for (const uint32_t count : {0U, 1U}) {
    OpenedIO file(withKeys(count));
    std::vector<bool> isFilled;
    std::vector<bool> isStored;
    for (int32_t i = 0; i < 2; ++i) {
      ASSERT_TRUE(file.io.FieldReadBegin("C", i));
      ASSERT_TRUE(file.io.FieldReadBlockBegin());
      const FbxSharedArray<int64_t> keys = file.io.FieldReadSharedArray("K");
      isFilled.push_back(keys != nullptr && !keys->empty());
      isStored.push_back(!file.io.FieldGetStoredValue("K").empty());
      file.io.FieldReadBlockEnd();
    }
    EXPECT_EQ(isFilled, (std::vector<bool>{true, count == 1}));
    EXPECT_EQ(isStored, (std::vector<bool>{true, count == 1}));
  }
}

TEST(FbxIOHostile, ArraysThatLie) {
  const auto read = [](uint32_t count, uint32_t encoding, const std::string& data,
                       uint32_t stored) {
    OpenedIO file(WithValues(1, Word(count, "i") + Word(encoding) + Word(stored) + data));
    EXPECT_TRUE(file.isRead) << "an array that can't be read isn't an error";
    std::vector<int32_t> out;
    file.io.FieldReadArray("A", out);
    EXPECT_LT(out.capacity(), 100000U);
    FbxStoredArray<int32_t> later;
    file.io.FieldReadArray("A", later);
    for (int i = 0; i < 2; ++i, later.Release()) {
      EXPECT_EQ(std::vector(later.Values().begin(), later.Values().end()), out);
    }
    return out;
  };
  using Ints = std::vector<int32_t>;
  const std::string two = Word(7) + Word(8);
  EXPECT_EQ(read(2, 2, two, 8), Ints{});
  EXPECT_EQ(read(2, 0x100, two, 8), (Ints{7, 8})) << "only the lowest byte of the encoding counts";
  EXPECT_EQ(read(1, 0, two, 8), Ints{});
  EXPECT_EQ(read(2, 0, two, 7), Ints{});
  EXPECT_EQ(read(0, 0, two, 0), Ints{});
  EXPECT_EQ(read(0x40000002, 0, two, 8), Ints{}) << "count times width wraps in 32 bits";
  EXPECT_EQ(read(4000000000, 0, two, 4000000000), Ints{});

  EXPECT_EQ(read(2, 1, "no zlib stream", 14), Ints{});
  // Within a block that is kept, within one view of the file, and larger.
  for (const size_t length : {2U, 3000U, 20000U}) {
    std::mt19937 random(20240229);
    Ints all(length);
    for (int32_t& one : all) one = static_cast<int32_t>(random());
    const std::string packed = WriteFbxRecords({{"i", {all}}}, {.compress = true}, 0);
    const std::string zlib = packed.substr(packed.find("\x78\x9c"));
    const auto size = static_cast<uint32_t>(zlib.size());
    const auto count = static_cast<uint32_t>(length);
    EXPECT_EQ(read(count, 1, zlib, size), all);
    EXPECT_EQ(read(count + 5, 1, zlib, size), all) << "the stream is shorter than the array";
    EXPECT_EQ(read(count - 1, 1, zlib, size), Ints{}) << "the stream is longer than the array";
    EXPECT_EQ(read(count, 1, zlib + "?", size + 1), Ints{}) << "bytes behind the stream";
    EXPECT_EQ(read(count, 1, zlib, size + 1), Ints{}) << "the block ends too early";
    EXPECT_EQ(read(count, 1, zlib, size - 1), all) << "the stream is cut behind its data";
    const Ints part = read(count, 1, zlib, size - size / 4);
    EXPECT_EQ(part.size() < all.size(), length > 2) << "two numbers stand at the stream's begin";
    EXPECT_EQ(part, Ints(all.begin(), all.begin() + static_cast<ptrdiff_t>(part.size())));
    EXPECT_FALSE(part.empty());
    std::string turned = zlib;
    turned.back() ^= 1;
    EXPECT_EQ(read(count, 1, turned, size), Ints{}) << "wrong checksum";
    turned = zlib;
    turned[zlib.size() / 2] ^= 4;
    EXPECT_EQ(read(count, 1, turned, size), Ints{}) << "another stream";
  }
  const std::string packed = WriteFbxRecords({{"i", {Ints{7, 8}}}}, {.compress = true}, 0);
  const std::string zlib = packed.substr(packed.find('\x78'));
  const uint32_t size = static_cast<uint32_t>(zlib.size());
  EXPECT_EQ(read(4000000000, 1, zlib, size), (Ints{7, 8})) << "the stream is shorter";
  EXPECT_EQ(read(0, 1, zlib, size), Ints{});
}

TEST(FbxIOHostile, ArraysOfNothingDontFillTheMemory) {
  const std::vector<int32_t> zeros(5'000'000);
  OpenedIO file(MakeFile({{"A", {zeros}}}, {.compress = true}));
  ASSERT_LT(file.bytes.size(), 50000U);
  std::vector<int32_t> out;
  EXPECT_TRUE(file.io.FieldReadArray("A", out));
  EXPECT_EQ(out, zeros);
  // All that the file has inflated to counts.
  EXPECT_FALSE(file.io.FieldReadArray("A", out));

  OpenedIO other(MakeFile({{"A", {std::vector<int32_t>(900'000)}}}, {.compress = true}));
  FbxStoredArray<int32_t> array;
  other.io.FieldReadArray("A", array);
  for (int i = 0; i < 20; ++i, array.Release()) EXPECT_NE(array.At(899'999), nullptr);

  // What the file may make goes to its arrays in their order, not in that of asking.
  OpenedIO third(
      MakeFile({{"A", {std::vector<int32_t>(4'000'000)}}, {"B", {zeros}}, {"C", {zeros}}},
               {.compress = true}));
  FbxStoredArray<int32_t> late;
  third.io.FieldReadArray("A", array);
  third.io.FieldReadArray("B", late);
  EXPECT_FALSE(third.io.FieldReadArray("C", out));
  EXPECT_NE(late.At(4'999'999), nullptr);
  EXPECT_NE(array.At(3'999'999), nullptr);
}

TEST(FbxIOHostile, EndOffsetsMustRiseAndStayInside) {
  const std::string whole = MakeFile({{"A", {1}, {{"B", {2}}}}, {"C", {3}}});
  const size_t outer = whole.find("\1A") - 12;
  const size_t inner = whole.find("\1B") - 12;
  const size_t last = whole.find("\1C") - 12;
  const auto open = [&](size_t record, size_t end) {
    std::string bytes = whole;
    bytes.replace(record, 4, Word(static_cast<uint32_t>(end)));
    return bytes;
  };
  for (const size_t end : {outer, size_t{27}, size_t{1}, whole.size() + 1, size_t{0xFFFFFFFF}}) {
    OpenedIO file(open(outer, end));
    EXPECT_FALSE(file.isRead) << end;
    EXPECT_EQ(file.status.GetCode(), FbxStatus::eInvalidFile);
  }
  // A nested list that leaves its record fails when it is opened, and the rest goes on.
  for (const size_t end : {outer, inner, last + 1, whole.size()}) {
    OpenedIO file(open(inner, end));
    ASSERT_TRUE(file.isRead) << end;
    ASSERT_TRUE(file.io.FieldReadBegin("A"));
    EXPECT_FALSE(file.io.FieldReadBlockBegin()) << end;
    EXPECT_EQ(file.status.GetCode(), FbxStatus::eInvalidFile);
    EXPECT_EQ(file.io.FieldReadI("C"), 3);
  }
}

TEST(FbxIOHostile, DeepNesting) {
  // Text: the levels that there are room for are read.
  const auto nested = [](size_t depth) {
    std::string text;
    for (size_t i = 0; i < depth; ++i) text += "A: 1 {\n";
    return MakeAscii(text);
  };
  OpenedIO deep(nested(9000));
  ASSERT_TRUE(deep.isRead);
  size_t depth = 0;
  while (deep.io.FieldReadBegin("A") && deep.io.FieldReadBlockBegin()) ++depth;
  EXPECT_EQ(depth, 9000U);
  // What is skipped nests as deep as it likes.
  OpenedIO deeper(nested(100000) + std::string(100000, '}') + "B: 7\n");
  EXPECT_EQ(deeper.io.FieldReadI("B"), 7);
  for (depth = 0; deeper.io.FieldReadBegin("A") && deeper.io.FieldReadBlockBegin();) ++depth;
  EXPECT_EQ(depth, FbxIO::kMaxDepth);

  // Binary: each level is opened by itself.
  constexpr size_t kLevels = 12000;
  const std::string prefix = MakeFile({}, {.footer = false});
  std::string bytes = prefix.substr(0, prefix.size() - 13);
  const size_t end = bytes.size() + kLevels * 14;
  for (size_t i = 0; i < kLevels; ++i) {
    bytes += Word(static_cast<uint32_t>(end)) + std::string(8, '\0') + "\1A";
  }
  bytes += std::string(13 + 16, '\0');
  OpenedIO binary(bytes);
  ASSERT_TRUE(binary.isRead);
  depth = 0;
  while (binary.io.FieldReadBegin("A") && binary.io.FieldReadBlockBegin()) ++depth;
  EXPECT_EQ(depth, FbxIO::kMaxDepth);
  EXPECT_EQ(binary.status.GetCode(), FbxStatus::eInvalidFile);
}

TEST(FbxIOHostile, TextThatInvitesSquares) {
  // Each of these takes seconds where a step looks at the rest of the text again.
  std::string words;
  for (int i = 0; i < 400000; ++i) words += "w ";
  EXPECT_TRUE(OpenedIO(MakeAscii("A: " + words)).isRead);
  std::string names;
  for (int i = 0; i < 200000; ++i) names += std::to_string(i * 7919L % 200003) + ":\n";
  OpenedIO many(MakeAscii(names));
  EXPECT_EQ(many.io.FieldGetCount(), 200000);
  EXPECT_TRUE(OpenedIO(MakeAscii("A: " + std::string(500000, '"'))).isRead);
  EXPECT_TRUE(OpenedIO(MakeAscii("A: " + std::string(500000, '@'))).isRead);
  std::string quotes;
  for (int i = 0; i < 200000; ++i) quotes += "\"\n";
  EXPECT_TRUE(OpenedIO(MakeAscii("A: " + quotes)).isRead);
}

}  // namespace
