// The values of records, binary and ASCII: single ones, and arrays, which are decoded straight into
// the caller's vector.
//
// A count in a file is a claim. Storage grows with the data that really come, so that a count which
// the stored bytes can't hold costs nothing.
#include <algorithm>
#include <array>
#include <utility>

#include <fast_float/fast_float.h>

#include "fbx/io/fbx_byte_source.h"
#include "fbx/io/fbx_inflater.h"
#include "fbx/io/fbx_io_field_list.h"
#include "fbx/io/stored_value.h"

namespace {

// Name, NUL, 1, Class becomes Class::Name, in place, since both are of one length. What is left is
// a C string, followed by NULs only, so that decoding it again changes nothing. The class ends at a
// NUL, too: some writers count the one that ends their string.
std::string_view UnpackName(std::span<char> bytes) {
  const std::string_view text(bytes.data(), bytes.size());
  const size_t length = text.find('\0');
  if (length == std::string_view::npos) return text;
  const auto nul = bytes.begin() + static_cast<ptrdiff_t>(length);
  auto end = nul;
  if (nul + 1 != bytes.end() && nul[1] == 1) {
    end = std::find(nul + 2, bytes.end(), '\0');
    const std::string front = std::string(nul + 2, end) + "::";
    std::move_backward(bytes.begin(), nul, end);
    std::copy(front.begin(), front.end(), bytes.begin());
  }
  std::fill(end, bytes.end(), '\0');
  return {bytes.data(), static_cast<size_t>(end - bytes.begin())};
}

enum TextKind : uint8_t { kOther, kNumber, kSeparator };

TextKind KindOf(char c) {
  static constexpr std::array<TextKind, 256> kKinds = [] {
    std::array<TextKind, 256> kinds = {};
    for (const char number : std::string_view("0123456789+-.eE"))
      kinds[static_cast<uint8_t>(number)] = kNumber;
    for (const char separator : std::string_view(" \t\v\f\r\n,"))
      kinds[static_cast<uint8_t>(separator)] = kSeparator;
    return kinds;
  }();
  return kKinds[static_cast<uint8_t>(c)];
}

// Past the number that begins at `at`, with what ValueFromText makes of it in `out`; null for one
// that is written in any but the usual ways.
template <class T>
const char* ParseUsual(const char* at, const char* end, T& out) {
  const bool isNegative = at != end && *at == '-';
  const char* const digits = at + (isNegative ? 1 : 0);
  if (digits == end) return nullptr;
  if constexpr (std::is_floating_point_v<T>) {
    if ((*digits < '0' || *digits > '9') && *digits != '.') return nullptr;
    // The same number as from the standard library, whose call takes twice the time.
    double number = 0.0;
    const auto [behind, error] = fast_float::from_chars(at, end, number);
    out = FlushTiny(static_cast<T>(number));
    return error == std::errc() ? behind : nullptr;
  } else {
    constexpr ptrdiff_t kNoOverflow = 9;
    const char* const limit = digits + std::min(end - digits, kNoOverflow);
    int32_t number = 0;
    for (at = digits; at != limit && *at >= '0' && *at <= '9'; ++at) {
      number = number * 10 + (*at - '0');
    }
    out = static_cast<T>(isNegative ? -number : number);
    return at == digits ? nullptr : at;
  }
}

}  // namespace

char FbxIOFieldList::ValueType() {
  if (current_ == nullptr || valueIndex_ >= current_->valueCount) return 'S';
  if (!format_.isBinary) {
    const TextValue& value = textValues_[static_cast<size_t>(current_->values + valueIndex_)];
    return value.size > 0 && buffer_[value.offset] == '*' ? 'a' : 'S';
  }
  const std::string_view bytes = BlockView(valueOffset_, 1);
  return bytes.empty() ? 'S' : bytes.front();
}

template <class T>
T FbxIOFieldList::Payload(const BinaryValue& value) const {
  return value.bytes.size() < sizeof(T) ? T{} : LoadNumber<T>(value.bytes.data(), format_.swap);
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

char FbxIOFieldList::PeekChar() {
  const uint32_t offset = valueOffset_;
  const int32_t index = valueIndex_;
  const char character = ReadChar();
  valueOffset_ = offset;
  valueIndex_ = index;
  return character;
}

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
void FbxIOFieldList::ReadDoubles(double* out, int count) {
  for (int i = 0; i < count; ++i) out[i] = TakeReal<double>();
}

std::span<char> FbxIOFieldList::KeepScratch(std::string text) {
  std::string& kept = scratch_[static_cast<size_t>(current_ - instances_.data())];
  kept = std::move(text);
  return kept;
}

std::span<char> FbxIOFieldList::TakeBytes(char letter) {
  const BinaryValue value = TakeBinary();
  if (value.type != letter) return {};
  const uint32_t offset = value.payload + static_cast<uint32_t>(sizeof(uint32_t));
  if (offset >= current_->valueBytes) return {};
  const size_t size = std::min(Payload<uint32_t>(value), current_->valueBytes - offset);
  if (current_->isBuffered) {
    return {buffer_.data() + static_cast<size_t>(current_->values) + offset, size};
  }
  std::string bytes(size, '\0');
  if (!BlockRead(offset, bytes.data(), size)) return {};
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

FbxIOFieldList::ArrayHead FbxIOFieldList::TakeArrayHead(char letter, size_t scalarSize) {
  constexpr size_t kHead = 3 * sizeof(uint32_t);
  const BinaryValue value = TakeBinary();
  if (value.type != letter) return {};
  const std::string_view bytes = BlockView(value.payload, kHead);
  if (bytes.size() < kHead) return {};
  ArrayHead head;
  head.room = LoadNumber<uint32_t>(bytes.data(), format_.swap) * scalarSize;
  const uint32_t encoding = LoadNumber<uint32_t>(bytes.data() + 4, format_.swap) & 0xFF;
  head.isDeflated = encoding == 1;
  head.stored = LoadNumber<uint32_t>(bytes.data() + 8, format_.swap);
  head.offset = value.payload + static_cast<uint32_t>(kHead);
  const bool isThere = head.stored <= current_->valueBytes - head.offset;
  const bool isWhole = encoding == 0 && head.stored == head.room;
  return head.room > 0 && isThere && (isWhole || head.isDeflated) ? head : ArrayHead();
}

template <class T>
bool FbxIOFieldList::ReadBinaryArray(const ArrayHead& head, std::vector<T>& out) {
  if (head.room == 0) return false;
  if (head.isDeflated) {
    std::string_view stream = BlockView(head.offset, 1).substr(0, head.stored);
    if (stream.size() < head.stored) {
      packed_.resize(head.stored);
      if (!BlockRead(head.offset, packed_.data(), head.stored)) return false;
      stream = {packed_.data(), head.stored};
    }
    const auto grow = [&](size_t size) {
      out.resize((size + sizeof(T) - 1) / sizeof(T));
      return reinterpret_cast<char*>(out.data());
    };
    size_t made = 0;
    if (!inflater_->InflateArray(stream, head.room, grow, made)) return false;
    out.resize(made / sizeof(T));
  } else {
    out.resize(head.room / sizeof(T));
    if (!BlockRead(head.offset, reinterpret_cast<char*>(out.data()), head.room)) {
      return false;
    }
  }
  if (format_.swap && sizeof(T) > 1) {
    for (T& element : out) element = SwapBytes(element);
  }
  return !out.empty();
}

template <class Scalar>
FbxStoredBytes FbxIOFieldList::ReadStored() {
  constexpr char kLetter = std::is_same_v<Scalar, double> ? 'd' : 'i';
  std::vector<Scalar> values;
  if (format_.isBinary && (!format_.hasPlainLists || IsAtArray())) {
    const ArrayHead head = TakeArrayHead(kLetter, sizeof(Scalar));
    // What goes beyond the limit, or lies, is decoded now: then what it really makes is known.
    size_t counted = 0;
    if (head.isDeflated && inflater_->Count(head.stored, head.room, counted)) {
      FbxStoredBytes::Packed packed{.inflater = inflater_,
                                    .stream = std::make_unique_for_overwrite<char[]>(head.stored),
                                    .streamSize = head.stored,
                                    .room = head.room,
                                    .isWide = sizeof(Scalar) == sizeof(uint64_t),
                                    .swap = format_.swap,
                                    .counted = counted};
      if (!BlockRead(head.offset, packed.stream.get(), head.stored)) return {};
      return FbxStoredBytes(std::move(packed));
    }
    if (!ReadBinaryArray(head, values)) return {};
  } else {
    ReadAnyArray(kLetter, values);
  }
  return {values.data(), values.size() * sizeof(Scalar)};
}

// Text arrays are most of a text file, and nearly all hold a name and numbers only. These are
// parsed where they stand, which takes half the time, and a fifth of the memory, of cutting the
// block into records first; anything else in a block is left to that.
template <class T, class Element>
bool FbxIOFieldList::ReadPlainTextArray(int64_t start, int64_t limit, int64_t count,
                                        std::vector<Element>& out) {
  bool hasName = false;
  for (int64_t position = start; position < limit;) {
    const std::string_view view = source_.View(position, FbxByteSource::kMaxView)
                                      .substr(0, static_cast<size_t>(limit - position));
    const char* const end = view.data() + view.size();
    const char* at = view.data();
    // Past the last value that ends within the view.
    const char* done = at;
    if (!hasName) {
      while (at != end && KindOf(*at) == kSeparator && *at != ',') ++at;
      if (end - at < 2 || *at != 'a' || at[1] != ':') return false;
      at += 2;
      done = at;
      hasName = true;
    }
    while (true) {
      while (at != end && KindOf(*at) == kSeparator) ++at;
      done = at;
      T value{};
      const char* const behind = ParseUsual(at, end, value);
      const bool isUsual = behind != nullptr && behind != end && KindOf(*behind) != kNumber;
      if (isUsual) at = behind;
      while (at != end && KindOf(*at) == kNumber) ++at;
      if (at == end) break;
      if (at != done) {
        if (static_cast<int64_t>(out.size()) == count) return false;
        if (!isUsual) value = ValueFromText<T>({done, static_cast<size_t>(at - done)});
        out.push_back(value);
      }
      if (*at == '}') return static_cast<int64_t>(out.size()) == count;
      if (KindOf(*at) != kSeparator) return false;
    }
    if (done == view.data()) return false;
    position += done - view.data();
  }
  return false;
}

template <class T, class Element>
bool FbxIOFieldList::ReadTextArray(std::vector<Element>& out) {
  const FbxIOFieldInstance* instance = Current();
  const std::string_view text = TakeText();
  if (!text.starts_with('*') || instance->extension == 0) return false;
  const int64_t count = ParseSigned(text.substr(1));
  if (count < 1) return false;

  const int64_t length = instance->end - instance->extension;
  // Values take two bytes each at least.
  const auto most = static_cast<size_t>(std::min(count, length / 2 + 1));
  out.reserve(most);
  if (ReadPlainTextArray<T>(instance->extension, instance->end, count, out)) return true;
  out.clear();

  FbxIOFieldList block(source_, blocks_, inflater_, format_);
  block.buffer_.reserve(static_cast<size_t>(length));
  block.textValues_.reserve(most);
  if (!block.ParseAscii(instance->extension, instance->end)) return false;
  if (block.instances_.size() != 1 || block.instances_[0].valueCount != count) return false;
  for (const TextValue& value : block.textValues_) {
    out.push_back(ValueFromText<T>({block.buffer_.data() + value.offset, value.size}));
  }
  return true;
}

bool FbxIOFieldList::IsAtArray() {
  constexpr std::string_view kArrays = "abchilfd";
  return kArrays.find(ValueType()) != std::string_view::npos;
}

template <class T>
void FbxIOFieldList::ReadPlainList(std::vector<T>& out) {
  if (current_ == nullptr) return;
  out.reserve(static_cast<size_t>(current_->valueCount - valueIndex_));
  while (valueIndex_ < current_->valueCount) {
    if constexpr (std::is_floating_point_v<T>) {
      out.push_back(TakeReal<T>());
    } else {
      constexpr std::string_view kLetters = "ZY_I___L";  // by bytes
      out.push_back(TakeWhole<T>(kLetters[sizeof(T) - 1]));
    }
  }
}

template <class T>
bool FbxIOFieldList::ReadAnyArray(char letter, std::vector<T>& out) {
  out.clear();
  if (format_.hasPlainLists && !IsAtArray()) {
    ReadPlainList(out);
    return !out.empty();
  }
  if (format_.isBinary ? ReadBinaryArray(TakeArrayHead(letter, sizeof(T)), out)
                       : ReadTextArray<T>(out))
    return true;
  out.clear();
  return false;
}

std::string_view FbxIOFieldList::StoredValue() {
  // The same bytes may be said to hold no value, or others than one.
  if (current_ == nullptr || current_->valueCount != 1) return {};
  return BufferedBlock(*current_);
}

template FbxStoredBytes FbxIOFieldList::ReadStored<double>();
template FbxStoredBytes FbxIOFieldList::ReadStored<int32_t>();

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
  if (format_.hasPlainLists && !IsAtArray()) {
    std::vector<int32_t> numbers;
    ReadPlainList(numbers);
    for (const int32_t number : numbers) out.push_back(number != 0);
    return !out.empty();
  }
  std::vector<uint8_t> bytes;
  if (!(format_.isBinary ? ReadBinaryArray(TakeArrayHead('b', 1), bytes)
                         : ReadTextArray<bool>(bytes)))
    return false;
  out.reserve(bytes.size());
  for (const uint8_t byte : bytes) out.push_back(byte != 0);
  return true;
}
