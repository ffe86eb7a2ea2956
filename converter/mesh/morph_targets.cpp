// Blend shapes become offsets of the vertices of a submesh.
#include <cmath>
#include <utility>

#include <boost/make_shared.hpp>

#include "converter/base/records.h"
#include "converter/mesh/mesh_stages.h"
#include "converter/space/cal3d_values.h"
#include "fbx/scene/fbx_deformer.h"

namespace {

constexpr double kNormalTolerance = 1e-6;

// Offsets of all morphs of a submesh. A head has some millions; but where a shape has no normals it
// has an offset for every vertex, so that a small file could ask for more than any memory holds.
constexpr uint64_t kMostOffsets = 1U << 25U;

// Whether the morphed normal is the vertex's own.
bool IsSameNormal(const FbxVector4& delta) {
  return std::abs(delta[0]) < kNormalTolerance && std::abs(delta[1]) < kNormalTolerance &&
         std::abs(delta[2]) < kNormalTolerance;
}

// What a channel makes of the vertex at work.
struct MorphState {
  bool hasNormal = false;
  FbxVector4 normal{0.0, 0.0, 0.0, 0.0};  // in world orientation
};

// A morph of the submesh, and the channel of the mesh at work that has its name.
struct OfferedMorph {
  cal3d::SSEArray<VertexOffset>* offsets;
  const MorphChannel* channel;  // null if none has
  const MorphState* state;
};

// The morphs that the next vertices are offered, by name: those met so far, whoever has them.
std::vector<OfferedMorph> OfferMorphs(MorphListMap& map, const GroupMesh& mesh,
                                      const std::vector<MorphState>& states) {
  std::vector<OfferedMorph> offered;
  size_t own = 0;  // both are sorted by name
  for (auto& [name, offsets] : map.offsets) {
    while (own < mesh.morphs.size() && mesh.morphs[own].name < name) ++own;
    const bool isOwn = own < mesh.morphs.size() && mesh.morphs[own].name == name;
    offered.push_back(
        {&offsets, isOwn ? &mesh.morphs[own] : nullptr, isOwn ? &states[own] : nullptr});
  }
  return offered;
}

}  // namespace

void FillInControlPointsForMorph(GroupMesh& mesh, const ConversionArguments& args,
                                 const MeshTrace& trace) {
  const std::vector<FbxVector4>& base = mesh.mesh->ControlPoints();
  trace.BlendShapes(mesh.mesh->GetSrcObjectCount<FbxBlendShape>());
  for (const MorphSource& source : mesh.morphSources) {
    trace.Channel(source);
    if (source.hasMoreTargets) PrintIgnoredTargets(source);
    ShapePoints points(*source.shape);
    if (points.Count() != base.size()) {
      AddWarning("Irregular morph target point count");
      continue;
    }
    MorphChannel& channel = FindMorphChannel(mesh.morphs, source.name);
    channel.hasPoints = true;
    channel.points = std::move(points);
    trace.MorphPoints(mesh, channel, args);
  }
}

void BuildMorphListMap(MorphListMap& map, const GroupMesh& mesh,
                       const std::vector<uint32_t>& vertices, uint32_t firstVertex,
                       const ConversionArguments& args, const MeshTrace& trace) {
  if (mesh.morphs.empty()) return;
  std::vector<MorphState> states(mesh.morphs.size());
  std::vector<bool> isMet(mesh.morphs.size(), false);
  std::vector<OfferedMorph> offered;
  for (size_t i = 0; i < vertices.size() && map.tooManyError.empty(); ++i) {
    const ControlPoint& point = mesh.PointOf(vertices[i]);
    const MeshCorner place = mesh.CornerOf(vertices[i]);
    bool hasMorphs = false;
    bool isNew = false;
    for (size_t m = 0; m < mesh.morphs.size(); ++m) {
      MorphState& state = states[m];
      state = {};
      state.hasNormal = mesh.morphs[m].NormalAt(place, state.normal);
      if (state.hasNormal) state.normal = mesh.TurnNormal(state.normal);
      if (!state.hasNormal && !mesh.morphs[m].hasPoints) continue;
      hasMorphs = true;
      if (isMet[m]) continue;
      isMet[m] = true;
      isNew = true;
      map.offsets.try_emplace(mesh.morphs[m].name);
    }
    if (!hasMorphs) continue;
    if (isNew) offered = OfferMorphs(map, mesh, states);

    const FbxVector4 vertexNormal(mesh.corners[vertices[i]].normal);
    const FbxVector4& raw = mesh.mesh->ControlPoints()[static_cast<size_t>(place.controlPoint)];
    for (const OfferedMorph& morph : offered) {
      FbxVector4 morphed = point.position;
      if (morph.channel != nullptr && morph.channel->hasPoints) {
        // A point that stays needs no transform: the same numbers give the same result.
        const FbxVector4& moved = morph.channel->points.At(place.controlPoint);
        if (!(moved == raw)) morphed = ToOutputSpace(mesh, moved, args);
      }
      const bool hasNormal = morph.channel != nullptr && morph.state->hasNormal;
      const FbxVector4 normal = hasNormal ? morph.state->normal : FbxVector4(0.0, 0.0, 0.0, 0.0);
      const FbxVector4 delta = morphed - point.position;
      const FbxVector4 normalDelta = normal - vertexNormal;
      if (IsSameNormal(normalDelta) && delta.IsZero(4)) continue;
      const uint32_t vertex = firstVertex + static_cast<uint32_t>(i);
      trace.Offset(vertex, morphed, point.position, delta, normal, normalDelta);
      if (++map.count > kMostOffsets) {
        map.tooManyError =
            "Mesh " + mesh.holder->name + " (" + mesh.holder->path +
            ") has too many morphed vertices; a submesh is written without morph targets";
        map.offsets.clear();
        break;
      }
      morph.offsets->push_back(
          {static_cast<int32_t>(vertex), ToCalVector4(delta), ToCalVector4(normal)});
    }
  }
}

void AddMorphs(MorphListMap& map, CalCoreSubmesh& submesh) {
  if (!map.tooManyError.empty()) AddWarning(map.tooManyError);
  for (auto& [name, offsets] : map.offsets) {
    if (offsets.empty()) continue;
    const cal3d::SSEArray<VertexOffset> taken = std::move(offsets);
    submesh.addMorphTarget(boost::make_shared<CalCoreMorphTarget>(
        name, static_cast<int32_t>(submesh.vertices().size()), taken));
  }
}
