#include "fbx/core/fbx_property.h"

#include <algorithm>

#include "fbx/core/fbx_object.h"
#include "fbx/core/fbx_property_page.h"

namespace {

const FbxConnectionLists kNoConnections;

// Entry `index` of those in `ends` that are objects (or properties); invalid past the end.
FbxProperty NthEnd(const FbxPropertyEnds& ends, bool objects, int index) {
  for (const FbxProperty& end : ends) {
    if (end.IsRoot() == objects && index-- == 0) return end;
  }
  return {};
}

int CountEnds(const FbxPropertyEnds& ends, bool objects) {
  return static_cast<int>(std::count_if(
      ends.begin(), ends.end(), [objects](const FbxProperty& e) { return e.IsRoot() == objects; }));
}

}  // namespace

bool FbxCriteria::Matches(const FbxObject& object) const { return object.GetClassId().Is(class_); }

FbxProperty FbxProperty::Create(FbxObject* object, FbxDataType type, std::string_view name,
                                std::string_view label) {
  return object == nullptr ? FbxProperty() : Create(object->RootProperty(), type, name, label);
}

FbxProperty FbxProperty::Create(const FbxProperty& parent, FbxDataType type, std::string_view name,
                                std::string_view label) {
  if (!parent.IsValid()) return {};
  FbxProperty property = parent.Find(name);
  if (!property.IsValid()) {
    property = {parent.object_, parent.Store().Create(name, type, parent.index_)};
  }
  if (!label.empty()) property.MakeLocal().MakeRare().label = label;
  return property;
}

FbxPropertyStore& FbxProperty::Store() const { return object_->Store(); }

const FbxPropertyDeclaration& FbxProperty::Declaration() const {
  return Store().Declaration(index_);
}

const FbxPropertyLocal* FbxProperty::Local() const {
  return HasData() ? std::as_const(Store()).Local(index_) : nullptr;
}

FbxPropertyLocal& FbxProperty::MakeLocal() const { return Store().MakeLocal(index_); }

FbxString FbxProperty::GetName() const {
  return HasData() ? FbxString(Declaration().name) : FbxString();
}

FbxString FbxProperty::GetHierarchicalName() const {
  std::string name;
  for (FbxProperty p = *this; p.HasData(); p = p.GetParent()) {
    const std::string& own = p.Declaration().name;
    name = name.empty() ? own : own + sHierarchicalSeparator + name;
  }
  return name;
}

FbxString FbxProperty::GetLabel() const {
  const FbxPropertyLocal* local = Local();
  return local != nullptr && local->rare != nullptr ? FbxString(local->rare->label) : FbxString();
}

FbxDataType FbxProperty::GetPropertyDataType() const {
  return HasData() ? Declaration().type : FbxDataType();
}

bool FbxProperty::GetFlag(FbxPropertyFlags::EFlags flag) const { return (GetFlags() & flag) != 0; }

uint32_t FbxProperty::GetFlags() const { return HasData() ? Store().Flags(index_) : 0; }

void FbxProperty::ModifyFlag(FbxPropertyFlags::EFlags flag, bool value) {
  ModifyFlags(flag, value ? static_cast<uint32_t>(flag) : 0);
}

void FbxProperty::ModifyFlags(uint32_t mask, uint32_t bits) {
  if (!HasData()) return;
  FbxPropertyLocal& local = MakeLocal();
  local.flagMask = static_cast<uint16_t>(local.flagMask | mask);
  local.flags = static_cast<uint16_t>((local.flags & ~mask) | (bits & mask));
}

bool FbxProperty::HasMinLimit() const {
  const FbxPropertyLocal* local = Local();
  return local != nullptr && local->rare != nullptr && local->rare->hasMin;
}

double FbxProperty::GetMinLimit() const { return HasMinLimit() ? Local()->rare->minLimit : 0.0; }

void FbxProperty::SetMinLimit(double limit) {
  if (!HasData()) return;
  FbxPropertyLocal::Rare& rare = MakeLocal().MakeRare();
  rare.minLimit = limit;
  rare.hasMin = true;
}

bool FbxProperty::HasMaxLimit() const {
  const FbxPropertyLocal* local = Local();
  return local != nullptr && local->rare != nullptr && local->rare->hasMax;
}

double FbxProperty::GetMaxLimit() const { return HasMaxLimit() ? Local()->rare->maxLimit : 0.0; }

void FbxProperty::SetMaxLimit(double limit) {
  if (!HasData()) return;
  FbxPropertyLocal::Rare& rare = MakeLocal().MakeRare();
  rare.maxLimit = limit;
  rare.hasMax = true;
}

int FbxProperty::AddEnumValue(std::string_view text) {
  if (GetPropertyDataType().GetType() != eFbxEnum) return -1;
  const int index = GetEnumCount();
  std::vector<std::string>& items = MakeLocal().MakeRare().enumItems;
  if (items.empty()) items = Declaration().enumItems;
  items.emplace_back(text);
  return index;
}

FbxString FbxProperty::GetEnumValue(int index) const {
  if (!HasData() || index < 0 || index >= GetEnumCount()) return {};
  const FbxPropertyLocal* local = Local();
  const bool own = local != nullptr && local->rare != nullptr && !local->rare->enumItems.empty();
  return (own ? local->rare->enumItems : Declaration().enumItems)[static_cast<size_t>(index)];
}

int FbxProperty::GetEnumCount() const {
  if (!HasData()) return 0;
  const FbxPropertyLocal* local = Local();
  const bool own = local != nullptr && local->rare != nullptr && !local->rare->enumItems.empty();
  return static_cast<int>((own ? local->rare->enumItems : Declaration().enumItems).size());
}

FbxProperty::EInheritType FbxProperty::GetValueInheritType() const {
  return !HasData() || Store().IsInherited(index_) ? eInherit : eOverride;
}

void FbxProperty::SetValueInheritType(EInheritType type) {
  if (!HasData()) return;
  if (type == eOverride) {
    SetValue(GetValue());
  } else if (FbxPropertyLocal* local = Store().Local(index_)) {
    local->value = {};
    Store().AddRevision();
  }
}

const FbxPropertyValue& FbxProperty::GetValue() const {
  static const FbxPropertyValue kNone;
  return HasData() ? Store().Value(index_) : kNone;
}

bool FbxProperty::Get(void* out, EFbxType type) const {
  return HasData() && ConvertPropertyValue(GetValue(), out, type);
}

bool FbxProperty::Set(const void* in, EFbxType type) {
  if (!HasData()) return false;
  FbxPropertyValue held =
      CoercePropertyValue(ReadPropertyValue(in, type), GetPropertyDataType().GetType());
  return !std::holds_alternative<std::monostate>(held) && SetValue(std::move(held));
}

bool FbxProperty::SetValue(FbxPropertyValue value) {
  if (!HasData() || value.index() != Declaration().value.index()) return false;
  MakeLocal().value = std::move(value);
  Store().AddRevision();
  return true;
}

FbxProperty FbxProperty::GetParent() const {
  return HasData() ? FbxProperty(object_, Declaration().parent) : FbxProperty();
}

FbxProperty FbxProperty::GetChild() const {
  if (!IsValid()) return {};
  const int count = Store().Count();
  for (int i = index_ + 1; i < count; ++i) {
    if (Store().Declaration(i).parent == index_) return {object_, i};
  }
  return {};
}

FbxProperty FbxProperty::GetSibling() const {
  if (!HasData()) return {};
  const int parent = Declaration().parent;
  const int count = Store().Count();
  for (int i = index_ + 1; i < count; ++i) {
    if (Store().Declaration(i).parent == parent) return {object_, i};
  }
  return {};
}

bool FbxProperty::IsChildOf(const FbxProperty& parent) const {
  return HasData() && GetParent() == parent;
}

FbxProperty FbxProperty::Find(std::string_view name, bool caseSensitive) const {
  if (!IsValid()) return {};
  const int found = Store().Find(name, index_, caseSensitive);
  return found < 0 ? FbxProperty() : FbxProperty(object_, found);
}

FbxProperty FbxProperty::FindHierarchical(std::string_view path, bool caseSensitive) const {
  FbxProperty property = *this;
  while (property.IsValid()) {
    const size_t end = path.find(*sHierarchicalSeparator);
    property = property.Find(path.substr(0, end), caseSensitive);
    if (end == std::string_view::npos) break;
    path.remove_prefix(end + 1);
  }
  return property;
}

FbxConnectionLists* FbxProperty::Connections() const {
  if (!IsValid()) return nullptr;
  if (index_ == kRoot) return &object_->connections_;
  FbxPropertyLocal* local = Store().Local(index_);
  return local == nullptr || local->rare == nullptr ? nullptr : &local->rare->connections;
}

FbxConnectionLists& FbxProperty::MakeConnections() const {
  return index_ == kRoot ? object_->connections_ : MakeLocal().MakeRare().connections;
}

const FbxPropertyEnds& FbxProperty::Sources() const {
  const FbxConnectionLists* lists = Connections();
  return lists == nullptr ? kNoConnections.sources : lists->sources;
}

const FbxPropertyEnds& FbxProperty::Destinations() const {
  const FbxConnectionLists* lists = Connections();
  return lists == nullptr ? kNoConnections.destinations : lists->destinations;
}

bool FbxProperty::IsConnected(const FbxProperty& source) const {
  // A hub such as the scene has very many ends on one side; the other side is short.
  const FbxPropertyEnds& sources = Sources();
  const FbxPropertyEnds& destinations = source.Destinations();
  if (sources.size() <= destinations.size()) {
    return std::find(sources.begin(), sources.end(), source) != sources.end();
  }
  return std::find(destinations.begin(), destinations.end(), *this) != destinations.end();
}

bool FbxProperty::Connect(const FbxProperty& source, bool repeat) {
  if (!IsValid() || !source.IsValid() || source == *this) return false;
  if (!repeat && IsConnected(source)) return false;
  MakeConnections().sources.push_back(source);
  source.MakeConnections().destinations.push_back(*this);
  if (IsRoot()) {
    object_->ForgetClassLists();
    if (source.IsRoot()) object_->ConnectNotify(*source.object_, true);
  }
  return true;
}

bool FbxProperty::ConnectSrcObject(FbxObject* source, bool repeat) {
  return source != nullptr && Connect(source->RootProperty(), repeat);
}

bool FbxProperty::ConnectSrcProperty(const FbxProperty& source, bool repeat) {
  return Connect(source, repeat);
}

bool FbxProperty::DisconnectSrcObject(FbxObject* source) {
  if (!IsConnectedSrcObject(source)) return false;
  const FbxProperty end = source->RootProperty();
  if (IsRoot()) object_->ConnectNotify(*source, false);
  EraseEnd(Connections()->sources, end);
  EraseEnd(end.Connections()->destinations, *this);
  object_->ForgetClassLists();
  return true;
}

bool FbxProperty::IsConnectedSrcObject(const FbxObject* source) const {
  return source != nullptr && IsConnectedSrcProperty(source->RootProperty());
}

bool FbxProperty::IsConnectedSrcProperty(const FbxProperty& source) const {
  return IsValid() && source.IsValid() && IsConnected(source);
}

int FbxProperty::GetSrcObjectCount() const { return CountEnds(Sources(), true); }

FbxObject* FbxProperty::GetSrcObject(int index) const {
  return NthEnd(Sources(), true, index).GetFbxObject();
}

int FbxProperty::GetSrcObjectCount(const FbxCriteria& criteria) const {
  const FbxPropertyEnds& sources = Sources();
  return static_cast<int>(
      std::count_if(sources.begin(), sources.end(), [&](const FbxProperty& end) {
        return end.IsRoot() && criteria.Matches(*end.GetFbxObject());
      }));
}

FbxObject* FbxProperty::GetSrcObject(const FbxCriteria& criteria, int index) const {
  for (const FbxProperty& source : Sources()) {
    if (source.IsRoot() && criteria.Matches(*source.GetFbxObject()) && index-- == 0) {
      return source.GetFbxObject();
    }
  }
  return nullptr;
}

int FbxProperty::GetSrcPropertyCount() const { return CountEnds(Sources(), false); }

FbxProperty FbxProperty::GetSrcProperty(int index) const { return NthEnd(Sources(), false, index); }

int FbxProperty::GetDstPropertyCount() const { return CountEnds(Destinations(), false); }

FbxProperty FbxProperty::GetDstProperty(int index) const {
  return NthEnd(Destinations(), false, index);
}

int FbxProperty::GetDstObjectCount() const { return CountEnds(Destinations(), true); }

FbxObject* FbxProperty::GetDstObject(int index) const {
  return NthEnd(Destinations(), true, index).GetFbxObject();
}
