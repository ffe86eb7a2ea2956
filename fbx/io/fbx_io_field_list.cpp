#include "fbx/io/fbx_io_field_list.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace {

// More names than these are found by an index while a list is read.
constexpr size_t kFewNames = 16;

}  // namespace

FbxIOFieldList::FbxIOFieldList(FbxByteSource& source, FbxAsciiBlocks& blocks,
                               std::shared_ptr<FbxInflater> inflater, FbxIOListFormat format)
    : source_(source), blocks_(blocks), inflater_(std::move(inflater)), format_(format) {}

bool FbxIOFieldList::Parse(int64_t start, int64_t limit) {
  if (!(format_.isBinary ? ParseBinary(start, limit) : ParseAscii(start, limit))) return false;
  Group();
  return true;
}

void FbxIOFieldList::Clear() {
  constexpr size_t kMostKept = size_t{1} << 20;
  const auto drop = [](auto& items) {
    items.clear();
    if (items.capacity() * sizeof(items[0]) > kMostKept) items.shrink_to_fit();
  };
  drop(fields_);
  drop(instances_);
  drop(buffer_);
  drop(textValues_);
  drop(blockMarks_);
  drop(packed_);
  if (byField_.size() * sizeof(byField_[0]) > kMostKept) byField_ = {};
  constexpr size_t kMostNamesKept = 64;
  if (names_.size() > kMostNamesKept) {
    names_.clear();
    known_ = {};
    order_ = {};
    unsorted_ = {};
  }
  if (!scratch_.empty()) scratch_.clear();
  if (!fieldIndex_.empty()) fieldIndex_ = {};
  currentField_ = -1;
  current_ = nullptr;
}

int32_t FbxIOFieldList::OtherFieldIndex(std::string_view name) {
  const size_t count = fields_.size();
  // Lists that follow one another mostly have the same names in the same order. What is known all
  // differs, so that this one is none of the fields'.
  const bool isExpected = count < known_.size() && IsSameName(known_[count], name);
  if (!isExpected) {
    const int32_t found = FindOrLearn(name);
    if (found >= 0) return found;
  }
  fields_.push_back({.name = known_[count]});
  if (fields_.size() > kFewNames) {
    for (size_t i = fieldIndex_.size(); i < fields_.size(); ++i) {
      fieldIndex_.emplace(fields_[i].name, static_cast<int32_t>(i));
    }
  }
  return static_cast<int32_t>(count);
}

int32_t FbxIOFieldList::FindOrLearn(std::string_view name) {
  const size_t count = fields_.size();
  // Names are C strings to whoever asks for them.
  name = name.substr(0, name.find('\0'));
  if (count <= kFewNames) {
    for (size_t i = 0; i < count; ++i) {
      if (IsSameName(fields_[i].name, name)) return static_cast<int32_t>(i);
    }
  } else if (const auto found = fieldIndex_.find(name); found != fieldIndex_.end()) {
    return found->second;
  }
  known_.resize(count);
  names_.resize(count);
  names_.emplace_back(name);
  known_.push_back(names_.back());
  order_.clear();
  return -1;
}

FbxIOFieldInstance& FbxIOFieldList::AddInstance(int32_t field) {
  FbxIOFieldInstance& instance = instances_.emplace_back();
  instance.field = field;
  ++fields_[static_cast<size_t>(field)].count;
  return instance;
}

void FbxIOFieldList::Group() {
  const size_t count = fields_.size();
  if (order_.size() != count) {
    order_.resize(count);
    std::iota(order_.begin(), order_.end(), 0U);
    std::sort(order_.begin(), order_.end(),
              [this](uint32_t a, uint32_t b) { return fields_[a].name < fields_[b].name; });
  }
  if (!fieldIndex_.empty()) fieldIndex_ = {};

  unsorted_ = fields_;
  size_t first = 0;
  for (size_t i = 0; i < count; ++i) {
    FbxIOField& field = unsorted_[order_[i]];
    field.first = first;
    fields_[i] = field;
    first += static_cast<size_t>(field.count);
  }
  // Never made smaller, as it would be cleared each time it grows.
  if (byField_.size() < instances_.size()) byField_.resize(instances_.size());
  for (size_t i = 0; i < instances_.size(); ++i) {
    size_t& place = unsorted_[static_cast<size_t>(instances_[i].field)].first;
    byField_[place++] = static_cast<uint32_t>(i);
  }
}

void FbxIOFieldList::ResetPosition() {
  for (FbxIOField& field : fields_) field.readCurrent = 0;
  currentField_ = -1;
  current_ = nullptr;
}

const FbxIOField* FbxIOFieldList::Field(size_t index) const {
  return index < fields_.size() ? &fields_[index] : nullptr;
}

const FbxIOField* FbxIOFieldList::Find(std::string_view name) const {
  if (fields_.size() <= kFewNames) {
    for (const FbxIOField& field : fields_) {
      if (IsSameName(field.name, name)) return &field;
    }
    return nullptr;
  }
  const auto found = std::lower_bound(
      fields_.begin(), fields_.end(), name,
      [](const FbxIOField& field, std::string_view wanted) { return field.name < wanted; });
  return found != fields_.end() && found->name == name ? &*found : nullptr;
}

std::vector<FbxIORecordPlace> FbxIOFieldList::FileOrder() const {
  std::vector<FbxIORecordPlace> places(instances_.size());
  for (size_t i = 0; i < fields_.size(); ++i) {
    for (int32_t k = 0; k < fields_[i].count; ++k) {
      const uint32_t instance = byField_[fields_[i].first + static_cast<size_t>(k)];
      places[instance] = {static_cast<int32_t>(i), k};
    }
  }
  return places;
}

bool FbxIOFieldList::Begin(std::string_view name, int32_t instance) {
  // A loop over the records of a name asks for the same one each time.
  if (currentField_ >= 0 && IsSameName(fields_[static_cast<size_t>(currentField_)].name, name)) {
    return Begin(static_cast<size_t>(currentField_), instance);
  }
  const FbxIOField* field = Find(name);
  return Begin(field == nullptr ? fields_.size() : static_cast<size_t>(field - fields_.data()),
               instance);
}

bool FbxIOFieldList::Begin(size_t field, int32_t instance) {
  currentField_ = -1;
  current_ = nullptr;
  if (field >= fields_.size() || instance < 0 || instance >= fields_[field].count) return false;
  currentField_ = static_cast<int32_t>(field);
  fields_[field].readCurrent = instance;
  StandOnRecord();
  return true;
}

void FbxIOFieldList::Next() {
  if (current_ == nullptr) return;
  ++fields_[static_cast<size_t>(currentField_)].readCurrent;
  StandOnRecord();
}

void FbxIOFieldList::StandOnRecord() {
  const FbxIOField& field = fields_[static_cast<size_t>(currentField_)];
  current_ = nullptr;
  if (field.readCurrent >= field.count) return;
  current_ = &instances_[byField_[field.first + static_cast<size_t>(field.readCurrent)]];
  block_ = BufferedBlock(*current_);
  valueIndex_ = 0;
  valueOffset_ = 0;
}
