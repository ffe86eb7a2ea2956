#include "fbx/core/fbx_data_type.h"

#include <algorithm>
#include <array>
#include <vector>

namespace {

using Record = FbxDataType::Record;

// Registered names; a name with the base type "undefined" carries no value.
constexpr auto kRecords = std::to_array<Record>({
    {"Byte", eFbxChar},
    {"UByte", eFbxUChar},
    {"Short", eFbxShort},
    {"UShort", eFbxUShort},
    {"UInteger", eFbxUInt},
    {"LongLong", eFbxLongLong},
    {"ULongLong", eFbxULongLong},
    {"HalfFloat", eFbxHalfFloat},
    {"Bool", eFbxBool},
    {"Integer", eFbxInt},
    {"Float", eFbxFloat},
    {"Number", eFbxDouble},
    {"Vector2", eFbxDouble2},
    {"Vector", eFbxDouble3},
    {"Vector4", eFbxDouble4},
    {"Matrix", eFbxDouble4x4},
    {"Enum", eFbxEnum},
    {"stringlist", eFbxEnum},
    {"Time", eFbxTime},
    {"TimeCode", eFbxTime},
    {"Reference", eFbxReference},
    {"ReferenceProperty", eFbxReference},
    {"object", eFbxReference},
    {"KString", eFbxString},
    {"charptr", eFbxString},
    {"Action", eFbxUndefined},
    {"event", eFbxUndefined},
    {"Compound", eFbxUndefined},
    {"Blob", eFbxBlob},
    {"Distance", eFbxDistance},
    {"DateTime", eFbxDateTime},
    {"Color", eFbxDouble3},
    {"ColorAndAlpha", eFbxDouble4},
    {"Real", eFbxDouble},
    {"Translation", eFbxDouble3},
    {"Rotation", eFbxDouble3},
    {"Scaling", eFbxDouble3},
    {"Quaternion", eFbxDouble4},
    {"Lcl Translation", eFbxDouble3},
    {"Lcl Rotation", eFbxDouble3},
    {"Lcl Scaling", eFbxDouble3},
    {"Lcl Quaternion", eFbxDouble4},
    {"Matrix Transformation", eFbxDouble4x4},
    {"Matrix Translation", eFbxDouble4x4},
    {"Matrix Rotation", eFbxDouble4x4},
    {"Matrix Scaling", eFbxDouble4x4},
    {"Emissive", eFbxDouble3},
    {"EmissiveFactor", eFbxDouble},
    {"Ambient", eFbxDouble3},
    {"AmbientFactor", eFbxDouble},
    {"Diffuse", eFbxDouble3},
    {"DiffuseFactor", eFbxDouble},
    {"NormalMap", eFbxDouble3},
    {"Bump", eFbxDouble},
    {"Transparent", eFbxDouble3},
    {"TransparencyFactor", eFbxDouble},
    {"Specular", eFbxDouble3},
    {"SpecularFactor", eFbxDouble},
    {"Shininess", eFbxDouble},
    {"Reflection", eFbxDouble3},
    {"ReflectionFactor", eFbxDouble},
    {"Displacement", eFbxDouble3},
    {"VectorDisplacement", eFbxDouble3},
    {"Unknown Factor", eFbxDouble},
    {"Unknown texture", eFbxDouble3},
    {"Url", eFbxString},
    {"XRefUrl", eFbxString},
    {"LayerElementUndefined", eFbxReference},
    {"LayerElementNormal", eFbxReference},
    {"LayerElementBinormal", eFbxReference},
    {"LayerElementTangent", eFbxReference},
    {"LayerElementMaterial", eFbxReference},
    {"LayerElementTexture", eFbxReference},
    {"LayerElementPolygonGroup", eFbxReference},
    {"LayerElementUV", eFbxReference},
    {"LayerElementVertexColor", eFbxReference},
    {"LayerElementSmoothing", eFbxReference},
    {"LayerElementCrease", eFbxReference},
    {"LayerElementHole", eFbxReference},
    {"LayerElementUserData", eFbxReference},
    {"LayerElementVisibility", eFbxReference},
    {"Intensity", eFbxDouble},
    {"Cone angle", eFbxDouble},
    {"Fog", eFbxBool},
    {"Shape", eFbxDouble},
    {"FieldOfView", eFbxDouble},
    {"FieldOfViewX", eFbxDouble},
    {"FieldOfViewY", eFbxDouble},
    {"OpticalCenterX", eFbxDouble},
    {"OpticalCenterY", eFbxDouble},
    {"Roll", eFbxDouble},
    {"Camera Index", eFbxInt},
    {"TimeWarp", eFbxDouble},
    {"Visibility", eFbxDouble},
    {"Visibility Inheritance", eFbxBool},
    {"Translation UV", eFbxDouble3},
    {"Scaling UV", eFbxDouble3},
    {"TextureRotation", eFbxDouble3},
    {"HSB", eFbxDouble3},
    {"Orientation", eFbxDouble3},
    {"Look at", eFbxDouble3},
    {"Occlusion", eFbxDouble},
    {"Weight", eFbxDouble},
    {"IK Reach Translation", eFbxDouble},
    {"IK Reach Rotation", eFbxDouble},
    {"Presets", eFbxEnum},
    {"Statistics", eFbxString},
    {"Units", eFbxString},
    {"Warning", eFbxString},
    {"Web", eFbxString},
    {"TextLine", eFbxString},
    {"Alias", eFbxEnum},
});

struct Alias {
  std::string_view alias;
  std::string_view name;
};

constexpr auto kAliases = std::to_array<Alias>({
    {"bool", "Bool"},
    {"int", "Integer"},
    {"float", "Float"},
    {"double", "Number"},
    {"Vector2D", "Vector2"},
    {"Vector3D", "Vector"},
    {"Vector4D", "Vector4"},
    {"matrix4x4", "Matrix"},
    {"enum", "Enum"},
    {"KTime", "Time"},
    {"KTimeCode", "TimeCode"},
    {"ColorRGB", "Color"},
    {"ColorRGBA", "ColorAndAlpha"},
});

constexpr const Record* FindRecord(std::string_view name) {
  for (const Record& record : kRecords) {
    if (name == record.name) return &record;
  }
  return nullptr;
}

struct Entry {
  std::string_view name;
  const Record* record;
};

const std::vector<Entry>& SortedEntries() {
  static const std::vector<Entry> sorted = [] {
    std::vector<Entry> entries;
    for (const Record& record : kRecords) entries.push_back({record.name, &record});
    for (const Alias& alias : kAliases) entries.push_back({alias.alias, FindRecord(alias.name)});
    std::sort(entries.begin(), entries.end(),
              [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return entries;
  }();
  return sorted;
}

}  // namespace

const char* FbxDataType::GetName() const { return IsValid() ? record_->name : ""; }

EFbxType FbxDataType::GetType() const { return IsValid() ? record_->type : eFbxUndefined; }

bool FbxDataType::HasValue() const {
  return GetType() != eFbxUndefined && GetType() != eFbxReference;
}

FbxDataType GetDataTypeFromName(std::string_view name) {
  const std::vector<Entry>& entries = SortedEntries();
  const auto at =
      std::lower_bound(entries.begin(), entries.end(), name,
                       [](const Entry& entry, std::string_view n) { return entry.name < n; });
  if (at == entries.end() || at->name != name) return {};
  return FbxDataType(at->record);
}

// Constant-initialised, so that class records may use them before main runs.
constinit const FbxDataType FbxBoolDT{FindRecord("Bool")};
constinit const FbxDataType FbxIntDT{FindRecord("Integer")};
constinit const FbxDataType FbxFloatDT{FindRecord("Float")};
constinit const FbxDataType FbxDoubleDT{FindRecord("Number")};
constinit const FbxDataType FbxDouble2DT{FindRecord("Vector2")};
constinit const FbxDataType FbxDouble3DT{FindRecord("Vector")};
constinit const FbxDataType FbxDouble4DT{FindRecord("Vector4")};
constinit const FbxDataType FbxEnumDT{FindRecord("Enum")};
constinit const FbxDataType FbxStringDT{FindRecord("KString")};
constinit const FbxDataType FbxTimeDT{FindRecord("Time")};
constinit const FbxDataType FbxCompoundDT{FindRecord("Compound")};
constinit const FbxDataType FbxColor3DT{FindRecord("Color")};
constinit const FbxDataType FbxColor4DT{FindRecord("ColorAndAlpha")};
