// FBX files for tests: FbxRecord is a tree of named records with typed values,
// and WriteFbx turns it into the bytes of a binary or ASCII file. The type of a
// value decides its letter in the file: `1` is an int32, `1.0` a double, `1.0f`
// a float, int64_t{1} a long long.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

// The payload of a raw value, 'R'.
struct FbxRaw {
  std::string bytes;
  friend bool operator==(const FbxRaw&, const FbxRaw&) = default;
};

// Letters, in order: 'C' (0 or 1), 'C', 'Z', 'Y', 'I', 'L', 'F', 'D', 'S', 'R',
// then the arrays 'd', 'f', 'i', 'l', 'b', 'c', 'h'. A string "Class::Name" is
// stored packed in binary files.
using FbxValue = std::variant<bool, char, int8_t, int16_t, int32_t, int64_t, float, double,
                              std::string, FbxRaw, std::vector<double>, std::vector<float>,
                              std::vector<int32_t>, std::vector<int64_t>, std::vector<bool>,
                              std::vector<uint8_t>, std::vector<int16_t>>;
using FbxValues = std::vector<FbxValue>;

struct FbxRecord {
  std::string name;
  FbxValues values;
  std::vector<FbxRecord> children;
  // Writes a nested list even when there are no children.
  bool block = false;

  FbxRecord(std::string recordName, FbxValues recordValues = {},
            std::vector<FbxRecord> recordChildren = {})
      : name(std::move(recordName)),
        values(std::move(recordValues)),
        children(std::move(recordChildren)) {}

  FbxRecord& Add(FbxRecord child) {
    children.push_back(std::move(child));
    return children.back();
  }
};
using FbxRecords = std::vector<FbxRecord>;

struct FbxFormat {
  bool ascii = false;
  // Decides the offset width, too: 64 bits from 7500 on.
  int version = 7400;
  bool bigEndian = false;
  // Arrays as zlib streams.
  bool compress = false;
  bool footer = true;
  // For versions between 7401 and 7499, where either offset width may stand.
  bool wideOffsets = false;
};

// The bytes of a file with `records` as its top list; the first should be
// `FBXHeaderExtension`.
std::string WriteFbx(const FbxRecords& records, const FbxFormat& format = {});
// Only the record list: no file header, null record or footer. Offsets count
// from `start`.
std::string WriteFbxRecords(const FbxRecords& records, const FbxFormat& format, size_t start);
