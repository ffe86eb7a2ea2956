// Single values, binary and ASCII.
#include <algorithm>
#include <utility>

#include "fbx/io/base64.h"
#include "fbx/io/byte_order.h"
#include "fbx/io/fbx_io_field_list.h"
#include "fbx/io/scalar_value.h"

namespace {

// Name, NUL, 1, Class becomes Class::Name, in place, since both are of one length. What is left is
// a C string, followed by NULs only, so that decoding it again changes nothing. The class ends at a
// NUL, too: some writers count the one that ends their string.
std::string_view UnpackName(std::span<char> bytes) {
  const auto nul = std::find(bytes.begin(), bytes.end(), '\0');
  auto end = nul;
  if (nul != bytes.end() && nul + 1 != bytes.end() && nul[1] == 1) {
    end = std::find(nul + 2, bytes.end(), '\0');
    nul[0] = nul[1] = ':';
    const auto name = std::rotate(bytes.begin(), nul, end);
    std::rotate(bytes.begin(), bytes.begin() + 2, name);
  }
  std::fill(end, bytes.end(), '\0');
  return {bytes.data(), static_cast<size_t>(end - bytes.begin())};
}

}  // namespace

char FbxIOFieldList::ValueType() {
  const FbxIOFieldInstance* instance = Current();
  if (instance == nullptr || instance->valueIndex >= instance->valueCount) return 'S';
  if (!format_.isBinary) {
    const TextValue& value =
        textValues_[static_cast<size_t>(instance->values + instance->valueIndex)];
    return value.size > 0 && buffer_[value.offset] == '*' ? 'a' : 'S';
  }
  const std::string_view bytes = BlockView(*instance, instance->valueOffset, 1);
  return bytes.empty() ? 'S' : bytes.front();
}

template <class T>
T FbxIOFieldList::Payload(const BinaryValue& value) {
  const std::string_view bytes = BlockView(*Current(), value.payload, sizeof(T));
  return bytes.size() < sizeof(T) ? T{} : LoadNumber<T>(bytes.data(), format_.swap);
}

template <class T>
T FbxIOFieldList::TakeWhole(char letter) {
  if (!format_.isBinary) return ValueFromText<T>(TakeText());
  const BinaryValue value = TakeBinary();
  return value.type == letter ? Payload<T>(value) : T{};
}

int8_t FbxIOFieldList::ReadByte() { return TakeWhole<int8_t>('Z'); }
int16_t FbxIOFieldList::ReadShort() { return TakeWhole<int16_t>('Y'); }
int32_t FbxIOFieldList::ReadInt() { return TakeWhole<int32_t>('I'); }
int64_t FbxIOFieldList::ReadLongLong() { return TakeWhole<int64_t>('L'); }

char FbxIOFieldList::ReadChar() {
  if (format_.isBinary) return TakeWhole<char>('C');
  const std::string_view text = TakeText();
  return text.empty() ? '\0' : text.front();
}

bool FbxIOFieldList::ReadBool() {
  if (!format_.isBinary) return ValueFromText<bool>(TakeText());
  const BinaryValue value = TakeBinary();
  if (value.type == 'C') return Payload<char>(value) != 0;
  return value.type == 'I' && Payload<int32_t>(value) != 0;
}

template <class T>
T FbxIOFieldList::TakeReal() {
  if (!format_.isBinary) return ValueFromText<T>(TakeText());
  const BinaryValue value = TakeBinary();
  if (value.type == 'D') return FlushTiny(static_cast<T>(Payload<double>(value)));
  return value.type == 'F' ? FlushTiny(static_cast<T>(Payload<float>(value))) : T{};
}

float FbxIOFieldList::ReadFloat() { return TakeReal<float>(); }
double FbxIOFieldList::ReadDouble() { return TakeReal<double>(); }

std::span<char> FbxIOFieldList::KeepScratch(std::string text) {
  FbxIOFieldInstance& instance = *Current();
  if (instance.scratch < 0) {
    instance.scratch = static_cast<int32_t>(scratch_.size());
    scratch_.emplace_back();
  }
  std::string& kept = scratch_[static_cast<size_t>(instance.scratch)];
  kept = std::move(text);
  return kept;
}

std::span<char> FbxIOFieldList::TakeBytes(char letter) {
  const BinaryValue value = TakeBinary();
  if (value.type != letter) return {};
  const FbxIOFieldInstance& instance = *Current();
  const uint32_t offset = value.payload + static_cast<uint32_t>(sizeof(uint32_t));
  if (offset >= instance.valueBytes) return {};
  const size_t size = std::min(Payload<uint32_t>(value), instance.valueBytes - offset);
  if (instance.isBuffered) {
    return {buffer_.data() + static_cast<size_t>(instance.values) + offset, size};
  }
  std::string bytes(size, '\0');
  if (!BlockRead(instance, offset, bytes.data(), size)) return {};
  return KeepScratch(std::move(bytes));
}

std::string_view FbxIOFieldList::ReadString() {
  if (format_.isBinary) return UnpackName(TakeBytes('S'));
  // A C string, too.
  const std::string_view text = TakeText();
  return text.substr(0, text.find('\0'));
}

std::string_view FbxIOFieldList::ReadRaw() {
  if (Current() == nullptr) return {};
  const std::span<char> bytes =
      format_.isBinary ? TakeBytes('R') : KeepScratch(DecodeBase64(TakeText()));
  return {bytes.data(), bytes.size()};
}
