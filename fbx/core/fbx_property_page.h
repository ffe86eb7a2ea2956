// Where properties are kept. A class has one page that declares its properties with their default
// values; an object keeps only what it overrides, so an untouched property costs it nothing. In
// between may stand a template, the object that a file gives as the defaults of a class: a value is
// looked up on the object, then on its template, then on the class.
//
// A property is named by an index: the class's properties come first, then the template's own, then
// the object's own. Indices never change during an object's life.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

#include "fbx/core/fbx_property.h"

// A length with its unit's name.
struct FbxDistance {
  float value = 0.0F;
  std::string unit;
};

// Signed integers of every width, bools and enums are held as int64, unsigned ones as uint64,
// floats as doubles that a float can hold; strings, blobs and dates as bytes. `monostate` is "no
// value".
struct FbxPropertyValue : std::variant<std::monostate, int64_t, uint64_t, double, FbxDouble2,
                                       FbxDouble3, FbxDouble4, std::shared_ptr<const FbxDouble4x4>,
                                       std::string, FbxTime, std::shared_ptr<const FbxDistance>> {
  using variant::variant;
};

// What a property of that base type holds before anything is written to it.
FbxPropertyValue DefaultPropertyValue(EFbxType type);
// The held form of the C++ value at `in`, whose type `type` names; monostate for a type that is
// given otherwise.
FbxPropertyValue ReadPropertyValue(const void* in, EFbxType type);
// Converts a held value into `*out` by the rules of FbxProperty::Get.
bool ConvertPropertyValue(const FbxPropertyValue& value, void* out, EFbxType type);
// `value` in the form that `type` is held in, narrowed to its width; monostate without a rule.
FbxPropertyValue CoercePropertyValue(const FbxPropertyValue& value, EFbxType type);

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
  // Lets a view be looked up without a string made of it.
  struct NameHash : std::hash<std::string_view> {
    using is_transparent = void;  // NOLINT(readability-identifier-naming): the library's name
  };

  std::vector<FbxPropertyDeclaration> declarations_;
  std::unordered_map<std::string, std::vector<int>, NameHash, std::equal_to<>> byName_;
};

// What one object holds of one of its properties.
struct FbxPropertyLocal {
  // Parts that few properties have.
  struct Rare {
    FbxConnectionLists connections;
    std::string label;
    double minLimit = 0.0;
    double maxLimit = 0.0;
    bool hasMin = false;
    bool hasMax = false;
    std::vector<std::string> enumItems;
  };

  FbxPropertyValue value;  // none: reads through to the template or the class
  int index = 0;
  // All bits of FbxPropertyFlags fit.
  uint16_t flags = 0;
  uint16_t flagMask = 0;  // the bits of `flags` that were set on this very property
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
  const FbxPropertyDeclaration& Declaration(int index) const {
    return index < class_.Count() ? class_.At(index) : OtherDeclaration(index);
  }
  int Find(std::string_view name, int parent, bool caseSensitive) const;
  // Adds a property of the object's own and returns its index.
  int Create(std::string_view name, FbxDataType type, int parent);

  // What this object holds of a property, null when it holds nothing. Good until the object makes
  // another.
  const FbxPropertyLocal* Local(int index) const {
    // Most look-ups are for what isn't there.
    return (localBits_ & BitOf(index)) == 0 ? nullptr : FindLocal(index);
  }
  FbxPropertyLocal* Local(int index);
  FbxPropertyLocal& MakeLocal(int index);
  // Room for what an object will hold of `count` properties, in one allocation.
  void Reserve(size_t count) { locals_.reserve(count); }
  // The template's part, null without one.
  const FbxPropertyLocal* TemplateLocal(int index) const;

  // The value in force, and whether it is the class's default.
  const FbxPropertyValue& Value(int index) const;
  bool IsInherited(int index) const;
  uint32_t Flags(int index) const;

  // Changes with every value that is written here or on the template.
  uint64_t Revision() const {
    return revision_ + (template_ == nullptr ? 0 : template_->revision_);
  }
  void AddRevision() { ++revision_; }

  template <typename Function>
  void ForEachLocal(Function&& function) {
    for (FbxPropertyLocal& local : locals_) function(local);
  }

 private:
  int FirstOwn() const {
    return class_.Count() + (template_ == nullptr ? 0 : static_cast<int>(template_->own_.size()));
  }
  static uint64_t BitOf(int index) { return uint64_t{1} << (static_cast<unsigned>(index) % 64); }
  const FbxPropertyDeclaration& OtherDeclaration(int index) const;
  const FbxPropertyLocal* FindLocal(int index) const;
  int FindOwn(std::string_view name, int parent) const;
  static std::string OwnKey(std::string_view name, int parent);

  const FbxPropertyPage& class_;
  const FbxPropertyStore* template_ = nullptr;
  uint64_t revision_ = 1;
  // In the order in which they were made. Most objects override a handful of properties, which a
  // scan finds sooner than a tree would, and without an allocation for each.
  std::vector<FbxPropertyLocal> locals_;
  // A bit for each index, modulo 64, that is among them.
  uint64_t localBits_ = 0;
  std::vector<FbxPropertyDeclaration> own_;
  // Made when the object overrides, or has of its own, more than a scan should look at.
  struct Index {
    std::unordered_map<int, size_t> localPlaces;
    std::unordered_map<std::string, int> own;
  };
  mutable std::unique_ptr<Index> index_;
};
