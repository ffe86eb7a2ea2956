// Scenes for tests: a whole version-7 document from a few lines of objects and
// connections.
//
//   SceneBuilder scene;
//   const int64_t hips = scene.Bone("Hips", SceneBuilder::kRoot, {P("Lcl
//   Translation", {0, 90, 0})}); scene.Key(scene.AddClip("Walk", 0, 20).layer,
//   hips, "TX", {0, 10, 20}, {0, 5, 0}); std::string bytes =
//   scene.Write({.ascii = true});
//
// From the start Z is up and -Y front, so that loading converts nothing, and
// there are 30 frames a second; frames are given in that rate.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "tests/support/fbx_records.h"

// A property record. Whole numbers become doubles, int64 or stay int32, as the
// type name asks.
FbxRecord P(std::string name, std::string type, std::string subType, std::string flags,
            FbxValues values);
// The same for an animatable property whose type bears its name ("Lcl
// Translation") or, if there is no such type, by its values: "double" for one
// number, "Vector3D" or, for a name that ends in "Color", "Color" for three.
FbxRecord P(const std::string& name, const FbxValues& values);

// Layer elements of a mesh. `index` is left out where it is empty.
FbxRecord Normals(const std::string& mapping, const std::string& reference,
                  std::vector<double> values, std::vector<int32_t> index = {});
FbxRecord UVs(const std::string& name, const std::string& mapping, const std::string& reference,
              std::vector<double> values, std::vector<int32_t> index = {});
FbxRecord Colors(const std::string& mapping, const std::string& reference,
                 std::vector<double> values, std::vector<int32_t> index = {});
FbxRecord Materials(std::vector<int32_t> index);

class SceneBuilder {
 public:
  // The scene's root node.
  static constexpr int64_t kRoot = 0;

  static int64_t Ticks(double frame) { return static_cast<int64_t>(frame * 1539538600.0); }

  // Properties of the global settings; a later one of the same name replaces
  // the earlier.
  SceneBuilder& SetGlobal(FbxRecord property);
  // Y up and Z front, as most tools have it; loading converts that.
  SceneBuilder& SetYUp();
  SceneBuilder& SetTimeMode(int mode, double customFrameRate = -1);
  // A property template of an object type, as ("Model", "FbxNode", {...}).
  SceneBuilder& AddTemplate(const std::string& objectType, const std::string& className,
                            FbxRecords properties);

  // Nodes in their place: one without a shape, and a bone with its attribute.
  int64_t Node(const std::string& name, int64_t parent = kRoot, FbxRecords properties = {},
               const std::string& type = "Null");
  int64_t Bone(const std::string& name, int64_t parent = kRoot, FbxRecords properties = {});

  struct MeshIds {
    int64_t node;
    int64_t mesh;
    std::vector<int64_t> channels;
  };
  // A node with a triangle and, if there are channels, one blend shape that has
  // them.
  MeshIds Mesh(const std::string& name, const std::vector<std::string>& channels = {},
               int64_t parent = kRoot);
  // A node with a mesh of these points, polygons and elements; the first
  // element of a type is that of layer 0, the second that of layer 1.
  MeshIds Mesh(const std::string& name, std::vector<double> points,
               const std::vector<std::vector<int32_t>>& polygons, FbxRecords elements = {},
               int64_t parent = kRoot, FbxRecords properties = {});
  int64_t Material(int64_t node, const std::string& name, FbxRecords properties = {});
  int64_t Texture(int64_t material, const std::string& channel, const std::string& path);
  int64_t Skin(int64_t mesh);
  // Ties points to a bone; `bone` 0 leaves the cluster without a link.
  int64_t Cluster(int64_t skin, int64_t bone, std::vector<int32_t> points = {0},
                  std::vector<double> weights = {1.0}, const std::string& mode = "Normalize");
  // A blend shape of a mesh; a channel of it; a target shape of the channel.
  int64_t BlendShape(int64_t mesh);
  int64_t Channel(int64_t blendShape, const std::string& name);
  int64_t Target(int64_t channel, std::vector<int32_t> points, std::vector<double> offsets,
                 std::vector<double> normals = {});

  struct Clip {
    int64_t stack;
    int64_t layer;
  };
  using Frames = std::vector<double>;
  using Values = std::vector<float>;
  // A stack with one layer. The reference span is the local one unless
  // `referenceStop` is given.
  Clip AddClip(const std::string& name, double start, double stop, double referenceStop = -1);
  int64_t AddLayer(const Clip& clip, FbxRecords properties = {});
  // Linear keys of "TX" ... "SZ" of a node. Curves of one property share a
  // curve node, which is returned.
  int64_t Key(int64_t layer, int64_t node, const std::string& channel, const Frames& frames,
              Values values);
  // The same by ticks, for times that are no frames.
  int64_t KeyTicks(int64_t layer, int64_t node, const std::string& channel,
                   std::vector<int64_t> times, Values values);
  // Keys of a blend shape channel, in percent.
  void KeyMorph(int64_t layer, int64_t channel, const Frames& frames, Values values);
  // A curve node of any property of an object, with one linear curve for all
  // the channels.
  int64_t Drive(int64_t layer, int64_t object, const std::string& property,
                const std::vector<std::string>& channels, const Frames& frames, Values values);

  // Each Add below makes a record of `Objects` under a fresh id, which it
  // returns; nothing is connected. `name` is without the class. `records`
  // follow the object's Properties70.
  int64_t AddObject(const std::string& type, const std::string& className, const std::string& name,
                    const std::string& subclass, FbxRecords properties = {},
                    FbxRecords records = {});
  // `type` is "Null", "Mesh", "LimbNode", "Camera" ...
  int64_t AddModel(const std::string& name, const std::string& type = "Null",
                   FbxRecords properties = {});
  int64_t AddNodeAttribute(const std::string& name, const std::string& type,
                           FbxRecords properties = {});
  // A phong material.
  int64_t AddMaterial(const std::string& name, FbxRecords properties = {});
  int64_t AddTexture(const std::string& name, const std::string& path);
  // `name` is "T", "R", "S" ...; `properties` are the defaults of its channels,
  // as P("d|X", "Number", "", "A", {0}).
  int64_t AddAnimationCurveNode(const std::string& name, FbxRecords properties);
  // Times in ticks. All keys share one attribute record; `flags` as in the
  // file, 4 being linear.
  int64_t AddAnimationCurve(std::vector<int64_t> times, std::vector<float> values,
                            int32_t flags = 4);

  // The record of an object, for changes. Valid until the next object.
  FbxRecord& Object(int64_t id);

  void Connect(int64_t child, int64_t parent);
  void ConnectProperty(int64_t child, int64_t parent, const std::string& property);

  // The whole document's top list.
  FbxRecords Document(int version = 7400) const;
  std::string Write(const FbxFormat& format = {}) const;

 private:
  int64_t CurveNode(int64_t layer, int64_t object, const std::string& property,
                    const std::vector<std::string>& channels, double rest);
  FbxRecord Definitions() const;

  FbxRecords globals_ = {
      P("UpAxis", "int", "Integer", "", {2}),
      P("UpAxisSign", "int", "Integer", "", {1}),
      P("FrontAxis", "int", "Integer", "", {1}),
      P("FrontAxisSign", "int", "Integer", "", {-1}),
      P("CoordAxis", "int", "Integer", "", {0}),
      P("CoordAxisSign", "int", "Integer", "", {1}),
      P("UnitScaleFactor", "double", "Number", "", {1.0}),
      P("AmbientColor", "ColorRGB", "Color", "", {0.0, 0.0, 0.0}),
      P("TimeMode", "enum", "", "", {6}),
      P("TimeProtocol", "enum", "", "", {2}),
      P("CustomFrameRate", "double", "Number", "", {-1.0}),
  };
  FbxRecords objects_;
  FbxRecords connections_;
  std::map<std::string, FbxRecords> templates_;  // by object type
  std::map<int64_t, size_t> objectIndex_;
  std::map<std::tuple<int64_t, int64_t, char>, int64_t> curveNodes_;  // by layer, node, property
  int64_t nextId_ = 1000000;
};
