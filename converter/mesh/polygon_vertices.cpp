// The second stage: polygon corners with their attributes, and polygons sorted by material.
#include <algorithm>
#include <cstdio>
#include <string_view>
#include <unordered_set>

#include "converter/base/records.h"
#include "converter/mesh/export_mesh.h"
#include "converter/mesh/mesh_diagnostics.h"
#include "fbx/scene/fbx_node.h"

namespace {

// The mesh's normal elements by both rules of look-up.
struct NormalSource {
  explicit NormalSource(const FbxMesh& mesh) : first(mesh.GetElementNormal(0)) {
    for (int i = 0; i < mesh.GetLayerCount(); ++i) {
      const FbxLayerElementNormal* element = mesh.GetLayer(i)->normals.get();
      if (element != nullptr && HasKnownMapping(*element)) known.push_back(element);
    }
  }

  // The zero vector where there is none.
  FbxVector4 At(const MeshCorner& corner) const {
    const FbxVector4* normal = first == nullptr ? nullptr : CornerEntry(*first, corner);
    return normal == nullptr ? getNormalFromElements(known, corner) : *normal;
  }

  const FbxLayerElementNormal* first;
  NormalElements known;
};

// The colour element that decides: the first with a known mapping.
const FbxLayerElementVertexColor* FindColors(const FbxMesh& mesh) {
  for (int i = 0; i < mesh.GetLayerCount(); ++i) {
    const FbxLayerElementVertexColor* element = mesh.GetLayer(i)->vertexColors.get();
    if (element != nullptr && HasKnownMapping(*element)) return element;
  }
  return nullptr;
}

// The UV elements of all channels. Each is read by its name, which finds the first of that name;
// one found twice would tell no two corners apart that it doesn't tell apart once.
std::vector<const FbxLayerElementUV*> FindUVs(const FbxMesh& mesh) {
  std::vector<const FbxLayerElementUV*> found;
  std::unordered_set<std::string_view> names;
  for (int i = 0; i < mesh.GetLayerCount(); ++i) {
    for (const std::shared_ptr<FbxLayerElementUV>& element : mesh.GetLayer(i)->uvs) {
      if (element != nullptr && names.insert(element->name).second) found.push_back(element.get());
    }
  }
  return found;
}

// What the command hears of the morph normals of each corner, if anything.
class MorphReport {
 public:
  MorphReport(const GroupMesh& mesh, int verbosity) : mesh_(mesh), verbosity_(verbosity) {
    for (const MorphSource& source : mesh.morphSources) {
      isNeeded_ = isNeeded_ || verbosity != 0 || source.hasMoreTargets;
      if (verbosity >= 2) normals_.emplace_back(*source.shape, *mesh.mesh);
    }
  }

  void Report(const MeshCorner& corner) const {
    if (!isNeeded_) return;
    for (size_t i = 0; i < mesh_.morphSources.size(); ++i) {
      const MorphSource& source = mesh_.morphSources[i];
      if (verbosity_ != 0) std::printf("%s ", source.name.c_str());
      if (source.hasMoreTargets) PrintIgnoredTargets(source);
      if (verbosity_ < 2) continue;
      const FbxVector4 normal = normals_[i].At(corner);
      if (IsNearZero(normal)) continue;
      if (verbosity_ >= 3) PrintPoint("", normal, "=>");
      PrintPoint("", mesh_.TurnNormal(normal), "\t");
    }
  }

 private:
  const GroupMesh& mesh_;
  int verbosity_;
  bool isNeeded_ = false;
  std::vector<ShapeNormals> normals_;
};

}  // namespace

bool ExportMesh::FillInPolygonVertexIndexes(GroupMesh& mesh, MaterialMasterMap& master,
                                            MeshGroup& group) const {
  if (mesh.mesh == nullptr) return false;
  mesh.rotation.SetR(mesh.holder->node->EvaluateGlobalTransform().GetR());
  mesh.colors = FindColors(*mesh.mesh);
  mesh.uvs = FindUVs(*mesh.mesh);

  const int slotCount = std::max(mesh.holder->node->GetMaterialCount(), 1);
  std::vector<SlotPolygons> slots(static_cast<size_t>(slotCount));
  const MaterialMaps& materialMaps = GetMeshMaterialMap(*mesh.holder);
  if (args_.verbosity >= 2) std::printf("\nnormals:\n");
  if (args_.verbosity != 0) {
    AddOutput("DEBUG",
              "ExportMesh::FillInPolygonVertexIndexes " + mesh.holder->name +
                  " : #polys= " + std::to_string(mesh.mesh->GetPolygonCount()),
              true);
  }
  FillInCorners(mesh, group, slots);

  PolygonMap polygons;
  for (int slot = 0; slot < slotCount; ++slot) {
    const auto material = materialMaps.find(slot);
    const int id = master[material == materialMaps.end() ? MaterialMap() : material->second];
    if (!slots[static_cast<size_t>(slot)].isUsed) continue;
    PolygonList& list = slots[static_cast<size_t>(slot)].list;
    PolygonList& target = polygons[id];
    // Of two slots with one id a plain export keeps the later one only.
    if (args_.groupMeshes) list.insert(list.end(), target.begin(), target.end());
    target = std::move(list);
  }
  for (auto& [id, list] : polygons) {
    PolygonList& target = group.polygons[id];
    target.insert(target.end(), list.begin(), list.end());
  }
  return true;
}

void ExportMesh::FillInCorners(const GroupMesh& mesh, MeshGroup& group,
                               std::vector<SlotPolygons>& slots) const {
  const FbxMesh& source = *mesh.mesh;
  const NormalSource normals(source);
  const MorphReport morphReport(mesh, args_.verbosity);
  const FbxLayerElementMaterial* materials = source.GetElementMaterial(0);
  const std::vector<int>& controlPoints = source.PolygonVertices();
  const int polygonCount = source.GetPolygonCount();
  const int pointCount = static_cast<int>(mesh.controlPointCount);

  // Sized once and shrunk never: the corners of a mesh stand in the order of the file.
  group.corners.resize(group.corners.size() + controlPoints.size());
  PolygonVertexAttributes* corner = group.corners.data() + mesh.firstCorner;
  int counter = 0;
  int material = 0;
  int64_t leftOut = 0;
  for (int polygon = 0; polygon < polygonCount; ++polygon) {
    if (materials != nullptr && static_cast<size_t>(polygon) < materials->index.size()) {
      material = materials->index[static_cast<size_t>(polygon)];
    }
    const bool isSlot = material >= 0 && static_cast<size_t>(material) < slots.size();
    const int slot = isSlot ? material : 0;
    const int cornerCount = source.GetPolygonSize(polygon);
    slots[static_cast<size_t>(slot)].isUsed = true;
    bool isWhole = true;
    for (int c = 0; c < cornerCount; ++c, ++counter, ++corner) {
      const int point = controlPoints[static_cast<size_t>(counter)];
      if (point == -1) AddWarning("missing control point");
      const bool isThere = point >= 0 && point < pointCount;
      isWhole = isWhole && isThere;
      const MeshCorner place{polygon, counter, point};
      FbxVector4 normal = normals.At(place);
      normal.Normalize();
      corner->normal = mesh.TurnNormal(normal).Xyz();
      corner->controlPoint = isThere ? static_cast<int>(mesh.firstControlPoint) + point : -1;
      corner->polygon = polygon;
      corner->materialIndex = slot;
      morphReport.Report(place);
    }
    if (isWhole) {
      const uint32_t first = mesh.firstCorner + static_cast<uint32_t>(counter - cornerCount);
      slots[static_cast<size_t>(slot)].list.push_back({first, static_cast<uint32_t>(cornerCount)});
    } else {
      ++leftOut;
    }
  }
  // A mesh without any point goes without a word: it will be warned of as one without geometry.
  if (leftOut != 0 && pointCount != 0) {
    AddWarning(
        "Mesh " + mesh.holder->name + " (" + mesh.holder->path +
        ") names control points that do not exist; polygons left out: " + std::to_string(leftOut));
  }
}
