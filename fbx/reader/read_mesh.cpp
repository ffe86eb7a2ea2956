// Polygon meshes with their layers and deformers, and vectors and matrices of all records.
#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "fbx/io/fbx_io.h"
#include "fbx/reader/read_records.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_scene.h"

namespace {

// Version of a layer element's record from which on it has a name, and normals a fourth component.
constexpr int32_t kVersionWithName = 101;
constexpr int32_t kVersionWithNormalsW = 102;

void ReadData(FbxIO& io, FbxLayerElementNormal& element, int32_t version) {
  io.FieldReadArray("Normals", element.direct);
  if (version >= kVersionWithNormalsW) io.FieldReadArray("NormalsW", element.w);
}

void ReadData(FbxIO& io, FbxLayerElementUV& element, int32_t /*version*/) {
  io.FieldReadArray("UV", element.direct);
}

void ReadData(FbxIO& io, FbxLayerElementVertexColor& element, int32_t /*version*/) {
  io.FieldReadArray("Colors", element.direct);
}

// Materials have indices only.
void ReadData(FbxIO& /*io*/, FbxLayerElementMaterial& /*element*/, int32_t /*version*/) {}

// Reads the layer elements that layers name, each once.
class LayerElementReader {
 public:
  explicit LayerElementReader(FbxIO& io) : io_(io) {}

  // Puts the element that stands `number`-th among the records of the field into the layer. A field
  // that no exporter looks at, or a number without a record, leaves the layer as it is.
  void Set(FbxLayer& layer, const std::string& field, int32_t number) {
    if (field == "LayerElementNormal") {
      Get(normals_, field, number, "NormalsIndex", layer.normals);
    } else if (field == "LayerElementColor") {
      Get(colors_, field, number, "ColorIndex", layer.vertexColors);
    } else if (field == "LayerElementMaterial") {
      Get(materials_, field, number, "Materials", layer.materials);
    } else {
      const auto channel = std::find(kUVElementNames.begin(), kUVElementNames.end(), field);
      if (channel == kUVElementNames.end()) return;
      const auto index = static_cast<size_t>(channel - kUVElementNames.begin());
      Get(uvs_[index], field, number, "UVIndex", layer.uvs[index]);
    }
  }

 private:
  template <typename Element>
  using Elements = std::map<int32_t, std::shared_ptr<Element>>;

  template <typename Element>
  void Get(Elements<Element>& elements, const std::string& field, int32_t number,
           const char* indexField, std::shared_ptr<Element>& out) {
    std::shared_ptr<Element>& element = elements[number];
    if (element == nullptr) {
      if (!io_.FieldReadBegin(field, number)) return;
      element = std::make_shared<Element>();
      if (io_.FieldReadBlockBegin()) {
        Read(*element, indexField);
        io_.FieldReadBlockEnd();
      }
    }
    out = element;
  }

  template <typename Element>
  void Read(Element& element, const char* indexField) {
    const int32_t version = io_.FieldReadI("Version", 0);
    if (version >= kVersionWithName) element.name = StripPrefix(io_.FieldReadC("Name"));
    element.mappingMode = MappingModeFromName(io_.FieldReadC("MappingInformationType"));
    element.referenceMode = ReferenceModeFromName(io_.FieldReadC("ReferenceInformationType"));
    ReadData(io_, element, version);
    if (element.referenceMode != FbxLayerElement::eDirect) {
      io_.FieldReadArray(indexField, element.index);
    }
  }

  FbxIO& io_;
  Elements<FbxLayerElementNormal> normals_;
  Elements<FbxLayerElementVertexColor> colors_;
  Elements<FbxLayerElementMaterial> materials_;
  std::array<Elements<FbxLayerElementUV>, FbxLayer::kUVChannels> uvs_;
};

// Layers stand in the order of their numbers; gaps aren't filled, as a number may be anything.
void ReadLayerElements(FbxIO& io, FbxMesh& mesh) {
  LayerElementReader reader(io);
  for (const auto& [number, entries] : ReadLayerEntries(io)) {
    FbxLayer& layer = *mesh.GetLayer(mesh.CreateLayer());
    for (const auto& [field, index] : entries) reader.Set(layer, field, index);
  }
}

}  // namespace

std::map<int32_t, FbxLayerEntries> ReadLayerEntries(FbxIO& io) {
  std::map<int32_t, FbxLayerEntries> layers;
  const int32_t count = io.FieldGetInstanceCount("Layer");
  for (int32_t i = 0; i < count; ++i) {
    io.FieldReadBegin("Layer", i);
    const int32_t number = io.FieldReadI();
    if (number < 0 || !io.FieldReadBlockBegin()) continue;
    FbxLayerEntries& entries = layers[number];
    const int32_t elements = io.FieldGetInstanceCount("LayerElement");
    for (int32_t k = 0; k < elements; ++k) {
      io.FieldReadBegin("LayerElement", k);
      if (!io.FieldReadBlockBegin()) continue;
      std::string type(io.FieldReadC("Type"));
      entries.emplace_back(std::move(type), io.FieldReadI("TypedIndex"));
      io.FieldReadBlockEnd();
    }
    io.FieldReadBlockEnd();
  }
  return layers;
}

void ReadMesh(FbxIO& io, FbxMesh& mesh) {
  ReadProperties(io, mesh);
  FbxStoredArray<FbxDouble3> points;
  io.FieldReadArray("Vertices", points);
  mesh.SetControlPoints(std::move(points));
  FbxStoredArray<int> polygons;
  io.FieldReadArray("PolygonVertexIndex", polygons);
  mesh.SetPolygonsFromFile(std::move(polygons));
  ReadLayerElements(io, mesh);
}

bool ReadMatrix(FbxIO& io, std::string_view field, FbxMatrix& out) {
  if (!io.FieldReadBegin(field)) return false;
  const char type = io.FieldReadGetType();
  if (type == 'd' || type == 'a') {
    std::vector<double> values;
    io.FieldReadArray(values);
    if (values.size() < out.data.size()) return false;
    std::copy_n(values.begin(), out.data.size(), out.data.begin());
    return true;
  }
  if (io.FieldReadGetRemain() < static_cast<int32_t>(out.data.size())) return false;
  io.FieldReadDn(out.data.data(), static_cast<int>(out.data.size()));
  return true;
}

namespace {

// The sum of the normals of the polygon's fan of triangles, each twice its triangle's area long.
FbxVector4 PolygonNormal(const FbxMesh& mesh, int polygon) {
  FbxVector4 normal(0.0, 0.0, 0.0, 0.0);
  const int size = mesh.GetPolygonSize(polygon);
  const FbxVector4 first = mesh.GetControlPointAt(mesh.GetPolygonVertex(polygon, 0));
  for (int i = 1; i + 1 < size; ++i) {
    const FbxVector4 a = mesh.GetControlPointAt(mesh.GetPolygonVertex(polygon, i));
    const FbxVector4 b = mesh.GetControlPointAt(mesh.GetPolygonVertex(polygon, i + 1));
    normal += (a - first).CrossProduct(b - first);
  }
  return normal;
}

// The normal of a control point is the sum of its polygons' normals, so that larger ones count for
// more.
void GenerateNormals(FbxMesh& mesh) {
  const std::vector<int>& corners = mesh.PolygonVertices();
  std::vector<FbxVector4> byPoint(static_cast<size_t>(mesh.GetControlPointsCount()),
                                  FbxVector4(0.0, 0.0, 0.0, 0.0));
  for (int polygon = 0; polygon < mesh.GetPolygonCount(); ++polygon) {
    const FbxVector4 normal = PolygonNormal(mesh, polygon);
    const int start = mesh.GetPolygonVertexIndex(polygon);
    for (int i = start; i < start + mesh.GetPolygonSize(polygon); ++i) {
      const auto point = static_cast<size_t>(corners[static_cast<size_t>(i)]);
      if (point < byPoint.size()) byPoint[point] += normal;
    }
  }
  std::vector<FbxDouble3> byCorner;
  byCorner.reserve(corners.size());
  for (const int corner : corners) {
    const auto point = static_cast<size_t>(corner);
    FbxVector4 normal = point < byPoint.size() ? byPoint[point] : FbxVector4(0.0, 0.0, 0.0, 0.0);
    normal.Normalize();
    byCorner.push_back(normal.Xyz());
  }
  auto normals = std::make_shared<FbxLayerElementNormal>();
  normals->mappingMode = FbxLayerElement::eByPolygonVertex;
  normals->direct = byCorner;
  if (mesh.GetLayerCount() == 0) mesh.CreateLayer();
  mesh.GetLayer(0)->normals = std::move(normals);
}

}  // namespace

void ReadSkin(FbxIO& io, FbxSkin& skin) {
  ReadProperties(io, skin);
  skin.deformAccuracy = io.FieldReadD("Link_DeformAcuracy");
  const std::string_view type = io.FieldReadC("SkinningType");
  if (type == "DualQuaternion") skin.skinningType = FbxSkin::eDualQuaternion;
  if (type != "Blend") return;
  skin.skinningType = FbxSkin::eBlend;
  io.FieldReadArray("Indexes", skin.blendIndices);
  io.FieldReadArray("BlendWeights", skin.blendWeights);
  skin.blendWeights.resize(skin.blendIndices.size());
}

void ReadCluster(FbxIO& io, FbxCluster& cluster) {
  ReadProperties(io, cluster);
  const std::string_view mode = io.FieldReadC("Mode");
  if (mode == "Additive") cluster.linkMode = FbxCluster::eAdditive;
  if (mode == "Total1") cluster.linkMode = FbxCluster::eTotalOne;
  io.FieldReadArray("Indexes", cluster.indices);
  io.FieldReadArray("Weights", cluster.weights);
  cluster.weights.resize(cluster.indices.size());

  FbxMatrix transform;
  FbxMatrix transformLink;
  ReadMatrix(io, "Transform", transform);
  ReadMatrix(io, "TransformLink", transformLink);
  cluster.transformLink = FbxAMatrix(transformLink);
  // The file holds the geometry's matrix relative to the bone's.
  cluster.transform = cluster.transformLink * FbxAMatrix(transform);
}

void ReadBlendShape(FbxIO& io, FbxBlendShape& blendShape) { ReadProperties(io, blendShape); }

void ReadBlendShapeChannel(FbxIO& io, FbxBlendShapeChannel& channel) {
  ReadProperties(io, channel);
  io.FieldReadArray("FullWeights", channel.fullWeights);
}

void ReadShape(FbxIO& io, FbxShape& shape) {
  io.FieldReadArray("Indexes", shape.indices);
  io.FieldReadArray("Vertices", shape.offsets);
  io.FieldReadArray("Normals", shape.normalOffsets);
  // All shapes of a mesh are at work at the same time, and take most of its memory.
  shape.indices.DecodeForGood();
  shape.offsets.DecodeForGood();
  shape.normalOffsets.DecodeForGood();
  ReadProperties(io, shape);
}

void RebuildTargetShapes(FbxScene& scene) {
  const int count = scene.GetSrcObjectCount<FbxShape>();
  for (int i = 0; i < count; ++i) {
    const FbxShape& shape = *scene.GetSrcObject<FbxShape>(i);
    FbxGeometry* base = shape.GetBaseGeometry();
    if (base == nullptr || !base->Is<FbxMesh>() || base->GetElementNormalCount() > 0) continue;
    if (shape.NormalOffsets().empty()) continue;
    auto& mesh = static_cast<FbxMesh&>(*base);
    GenerateNormals(mesh);
    mesh.Release();
  }
}
