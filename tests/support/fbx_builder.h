// Makes FBX files for tests: FbxRecord is a tree of named records with typed values, WriteFbx turns
// it into the bytes of a binary or ASCII file, and SceneBuilder puts a whole version-7 document
// together from a few lines of objects and connections:
//
//   SceneBuilder scene;
//   int64_t hips = scene.AddModel("Hips", "LimbNode", {P("Lcl Translation", {0, 90, 0})});
//   scene.Connect(hips, SceneBuilder::kRoot);
//   std::string bytes = scene.Write({.ascii = true});
//
// The type of a value decides its letter in the file: `1` is an int32, `1.0` a double, `1.0f` a
// float, int64_t{1} a long long; only P converts, by the property's type.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

// The payload of a raw value, 'R'.
struct FbxRaw {
  std::string bytes;
  friend bool operator==(const FbxRaw&, const FbxRaw&) = default;
};

// Letters, in order: 'C' (0 or 1), 'C', 'Z', 'Y', 'I', 'L', 'F', 'D', 'S', 'R', then the arrays
// 'd', 'f', 'i', 'l', 'b', 'c', 'h'. A string "Class::Name" is stored packed in binary files.
using FbxValue = std::variant<bool, char, int8_t, int16_t, int32_t, int64_t, float, double,
                              std::string, FbxRaw, std::vector<double>, std::vector<float>,
                              std::vector<int32_t>, std::vector<int64_t>, std::vector<bool>,
                              std::vector<uint8_t>, std::vector<int16_t>>;
using FbxValues = std::vector<FbxValue>;

struct FbxRecord {
  std::string name;
  FbxValues values;
  std::vector<FbxRecord> children;
  // Writes a nested list even when there are no children.
  bool block = false;

  FbxRecord(std::string recordName, FbxValues recordValues = {},
            std::vector<FbxRecord> recordChildren = {})
      : name(std::move(recordName)),
        values(std::move(recordValues)),
        children(std::move(recordChildren)) {}

  FbxRecord& Add(FbxRecord child) {
    children.push_back(std::move(child));
    return children.back();
  }
};
using FbxRecords = std::vector<FbxRecord>;

struct FbxFormat {
  bool ascii = false;
  // Decides the offset width, too: 64 bits from 7500 on.
  int version = 7400;
  bool bigEndian = false;
  // Arrays as zlib streams.
  bool compress = false;
  bool footer = true;
  // For versions between 7401 and 7499, where either offset width may stand.
  bool wideOffsets = false;
};

// The bytes of a file with `records` as its top list; the first should be `FBXHeaderExtension`.
std::string WriteFbx(const FbxRecords& records, const FbxFormat& format = {});
// Only the record list: no file header, null record or footer. Offsets count from `start`.
std::string WriteFbxRecords(const FbxRecords& records, const FbxFormat& format, size_t start);

// A property record. Whole numbers become doubles, int64 or stay int32, as the type name asks.
FbxRecord P(std::string name, std::string type, std::string subType, std::string flags,
            FbxValues values);
// The same for an animatable property whose type bears its name ("Lcl Translation") or, if there is
// no such type, by its values: "double" for one number, "Vector3D" or, for a name that ends in
// "Color", "Color" for three.
FbxRecord P(std::string name, FbxValues values);

class SceneBuilder {
 public:
  // The scene's root node.
  static constexpr int64_t kRoot = 0;

  // Properties of the global settings; a later one of the same name replaces the earlier. From the
  // start there is Y up, +Z front, X right, time mode 11 (24 frames), unit 1.
  SceneBuilder& SetGlobal(FbxRecord property);
  // 0 is X, 1 Y, 2 Z; signs are 1 or -1.
  SceneBuilder& SetAxes(int up, int upSign, int front, int frontSign, int coord, int coordSign);
  SceneBuilder& SetTimeMode(int mode, double customFrameRate = -1);

  // A property template of an object type, as ("Model", "FbxNode", {...}).
  SceneBuilder& AddTemplate(const std::string& objectType, const std::string& className,
                            FbxRecords properties);

  // Each Add makes a record of `Objects` under a fresh id, which it returns; nothing is connected.
  // `name` is without the class. `records` follow the object's Properties70.
  int64_t AddObject(const std::string& type, const std::string& className, const std::string& name,
                    const std::string& subclass, FbxRecords properties = {},
                    FbxRecords records = {});
  // `type` is "Null", "Mesh", "LimbNode", "Camera" ...
  int64_t AddModel(const std::string& name, const std::string& type = "Null",
                   FbxRecords properties = {}, FbxRecords records = {});
  int64_t AddNodeAttribute(const std::string& name, const std::string& type,
                           FbxRecords properties = {}, FbxRecords records = {});
  // A mesh geometry. Vertices are x, y, z in turn; the last index i of a polygon is given as -1 -
  // i.
  int64_t AddMesh(const std::string& name, std::vector<double> vertices,
                  std::vector<int32_t> polygonVertexIndex, FbxRecords records = {});
  int64_t AddMaterial(const std::string& name, const std::string& shading = "phong",
                      FbxRecords properties = {});
  // A texture of the file `path`, with `Media`, `FileName` and `RelativeFilename`.
  int64_t AddTexture(const std::string& name, const std::string& path, FbxRecords properties = {});
  int64_t AddSkin(const std::string& name = "");
  // Matrices are 16 doubles, row by row with the translation last.
  int64_t AddCluster(const std::string& name, std::vector<int32_t> indexes,
                     std::vector<double> weights, std::vector<double> transform,
                     std::vector<double> transformLink);
  // Times in ticks. Both spans begin at `start`; the reference span may end elsewhere.
  int64_t AddAnimationStack(const std::string& name, int64_t start, int64_t stop,
                            std::optional<int64_t> referenceStop = {});
  int64_t AddAnimationLayer(const std::string& name = "BaseLayer", FbxRecords properties = {});
  // `name` is "T", "R", "S" ...; `properties` are the defaults of its channels, as
  // P("d|X", "Number", "", "A", {0}).
  int64_t AddAnimationCurveNode(const std::string& name, FbxRecords properties);
  // Times in ticks. All keys share one attribute record; `flags` as in the file, 4 being linear.
  int64_t AddAnimationCurve(std::vector<int64_t> times, std::vector<float> values,
                            int32_t flags = 4);

  // The record of an object, for changes. Valid until the next Add.
  FbxRecord& Object(int64_t id);

  void Connect(int64_t child, int64_t parent);
  void ConnectProperty(int64_t child, int64_t parent, const std::string& property);
  // Any `C` record.
  void AddConnection(FbxValues values);

  // The whole document's top list.
  FbxRecords Document(int version = 7400) const;
  std::string Write(const FbxFormat& format = {}) const;

 private:
  FbxRecord Definitions() const;

  FbxRecords globals_ = {
      P("UpAxis", "int", "Integer", "", {1}),
      P("UpAxisSign", "int", "Integer", "", {1}),
      P("FrontAxis", "int", "Integer", "", {2}),
      P("FrontAxisSign", "int", "Integer", "", {1}),
      P("CoordAxis", "int", "Integer", "", {0}),
      P("CoordAxisSign", "int", "Integer", "", {1}),
      P("OriginalUpAxis", "int", "Integer", "", {-1}),
      P("OriginalUpAxisSign", "int", "Integer", "", {1}),
      P("UnitScaleFactor", "double", "Number", "", {1.0}),
      P("OriginalUnitScaleFactor", "double", "Number", "", {1.0}),
      P("AmbientColor", "ColorRGB", "Color", "", {0.0, 0.0, 0.0}),
      P("TimeMode", "enum", "", "", {11}),
      P("TimeProtocol", "enum", "", "", {2}),
      P("CustomFrameRate", "double", "Number", "", {-1.0}),
  };
  FbxRecords objects_;
  FbxRecords connections_;
  std::map<std::string, FbxRecords> templates_;  // by object type
  std::map<int64_t, size_t> objectIndex_;
  int64_t nextId_ = 1000000;
};
