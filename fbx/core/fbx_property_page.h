// Where properties are kept. A class has one page that declares its properties with their default
// values; an object keeps only what it overrides, so an untouched property costs it nothing. In
// between may stand a template, the object that a file gives as the defaults of a class: a value is
// looked up on the object, then on its template, then on the class.
//
// A property is named by an index: the class's properties come first, then the template's own, then
// the object's own. Indices never change during an object's life.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

#include "fbx/core/fbx_data_type.h"
#include "fbx/core/fbx_time.h"
#include "fbx/math/fbx_vector.h"

// A length with its unit's name.
struct FbxDistance {
  float value = 0.0F;
  std::string unit;
};

// Signed integers of every width, bools and enums are held as int64, unsigned ones as uint64,
// floats as doubles that a float can hold; strings, blobs and dates as bytes. `monostate` is "no
// value".
using FbxPropertyValue = std::variant<std::monostate, int64_t, uint64_t, double, FbxDouble2,
                                      FbxDouble3, FbxDouble4, std::shared_ptr<const FbxDouble4x4>,
                                      std::string, FbxTime, std::shared_ptr<const FbxDistance>>;

// What a property of that base type holds before anything is written to it.
FbxPropertyValue DefaultPropertyValue(EFbxType type);

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

struct FbxPropertyDeclaration {
  std::string name;  // without the parent's
  FbxDataType type;
  int parent = -1;  // index of the parent property, -1 at the top
  FbxPropertyValue value;
  uint32_t flags = 0;
  std::vector<std::string> enumItems;
};

// A class's page.
class FbxPropertyPage {
 public:
  FbxPropertyPage() = default;

  // Declares a property and returns its index. A name declared before gets the new value instead.
  int Declare(std::string_view name, FbxDataType type, FbxPropertyValue value = {},
              uint32_t flags = 0, int parent = -1, std::vector<std::string> enumItems = {});

  int Count() const { return static_cast<int>(declarations_.size()); }
  const FbxPropertyDeclaration& At(int index) const {
    return declarations_[static_cast<size_t>(index)];
  }
  // Index of the property `name` below `parent`, -1 if there is none.
  int Find(std::string_view name, int parent = -1) const;

 private:
  std::vector<FbxPropertyDeclaration> declarations_;
  std::unordered_map<std::string, std::vector<int>> byName_;
};

// What one object holds of one of its properties.
struct FbxPropertyLocal {
  struct Rare;  // parts that few properties have

  FbxPropertyLocal();
  ~FbxPropertyLocal();
  FbxPropertyLocal(FbxPropertyLocal&&) noexcept;
  FbxPropertyLocal& operator=(FbxPropertyLocal&&) noexcept;

  FbxPropertyValue value;  // none: reads through to the template or the class
  uint32_t flags = 0;
  uint32_t flagMask = 0;  // the bits of `flags` that were set on this very property
  std::unique_ptr<Rare> rare;

  Rare& MakeRare();
};

// The properties of one object.
class FbxPropertyStore {
 public:
  explicit FbxPropertyStore(const FbxPropertyPage& classPage) : class_(classPage) {}

  // The template's store must outlive this one, must have no template itself and be of the same
  // class; it can only be set while this store is empty. False if it can't.
  bool SetTemplate(const FbxPropertyStore* source);

  int Count() const { return FirstOwn() + static_cast<int>(own_.size()); }
  const FbxPropertyDeclaration& Declaration(int index) const;
  int Find(std::string_view name, int parent, bool caseSensitive) const;
  // Adds a property of the object's own and returns its index.
  int Create(std::string_view name, FbxDataType type, int parent);

  // What this object holds of a property, null when it holds nothing.
  const FbxPropertyLocal* Local(int index) const;
  FbxPropertyLocal* Local(int index);
  FbxPropertyLocal& MakeLocal(int index);
  // The template's part, null without one.
  const FbxPropertyLocal* TemplateLocal(int index) const;

  // The value in force, and whether it is the class's default.
  const FbxPropertyValue& Value(int index) const;
  bool IsInherited(int index) const;
  uint32_t Flags(int index) const;

  template <typename Function>
  void ForEachLocal(Function&& function) {
    for (auto& [index, local] : locals_) function(index, local);
  }

 private:
  int FirstOwn() const {
    return class_.Count() + (template_ == nullptr ? 0 : static_cast<int>(template_->own_.size()));
  }
  int FindOwn(std::string_view name, int parent) const;
  static std::string OwnKey(std::string_view name, int parent);

  const FbxPropertyPage& class_;
  const FbxPropertyStore* template_ = nullptr;
  std::map<int, FbxPropertyLocal> locals_;  // by index
  std::vector<FbxPropertyDeclaration> own_;
  // Made when the object has more than a handful of own properties.
  mutable std::unordered_map<std::string, int> ownIndex_;
};
