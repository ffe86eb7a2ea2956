// Runtime classes. Every class of scene objects has one immutable record, made before main runs and
// found through a list that the records link themselves into; a FbxClassId is a handle to a record
// and compares by identity.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

class FbxObject;
class FbxPropertyPage;

class FbxClassRecord {
 public:
  using Factory = FbxObject* (*)();
  using DeclareProperties = void (*)(FbxPropertyPage&);

  // The texts must live as long as the program. A class without objects of its own has no factory,
  // and one that adds no properties to its parent's has no `declare`.
  FbxClassRecord(const char* name, const FbxClassRecord* parent, Factory factory,
                 const char* fileType, DeclareProperties declare);
  ~FbxClassRecord();
  FbxClassRecord(const FbxClassRecord&) = delete;
  FbxClassRecord& operator=(const FbxClassRecord&) = delete;

  const char* Name() const { return name_; }
  const FbxClassRecord* Parent() const { return parent_; }
  const char* FileType() const { return fileType_; }
  Factory MakeObject() const { return factory_; }
  // The class's properties with their default values, those of its parents first. Made on first
  // use.
  const FbxPropertyPage& Page() const;

  // All records of the program, sorted by name.
  static const std::vector<const FbxClassRecord*>& All();

 private:
  const char* name_;
  const FbxClassRecord* parent_;
  Factory factory_;
  const char* fileType_;
  DeclareProperties declare_;
  const FbxClassRecord* next_;
  mutable std::unique_ptr<FbxPropertyPage> page_;
};

class FbxClassId {
 public:
  constexpr FbxClassId() = default;
  constexpr explicit FbxClassId(const FbxClassRecord* record) : record_(record) {}

  bool IsValid() const { return record_ != nullptr; }
  const FbxClassRecord* Record() const { return record_; }
  // "" for a null class.
  const char* GetName() const { return IsValid() ? record_->Name() : ""; }
  FbxClassId GetParent() const { return FbxClassId(IsValid() ? record_->Parent() : nullptr); }
  // True if this class is `other` or derives from it; a null class is nothing.
  bool Is(FbxClassId other) const;
  // The type name of the class's records in files; with `askParent` the nearest one along the
  // parents that isn't empty.
  const char* GetFbxFileTypeName(bool askParent = false) const;

  friend constexpr bool operator==(FbxClassId a, FbxClassId b) = default;

 private:
  const FbxClassRecord* record_ = nullptr;
};
