#include "fbx/io/fbx_io_field_list.h"

#include <algorithm>
#include <numeric>

FbxIOFieldList::FbxIOFieldList(FbxByteSource& source, FbxAsciiBlocks& blocks, FbxInflater& inflater,
                               FbxIOListFormat format)
    : source_(source), blocks_(blocks), inflater_(inflater), format_(format) {}

bool FbxIOFieldList::Parse(int64_t start, int64_t limit) {
  Clear();
  if (!(format_.isBinary ? ParseBinary(start, limit) : ParseAscii(start, limit))) return false;
  Group();
  fieldIndex_ = {};
  return true;
}

void FbxIOFieldList::Clear() {
  const auto drop = [](auto& items) {
    constexpr size_t kMostKept = size_t{1} << 20;
    items.clear();
    if (items.capacity() * sizeof(items[0]) > kMostKept) items.shrink_to_fit();
  };
  drop(fields_);
  drop(instances_);
  drop(buffer_);
  drop(textValues_);
  drop(blockMarks_);
  drop(packed_);
  names_.clear();
  scratch_.clear();
  fieldIndex_ = {};
  currentField_ = -1;
}

int32_t FbxIOFieldList::FieldIndex(std::string_view name) {
  constexpr size_t kFewNames = 16;
  // Names are C strings to whoever asks for them.
  name = name.substr(0, name.find('\0'));
  if (!instances_.empty()) {
    const int32_t last = instances_.back().field;
    if (fields_[static_cast<size_t>(last)].name == name) return last;
  }
  if (fields_.size() <= kFewNames) {
    for (size_t i = 0; i < fields_.size(); ++i) {
      if (fields_[i].name == name) return static_cast<int32_t>(i);
    }
  } else if (const auto found = fieldIndex_.find(name); found != fieldIndex_.end()) {
    return found->second;
  }
  const int32_t index = static_cast<int32_t>(fields_.size());
  fields_.push_back({.name = names_.emplace_back(name)});
  if (fields_.size() > kFewNames) {
    if (fieldIndex_.empty()) {
      for (size_t i = 0; i < fields_.size(); ++i) {
        fieldIndex_.emplace(fields_[i].name, static_cast<int32_t>(i));
      }
    } else {
      fieldIndex_.emplace(fields_.back().name, index);
    }
  }
  return index;
}

FbxIOFieldInstance& FbxIOFieldList::AddInstance(int32_t field) {
  FbxIOFieldInstance& instance = instances_.emplace_back();
  instance.field = field;
  instance.order = static_cast<int32_t>(instances_.size() - 1);
  ++fields_[static_cast<size_t>(field)].count;
  return instance;
}

void FbxIOFieldList::Group() {
  if (fields_.size() < 2) return;
  std::vector<int32_t> order(fields_.size());
  std::iota(order.begin(), order.end(), 0);
  const auto field = [this](int32_t index) -> FbxIOField& {
    return fields_[static_cast<size_t>(index)];
  };
  std::sort(order.begin(), order.end(),
            [&](int32_t a, int32_t b) { return field(a).name < field(b).name; });

  // `first` first tells where the next instance of a name goes.
  size_t first = 0;
  for (const int32_t index : order) {
    field(index).first = first;
    first += static_cast<size_t>(field(index).count);
  }
  std::vector<FbxIOFieldInstance> grouped(instances_.size());
  for (const FbxIOFieldInstance& instance : instances_) {
    grouped[field(instance.field).first++] = instance;
  }
  instances_.swap(grouped);

  std::vector<FbxIOField> sorted;
  sorted.reserve(fields_.size());
  for (const int32_t index : order) {
    field(index).first -= static_cast<size_t>(field(index).count);
    sorted.push_back(field(index));
  }
  fields_.swap(sorted);
}

void FbxIOFieldList::ResetPosition() {
  for (FbxIOField& field : fields_) field.readCurrent = 0;
  currentField_ = -1;
}

const FbxIOField* FbxIOFieldList::Field(size_t index) const {
  return index < fields_.size() ? &fields_[index] : nullptr;
}

const FbxIOField* FbxIOFieldList::Find(std::string_view name) const {
  const auto found = std::lower_bound(
      fields_.begin(), fields_.end(), name,
      [](const FbxIOField& field, std::string_view wanted) { return field.name < wanted; });
  return found != fields_.end() && found->name == name ? &*found : nullptr;
}

std::vector<FbxIORecordPlace> FbxIOFieldList::FileOrder() const {
  std::vector<FbxIORecordPlace> places(instances_.size());
  for (size_t i = 0; i < fields_.size(); ++i) {
    for (int32_t k = 0; k < fields_[i].count; ++k) {
      const FbxIOFieldInstance& instance = instances_[fields_[i].first + static_cast<size_t>(k)];
      places[static_cast<size_t>(instance.order)] = {static_cast<int32_t>(i), k};
    }
  }
  return places;
}

bool FbxIOFieldList::Begin(std::string_view name, int32_t instance) {
  const FbxIOField* field = Find(name);
  if (field == nullptr) {
    currentField_ = -1;
    return false;
  }
  return Begin(static_cast<size_t>(field - fields_.data()), instance);
}

bool FbxIOFieldList::Begin(size_t field, int32_t instance) {
  currentField_ = -1;
  if (field >= fields_.size() || instance < 0 || instance >= fields_[field].count) return false;
  currentField_ = static_cast<int32_t>(field);
  fields_[field].readCurrent = instance;
  Current()->valueIndex = 0;
  Current()->valueOffset = 0;
  return true;
}

void FbxIOFieldList::Next() {
  if (Current() == nullptr) return;
  ++fields_[static_cast<size_t>(currentField_)].readCurrent;
  if (FbxIOFieldInstance* now = Current()) {
    now->valueIndex = 0;
    now->valueOffset = 0;
  }
}

FbxIOFieldInstance* FbxIOFieldList::Current() {
  if (currentField_ < 0) return nullptr;
  const FbxIOField& field = fields_[static_cast<size_t>(currentField_)];
  if (field.readCurrent >= field.count) return nullptr;
  return &instances_[field.first + static_cast<size_t>(field.readCurrent)];
}
