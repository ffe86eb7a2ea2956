// Array values, decoded straight into the caller's vector.
//
// A count in a file is a claim. Storage grows with the data that really come, so that a count which
// the stored bytes can't hold costs nothing.
#include <algorithm>

#include "fbx/io/ascii_number.h"
#include "fbx/io/byte_order.h"
#include "fbx/io/fbx_byte_source.h"
#include "fbx/io/fbx_inflater.h"
#include "fbx/io/fbx_io_field_list.h"
#include "fbx/io/scalar_value.h"

template <class T>
bool FbxIOFieldList::InflateArray(uint32_t offset, uint32_t stored, size_t count,
                                  std::vector<T>& out) {
  constexpr size_t kStep = 65536 / sizeof(T);
  // Most arrays shrink less than this, and are made in one go.
  constexpr size_t kUsualRatio = 8;
  const FbxIOFieldInstance& instance = *Current();
  if (!inflater_.Begin()) return false;
  out.resize(std::min(count, std::max(kStep, stored / sizeof(T) * kUsualRatio)));
  size_t produced = 0;
  uint32_t consumed = 0;
  while (true) {
    std::string_view input = BlockView(instance, offset + consumed, 1).substr(0, stored - consumed);
    const size_t given = input.size();
    if (given == 0) {
      if (consumed < stored) return false;
      break;
    }
    if (produced == out.size() * sizeof(T) && out.size() < count) {
      out.resize(out.size() + std::min(count - out.size(), out.size()));
    }
    char* const begin = reinterpret_cast<char*>(out.data());
    // A stream that still writes when the array is full is too long for it.
    char spare = 0;
    const bool isFull = produced == out.size() * sizeof(T);
    size_t written = 0;
    const FbxInflater::Result result =
        isFull ? inflater_.Inflate(input, &spare, 1, written)
               : inflater_.Inflate(input, begin + produced, out.size() * sizeof(T) - produced,
                                   written);
    if (result == FbxInflater::eError || (isFull && written > 0)) return false;
    produced += written;
    consumed += static_cast<uint32_t>(given - input.size());
    if (result == FbxInflater::eEnd) break;
    if (written == 0 && input.size() == given) return false;
  }
  if (consumed != stored) return false;
  out.resize(produced / sizeof(T));
  return true;
}

template <class T>
bool FbxIOFieldList::ReadBinaryArray(char letter, std::vector<T>& out) {
  constexpr size_t kHead = 3 * sizeof(uint32_t);
  const BinaryValue value = TakeBinary();
  if (value.type != letter) return false;
  const FbxIOFieldInstance& instance = *Current();
  const std::string_view head = BlockView(instance, value.payload, kHead);
  if (head.size() < kHead) return false;
  const size_t count = LoadNumber<uint32_t>(head.data(), format_.swap);
  const uint32_t encoding = LoadNumber<uint32_t>(head.data() + 4, format_.swap) & 0xFF;
  const uint32_t stored = LoadNumber<uint32_t>(head.data() + 8, format_.swap);
  const uint32_t offset = value.payload + static_cast<uint32_t>(kHead);
  if (count == 0 || stored > instance.valueBytes - offset) return false;

  if (encoding == 0) {
    if (stored != count * sizeof(T)) return false;
    out.resize(count);
    if (!BlockRead(instance, offset, reinterpret_cast<char*>(out.data()), stored)) return false;
  } else if (encoding > 1 || !InflateArray(offset, stored, count, out)) {
    return false;
  }
  if (format_.swap && sizeof(T) > 1) {
    for (T& element : out) element = SwapBytes(element);
  }
  return !out.empty();
}

template <class T, class Element>
bool FbxIOFieldList::ReadTextArray(std::vector<Element>& out) {
  const FbxIOFieldInstance* instance = Current();
  const std::string_view text = TakeText();
  if (!text.starts_with('*') || instance->extension == 0) return false;
  const int64_t count = ParseSigned(text.substr(1));
  if (count < 1) return false;

  FbxIOFieldList block(source_, blocks_, inflater_, format_);
  const int64_t length = instance->end - instance->extension;
  block.buffer_.reserve(static_cast<size_t>(length));
  // Values take two bytes each at least.
  block.textValues_.reserve(static_cast<size_t>(std::min(count, length / 2 + 1)));
  if (!block.ParseAscii(instance->extension, instance->end)) return false;
  if (block.instances_.size() != 1 || block.instances_[0].valueCount != count) return false;
  out.reserve(block.textValues_.size());
  for (const TextValue& value : block.textValues_) {
    out.push_back(ValueFromText<T>({block.buffer_.data() + value.offset, value.size}));
  }
  return true;
}

template <class T>
bool FbxIOFieldList::ReadAnyArray(char letter, std::vector<T>& out) {
  out.clear();
  if (format_.isBinary ? ReadBinaryArray(letter, out) : ReadTextArray<T>(out)) return true;
  out.clear();
  return false;
}

std::string_view FbxIOFieldList::StoredValues() {
  const FbxIOFieldInstance* instance = Current();
  if (instance == nullptr || !instance->isBuffered) return {};
  return BlockView(*instance, 0, instance->valueBytes);
}

bool FbxIOFieldList::ReadArray(std::vector<double>& out) { return ReadAnyArray('d', out); }
bool FbxIOFieldList::ReadArray(std::vector<float>& out) { return ReadAnyArray('f', out); }
bool FbxIOFieldList::ReadArray(std::vector<int64_t>& out) { return ReadAnyArray('l', out); }
bool FbxIOFieldList::ReadArray(std::vector<uint64_t>& out) { return ReadAnyArray('l', out); }
bool FbxIOFieldList::ReadArray(std::vector<int32_t>& out) { return ReadAnyArray('i', out); }
bool FbxIOFieldList::ReadArray(std::vector<uint32_t>& out) { return ReadAnyArray('i', out); }
bool FbxIOFieldList::ReadArray(std::vector<int16_t>& out) { return ReadAnyArray('h', out); }
bool FbxIOFieldList::ReadArray(std::vector<uint16_t>& out) { return ReadAnyArray('h', out); }
bool FbxIOFieldList::ReadArray(std::vector<int8_t>& out) { return ReadAnyArray('c', out); }
bool FbxIOFieldList::ReadArray(std::vector<uint8_t>& out) { return ReadAnyArray('c', out); }

bool FbxIOFieldList::ReadArray(std::vector<bool>& out) {
  out.clear();
  std::vector<uint8_t> bytes;
  if (!(format_.isBinary ? ReadBinaryArray('b', bytes) : ReadTextArray<bool>(bytes))) return false;
  out.reserve(bytes.size());
  for (const uint8_t byte : bytes) out.push_back(byte != 0);
  return true;
}
