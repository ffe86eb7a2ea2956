#include "tests/converter/mesh/mesh_scene.h"

#include <map>
#include <regex>
#include <sstream>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "cal3d/io/loader.h"
#include "converter/mesh/export_mesh.h"

namespace {

// `index` is left out where the reference is direct.
FbxRecord Element(const std::string& type, const std::string& name, const std::string& mapping,
                  const std::string& reference, FbxRecord data, FbxRecords index = {}) {
  FbxRecord element{type,
                    {0},
                    {{"Version", {101}},
                     {"Name", {name}},
                     {"MappingInformationType", {mapping}},
                     {"ReferenceInformationType", {reference}},
                     std::move(data)}};
  if (reference != "Direct") {
    for (FbxRecord& record : index) element.Add(std::move(record));
  }
  return element;
}

}  // namespace

FbxRecord Normals(const std::string& mapping, const std::string& reference,
                  std::vector<double> values, std::vector<int32_t> index) {
  return Element("LayerElementNormal", "", mapping, reference, {"Normals", {std::move(values)}},
                 {{"NormalsIndex", {std::move(index)}}});
}

FbxRecord UVs(const std::string& name, const std::string& mapping, const std::string& reference,
              std::vector<double> values, std::vector<int32_t> index) {
  return Element("LayerElementUV", name, mapping, reference, {"UV", {std::move(values)}},
                 {{"UVIndex", {std::move(index)}}});
}

FbxRecord Colors(const std::string& mapping, const std::string& reference,
                 std::vector<double> values, std::vector<int32_t> index) {
  return Element("LayerElementColor", "", mapping, reference, {"Colors", {std::move(values)}},
                 {{"ColorIndex", {std::move(index)}}});
}

FbxRecord Materials(std::vector<int32_t> index) {
  return Element("LayerElementMaterial", "", index.size() == 1 ? "AllSame" : "ByPolygon",
                 "IndexToDirect", {"Materials", {std::move(index)}});
}

MeshScene::MeshScene() {
  // The axes that the converter works in, so that points come out as they go in.
  builder.SetAxes(2, 1, 1, -1, 0, 1);
  args.commandVersion = 2;
  args.skeletonRootPath = "RootNode";
}

int64_t MeshScene::AddNode(const std::string& name, const std::string& type, int64_t parent,
                           FbxRecords properties) {
  const int64_t node = builder.AddModel(name, type, std::move(properties));
  builder.Connect(node, parent);
  if (type == "LimbNode") builder.Connect(builder.AddNodeAttribute(name, type), node);
  return node;
}

int64_t MeshScene::AddMesh(const std::string& name, std::vector<double> points,
                           const std::vector<std::vector<int32_t>>& polygons, FbxRecords elements,
                           int64_t parent, FbxRecords nodeProperties) {
  std::vector<int32_t> indices;
  for (const std::vector<int32_t>& polygon : polygons) {
    indices.insert(indices.end(), polygon.begin(), polygon.end());
    if (!polygon.empty()) indices.back() = ~indices.back();
  }
  std::map<std::string, int32_t> counts;
  std::vector<FbxRecord> layers;
  for (FbxRecord& element : elements) {
    const int32_t number = counts[element.name]++;
    element.values = {number};
    if (layers.size() <= static_cast<size_t>(number)) layers.push_back({"Layer", {number}});
    layers[static_cast<size_t>(number)].Add(
        {"LayerElement", {}, {{"Type", {element.name}}, {"TypedIndex", {number}}}});
  }
  elements.insert(elements.end(), layers.begin(), layers.end());
  geometry = builder.AddMesh(name, std::move(points), std::move(indices), std::move(elements));
  const int64_t node = AddNode(name, "Mesh", parent, std::move(nodeProperties));
  builder.Connect(geometry, node);
  return node;
}

void MeshScene::AddMaterial(const std::string& name, int64_t node) {
  builder.Connect(builder.AddMaterial(name), node);
}

int64_t MeshScene::AddSkin() {
  const int64_t skin = builder.AddSkin();
  builder.Connect(skin, geometry);
  return skin;
}

int64_t MeshScene::AddCluster(int64_t skin, int64_t bone, std::vector<int32_t> points,
                              std::vector<double> weights, const std::string& mode) {
  const std::vector<double> identity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  const int64_t cluster =
      builder.AddCluster("", std::move(points), std::move(weights), identity, identity);
  builder.Object(cluster).Add({"Mode", {mode}});
  builder.Connect(cluster, skin);
  if (bone != 0) builder.Connect(bone, cluster);
  return cluster;
}

int64_t MeshScene::AddBlendShape() {
  const int64_t blendShape =
      builder.AddObject("Deformer", "Deformer", "", "BlendShape", {}, {{"Version", {100}}});
  builder.Connect(blendShape, geometry);
  return blendShape;
}

int64_t MeshScene::AddChannel(const std::string& name, int64_t blendShape) {
  const int64_t channel = builder.AddObject("Deformer", "SubDeformer", name, "BlendShapeChannel",
                                            {}, {{"Version", {100}}});
  builder.Connect(channel, blendShape);
  return channel;
}

void MeshScene::AddTarget(int64_t channel, std::vector<int32_t> points, std::vector<double> offsets,
                          std::vector<double> normals) {
  FbxRecords records = {
      {"Version", {100}}, {"Indexes", {std::move(points)}}, {"Vertices", {std::move(offsets)}}};
  if (!normals.empty()) records.push_back({"Normals", {std::move(normals)}});
  builder.Connect(
      builder.AddObject("Geometry", "Geometry", "target", "Shape", {}, std::move(records)),
      channel);
}

void MeshScene::LoadOnce() {
  if (scene != nullptr) return;
  args.inputFilename = dir_.Write("scene.fbx", builder.Write());
  args.directoryForOutputFiles = dir_.Path() + "/";
  scene = std::make_unique<FbxWrapper>(args.inputFilename);
}

std::string MeshScene::Export() {
  LoadOnce();
  testing::internal::CaptureStdout();
  succeeded = ExportMesh(*scene, args).Export(false);
  const std::string out = testing::internal::GetCapturedStdout();
  // Paths differ from run to run.
  return std::regex_replace(out, std::regex(dir_.Path() + "/"), "");
}

std::string MeshScene::List(bool print) {
  LoadOnce();
  testing::internal::CaptureStdout();
  std::vector<sMesh> rows;
  ExportMesh(*scene, args).WalkListReturnListPrint(print, &rows);
  for (const sMesh& row : rows) {
    std::printf("%s,%s,%s\n", row.name.c_str(), row.skeletonName.c_str(), row.materials.c_str());
  }
  return testing::internal::GetCapturedStdout();
}

CalCoreMesh MeshScene::Load(const std::string& name) const {
  if (!HasFile(name)) return {};
  const std::string bytes = ReadFile(dir_.File(name + ".xmf"));
  return *CalLoader::loadCoreMesh(CalBufferSource(bytes.data(), bytes.size()));
}

boost::shared_ptr<CalCoreSubmesh> MeshScene::Submesh(const std::string& name, size_t i) const {
  const CalCoreMesh mesh = Load(name);
  if (i < mesh.submeshes.size()) return mesh.submeshes[i];
  ADD_FAILURE() << name << " has no submesh " << i;
  return boost::make_shared<CalCoreSubmesh>(0, false, 0);
}

bool MeshScene::HasFile(const std::string& name) const {
  return FileExists(dir_.File(name + ".xmf"));
}

std::vector<float> PositionOf(const CalCoreSubmesh& submesh, size_t i) {
  const CalVector4& position = submesh.vertices()[i].position;
  return {position.x, position.y, position.z};
}

std::vector<float> NormalOf(const CalCoreSubmesh& submesh, size_t i) {
  const CalVector4& normal = submesh.vertices()[i].normal;
  return {normal.x, normal.y, normal.z};
}

std::string InfluencesOf(const CalCoreSubmesh& submesh, size_t vertex) {
  std::ostringstream text;
  size_t at = 0;
  for (const CalCoreSubmesh::Influence& influence : submesh.influences()) {
    if (at == vertex) {
      text << (text.str().empty() ? "" : " ") << influence.boneId << ":" << influence.weight;
    }
    at += influence.lastInfluenceForThisVertex;
  }
  return text.str();
}

std::vector<std::vector<int>> FacesOf(const CalCoreSubmesh& submesh) {
  std::vector<std::vector<int>> faces;
  for (const CalCoreSubmesh::Face& face : submesh.faces()) {
    faces.push_back({face.vertexId[0], face.vertexId[1], face.vertexId[2]});
  }
  return faces;
}
