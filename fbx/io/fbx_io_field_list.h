// One level of a scene file's tree: the records of a list, grouped by name, and the cursor over
// them.
//
// A list is read when it is opened and holds only its own records' values; lists nested in them are
// positions until somebody opens one. Of the values, small blocks are kept in one buffer for the
// whole list and large ones stay in the file, so that neither a mesh nor an embedded picture that
// nobody asks for is ever read. Nothing is decoded before it is asked for.
//
// Names are sorted in byte order; records of one name stay in file order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "fbx/io/fbx_stored_array.h"

class FbxAsciiBlocks;
class FbxByteSource;

// One record.
struct FbxIOFieldInstance {
  // Position of the nested list, 0 without one.
  int64_t extension = 0;
  // Binary: where the record, and with it the nested list, ends.
  int64_t end = 0;
  // Binary: where the value block stands, in the file or in the list's buffer.
  // ASCII: index of the first value.
  int64_t values = 0;
  uint32_t valueBytes = 0;
  int32_t valueCount = 0;
  int32_t field = 0;
  // Binary: whether the value block is in the list's buffer.
  bool isBuffered = false;
};

// All records of one name: `count` of them.
struct FbxIOField {
  std::string_view name;
  // Where their indices begin in the list that is grouped by names.
  size_t first = 0;
  int32_t count = 0;
  // The instance that the cursor stands on; `count` past the last.
  int32_t readCurrent = 0;
};

// The `instance`-th record of the list's `field`-th name.
struct FbxIORecordPlace {
  int32_t field = 0;
  int32_t instance = 0;
};

// How the bytes of a list are to be understood.
struct FbxIOListFormat {
  bool isBinary = true;
  // Values are in the other byte order than this machine's.
  bool swap = false;
  // Bytes of an offset word, 4 or 8.
  size_t offsetWidth = 4;
  // All values of a record can be read as one array.
  bool hasPlainLists = false;
};

// The head of a record in a binary scene file: three offset words, and the name.
struct FbxBinaryRecord {
  // Position of the next record; 0 for the null record, which ends a list. The null record's other
  // members stay unset.
  int64_t end = 0;
  int64_t valueCount = 0;
  int64_t valueBytes = 0;
  std::string_view name;
  // Position of the value block.
  int64_t values = 0;

  bool IsNull() const { return end == 0; }
  bool HasBlock() const { return values + valueBytes < end; }

  // The most bytes of a record that Read looks at.
  static constexpr size_t kLongestHead = 3 * sizeof(uint64_t) + 1 + 255;
  // Bytes of the null record.
  static int64_t NullSize(const FbxIOListFormat& format);
  // Reads the record at `position` from the `bytes` that stand there: kLongestHead of them, or all
  // that there are. False if it isn't all there, doesn't lie between `position` and `limit`, or its
  // values don't lie within it. The name is valid as long as the bytes.
  bool Read(std::string_view bytes, const FbxIOListFormat& format, int64_t position, int64_t limit);
};

// As ==. Names of records are compared most of all, and half of them are of one letter.
inline bool IsSameName(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  if (a.size() < 2) return a.empty() || a.front() == b.front();
  return std::memcmp(a.data(), b.data(), a.size()) == 0;
}

class FbxIOFieldList {
 public:
  // A record's values are kept in memory up to this size, and stay in the file above it.
  static constexpr uint32_t kMaxBufferedBlock = 4096;

  // The caller keeps the source and the blocks alive as long as the list.
  FbxIOFieldList(FbxByteSource& source, FbxAsciiBlocks& blocks,
                 std::shared_ptr<FbxInflater> inflater, FbxIOListFormat format);

  // Reads the records of the list at `start` into this one, which is empty. It ends at `limit` at
  // the latest, with or without the null record or brace that should end it. False if it is
  // corrupt; what is here then is to be cleared.
  bool Parse(int64_t start, int64_t limit);
  // Forgets the records, and gives large buffers back.
  void Clear();
  // Takes the cursor back to the first record of every name.
  void ResetPosition();

  size_t FieldCount() const { return fields_.size(); }
  // Null past the last, in sorted order.
  const FbxIOField* Field(size_t index) const;
  const FbxIOField* Find(std::string_view name) const;
  std::vector<FbxIORecordPlace> FileOrder() const;
  // Puts the cursor on the first value of a record; false if there is no such record.
  bool Begin(std::string_view name, int32_t instance);
  bool Begin(size_t field, int32_t instance);
  // Moves on to the next record of the current name.
  void Next();
  // The record that the cursor stands on, null if there is none.
  const FbxIOFieldInstance* Current() const { return current_; }
  // How many of its values have been taken.
  int32_t ValueIndex() const { return valueIndex_; }

  // The letter of the next value of the current record: 'a' or 'S' in text. 'S' without a value.
  char ValueType();

  // Each takes the next value of the current record: a value past the last, or one of another type,
  // gives 0 or the empty text and is passed over.
  char ReadChar();
  // What ReadChar would take; the cursor stays.
  char PeekChar();
  bool ReadBool();
  int8_t ReadByte();
  int16_t ReadShort();
  int32_t ReadInt();
  int64_t ReadLongLong();
  float ReadFloat();
  double ReadDouble();
  void ReadDoubles(double* out, int count);
  // Text is valid until the list is cleared; that of a value in a block of more than
  // kMaxBufferedBlock bytes until the record's next one is read.
  std::string_view ReadString();
  std::string_view ReadRaw();

  // The next value as an array, decoded once into `out`, whose storage is reused. False, with `out`
  // empty, if it isn't an array of elements of that type or has none.
  bool ReadArray(std::vector<double>& out);
  bool ReadArray(std::vector<float>& out);
  bool ReadArray(std::vector<int64_t>& out);
  bool ReadArray(std::vector<uint64_t>& out);
  bool ReadArray(std::vector<int32_t>& out);
  bool ReadArray(std::vector<uint32_t>& out);
  bool ReadArray(std::vector<int16_t>& out);
  bool ReadArray(std::vector<uint16_t>& out);
  bool ReadArray(std::vector<int8_t>& out);
  bool ReadArray(std::vector<uint8_t>& out);
  bool ReadArray(std::vector<bool>& out);
  // The next value as an array of double or int32_t, which is decoded later where it can be.
  template <class Scalar>
  FbxStoredBytes ReadStored();
  // The one value of the current record as it is stored: equal bytes of one file hold equal values.
  // Empty in text, for blocks of more than kMaxBufferedBlock bytes, and where there isn't just one
  // value. Valid as ReadString's text.
  std::string_view StoredValue();
  // The next `count` values of the current record as they are stored, and passes over them; empty,
  // with the cursor left, in text, for such blocks, and where there aren't as many, whole.
  std::string_view TakeStored(int32_t count);
  // Passes over the next `count` values if they are what TakeStored gave for as many.
  bool PassStored(std::string_view stored, int32_t count);

 private:
  struct TextValue {
    uint32_t offset;
    uint32_t size;
  };
  // Where a nested block was cut out of a level's text.
  struct BlockMark {
    size_t offset;
    int64_t start;
    int64_t end;
  };
  struct BinaryValue {
    // 0 if there is no value.
    char type = 0;
    // Offset of the payload in the value block.
    uint32_t payload = 0;
    // Its first bytes, enough for a number. Valid until the source is used again.
    std::string_view bytes;
  };

  bool ParseBinary(int64_t start, int64_t limit);
  bool ParseAscii(int64_t start, int64_t limit);
  // Gathers the text that stands outside nested blocks; each block leaves a mark.
  bool ReadLevelText(int64_t start, int64_t limit);
  void CutIntoRecords();
  // Ends a text value at `end`, with the escapes replaced in place.
  void AddTextValue(size_t start, size_t end);
  FbxIOFieldInstance& AddInstance(int32_t field);
  // The number of a name among those of the list, which it joins.
  int32_t FieldIndex(std::string_view name) {
    if (!instances_.empty()) {
      const int32_t last = instances_.back().field;
      if (IsSameName(fields_[static_cast<size_t>(last)].name, name)) return last;
    }
    return OtherFieldIndex(name);
  }
  int32_t OtherFieldIndex(std::string_view name);
  // The number of a name that isn't the next one known; -1 for a new one, which now is.
  int32_t FindOrLearn(std::string_view name);
  // Sorts the names and groups the records by them.
  void Group();
  // Puts the cursor on the first value of the record that `readCurrent` of the current name tells.
  void StandOnRecord();

  // Of a binary record: all of its value block, if that is in the buffer; its bytes from `offset`
  // on in the file, as View of a byte source.
  std::string_view BufferedBlock(const FbxIOFieldInstance& instance) const {
    if (!instance.isBuffered) return {};
    return {buffer_.data() + static_cast<size_t>(instance.values), instance.valueBytes};
  }
  std::string_view FileView(const FbxIOFieldInstance& instance, uint32_t offset, size_t wanted);
  // Bytes of the current record's value block from `offset` on: in the buffer all of its rest.
  std::string_view BlockView(uint32_t offset, size_t wanted) {
    if (offset < block_.size()) return {block_.data() + offset, block_.size() - offset};
    return current_->isBuffered ? std::string_view() : FileView(*current_, offset, wanted);
  }
  // False if the bytes aren't all there.
  bool BlockRead(uint32_t offset, char* out, size_t count);
  bool CheckValues(const FbxIOFieldInstance& instance);
  BinaryValue TakeBinary();
  std::string_view TakeText();
  template <class T>
  T Payload(const BinaryValue& value) const;
  template <class T>
  T TakeWhole(char letter);
  template <class T>
  T TakeReal();
  // The bytes of a string or raw value, in a place where they may be changed.
  std::span<char> TakeBytes(char letter);
  std::span<char> KeepScratch(std::string text);

  // The head of a binary array, and where its bytes stand in the value block. Without room: there
  // is no array of that type, or it has no elements, or other bytes than it says.
  struct ArrayHead {
    size_t room = 0;  // bytes of the elements
    bool isDeflated = false;
    uint32_t stored = 0;
    uint32_t offset = 0;
  };
  ArrayHead TakeArrayHead(char letter, size_t scalarSize);
  template <class T>
  bool ReadBinaryArray(const ArrayHead& head, std::vector<T>& out);
  template <class T, class Element>
  bool ReadTextArray(std::vector<Element>& out);
  // The numbers of a block from `start` on that holds nothing else, `count` of them. False, with
  // anything in `out`, for any other block.
  template <class T, class Element>
  bool ReadPlainTextArray(int64_t start, int64_t limit, int64_t count, std::vector<Element>& out);
  // The rest of the record's values, each read alone.
  template <class T>
  void ReadPlainList(std::vector<T>& out);
  // Whether the next value is an array, of whatever type.
  bool IsAtArray();
  template <class T>
  bool ReadAnyArray(char letter, std::vector<T>& out);

  FbxByteSource& source_;
  FbxAsciiBlocks& blocks_;
  std::shared_ptr<FbxInflater> inflater_;
  FbxIOListFormat format_;
  std::vector<FbxIOField> fields_;
  // In file order.
  std::vector<FbxIOFieldInstance> instances_;
  // Their indices, grouped by names; behind them anything.
  std::vector<uint32_t> byField_;
  int32_t currentField_ = -1;
  const FbxIOFieldInstance* current_ = nullptr;
  // The current record's value block, if it is in the buffer, and the next of its values.
  std::string_view block_;
  uint32_t valueOffset_ = 0;  // binary: from the start of the value block
  int32_t valueIndex_ = 0;
  // Names of the fields, and behind them some of the list before; never moved once a field refers
  // to them. And the same as views.
  std::deque<std::string> names_;
  std::vector<std::string_view> known_;
  // Indices by name while the list is read, once there are too many to compare with each.
  std::unordered_map<std::string_view, int32_t> fieldIndex_;
  // Binary: the value blocks kept. ASCII: the text of the level, escapes replaced.
  std::vector<char> buffer_;
  std::vector<TextValue> textValues_;
  std::vector<BlockMark> blockMarks_;
  // Decoded large values, by the indices of their records.
  std::map<size_t, std::string> scratch_;
  std::vector<char> packed_;
  // The numbers of the fields before sorting, in sorted order; good as long as the list's names are
  // those of the list before. Empty when they aren't.
  std::vector<uint32_t> order_;
  // For Group alone: the fields before sorting; where the records of each go next.
  std::vector<FbxIOField> unsorted_;
};
