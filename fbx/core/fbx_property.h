// A handle to one property of an object, or to the object's root property, which stands for the
// object itself in connections. Handles are small, copyable and total: an invalid one answers every
// question with false, 0, "" or another invalid handle. A handle is good as long as its object is.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <type_traits>
#include <vector>

#include <boost/container/small_vector.hpp>

#include "fbx/core/fbx_class_id.h"
#include "fbx/core/fbx_data_type.h"
#include "fbx/core/fbx_string.h"
#include "fbx/core/fbx_time.h"
#include "fbx/math/fbx_matrix.h"

class FbxAnimCurve;
class FbxAnimCurveNode;
class FbxAnimLayer;
class FbxObject;
class FbxProperty;
class FbxPropertyStore;
struct FbxConnectionLists;
struct FbxPropertyDeclaration;
struct FbxPropertyLocal;
struct FbxPropertyValue;

// Flag bits.
struct FbxPropertyFlags {
  enum EFlags : uint32_t {
    eNone = 0,
    eStatic = 1U << 0,
    eAnimatable = 1U << 1,
    eAnimated = 1U << 2,
    eImported = 1U << 3,
    eUserDefined = 1U << 4,
    eHidden = 1U << 5,
    eNotSavable = 1U << 6,
    eLockedMember0 = 1U << 7,
    eMutedMember0 = 1U << 11,
    eLockedAll = 0x780,
    eMutedAll = 0x7800,
  };
};
constexpr uint32_t kAnimatable = FbxPropertyFlags::eAnimatable;

// A test on objects: of a class, or of one derived from it.
class FbxCriteria {
 public:
  static FbxCriteria ObjectType(FbxClassId classId) { return FbxCriteria(classId); }
  FbxClassId ClassId() const { return class_; }
  bool Matches(const FbxObject& object) const;

 private:
  explicit FbxCriteria(FbxClassId classId) : class_(classId) {}
  FbxClassId class_;
};

// One side of connections.
using FbxPropertyEnds = boost::container::small_vector_base<FbxProperty>;

class FbxProperty {
 public:
  enum EInheritType { eOverride = 0, eInherit = 1, eDeleted = 2 };
  static constexpr const char* sHierarchicalSeparator = "|";

  FbxProperty() = default;
  FbxProperty(FbxObject* object, int index) : object_(object), index_(index) {}

  // Makes a property of the object's own, or a child of `parent`; one that is there already is
  // returned as it is.
  static FbxProperty Create(FbxObject* object, FbxDataType type, std::string_view name,
                            std::string_view label = {});
  static FbxProperty Create(const FbxProperty& parent, FbxDataType type, std::string_view name,
                            std::string_view label = {});

  bool IsValid() const { return object_ != nullptr; }
  bool IsRoot() const { return IsValid() && index_ == kRoot; }
  FbxObject* GetFbxObject() const { return object_; }
  // The property's number on its object, which with the object makes its identity.
  int GetIndex() const { return index_; }
  friend bool operator==(const FbxProperty& a, const FbxProperty& b) = default;
  bool Is(const FbxProperty& other) const { return *this == other; }

  FbxString GetName() const;
  // The names from the top of the tree down, separated by '|'.
  FbxString GetHierarchicalName() const;
  FbxString GetLabel() const;
  FbxDataType GetPropertyDataType() const;

  bool GetFlag(FbxPropertyFlags::EFlags flag) const;
  // All flags in force, those of the class included.
  uint32_t GetFlags() const;
  void ModifyFlag(FbxPropertyFlags::EFlags flag, bool value);
  // Writes the bits of `mask` from `bits`.
  void ModifyFlags(uint32_t mask, uint32_t bits);

  bool HasMinLimit() const;
  double GetMinLimit() const;
  void SetMinLimit(double limit);
  bool HasMaxLimit() const;
  double GetMaxLimit() const;
  void SetMaxLimit(double limit);

  int AddEnumValue(std::string_view text);
  FbxString GetEnumValue(int index) const;
  int GetEnumCount() const;

  // A value of the object's own, or of its template, overrides; otherwise the class's is inherited.
  EInheritType GetValueInheritType() const;
  // Setting "inherit" drops the object's own value.
  void SetValueInheritType(EInheritType type);
  bool Modified() const { return GetValueInheritType() == eOverride; }

  // Converts the value into `*out`, whose type `type` names: numbers among each other; three
  // doubles and four, the shorter taking the first components and the rest of a longer target left
  // as it is; a vector's first component into a double; time into seconds; anything into FbxString.
  // False, with `*out` untouched, for a pair without a rule.
  bool Get(void* out, EFbxType type) const;
  // As Get, by the type of T: bool, the integer types, float, double, FbxDouble2, FbxDouble3,
  // FbxDouble4, FbxDouble4x4, FbxString, FbxTime. A T() when there is no rule.
  template <typename T>
  T Get() const;
  // The value as it is held; monostate for an invalid handle.
  const FbxPropertyValue& GetValue() const;

  // Stores a value, converted to the property's type by the rules of Get; it becomes the object's
  // own. False when there is no rule. Enums count as int, texts as FbxString.
  bool Set(const void* in, EFbxType type);
  template <typename T>
  bool Set(const T& value);
  // Stores a value that is already in the form in which this property's type is held.
  bool SetValue(FbxPropertyValue value);

  // The tree of properties. Find looks among the children of this property, or at the top level for
  // the root; FindHierarchical along a path.
  FbxProperty GetParent() const;
  FbxProperty GetChild() const;
  FbxProperty GetSibling() const;
  bool IsChildOf(const FbxProperty& parent) const;
  FbxProperty Find(std::string_view name, bool caseSensitive = true) const;
  FbxProperty FindHierarchical(std::string_view path, bool caseSensitive = true) const;

  // Connections. Each is made once, unless `repeat` is set; the lists keep their order. False for
  // an invalid end, or a connection that is there already.
  bool ConnectSrcObject(FbxObject* source, bool repeat = false);
  bool ConnectSrcProperty(const FbxProperty& source, bool repeat = false);
  // Takes every connection of the pair away; false if there is none.
  bool DisconnectSrcObject(FbxObject* source);
  bool IsConnectedSrcObject(const FbxObject* source) const;
  bool IsConnectedSrcProperty(const FbxProperty& source) const;
  int GetSrcObjectCount() const;
  FbxObject* GetSrcObject(int index = 0) const;
  int GetSrcObjectCount(const FbxCriteria& criteria) const;
  FbxObject* GetSrcObject(const FbxCriteria& criteria, int index) const;
  int GetSrcPropertyCount() const;
  FbxProperty GetSrcProperty(int index = 0) const;
  int GetDstPropertyCount() const;
  FbxProperty GetDstProperty(int index = 0) const;
  int GetDstObjectCount() const;
  FbxObject* GetDstObject(int index = 0) const;
  // Both ends as they stand: objects are root properties. Empty for an invalid handle.
  const FbxPropertyEnds& Sources() const;
  const FbxPropertyEnds& Destinations() const;
  template <typename T>
  T* GetSrcObject(int index = 0) const {
    return static_cast<T*>(GetSrcObject(FbxCriteria::ObjectType(T::ClassId), index));
  }
  template <typename T>
  int GetSrcObjectCount() const {
    return GetSrcObjectCount(FbxCriteria::ObjectType(T::ClassId));
  }

  // The curve node of this property in a layer, and the first curve of one of its channels; the
  // first channel for a null name. Null when there is none.
  FbxAnimCurveNode* GetCurveNode(const FbxAnimLayer* layer) const;
  FbxAnimCurve* GetCurve(const FbxAnimLayer* layer, const char* channel = nullptr) const;

 private:
  friend class FbxObject;
  static constexpr int kRoot = -1;

  bool HasData() const { return IsValid() && index_ != kRoot; }
  FbxPropertyStore& Store() const;
  const FbxPropertyDeclaration& Declaration() const;
  const FbxPropertyLocal* Local() const;
  FbxPropertyLocal& MakeLocal() const;
  FbxConnectionLists& MakeConnections() const;
  // Null when the property has none.
  FbxConnectionLists* Connections() const;
  bool Connect(const FbxProperty& source, bool repeat);
  bool IsConnected(const FbxProperty& source) const;

  FbxObject* object_ = nullptr;
  int index_ = kRoot;
};

// The ends of connections, each list in the order in which the connections were made.
struct FbxConnectionLists {
  // As many inline as most objects have: most nodes are leaves with an attribute, and whatever is
  // in the scene has its use there, too. Allocating them took 3 % of listing a scene of many nodes.
  boost::container::small_vector<FbxProperty, 1> sources;
  boost::container::small_vector<FbxProperty, 2> destinations;
};

inline void EraseEnd(FbxPropertyEnds& ends, const FbxProperty& end) {
  ends.erase(std::remove(ends.begin(), ends.end(), end), ends.end());
}

// The name under which a property is found on a handle to an object's root.
using FbxPropertyHandle = FbxProperty;

// The base type that stands for a C++ type in Get and Set.
template <typename T>
constexpr EFbxType FbxTypeOf() {
  if constexpr (std::is_same_v<T, bool>) return eFbxBool;
  if constexpr (std::is_same_v<T, char> || std::is_same_v<T, signed char>) return eFbxChar;
  if constexpr (std::is_same_v<T, unsigned char>) return eFbxUChar;
  if constexpr (std::is_same_v<T, short>) return eFbxShort;
  if constexpr (std::is_same_v<T, unsigned short>) return eFbxUShort;
  if constexpr (std::is_same_v<T, int>) return eFbxInt;
  if constexpr (std::is_same_v<T, unsigned>) return eFbxUInt;
  if constexpr (std::is_same_v<T, int64_t>) return eFbxLongLong;
  if constexpr (std::is_same_v<T, uint64_t>) return eFbxULongLong;
  if constexpr (std::is_same_v<T, float>) return eFbxFloat;
  if constexpr (std::is_same_v<T, double>) return eFbxDouble;
  if constexpr (std::is_same_v<T, FbxDouble2>) return eFbxDouble2;
  if constexpr (std::is_same_v<T, FbxDouble3>) return eFbxDouble3;
  if constexpr (std::is_same_v<T, FbxDouble4>) return eFbxDouble4;
  if constexpr (std::is_same_v<T, FbxDouble4x4>) return eFbxDouble4x4;
  if constexpr (std::is_same_v<T, FbxString>) return eFbxString;
  if constexpr (std::is_same_v<T, FbxTime>) return eFbxTime;
  return eFbxUndefined;
}

template <typename T>
T FbxProperty::Get() const {
  static_assert(FbxTypeOf<T>() != eFbxUndefined);
  T result{};
  Get(&result, FbxTypeOf<T>());
  return result;
}

template <typename T>
bool FbxProperty::Set(const T& value) {
  if constexpr (std::is_enum_v<T>) {
    return Set(static_cast<int>(value));
  } else if constexpr (FbxTypeOf<T>() != eFbxUndefined) {
    return Set(&value, FbxTypeOf<T>());
  } else {
    return Set(FbxString(value));
  }
}
