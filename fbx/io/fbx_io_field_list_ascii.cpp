// ASCII scene files: the records of a level.
//
// A level is read in two steps. Its own text is gathered, with a mark for each nested block, and
// that text is then cut into tokens: names, values and marks. The end of a line is white space to
// the second step, but for a name of several words, which stands on one line: a value list may run
// over lines without further ado, and indentation means nothing.
#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "fbx/io/ascii_blocks.h"
#include "fbx/io/fbx_byte_source.h"
#include "fbx/io/fbx_io_field_list.h"

namespace {

constexpr char kBlockMark = '@';

// What a character ends: white space an unquoted token, unless a name's colon follows; a stop every
// unquoted token, wherever it stands.
enum CharacterClass : uint8_t { kSpace = 1, kLineEnd = 2, kStop = 4 };

constexpr std::array<uint8_t, 256> kClasses = [] {
  std::array<uint8_t, 256> classes = {};
  const auto set = [&](std::string_view characters, int bits) {
    for (const char character : characters) {
      classes[static_cast<unsigned char>(character)] = static_cast<uint8_t>(bits);
    }
  };
  set(" \t\v\f", kSpace);
  set("\r\n", kSpace | kLineEnd | kStop);
  set(",:\"@", kStop);
  return classes;
}();

bool IsClass(char character, int bits) {
  return (kClasses[static_cast<unsigned char>(character)] & bits) != 0;
}
bool IsLineEnd(char character) { return IsClass(character, kLineEnd); }
bool IsBlank(char character) { return IsClass(character, kSpace); }
bool IsStop(char character) { return IsClass(character, kStop); }

// Replaces in place; returns the new end.
char* ReplaceEscape(char* begin, char* end, std::string_view escape, char character) {
  char* out = std::search(begin, end, escape.begin(), escape.end());
  for (char* at = out; at != end;) {
    if (static_cast<size_t>(end - at) >= escape.size() &&
        std::string_view(at, escape.size()) == escape) {
      *out++ = character;
      at += escape.size();
    } else {
      *out++ = *at++;
    }
  }
  return out;
}

}  // namespace

bool FbxIOFieldList::ParseAscii(int64_t start, int64_t limit) {
  if (!ReadLevelText(start, limit)) return false;
  CutIntoRecords();
  return true;
}

bool FbxIOFieldList::ReadLevelText(int64_t start, int64_t limit) {
  FbxAsciiScanner scanner(source_, start, limit);
  while (true) {
    const char brace = scanner.Next(&buffer_);
    if (buffer_.size() > std::numeric_limits<uint32_t>::max()) return false;
    if (brace != '{') break;
    const int64_t block = scanner.Position();
    const int64_t behind = blocks_.Skip(source_, block);
    buffer_.push_back(' ');
    blockMarks_.push_back({buffer_.size(), block, behind});
    buffer_.push_back(kBlockMark);
    scanner.Resume(behind);
  }
  return true;
}

void FbxIOFieldList::CutIntoRecords() {
  constexpr int32_t kNone = -1;
  const std::vector<char>& text = buffer_;
  const size_t size = text.size();
  int32_t lastName = kNone;
  bool hasRecord = false;
  // Documents before version 7 have values behind a block that belong to nothing.
  bool isStray = false;
  const auto record = [&]() -> FbxIOFieldInstance& {
    if (hasRecord) return instances_.back();
    if (lastName == kNone) lastName = FieldIndex("");
    hasRecord = true;
    FbxIOFieldInstance& instance = AddInstance(lastName);
    instance.values = static_cast<int64_t>(textValues_.size());
    return instance;
  };
  const auto beginRecord = [&](size_t start, size_t end) {
    while (end > start && IsBlank(text[end - 1])) --end;
    lastName = FieldIndex(std::string_view(text.data() + start, end - start));
    hasRecord = false;
    isStray = false;
    record();
  };
  const auto addValue = [&](size_t start, size_t end) {
    if (isStray) return;
    ++record().valueCount;
    AddTextValue(start, end);
  };

  size_t mark = 0;
  // The first stop at or behind the place where it was last looked for.
  size_t stop = 0;
  size_t at = 0;
  while (true) {
    while (at < size && IsBlank(text[at])) ++at;
    if (at == size) return;
    const size_t start = at;

    if (text[at] == '"') {
      const auto quote = std::find(text.begin() + static_cast<ptrdiff_t>(at) + 1, text.end(), '"');
      const size_t end = static_cast<size_t>(quote - text.begin());
      at = std::min(end + 1, size);
      while (at < size && IsBlank(text[at]) && !IsLineEnd(text[at])) ++at;
      if (at < size && text[at] == ':') {
        beginRecord(start + 1, end);
        ++at;
      } else {
        addValue(start + 1, end);
        if (at < size && text[at] == ',') ++at;
      }
      continue;
    }

    if (stop <= start) {
      stop = start;
      while (stop < size && !IsStop(text[stop])) ++stop;
    }
    if (stop < size && text[stop] == ':') {
      if (stop > start) beginRecord(start, stop);
      at = stop + 1;
      continue;
    }
    while (at < stop && !IsBlank(text[at])) ++at;
    // A block's mark ends no token, since a blank stands before it; another '@' drops its token.
    const bool isAtStop = at == stop && at < size;
    if (isAtStop && text[at] == kBlockMark) {
      while (mark < blockMarks_.size() && blockMarks_[mark].offset < at) ++mark;
      if (mark < blockMarks_.size() && blockMarks_[mark].offset == at) {
        FbxIOFieldInstance& instance = record();
        instance.extension = blockMarks_[mark].start;
        instance.end = blockMarks_[mark].end;
        hasRecord = false;
        isStray = format_.hasPlainLists;
      }
      ++at;
      continue;
    }
    if (at > start) addValue(start, at);
    if (isAtStop && text[at] == ',') ++at;
  }
}

void FbxIOFieldList::AddTextValue(size_t start, size_t end) {
  char* const begin = buffer_.data() + start;
  char* last = buffer_.data() + end;
  if (begin != last && std::memchr(begin, '&', end - start) != nullptr) {
    last = ReplaceEscape(begin, last, "&quot;", '"');
    last = ReplaceEscape(begin, last, "&lf;", '\n');
    last = ReplaceEscape(begin, last, "&cr;", '\r');
  }
  textValues_.push_back({static_cast<uint32_t>(start), static_cast<uint32_t>(last - begin)});
}

std::string_view FbxIOFieldList::TakeText() {
  if (current_ == nullptr || valueIndex_ >= current_->valueCount) return {};
  const TextValue& value = textValues_[static_cast<size_t>(current_->values + valueIndex_++)];
  return {buffer_.data() + value.offset, value.size};
}
