// The stage of morph targets: blend shapes become offsets of the vertices of a submesh.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>

#include "cal3d/model/core_mesh.h"
#include "converter/base/records.h"
#include "converter/mesh/export_mesh.h"
#include "converter/mesh/mesh_diagnostics.h"
#include "fbx/scene/fbx_deformer.h"

namespace {

constexpr double kNormalTolerance = 1e-6;

// Offsets of all morphs of a submesh. A head has some millions; but where a shape has no normals it
// has an offset for every vertex, so that a small file could ask for more than any memory holds.
constexpr uint64_t kMostOffsets = 1U << 25U;

CalVector4 Narrow(const FbxVector4& v) {
  return {static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2]),
          static_cast<float>(v[3])};
}

// Whether the morphed normal is the vertex's own.
bool IsSameNormal(const FbxVector4& delta) {
  return std::abs(delta[0]) < kNormalTolerance && std::abs(delta[1]) < kNormalTolerance &&
         std::abs(delta[2]) < kNormalTolerance;
}

// A morph of a submesh in the making.
struct Target {
  cal3d::SSEArray<VertexOffset> offsets;
  // The last mesh that was found to have it, and its place among that mesh's channels.
  uint32_t mesh = 0;
  size_t channel = 0;
};

// What a channel makes of the vertex at work.
struct MorphState {
  bool hasNormal = false;
  FbxVector4 normal;  // in world orientation
};

void PrintOffset(uint32_t vertex, const FbxVector4& morphed, const FbxVector4& position,
                 const FbxVector4& delta, const FbxVector4& normal, const FbxVector4& normalDelta) {
  std::printf("\n%u\t", vertex);
  PrintPoint(" morph pos:", morphed, "\t");
  PrintPoint(" vert pos:", position, "\t");
  PrintPoint(" delta:", delta, "\t");
  PrintPoint(" norm:", normal, "\t");
  PrintPoint(" deltaNorm:", normalDelta, "\t");
}

}  // namespace

void ExportMesh::FillInControlPointsForMorph(GroupMesh& mesh) const {
  const std::vector<FbxVector4>& base = mesh.mesh->ControlPoints();
  const int blendShapes = mesh.mesh->GetSrcObjectCount<FbxBlendShape>();
  if (blendShapes != 0 && args_.verbosity != 0) {
    std::printf("exporting %d morph blend deformer:", blendShapes);
  }
  for (const MorphSource& source : mesh.morphSources) {
    if (args_.verbosity != 0) std::printf("%s ", source.name.c_str());
    if (args_.verbosity >= 2) std::printf("\nposition: ");
    if (source.hasMoreTargets) PrintIgnoredTargets(source);
    ShapePoints points(*source.shape);
    if (points.Count() != base.size()) {
      AddWarning("Irregular morph target point count");
      continue;
    }
    MorphChannel& channel = FindMorphChannel(mesh.morphs, source.name);
    channel.hasPoints = true;
    channel.points = std::move(points);
    if (args_.verbosity != 0) DumpMorphPoints(mesh, channel);
  }
}

void ExportMesh::DumpMorphPoints(const GroupMesh& mesh, const MorphChannel& channel) const {
  std::vector<FbxVector4> raw;
  std::vector<FbxVector4> scaled;
  for (size_t i = 0; i < channel.points.Count(); ++i) {
    raw.push_back(channel.points.At(static_cast<int>(i)));
    scaled.push_back(ToOutputSpace(mesh, raw.back()));
  }
  std::printf("\nexporting %zu morph control points for %s\n", raw.size(), channel.name.c_str());
  if (args_.verbosity >= 2) {
    std::printf("\nraw points:");
    dumpControlPoints(raw, FbxAMatrix());
    std::printf("\nglobal position:");
    dumpControlPoints(raw, mesh.meshInit);
    FbxAMatrix unscaled = mesh.meshInit;
    unscaled.SetS({1.0, 1.0, 1.0});
    std::printf("\nglobal position no scale:");
    dumpControlPoints(raw, unscaled);
  }
  std::printf("\nscaled morph points:");
  dumpControlPoints(scaled, FbxAMatrix());
}

void ExportMesh::AddMorphs(const MeshGroup& group, const std::vector<uint32_t>& vertices,
                           CalCoreSubmesh& submesh) const {
  // By name; a morph is in it from the first vertex on that has it.
  std::map<std::string_view, Target> targets;
  std::vector<Target*> own;  // of the channels of the mesh at work
  const GroupMesh* meshAtWork = nullptr;
  std::vector<MorphState> states;
  uint64_t offsetCount = 0;

  for (uint32_t i = 0; i < vertices.size(); ++i) {
    const uint32_t corner = vertices[i];
    const ControlPoint& point = group.PointOf(corner);
    const GroupMesh& mesh = group.meshes[point.mesh];
    if (mesh.morphs.empty()) continue;
    if (std::exchange(meshAtWork, &mesh) != &mesh) own.assign(mesh.morphs.size(), nullptr);
    const MeshCorner place = group.CornerOf(mesh, corner);
    bool hasMorphs = false;
    states.assign(mesh.morphs.size(), {});
    for (size_t m = 0; m < mesh.morphs.size(); ++m) {
      MorphState& state = states[m];
      state.hasNormal = mesh.morphs[m].NormalAt(place, state.normal);
      if (state.hasNormal) state.normal = mesh.TurnNormal(state.normal);
      if (!state.hasNormal && !mesh.morphs[m].hasPoints) continue;
      hasMorphs = true;
      if (own[m] != nullptr) continue;
      own[m] = &targets[mesh.morphs[m].name];
      own[m]->mesh = point.mesh;
      own[m]->channel = m;
    }
    if (!hasMorphs) continue;

    // All morphs met so far, those of other meshes included.
    const FbxVector4 vertexNormal(group.corners[corner].normal);
    const FbxVector4& raw = mesh.mesh->ControlPoints()[static_cast<size_t>(place.controlPoint)];
    for (auto& [name, target] : targets) {
      const bool isOwn = target.mesh == point.mesh;
      FbxVector4 morphed = point.position;
      if (isOwn && mesh.morphs[target.channel].hasPoints) {
        // A point that stays needs no transform: the same numbers give the same result.
        const FbxVector4& moved = mesh.morphs[target.channel].points.At(place.controlPoint);
        if (!(moved == raw)) morphed = ToOutputSpace(mesh, moved);
      }
      const FbxVector4 normal = isOwn && states[target.channel].hasNormal
                                    ? states[target.channel].normal
                                    : FbxVector4(0.0, 0.0, 0.0, 0.0);
      const FbxVector4 delta = morphed - point.position;
      const FbxVector4 normalDelta = normal - vertexNormal;
      if (IsSameNormal(normalDelta) && delta.IsZero(4)) continue;
      if (args_.verbosity >= 3) {
        PrintOffset(i, morphed, point.position, delta, normal, normalDelta);
      }
      if (++offsetCount > kMostOffsets) {
        AddWarning("Mesh " + mesh.holder->name + " (" + mesh.holder->path +
                   ") has too many morphed vertices; a submesh is written without morph targets");
        return;
      }
      target.offsets.push_back({static_cast<int32_t>(i), Narrow(delta), Narrow(normal)});
    }
  }

  for (auto& [name, target] : targets) {
    if (target.offsets.empty()) continue;
    const cal3d::SSEArray<VertexOffset> taken = std::move(target.offsets);
    submesh.addMorphTarget(boost::make_shared<CalCoreMorphTarget>(
        std::string(name), static_cast<int32_t>(vertices.size()), taken));
  }
}
