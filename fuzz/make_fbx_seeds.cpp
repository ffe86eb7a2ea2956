// Writes seeds for the fuzz targets that take scene files into the folder named on the command
// line: a scene with objects of every family, a room with all that gets exported, and a scene in
// the words of version 6, in each form of the file.
#include <cstdint>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "tests/support/scene_builder.h"

namespace {

FbxRecord LayerElement(const char* type) {
  return {"LayerElement", {}, {{"Type", {type}}, {"TypedIndex", {0}}}};
}

SceneBuilder MakeScene() {
  SceneBuilder scene;
  scene.AddTemplate("Model", "FbxNode", {P("InheritType", "enum", "", "", {1})});
  const int64_t bone = scene.Bone(
      "bone", SceneBuilder::kRoot,
      {P("Lcl Rotation", {0, 0, 90}), P("PreRotation", {10, 0, 0}), P("RotationPivot", {1, 2, 3}),
       P("note", "KString", "", "U", {"text"}), P("kind", "enum", "", "U", {1, "a~b"})});
  const SceneBuilder::MeshIds face =
      scene.Mesh("face", {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}, {{0, 1, 2, 3}},
                 {Normals("ByPolygon", "IndexToDirect", {0, 0, 1}, {0}),
                  UVs("map1", "ByPolygonVertex", "IndexToDirect", {0, 0, 1, 1}, {0, 1, 1, -1}),
                  Materials({0})},
                 bone);
  scene.Cluster(scene.Skin(face.mesh), bone, {0, 1}, {1, 0.5});
  scene.Target(scene.Channel(scene.BlendShape(face.mesh), "smile"), {2}, {0, 0, 1}, {0, 1, 0});
  const int64_t material = scene.Material(face.node, "skin", {P("DiffuseColor", {1, 0.5, 0})});
  const int64_t layered = scene.AddObject(
      "LayeredTexture", "LayeredTexture", "both", "", {},
      {{"BlendModes", {std::vector<int32_t>{1}}}, {"Alphas", {std::vector<double>{0.5}}}});
  const int64_t texture = scene.AddTexture("skin", "skin.png");
  const int64_t video = scene.AddObject("Video", "Video", "skin", "Clip", {},
                                        {{"Filename", {"skin.png"}}, {"Content", {FbxRaw{"PNG"}}}});
  scene.ConnectProperty(layered, material, "DiffuseColor");
  scene.Connect(texture, layered);
  scene.Connect(video, texture);
  scene.AddObject("Pose", "Pose", "bind", "BindPose", {},
                  {{"NbPoseNodes", {1}}, {"PoseNode", {}, {{"Node", {bone}}}}});
  const int64_t curveNode = scene.AddAnimationCurveNode("T", {P("d|X", "Number", "", "A", {0})});
  scene.Connect(curveNode, scene.AddClip("Take 001", 0, 30).layer);
  scene.ConnectProperty(curveNode, bone, "Lcl Translation");
  const int64_t curve = scene.AddAnimationCurve({0, 46186158000}, {0, 10}, 8 | 0x400);
  scene.ConnectProperty(curve, curveNode, "d|X");
  return scene;
}

SceneBuilder MakeRoom() {
  SceneBuilder scene;
  const int64_t root = scene.Bone("skeleton.room");
  for (const char* name : {"seat01.Sit", "catcher01", "handle01", "furniture_floor",
                           "camera_target", "lightPoint_rgbff8000_bright0.5", "light"}) {
    scene.Node(name, root);
  }
  const int64_t bone = scene.Bone("arm", root, {P("Lcl Translation", {0, 0, 10})});
  const SceneBuilder::MeshIds mesh = scene.Mesh("body", {"smile"}, root);
  scene.Cluster(scene.Skin(mesh.mesh), bone);
  scene.Texture(scene.Material(mesh.node, "skin"), "DiffuseColor", "skin.png");
  const SceneBuilder::Clip clip = scene.AddClip("wave", 0, 20);
  scene.Key(clip.layer, bone, "RX", {0, 10, 20}, {0, 90, 0});
  scene.KeyMorph(clip.layer, mesh.channels[0], {0, 10, 20}, {0, 100, 0});
  return scene;
}

// A scene in the words of version 6, where plain values stand in the place of arrays.
FbxRecords MakeOldDocument(int version) {
  const auto connect = [](const char* source, const char* destination) {
    return FbxRecord("Connect", {"OO", source, destination});
  };
  const FbxRecord properties(
      "Properties60", {},
      {{"Property", {"Lcl Translation", "Lcl Translation", "A+", 1.0, 2.0, 3.0}},
       {"Property", {"smile", "Shape", "A+", 25.0}}});
  const FbxRecord key(
      "Key", {int64_t{0}, 1.0, 'L', int64_t{46186158000}, 2.0, 'U', 's', 1.0, 2.0, 'a', 0.25, 0.5});
  const FbxRecord curve("Channel", {"X"}, {{"Default", {1.0}}, {"KeyCount", {2}}, key});
  return {{"FBXHeaderExtension", {}, {{"FBXVersion", {version}}}},
          {"Objects",
           {},
           {{"Model",
             {"Model::face", "Mesh"},
             {properties,
              {"Vertices", {0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 1.0, 1.0, 0.0}},
              {"PolygonVertexIndex", {0, 1, -3}},
              {"Shape", {"smile"}, {{"Indexes", {1}}, {"Vertices", {0.0, 0.0, 1.0}}}},
              {"LayerElementTexture",
               {0},
               {{"MappingInformationType", {"AllSame"}}, {"TextureId", {0}}}},
              {"Layer", {0}, {LayerElement("LayerElementTexture")}}}},
            {"Model", {"Model::bone", "LimbNode"}, {properties}},
            {"Material", {"Material::skin", ""}, {{"ShadingModel", {"phong"}}}},
            {"Texture", {"Texture::t", ""}, {{"FileName", {"skin.png"}}}},
            {"Deformer", {"Deformer::skin", "Skin"}, {{"Version", {100}}}},
            {"Deformer", {"Deformer::c", "Cluster"}, {{"Indexes", {0}}, {"Weights", {1.0}}}}}},
          {"Connections",
           {},
           {connect("Model::face", "Model::Scene"), connect("Model::bone", "Model::Scene"),
            connect("Material::skin", "Model::face"), connect("Texture::t", "Model::face"),
            connect("Deformer::skin", "Model::face"), connect("Deformer::c", "Deformer::skin"),
            connect("Model::bone", "Deformer::c")}},
          {"Takes",
           {},
           {{"Take",
             {"walk"},
             {{"Model",
               {"Model::bone"},
               {{"Channel", {"Transform"}, {{"Channel", {"T"}, {curve}}}}}}}}}}};
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "make_fbx_seeds FOLDER\n";
    return 1;
  }
  const std::vector<SceneBuilder> scenes = {MakeScene(), MakeRoom()};
  const std::vector<FbxFormat> formats = {{},
                                          {.ascii = true},
                                          {.version = 7500, .compress = true},
                                          {.bigEndian = true},
                                          {.version = 7000, .footer = false}};
  int count = 0;
  for (const SceneBuilder& scene : scenes) {
    for (const FbxFormat& format : formats) {
      const std::string path = std::string(argv[1]).append("/").append(std::to_string(count++));
      if (!(std::ofstream(path, std::ios::binary) << scene.Write(format))) return 1;
    }
  }
  for (const FbxFormat& format :
       {FbxFormat{.version = 6100}, FbxFormat{.ascii = true, .version = 6100},
        FbxFormat{.version = 6000, .bigEndian = true}}) {
    const std::string path = std::string(argv[1]).append("/").append(std::to_string(count++));
    const std::string bytes = WriteFbx(MakeOldDocument(format.version), format);
    if (!(std::ofstream(path, std::ios::binary) << bytes)) return 1;
  }
  return 0;
}
