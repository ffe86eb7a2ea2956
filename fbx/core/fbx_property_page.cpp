#include "fbx/core/fbx_property_page.h"

#include <algorithm>
#include <utility>

namespace {

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char x, char y) { return lower(x) == lower(y); });
}

// More properties than these are found by an index.
constexpr size_t kScannedLocals = 32;

}  // namespace

FbxPropertyValue DefaultPropertyValue(EFbxType type) {
  switch (type) {
    case eFbxChar:
    case eFbxShort:
    case eFbxLongLong:
    case eFbxBool:
    case eFbxInt:
    case eFbxEnum:
      return int64_t{0};
    case eFbxUChar:
    case eFbxUShort:
    case eFbxUInt:
    case eFbxULongLong:
      return uint64_t{0};
    case eFbxHalfFloat:
    case eFbxFloat:
    case eFbxDouble:
      return 0.0;
    case eFbxDouble2:
      return FbxDouble2{};
    case eFbxDouble3:
      return FbxDouble3{};
    case eFbxDouble4:
      return FbxDouble4{};
    case eFbxDouble4x4:
      return std::make_shared<const FbxDouble4x4>(
          FbxDouble4x4{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    case eFbxString:
    case eFbxBlob:
    case eFbxDateTime:
      return std::string();
    case eFbxTime:
      return FbxTime();
    case eFbxDistance:
      return std::make_shared<const FbxDistance>();
    case eFbxUndefined:
    case eFbxReference:
      break;
  }
  return {};
}

int FbxPropertyPage::Declare(std::string_view name, FbxDataType type, FbxPropertyValue value,
                             uint32_t flags, int parent, std::vector<std::string> enumItems) {
  if (std::holds_alternative<std::monostate>(value)) value = DefaultPropertyValue(type.GetType());
  int index = Find(name, parent);
  if (index < 0) {
    index = Count();
    declarations_.emplace_back();
    byName_[std::string(name)].push_back(index);
  }
  declarations_[static_cast<size_t>(index)] = {std::string(name), type,  parent,
                                               std::move(value),  flags, std::move(enumItems)};
  return index;
}

int FbxPropertyPage::Find(std::string_view name, int parent) const {
  const auto found = byName_.find(name);
  if (found == byName_.end()) return -1;
  for (const int index : found->second) {
    if (At(index).parent == parent) return index;
  }
  return -1;
}

FbxPropertyLocal::Rare& FbxPropertyLocal::MakeRare() {
  if (rare == nullptr) rare = std::make_unique<Rare>();
  return *rare;
}

bool FbxPropertyStore::SetTemplate(const FbxPropertyStore* source) {
  if (!locals_.empty() || !own_.empty() || source == nullptr || source == this ||
      &source->class_ != &class_ || source->template_ != nullptr) {
    return false;
  }
  template_ = source;
  return true;
}

const FbxPropertyDeclaration& FbxPropertyStore::OtherDeclaration(int index) const {
  if (index >= FirstOwn()) return own_[static_cast<size_t>(index - FirstOwn())];
  return template_->own_[static_cast<size_t>(index - class_.Count())];
}

std::string FbxPropertyStore::OwnKey(std::string_view name, int parent) {
  return std::to_string(parent).append("|").append(name);
}

int FbxPropertyStore::FindOwn(std::string_view name, int parent) const {
  constexpr size_t kScanned = 16;
  if (own_.size() <= kScanned) {
    for (size_t i = 0; i < own_.size(); ++i) {
      if (own_[i].parent == parent && own_[i].name == name) return FirstOwn() + static_cast<int>(i);
    }
    return -1;
  }
  if (index_ == nullptr) index_ = std::make_unique<Index>();
  std::unordered_map<std::string, int>& known = index_->own;
  for (size_t i = known.size(); i < own_.size(); ++i) {
    known.emplace(OwnKey(own_[i].name, own_[i].parent), FirstOwn() + static_cast<int>(i));
  }
  const auto found = known.find(OwnKey(name, parent));
  return found == known.end() ? -1 : found->second;
}

int FbxPropertyStore::Find(std::string_view name, int parent, bool caseSensitive) const {
  if (caseSensitive) {
    int index = parent < class_.Count() ? class_.Find(name, parent) : -1;
    if (index < 0 && template_ != nullptr) index = template_->FindOwn(name, parent);
    return index >= 0 ? index : FindOwn(name, parent);
  }
  for (int index = 0; index < Count(); ++index) {
    const FbxPropertyDeclaration& declaration = Declaration(index);
    if (declaration.parent == parent && EqualsIgnoringCase(declaration.name, name)) return index;
  }
  return -1;
}

int FbxPropertyStore::Create(std::string_view name, FbxDataType type, int parent) {
  FbxPropertyDeclaration declaration;
  declaration.name = std::string(name);
  declaration.type = type;
  declaration.parent = parent;
  declaration.value = DefaultPropertyValue(type.GetType());
  own_.push_back(std::move(declaration));
  return Count() - 1;
}

const FbxPropertyLocal* FbxPropertyStore::FindLocal(int index) const {
  if (locals_.size() <= kScannedLocals) {
    const auto found =
        std::find_if(locals_.begin(), locals_.end(),
                     [index](const FbxPropertyLocal& l) { return l.index == index; });
    return found == locals_.end() ? nullptr : &*found;
  }
  const auto found = index_->localPlaces.find(index);
  return found == index_->localPlaces.end() ? nullptr : &locals_[found->second];
}

FbxPropertyLocal* FbxPropertyStore::Local(int index) {
  return const_cast<FbxPropertyLocal*>(std::as_const(*this).Local(index));
}

FbxPropertyLocal& FbxPropertyStore::MakeLocal(int index) {
  if (FbxPropertyLocal* local = Local(index)) return *local;
  if (locals_.size() == kScannedLocals && index_ == nullptr) index_ = std::make_unique<Index>();
  FbxPropertyLocal& local = locals_.emplace_back();
  local.index = index;
  localBits_ |= BitOf(index);
  if (locals_.size() > kScannedLocals) {
    std::unordered_map<int, size_t>& places = index_->localPlaces;
    for (size_t i = places.size(); i < locals_.size(); ++i) places.emplace(locals_[i].index, i);
  }
  return local;
}

const FbxPropertyLocal* FbxPropertyStore::TemplateLocal(int index) const {
  return template_ == nullptr || index >= FirstOwn() ? nullptr : template_->Local(index);
}

const FbxPropertyValue& FbxPropertyStore::Value(int index) const {
  for (const FbxPropertyLocal* local : {Local(index), TemplateLocal(index)}) {
    if (local != nullptr && !std::holds_alternative<std::monostate>(local->value)) {
      return local->value;
    }
  }
  return Declaration(index).value;
}

bool FbxPropertyStore::IsInherited(int index) const {
  for (const FbxPropertyLocal* local : {Local(index), TemplateLocal(index)}) {
    if (local != nullptr && !std::holds_alternative<std::monostate>(local->value)) return false;
  }
  return true;
}

uint32_t FbxPropertyStore::Flags(int index) const {
  uint32_t flags = Declaration(index).flags;
  for (const FbxPropertyLocal* local : {TemplateLocal(index), std::as_const(*this).Local(index)}) {
    if (local != nullptr)
      flags = (flags & ~uint32_t{local->flagMask}) | (local->flags & local->flagMask);
  }
  return flags;
}
