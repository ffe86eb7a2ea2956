// The types of property values: a small set of base types, and the many names under which files
// mention them. A FbxDataType is a handle to one registered name.
#pragma once

#include <string_view>

enum EFbxType {
  eFbxUndefined = 0,
  eFbxChar,
  eFbxUChar,
  eFbxShort,
  eFbxUShort,
  eFbxUInt,
  eFbxLongLong,
  eFbxULongLong,
  eFbxHalfFloat,
  eFbxBool,
  eFbxInt,
  eFbxFloat,
  eFbxDouble,
  eFbxDouble2,
  eFbxDouble3,
  eFbxDouble4,
  eFbxDouble4x4,
  eFbxEnum,
  eFbxString,
  eFbxTime,
  eFbxReference,
  eFbxBlob,
  eFbxDistance,
  eFbxDateTime,
};

class FbxDataType {
 public:
  constexpr FbxDataType() = default;

  bool IsValid() const { return record_ != nullptr; }
  // "" and eFbxUndefined for an invalid type.
  const char* GetName() const;
  EFbxType GetType() const;
  // False for events, actions and compounds, which a file lists without a value, and references.
  bool HasValue() const;

  friend constexpr bool operator==(FbxDataType a, FbxDataType b) = default;

  struct Record {
    const char* name;
    EFbxType type;
  };
  constexpr explicit FbxDataType(const Record* record) : record_(record) {}

 private:
  const Record* record_ = nullptr;
};

// The type of that exact name, an alias of the file format counting as the name that it stands for;
// invalid when the name is unknown.
FbxDataType GetDataTypeFromName(std::string_view name);

// The types that classes declare their properties with.
extern const FbxDataType FbxBoolDT;
extern const FbxDataType FbxIntDT;
extern const FbxDataType FbxFloatDT;
extern const FbxDataType FbxDoubleDT;
extern const FbxDataType FbxDouble2DT;
extern const FbxDataType FbxDouble3DT;
extern const FbxDataType FbxDouble4DT;
extern const FbxDataType FbxEnumDT;
extern const FbxDataType FbxStringDT;
extern const FbxDataType FbxTimeDT;
extern const FbxDataType FbxCompoundDT;
extern const FbxDataType FbxColor3DT;
extern const FbxDataType FbxColor4DT;
