#include "tests/support/fbx_records.h"

#include <array>
#include <bit>
#include <charconv>
#include <cstring>
#include <map>
#include <type_traits>

#include <gtest/gtest.h>
#include <zlib.h>

namespace {

constexpr std::array<unsigned char, 16> kFooterId = {
    0xFA, 0xBC, 0xAB, 0x09, 0xD0, 0xC8, 0xD4, 0x66, 0xB1, 0x76, 0xFB, 0x83, 0x1C, 0xF7, 0x26, 0x7E};
constexpr std::array<unsigned char, 16> kExtensionCode = {
    0xF8, 0x5A, 0x8C, 0x6A, 0xDE, 0xF5, 0xD9, 0x7E, 0xEC, 0xE9, 0x0C, 0xE3, 0x75, 0x8F, 0x29, 0x0B};

// The letter of each alternative of FbxValue, and of an array's elements.
constexpr std::string_view kLetters = "CCZYILFDSRdfilbch";

std::string Deflate(const std::string& bytes) {
  uLongf size = compressBound(static_cast<uLong>(bytes.size()));
  std::string out(size, '\0');
  if (compress2(reinterpret_cast<Bytef*>(out.data()), &size,
                reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uLong>(bytes.size()),
                6) != Z_OK) {
    ADD_FAILURE() << "can't compress";
  }
  out.resize(size);
  return out;
}

// "Class::Name" as Name, NUL, 1, Class.
std::string PackName(const std::string& text) {
  const size_t colons = text.find("::");
  if (colons == std::string::npos) return text;
  return text.substr(colons + 2) + std::string("\0\1", 2) + text.substr(0, colons);
}

class BinaryWriter {
 public:
  BinaryWriter(const FbxFormat& format, size_t start)
      : format_(format),
        start_(start),
        width_(format.version >= 7500 || format.wideOffsets ? 8 : 4) {}

  std::string Take() { return std::move(out_); }

  template <class T>
  void Number(T value) {
    std::array<char, sizeof(T)> bytes;
    std::memcpy(bytes.data(), &value, sizeof(T));
    const bool hostIsBig = std::endian::native == std::endian::big;
    if (format_.bigEndian != hostIsBig) {
      out_.append(bytes.rbegin(), bytes.rend());
    } else {
      out_.append(bytes.begin(), bytes.end());
    }
  }

  void Records(const FbxRecords& records) {
    for (const FbxRecord& record : records) Record(record);
  }

  void NullRecord() { out_.append(3 * width_ + 1, '\0'); }

 private:
  void Record(const FbxRecord& record) {
    const size_t header = out_.size();
    out_.append(3 * width_, '\0');
    out_ += static_cast<char>(record.name.size());
    out_ += record.name;
    const size_t values = out_.size();
    for (const FbxValue& value : record.values) Value(value);
    const size_t valueBytes = out_.size() - values;
    if (record.block || !record.children.empty()) {
      Records(record.children);
      NullRecord();
    }
    Patch(header, start_ + out_.size());
    Patch(header + width_, record.values.size());
    Patch(header + 2 * width_, valueBytes);
  }

  void Patch(size_t position, uint64_t word) {
    for (size_t i = 0; i < width_; ++i) {
      const size_t shift = 8 * (format_.bigEndian ? width_ - 1 - i : i);
      out_[position + i] = static_cast<char>(word >> shift & 0xFF);
    }
  }

  void Value(const FbxValue& value) {
    out_ += kLetters[value.index()];
    std::visit([this](const auto& held) { Payload(held); }, value);
  }

  template <class T>
  void Payload(const T& value) {
    if constexpr (std::is_same_v<T, std::string>) {
      Bytes(PackName(value));
    } else if constexpr (std::is_same_v<T, FbxRaw>) {
      Bytes(value.bytes);
    } else if constexpr (std::is_arithmetic_v<T>) {
      Number(value);
    } else {
      Array(value);
    }
  }

  void Bytes(const std::string& bytes) {
    Number(static_cast<uint32_t>(bytes.size()));
    out_ += bytes;
  }

  template <class T>
  void Array(const std::vector<T>& elements) {
    BinaryWriter data(format_, 0);
    for (const T element : elements) data.Number(element);
    const std::string stored = format_.compress ? Deflate(data.out_) : data.out_;
    Number(static_cast<uint32_t>(elements.size()));
    Number(static_cast<uint32_t>(format_.compress ? 1 : 0));
    Number(static_cast<uint32_t>(stored.size()));
    out_ += stored;
  }

  const FbxFormat& format_;
  size_t start_;
  size_t width_;
  std::string out_;
};

class AsciiWriter {
 public:
  std::string Take() { return std::move(out_); }
  void Append(const std::string& text) { out_ += text; }

  void Records(const FbxRecords& records, int depth) {
    for (const FbxRecord& record : records) Record(record, depth);
  }

 private:
  void Record(const FbxRecord& record, int depth) {
    Indent(depth);
    out_ += record.name + ":";
    const bool isBits = record.name == "KeyAttrDataFloat";
    for (size_t i = 0; i < record.values.size(); ++i) {
      out_ += i == 0 ? " " : ", ";
      std::visit([&](const auto& value) { Value(value, depth, isBits); }, record.values[i]);
    }
    if (record.block || !record.children.empty()) {
      out_ += " {\n";
      Records(record.children, depth + 1);
      Indent(depth);
      out_ += "}";
    }
    out_ += "\n";
  }

  template <class T>
  void Value(const T& value, int depth, bool isBits) {
    if constexpr (std::is_same_v<T, std::string>) {
      Quoted(value);
    } else if constexpr (std::is_same_v<T, FbxRaw>) {
      Quoted(Base64(value.bytes));
    } else if constexpr (std::is_arithmetic_v<T>) {
      Scalar(value);
    } else {
      Array(value, depth, isBits);
    }
  }

  template <class T>
  void Scalar(T value) {
    if constexpr (std::is_same_v<T, bool>) {
      out_ += value ? '1' : '0';
    } else if constexpr (std::is_same_v<T, char>) {
      out_ += value;
    } else {
      std::array<char, 64> digits;
      const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
      out_.append(digits.data(), end);
    }
  }

  template <class T>
  void Array(const std::vector<T>& elements, int depth, bool isBits) {
    out_ += "*" + std::to_string(elements.size()) + " {\n";
    Indent(depth + 1);
    out_ += "a: ";
    for (size_t i = 0; i < elements.size(); ++i) {
      if (i > 0) out_ += i % 100 == 0 ? ",\n" : ",";
      const T element = elements[i];
      if constexpr (std::is_same_v<T, float>) {
        // Interpolation data are bit patterns in text, so that they survive it.
        if (isBits) {
          Scalar(std::bit_cast<int32_t>(element));
          continue;
        }
      }
      Scalar(element);
    }
    out_ += "\n";
    Indent(depth);
    out_ += "}";
  }

  void Quoted(const std::string& text) {
    static const std::map<char, std::string> kEscapes = {
        {'"', "&quot;"}, {'\n', "&lf;"}, {'\r', "&cr;"}};
    out_ += '"';
    for (const char character : text) {
      const auto escape = kEscapes.find(character);
      out_ += escape == kEscapes.end() ? std::string(1, character) : escape->second;
    }
    out_ += '"';
  }

  static std::string Base64(const std::string& bytes) {
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t i = 0; i < bytes.size(); i += 3) {
      unsigned group = 0;
      for (size_t k = 0; k < 3; ++k) {
        group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
      }
      for (size_t k = 0; k < 4; ++k) {
        text += i + k > bytes.size() ? '=' : kDigits[group >> (18 - 6 * k) & 63];
      }
    }
    return text;
  }

  void Indent(int depth) { out_.append(static_cast<size_t>(depth), '\t'); }

  std::string out_;
};

}  // namespace

std::string WriteFbxRecords(const FbxRecords& records, const FbxFormat& format, size_t start) {
  BinaryWriter writer(format, start);
  writer.Records(records);
  return writer.Take();
}

std::string WriteFbx(const FbxRecords& records, const FbxFormat& format) {
  if (format.ascii) {
    AsciiWriter writer;
    writer.Append("; FBX " + std::to_string(format.version / 1000) + "." +
                  std::to_string(format.version / 100 % 10) + "." +
                  std::to_string(format.version % 100) + " project file\n; Test scene\n\n");
    writer.Records(records, 0);
    return writer.Take();
  }

  BinaryWriter head(format, 0);
  head.Number(static_cast<uint32_t>(format.version));
  std::string out = std::string("Kaydara FBX Binary  \0\x1A", 22) +
                    (format.bigEndian ? '\1' : '\0') + head.Take();
  BinaryWriter body(format, out.size());
  body.Records(records);
  body.NullRecord();
  out += body.Take();
  if (!format.footer) return out;

  out.append(kFooterId.begin(), kFooterId.end());
  out.append(16 - out.size() % 16, '\0');
  BinaryWriter tail(format, 0);
  tail.Number(uint32_t{0});
  tail.Number(static_cast<uint32_t>(format.version));
  out += tail.Take();
  out.append(120, '\0');
  out.append(kExtensionCode.begin(), kExtensionCode.end());
  return out;
}
