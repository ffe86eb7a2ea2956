// Binary scene files: the records of a list, and the walk over their values.
#include <algorithm>
#include <array>
#include <limits>

#include "fbx/io/fbx_byte_source.h"
#include "fbx/io/fbx_io_field_list.h"
#include "fbx/io/stored_value.h"

namespace {

// Bytes of a value by its letter, which is one of them. Texts, raw values and arrays have a word
// `lengthAt` that counts more bytes. The size is 0 for what is no letter of a value.
struct ValueForm {
  uint8_t size = 0;
  uint8_t lengthAt = 0;
};

constexpr std::array<ValueForm, 256> kForms = [] {
  std::array<ValueForm, 256> forms{};
  const auto set = [&forms](std::string_view letters, ValueForm form) {
    for (const char letter : letters) forms[static_cast<unsigned char>(letter)] = form;
  };
  set("CZ", {2, 0});
  set("Y", {3, 0});
  set("IF", {5, 0});
  set("LD", {9, 0});
  set("SR", {5, 1});
  // An array is walked by its encoding word, as the writers that make arrays only the last value of
  // a record expect.
  set("bchilfd", {9, 5});
  return forms;
}();

// The most of a value's bytes that ValueSize looks at, and that a number takes.
constexpr size_t kValueHead = 9;

// The size of the value that `bytes` begins with, of which they hold kValueHead or all that there
// are. 0 if it can't be told.
inline uint64_t ValueSize(std::string_view bytes, bool swap) {
  const ValueForm form = kForms[static_cast<unsigned char>(bytes.front())];
  if (form.lengthAt == 0) return form.size;
  if (bytes.size() < form.lengthAt + sizeof(uint32_t)) return 0;
  return form.size + uint64_t{LoadNumber<uint32_t>(bytes.data() + form.lengthAt, swap)};
}

}  // namespace

int64_t FbxBinaryRecord::NullSize(const FbxIOListFormat& format) {
  return static_cast<int64_t>(3 * format.offsetWidth + 1);
}

bool FbxBinaryRecord::Read(std::string_view bytes, const FbxIOListFormat& format, int64_t position,
                           int64_t limit) {
  const size_t width = format.offsetWidth;
  const size_t fixed = 3 * width + 1;
  if (bytes.size() < fixed) {
    // A file may end anywhere behind its last record, within the null record, too.
    end = 0;
    return bytes.substr(0, width).find_first_not_of('\0') == std::string_view::npos;
  }
  const auto load = [&]<class Word>(Word /*offset word*/) {
    end = static_cast<int64_t>(LoadNumber<Word>(bytes.data(), format.swap));
    valueCount = static_cast<int64_t>(LoadNumber<Word>(bytes.data() + sizeof(Word), format.swap));
    valueBytes =
        static_cast<int64_t>(LoadNumber<Word>(bytes.data() + 2 * sizeof(Word), format.swap));
  };
  width == sizeof(uint64_t) ? load(uint64_t{}) : load(uint32_t{});
  if (IsNull()) return true;
  if (end <= position || end > limit) return false;

  const size_t nameLength = static_cast<unsigned char>(bytes[fixed - 1]);
  values = position + static_cast<int64_t>(fixed + nameLength);
  // As unsigned numbers, those below 0 are too large, too.
  constexpr uint64_t kMost = std::numeric_limits<int32_t>::max();
  if (bytes.size() < fixed + nameLength || static_cast<uint64_t>(valueBytes) > kMost ||
      static_cast<uint64_t>(valueCount) > kMost || values + valueBytes > end) {
    return false;
  }
  name = bytes.substr(fixed, nameLength);
  return true;
}

bool FbxIOFieldList::ParseBinary(int64_t start, int64_t limit) {
  // Most lists are small, and cheaper to take whole: one view and one copy for all records. Of
  // others the bytes of nested lists and large values are passed over.
  constexpr int64_t kMostWhole = FbxByteSource::kMaxView - FbxBinaryRecord::kLongestHead;
  const bool isWhole = start <= limit && limit - start <= kMostWhole;
  std::string_view whole;
  if (isWhole) {
    const auto size = static_cast<size_t>(limit - start);
    whole = source_.View(start, size + FbxBinaryRecord::kLongestHead);
    const std::string_view kept = whole.substr(0, size);
    buffer_.assign(kept.begin(), kept.end());
  }
  int64_t position = start;
  FbxBinaryRecord record;
  while (position != limit) {
    const std::string_view head =
        isWhole ? whole.substr(std::min(static_cast<size_t>(position - start), whole.size()))
                : source_.View(position, FbxBinaryRecord::kLongestHead);
    // A record ends behind its start, so that positions rise and the loop ends.
    if (!record.Read(head, format_, position, limit)) return false;
    if (record.IsNull()) break;
    FbxIOFieldInstance& instance = AddInstance(FieldIndex(record.name));
    instance.end = record.end;
    instance.values = record.values;
    instance.valueBytes = static_cast<uint32_t>(record.valueBytes);
    instance.valueCount = static_cast<int32_t>(record.valueCount);
    if (record.HasBlock()) instance.extension = record.values + record.valueBytes;
    if (isWhole) {
      instance.values -= start;
      instance.isBuffered = true;
      if (instance.values + record.valueBytes > static_cast<int64_t>(buffer_.size())) return false;
    } else if (instance.valueBytes <= kMaxBufferedBlock) {
      const std::string_view values = source_.View(record.values, instance.valueBytes);
      if (values.size() < instance.valueBytes) return false;
      instance.values = static_cast<int64_t>(buffer_.size());
      buffer_.insert(buffer_.end(), values.begin(), values.begin() + instance.valueBytes);
      instance.isBuffered = true;
    }
    if (!CheckValues(instance)) return false;
    position = record.end;
  }
  return true;
}

std::string_view FbxIOFieldList::FileView(const FbxIOFieldInstance& instance, uint32_t offset,
                                          size_t wanted) {
  if (offset >= instance.valueBytes) return {};
  const size_t rest = instance.valueBytes - offset;
  return source_.View(instance.values + offset, std::min(wanted, rest)).substr(0, rest);
}

bool FbxIOFieldList::BlockRead(uint32_t offset, char* out, size_t count) {
  if (offset > current_->valueBytes || count > current_->valueBytes - offset) return false;
  if (!current_->isBuffered) return source_.Read(current_->values + offset, out, count) == count;
  std::copy_n(block_.data() + offset, count, out);
  return true;
}

bool FbxIOFieldList::CheckValues(const FbxIOFieldInstance& instance) {
  // Of a block in the buffer, all of its rest; of another, the next value's head.
  std::string_view rest =
      instance.isBuffered ? BufferedBlock(instance) : FileView(instance, 0, kValueHead);
  uint64_t offset = 0;
  for (int32_t left = instance.valueCount; left > 1; --left) {
    const uint64_t size = rest.empty() ? 0 : ValueSize(rest, format_.swap);
    if (size == 0) return false;
    if (instance.isBuffered) {
      if (size >= rest.size()) return false;
      rest.remove_prefix(size);
    } else {
      offset += size;
      if (offset >= instance.valueBytes) return false;
      rest = FileView(instance, static_cast<uint32_t>(offset), kValueHead);
    }
  }
  return instance.valueCount == 0 ||
         (!rest.empty() && kForms[static_cast<unsigned char>(rest.front())].size != 0);
}

FbxIOFieldList::BinaryValue FbxIOFieldList::TakeBinary() {
  if (current_ == nullptr || valueIndex_ >= current_->valueCount) return {};
  const uint32_t offset = valueOffset_;
  const std::string_view bytes = BlockView(offset, kValueHead);
  ++valueIndex_;
  if (bytes.empty()) return {};
  const uint64_t size = ValueSize(bytes, format_.swap);
  const uint32_t rest = current_->valueBytes - offset;
  valueOffset_ += size == 0 || size > rest ? rest : static_cast<uint32_t>(size);
  return {bytes.front(), offset + 1, bytes.substr(1)};
}

std::string_view FbxIOFieldList::TakeStored(int32_t count) {
  if (current_ == nullptr || current_->valueCount - valueIndex_ < count) return {};
  const std::string_view bytes = block_.substr(std::min<size_t>(valueOffset_, block_.size()));
  size_t passed = 0;
  for (int32_t i = 0; i < count; ++i) {
    if (passed == bytes.size()) return {};
    const uint64_t size = ValueSize(bytes.substr(passed), format_.swap);
    if (size == 0 || size > bytes.size() - passed) return {};
    passed += size;
  }
  valueIndex_ += count;
  valueOffset_ += static_cast<uint32_t>(passed);
  return bytes.substr(0, passed);
}

bool FbxIOFieldList::PassStored(std::string_view stored, int32_t count) {
  if (current_ == nullptr || current_->valueCount - valueIndex_ < count ||
      !block_.substr(std::min<size_t>(valueOffset_, block_.size())).starts_with(stored)) {
    return false;
  }
  valueIndex_ += count;
  valueOffset_ += static_cast<uint32_t>(stored.size());
  return true;
}
