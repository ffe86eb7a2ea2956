// Polygon corners with their normals, and polygons sorted by material.
#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "converter/base/complaint.h"
#include "converter/base/records.h"
#include "converter/mesh/mesh_stages.h"
#include "fbx/scene/fbx_node.h"

namespace {

// The mesh's normal elements by both rules of look-up.
struct NormalSource {
  explicit NormalSource(const FbxMesh& mesh) {
    if (const FbxLayerElementNormal* element = mesh.GetElementNormal(0)) first.emplace(*element);
    for (int i = 0; i < mesh.GetLayerCount(); ++i) {
      const FbxLayerElementNormal* element = mesh.GetLayer(i)->normals.get();
      if (element != nullptr && HasKnownMapping(*element)) known.push_back(element);
    }
  }

  // The zero vector where there is none.
  const FbxDouble3& At(const MeshCorner& corner) const {
    const FbxDouble3* normal = first.has_value() ? first->At(corner) : nullptr;
    return normal == nullptr ? getNormalFromElements(known, corner) : *normal;
  }

  std::optional<CornerEntries<FbxDouble3>> first;
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

// The UV elements of all channels. Corners are read by the element's name, which leads to the first
// of that name; so a second one of that name holds nothing that counts.
std::vector<CornerEntries<FbxVector2>> FindUVs(const FbxMesh& mesh) {
  std::vector<CornerEntries<FbxVector2>> found;
  std::unordered_set<std::string_view> names;
  for (int i = 0; i < mesh.GetLayerCount(); ++i) {
    for (const std::shared_ptr<FbxLayerElementUV>& element : mesh.GetLayer(i)->uvs) {
      if (element != nullptr && names.insert(element->name).second) found.emplace_back(*element);
    }
  }
  return found;
}

// The corners' normals in world orientation. Corners of one control point mostly have one normal,
// which is turned once: two square roots and six divisions less for each of the others.
class NormalTurner {
 public:
  explicit NormalTurner(const GroupMesh& mesh) : mesh_(mesh), last_(mesh.controlPoints.size()) {}

  // `normal` must stay where it is.
  FbxDouble3 Turn(const FbxDouble3& normal, uint32_t corner, int point) {
    Last& last = last_[static_cast<size_t>(point)];
    const bool isKnown = last.normal != nullptr && BitsOf(*last.normal) == BitsOf(normal);
    last.normal = &normal;
    const uint32_t known = std::exchange(last.corner, corner);
    return isKnown ? mesh_.corners[known].normal : Turn(normal);
  }
  FbxDouble3 Turn(const FbxDouble3& normal) const {
    FbxVector4 unit(normal);
    unit.Normalize();
    return mesh_.TurnNormal(unit).Xyz();
  }

 private:
  // What normals are told apart by, so that -0 isn't taken for 0.
  static std::array<uint64_t, 3> BitsOf(const FbxDouble3& normal) {
    return std::bit_cast<std::array<uint64_t, 3>>(normal);
  }

  // The corner of a control point that came last.
  struct Last {
    const FbxDouble3* normal = nullptr;
    uint32_t corner = 0;
  };

  const GroupMesh& mesh_;
  std::vector<Last> last_;
};

// The polygons of one material slot. A slot whose polygons all had to be left out is in use too.
struct SlotPolygons {
  bool isUsed = false;
  PolygonList list;
};

// Takes over the corners, and sorts the polygons into those of the material slots.
void FillInCorners(GroupMesh& mesh, std::vector<SlotPolygons>& slots, const MeshTrace& trace) {
  const FbxMesh& source = *mesh.mesh;
  const NormalSource normals(source);
  const MorphNormalReport morphReport(mesh, trace);
  const FbxLayerElementMaterial* materials = source.GetElementMaterial(0);
  const std::vector<int>& controlPoints = source.PolygonVertices();
  const int polygonCount = source.GetPolygonCount();
  const int pointCount = static_cast<int>(mesh.controlPoints.size());

  mesh.corners.reserve(controlPoints.size());
  NormalTurner turner(mesh);
  int counter = 0;
  int material = 0;
  int64_t leftOut = 0;
  for (int polygon = 0; polygon < polygonCount; ++polygon) {
    const int* entry = materials == nullptr ? nullptr : materials->index.At(polygon);
    if (entry != nullptr) material = *entry;
    const bool isSlot = material >= 0 && static_cast<size_t>(material) < slots.size();
    const int slot = isSlot ? material : 0;
    const int cornerCount = source.GetPolygonSize(polygon);
    slots[static_cast<size_t>(slot)].isUsed = true;
    bool isWhole = true;
    for (int c = 0; c < cornerCount; ++c, ++counter) {
      const int point = controlPoints[static_cast<size_t>(counter)];
      if (point == -1) AddWarning("missing control point");
      const bool isThere = point >= 0 && point < pointCount;
      isWhole = isWhole && isThere;
      const MeshCorner place{polygon, counter, point};
      const FbxDouble3& normal = normals.At(place);
      PolygonVertexAttributes corner;
      corner.normal = isThere ? turner.Turn(normal, static_cast<uint32_t>(counter), point)
                              : turner.Turn(normal);
      corner.controlPoint = isThere ? point : -1;
      corner.polygon = polygon;
      corner.materialIndex = slot;
      mesh.corners.push_back(corner);
      morphReport.Report(place);
    }
    if (isWhole) {
      const auto first = static_cast<uint32_t>(counter - cornerCount);
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

}  // namespace

bool FillInPolygonVertexIndexes(GroupMesh& mesh, MaterialMasterMap& master,
                                const ConversionArguments& args, const MeshTrace& trace) {
  if (mesh.mesh == nullptr) return false;
  const FbxNode& node = *mesh.holder->node;
  mesh.rotation.SetR(node.EvaluateGlobalTransform().GetR());
  mesh.colors = FindColors(*mesh.mesh);
  mesh.uvs = FindUVs(*mesh.mesh);
  const MaterialMaps& materialMaps = GetMeshMaterialMap(*mesh.holder);
  std::vector<SlotPolygons> slots(static_cast<size_t>(std::max(node.GetMaterialCount(), 1)));
  trace.ReadingCorners(mesh);
  FillInCorners(mesh, slots, trace);

  size_t lost = 0;
  for (size_t slot = 0; slot < slots.size(); ++slot) {
    const auto material = materialMaps.find(static_cast<int>(slot));
    const int id = master[material == materialMaps.end() ? MaterialMap() : material->second];
    if (!slots[slot].isUsed) continue;
    PolygonList& list = slots[slot].list;
    PolygonList& target = mesh.polygons[id];
    // Of two slots with one id a plain export keeps the later one only.
    if (args.groupMeshes) {
      list.insert(list.end(), target.begin(), target.end());
    } else {
      lost += target.size();
    }
    target = std::move(list);
  }
  if (lost > 0) {
    Complain("mesh '" + mesh.holder->name +
             "' has several material slots with one material; only the polygons of the last of "
             "them are written, and " +
             std::to_string(lost) + (lost == 1 ? " polygon is" : " polygons are") + " lost");
  }
  return true;
}
