// Binary scene files: the records of a list, and the walk over their values.
#include <algorithm>
#include <limits>

#include "fbx/io/fbx_byte_source.h"
#include "fbx/io/fbx_io_field_list.h"
#include "fbx/io/stored_value.h"

namespace {

constexpr uint64_t kNoValue = std::numeric_limits<uint64_t>::max();

}  // namespace

int64_t FbxBinaryRecord::NullSize(const FbxIOListFormat& format) {
  return static_cast<int64_t>(3 * format.offsetWidth + 1);
}

bool FbxBinaryRecord::Read(FbxByteSource& source, const FbxIOListFormat& format, int64_t position,
                           int64_t limit) {
  constexpr size_t kLongestName = 255;
  const size_t width = format.offsetWidth;
  const size_t fixed = 3 * width + 1;
  std::string_view bytes = source.View(position, fixed + kLongestName);
  const auto word = [&](size_t index) -> int64_t {
    const char* at = bytes.data() + index * width;
    return width == 8 ? LoadNumber<int64_t>(at, format.swap)
                      : int64_t{LoadNumber<uint32_t>(at, format.swap)};
  };
  if (bytes.size() < width) {
    // A file may end anywhere behind its last record, within the null record, too.
    end = 0;
    return bytes.find_first_not_of('\0') == std::string_view::npos;
  }
  end = word(0);
  if (IsNull()) return true;
  if (bytes.size() < fixed || end <= position || end > limit) return false;

  valueCount = word(1);
  valueBytes = word(2);
  const size_t nameLength = static_cast<unsigned char>(bytes[fixed - 1]);
  values = position + static_cast<int64_t>(fixed + nameLength);
  if (bytes.size() < fixed + nameLength || valueBytes < 0 || valueCount < 0 || values > end ||
      valueBytes > end - values || valueBytes > std::numeric_limits<int32_t>::max() ||
      valueCount > std::numeric_limits<int32_t>::max()) {
    return false;
  }
  name = bytes.substr(fixed, nameLength);
  return true;
}

bool FbxIOFieldList::ParseBinary(int64_t start, int64_t limit) {
  int64_t position = start;
  FbxBinaryRecord record;
  while (position != limit) {
    // A record ends behind its start, so that positions rise and the loop ends.
    if (!record.Read(source_, format_, position, limit)) return false;
    if (record.IsNull()) break;
    FbxIOFieldInstance& instance = AddInstance(FieldIndex(record.name));
    instance.end = record.end;
    instance.values = record.values;
    instance.valueBytes = static_cast<uint32_t>(record.valueBytes);
    instance.valueCount = static_cast<int32_t>(record.valueCount);
    if (record.HasBlock()) instance.extension = record.values + record.valueBytes;
    if (instance.valueBytes <= kMaxBufferedBlock) {
      const size_t offset = buffer_.size();
      buffer_.resize(offset + instance.valueBytes);
      if (!BlockRead(instance, 0, buffer_.data() + offset, instance.valueBytes)) return false;
      instance.values = static_cast<int64_t>(offset);
      instance.isBuffered = true;
    }
    if (!CheckValues(instance)) return false;
    position = record.end;
  }
  return true;
}

std::string_view FbxIOFieldList::BlockView(const FbxIOFieldInstance& instance, uint32_t offset,
                                           size_t wanted) {
  if (offset >= instance.valueBytes) return {};
  const size_t rest = instance.valueBytes - offset;
  if (instance.isBuffered) {
    return {buffer_.data() + static_cast<size_t>(instance.values) + offset, rest};
  }
  return source_.View(instance.values + offset, std::min(wanted, rest)).substr(0, rest);
}

bool FbxIOFieldList::BlockRead(const FbxIOFieldInstance& instance, uint32_t offset, char* out,
                               size_t count) {
  if (offset > instance.valueBytes || count > instance.valueBytes - offset) return false;
  if (!instance.isBuffered) return source_.Read(instance.values + offset, out, count) == count;
  std::copy_n(buffer_.data() + static_cast<size_t>(instance.values) + offset, count, out);
  return true;
}

uint64_t FbxIOFieldList::NextValue(const FbxIOFieldInstance& instance, uint32_t offset, char type) {
  const auto word = [&](uint32_t at) -> uint64_t {
    const std::string_view bytes = BlockView(instance, at, sizeof(uint32_t));
    if (bytes.size() < sizeof(uint32_t)) return kNoValue;
    return LoadNumber<uint32_t>(bytes.data(), format_.swap);
  };
  uint64_t size = 0;
  switch (type) {
    case 'C':
    case 'Z':
      size = 2;
      break;
    case 'Y':
      size = 3;
      break;
    case 'I':
    case 'F':
      size = 5;
      break;
    case 'L':
    case 'D':
      size = 9;
      break;
    case 'S':
    case 'R':
      size = word(offset + 1);
      if (size != kNoValue) size += 5;
      break;
    default:
      // An array is walked by its encoding word, as the writers that make arrays only the last
      // value of a record expect.
      size = word(offset + 5);
      if (size != kNoValue) size += 9;
  }
  return size == kNoValue ? kNoValue : offset + size;
}

bool FbxIOFieldList::CheckValues(const FbxIOFieldInstance& instance) {
  constexpr std::string_view kTypes = "CYZILFDSRbchilfd";
  uint64_t offset = 0;
  for (int32_t i = 0; i < instance.valueCount; ++i) {
    if (offset >= instance.valueBytes) return false;
    const uint32_t at = static_cast<uint32_t>(offset);
    const std::string_view bytes = BlockView(instance, at, 1);
    if (bytes.empty() || kTypes.find(bytes.front()) == std::string_view::npos) return false;
    if (i + 1 < instance.valueCount) offset = NextValue(instance, at, bytes.front());
  }
  return true;
}

FbxIOFieldList::BinaryValue FbxIOFieldList::TakeBinary() {
  FbxIOFieldInstance* instance = Current();
  if (instance == nullptr || instance->valueIndex >= instance->valueCount) return {};
  const uint32_t offset = instance->valueOffset;
  const std::string_view bytes = BlockView(*instance, offset, 1);
  ++instance->valueIndex;
  if (bytes.empty()) return {};
  const char type = bytes.front();
  instance->valueOffset = static_cast<uint32_t>(
      std::min<uint64_t>(NextValue(*instance, offset, type), instance->valueBytes));
  return {type, offset + 1};
}
