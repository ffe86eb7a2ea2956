#include "gltf/meshes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <set>
#include <utility>

#include "cal3d/io/file_format.h"
#include "gltf/skeleton_nodes.h"

namespace {

using Target = GlbBuilder::Target;
using Shape = GlbBuilder::Shape;

// Joints are told by 16 bits, and the rest joint is one of them.
constexpr size_t kMostBones = 65535;
// A file may name many targets in many submeshes, and each pair costs, moved vertices or not.
constexpr size_t kMostTargetsOfSubmeshes = 100000;

// A name that comes twice within a submesh stands for two targets.
using MorphKey = std::pair<std::string, int>;

std::map<MorphKey, const CalCoreMorphTarget*> MorphsOf(const CalCoreSubmesh& submesh) {
  std::map<MorphKey, const CalCoreMorphTarget*> morphs;
  std::map<std::string, int> counts;
  for (const auto& target : submesh.morphTargets()) {
    morphs.emplace(MorphKey(target->name(), counts[target->name()]++), target.get());
  }
  return morphs;
}

// The targets of all submeshes: those of a mesh must agree.
std::vector<MorphKey> MorphsOf(const CalCoreMesh& mesh) {
  std::vector<MorphKey> keys;
  std::set<MorphKey> seen;
  for (const auto& submesh : mesh.submeshes) {
    std::map<std::string, int> counts;
    for (const auto& target : submesh->morphTargets()) {
      const MorphKey key(target->name(), counts[target->name()]++);
      if (seen.insert(key).second) keys.push_back(key);
    }
  }
  return keys;
}

std::array<float, 3> UnitNormal(const CalVector4& normal) {
  const double x = FiniteOrZero(normal.x);
  const double y = FiniteOrZero(normal.y);
  const double z = FiniteOrZero(normal.z);
  const double length = std::sqrt(x * x + y * y + z * z);
  if (!(length > 1e-12)) return {0, 0, 1};
  return {static_cast<float>(x / length), static_cast<float>(y / length),
          static_cast<float>(z / length)};
}

// The colours as light is reckoned with (the curve of sRGB), in 16 bits.
uint16_t LinearByte(uint32_t value) {
  const double color = value / 255.0;
  const double linear = color <= 0.04045 ? color / 12.92 : std::pow((color + 0.055) / 1.055, 2.4);
  return static_cast<uint16_t>(std::lround(linear * 65535));
}

void AddVertices(GlbBuilder& glb, const CalCoreSubmesh& submesh, Json& attributes) {
  std::vector<float> positions;
  std::vector<float> normals;
  for (const CalCoreSubmesh::Vertex& vertex : submesh.vertices()) {
    const CalVector4& at = vertex.position;
    positions.insert(positions.end(), {FiniteOrZero(at.x), FiniteOrZero(at.y), FiniteOrZero(at.z)});
    const auto normal = UnitNormal(vertex.normal);
    normals.insert(normals.end(), normal.begin(), normal.end());
  }
  attributes["POSITION"] = glb.AddFloats(positions, Shape::kVec3, Target::kVertices);
  attributes["NORMAL"] = glb.AddFloats(normals, Shape::kVec3, Target::kVertices);

  // In both formats v runs downwards.
  std::vector<float> coordinates(2 * submesh.vertices().size());
  for (size_t i = 0; i < submesh.textureCoordinates().size(); ++i) {
    coordinates[2 * i] = FiniteOrZero(submesh.textureCoordinates()[i].u);
    coordinates[2 * i + 1] = FiniteOrZero(submesh.textureCoordinates()[i].v);
  }
  attributes["TEXCOORD_0"] = glb.AddFloats(coordinates, Shape::kVec2, Target::kVertices);

  const auto isWhite = [](uint32_t color) { return (color & 0xFFFFFF) == 0xFFFFFF; };
  if (std::ranges::all_of(submesh.vertexColors(), isWhite)) return;
  std::array<uint16_t, 256> linear;
  for (uint32_t i = 0; i < linear.size(); ++i) linear[i] = LinearByte(i);
  std::vector<uint16_t> colors;
  for (const uint32_t color : submesh.vertexColors()) {
    colors.insert(colors.end(), {linear[color >> 16 & 0xFF], linear[color >> 8 & 0xFF],
                                 linear[color & 0xFF], 65535});
  }
  attributes["COLOR_0"] = glb.AddInts(colors, Shape::kVec4, Target::kVertices, true);
}

void AddInfluences(GlbBuilder& glb, const SkinSets& sets, Json& attributes) {
  for (size_t i = 0; i < sets.joints.size(); ++i) {
    const std::string number = std::to_string(i);
    attributes["JOINTS_" + number] =
        glb.AddInts(sets.joints[i], Shape::kVec4, Target::kVertices, false);
    attributes["WEIGHTS_" + number] =
        glb.AddFloats(sets.weights[i], Shape::kVec4, Target::kVertices);
  }
}

size_t AddFaces(GlbBuilder& glb, const CalCoreSubmesh& submesh) {
  std::vector<uint16_t> corners;
  for (const CalCoreSubmesh::Face& face : submesh.faces()) {
    corners.insert(corners.end(), std::begin(face.vertexId), std::end(face.vertexId));
  }
  // The greatest number of 16 bits may not be an index.
  constexpr uint16_t kReserved = 65535;
  if (std::ranges::find(corners, kReserved) == corners.end()) {
    return glb.AddInts(corners, Shape::kScalar, Target::kIndices, false);
  }
  return glb.AddInts(std::vector<uint32_t>(corners.begin(), corners.end()), Shape::kScalar,
                     Target::kIndices);
}

// A morph target: what it adds to positions and normals, of the vertices that it moves alone.
Json AddMorph(GlbBuilder& glb, const CalCoreSubmesh& submesh, const CalCoreMorphTarget& target) {
  // The first offset of a vertex counts.
  std::map<uint32_t, const VertexOffset*> offsets;
  for (const VertexOffset& offset : target.vertexOffsets()) {
    offsets.emplace(static_cast<uint32_t>(offset.vertexId), &offset);
  }
  std::vector<uint32_t> ids;
  std::vector<float> positions;
  std::vector<float> normals;
  for (const auto& [id, offset] : offsets) {
    ids.push_back(id);
    const CalVector4& by = offset->position;
    positions.insert(positions.end(), {FiniteOrZero(by.x), FiniteOrZero(by.y), FiniteOrZero(by.z)});
    const auto base = UnitNormal(submesh.vertices()[id].normal);
    const auto morphed = UnitNormal(offset->normal);
    for (size_t i = 0; i < 3; ++i) normals.push_back(morphed[i] - base[i]);
  }
  const size_t count = submesh.vertices().size();
  return {{"POSITION", glb.AddSparseVectors(count, ids, positions)},
          {"NORMAL", glb.AddSparseVectors(count, ids, normals)}};
}

class MeshMaker {
 public:
  MeshMaker(GlbBuilder& glb, const ViewModel& model, const MaterialTable& materials,
            ViewNotes& notes)
      : glb_(glb), materials_(materials), notes_(notes) {
    if (!model.skeleton.core) return;
    bones_ = model.skeleton.core->coreBones.size();
    if (bones_ <= kMostBones) return;
    notes_.warnings.push_back(model.skeleton.file +
                              " has more than 65,535 bones; meshes are shown at rest");
    bones_ = 0;
  }

  bool HasBones() const { return bones_ > 0; }
  bool UsesRestJoint() const { return usesRestJoint_; }

  // Adds the mesh; its JSON has no primitives when there is nothing to show.
  Json MeshOf(const ViewPart<CalCoreMesh>& mesh, std::vector<std::string>& morphNames) {
    std::vector<MorphKey> morphs = MorphsOf(*mesh.core);
    const size_t most = kMostTargetsOfSubmeshes / std::max<size_t>(mesh.core->submeshes.size(), 1);
    if (morphs.size() > most) {
      Warn(mesh, "has " + std::to_string(morphs.size()) + " morphs; the first " +
                     std::to_string(most) + " are shown");
      morphs.resize(most);
    }
    Json json = {{"name", FileStem(mesh.file)}};
    Json primitives = Json::array();
    for (size_t i = 0; i < mesh.core->submeshes.size(); ++i) {
      const CalCoreSubmesh& submesh = *mesh.core->submeshes[i];
      if (!submesh.faces().empty()) primitives.push_back(PrimitiveOf(mesh, submesh, i, morphs));
    }
    if (primitives.empty()) {
      Warn(mesh, "has no faces and isn't shown");
      return json;
    }
    json["primitives"] = std::move(primitives);
    for (const MorphKey& key : morphs) morphNames.push_back(key.first);
    if (!morphs.empty()) json["extras"]["targetNames"] = morphNames;
    return json;
  }

 private:
  Json PrimitiveOf(const ViewPart<CalCoreMesh>& mesh, const CalCoreSubmesh& submesh, size_t index,
                   const std::vector<MorphKey>& morphs) {
    Json attributes = Json::object();
    AddVertices(glb_, submesh, attributes);
    if (bones_ > 0) {
      const SkinSets sets = PackInfluences(submesh, bones_);
      AddInfluences(glb_, sets, attributes);
      usesRestJoint_ |= sets.usesRestJoint;
      TellAbout(sets, mesh, index);
    }
    Json primitive = {{"attributes", std::move(attributes)}, {"indices", AddFaces(glb_, submesh)}};
    const int32_t id = submesh.coreMaterialThreadId;
    Json extras = {{"submesh", index}, {"materialId", id}};
    if (const MaterialTable::Entry* material = materials_.Find(id)) {
      primitive["material"] = material->index;
      extras["material"] = material->name;
    } else {
      Warn(mesh, "submesh " + std::to_string(index) + " wears the material number " +
                     std::to_string(id) + ", which no file has");
    }
    AddTargets(submesh, morphs, primitive);
    primitive["extras"] = std::move(extras);
    return primitive;
  }

  void AddTargets(const CalCoreSubmesh& submesh, const std::vector<MorphKey>& morphs,
                  Json& primitive) {
    if (morphs.empty()) return;
    const auto own = MorphsOf(submesh);
    Json still;  // the target of a submesh that the morph doesn't move
    for (const MorphKey& key : morphs) {
      const auto found = own.find(key);
      if (found != own.end() && !found->second->vertexOffsets().empty()) {
        primitive["targets"].push_back(AddMorph(glb_, submesh, *found->second));
        continue;
      }
      if (still.is_null()) {
        const size_t zeros = glb_.AddSparseVectors(submesh.vertices().size(), {}, {});
        still = {{"POSITION", zeros}, {"NORMAL", zeros}};
      }
      primitive["targets"].push_back(still);
    }
  }

  void TellAbout(const SkinSets& sets, const ViewPart<CalCoreMesh>& mesh, size_t submesh) {
    const std::string which = "submesh " + std::to_string(submesh) + " ";
    if (sets.strangeBone >= 0) {
      Warn(mesh, which + "hangs on bone " + std::to_string(sets.strangeBone) +
                     ", but the skeleton has " + std::to_string(bones_) +
                     " bones: do they belong together?");
    }
    if (sets.hasTooMany)
      Warn(mesh, which + "has vertices on more than 32 bones; the heaviest count");
    if (sets.hasNegative) Warn(mesh, which + "has weights below 0, which count as 0");
  }

  void Warn(const ViewPart<CalCoreMesh>& mesh, const std::string& text) {
    notes_.warnings.push_back(mesh.file + " " + text);
  }

  GlbBuilder& glb_;
  const MaterialTable& materials_;
  ViewNotes& notes_;
  size_t bones_ = 0;
  bool usesRestJoint_ = false;
};

}  // namespace

std::vector<MeshNode> AddMeshes(GlbBuilder& glb, const ViewModel& model,
                                const MaterialTable& materials, ViewNotes& notes) {
  MeshMaker maker(glb, model, materials, notes);
  std::vector<MeshNode> nodes;
  for (const ViewPart<CalCoreMesh>& mesh : model.meshes) {
    MeshNode made{0, {}};
    Json json = maker.MeshOf(mesh, made.morphs);
    if (!json.contains("primitives")) continue;
    Json node = {{"name", FileStem(mesh.file)}, {"mesh", glb.Add("meshes", std::move(json))}};
    if (maker.HasBones()) node["skin"] = 0;
    made.node = glb.Add("nodes", std::move(node));
    if (!maker.HasBones()) glb.At("nodes", 0)["children"].push_back(made.node);
    nodes.push_back(std::move(made));
  }
  if (maker.HasBones()) AddSkin(glb, model, maker.UsesRestJoint());
  return nodes;
}
