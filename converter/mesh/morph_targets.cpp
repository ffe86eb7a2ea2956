// Blend shapes become offsets of the vertices of a submesh.
#include <algorithm>
#include <cmath>
#include <optional>
#include <span>
#include <utility>

#include <boost/make_shared.hpp>

#include "converter/base/records.h"
#include "converter/mesh/mesh_stages.h"
#include "converter/space/axis_mod.h"
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

// Gathers the offsets of one mesh.
//
// Most vertices are touched by few of the mesh's morphs. So the morphs are in classes that treat
// vertices alike where they don't touch them; a vertex costs one test for each class, and work for
// the morphs that change it.
class OffsetGatherer {
 public:
  OffsetGatherer(MorphListMap& map, const GroupMesh& mesh, const ConversionArguments& args,
                 const MeshTrace& trace)
      : map_(map), mesh_(mesh), args_(args), trace_(trace), own_(mesh.morphs.channels.size()) {}

  // Counts the offsets that moved points will make, so that lists needn't grow: growing took twice
  // their memory.
  void Expect(const std::vector<uint32_t>& vertices) {
    uint64_t count = map_.count;
    for (const uint32_t corner : vertices) {
      const MeshMorphs::Entries moves = mesh_.morphs.MovesOf(mesh_.corners[corner].controlPoint);
      for (const PointIndex::Entry& move : moves) ++own_[move.channel].expected;
      count += moves.size();
    }
    if (count <= kMostOffsets) return;
    for (Own& own : own_) own.expected = 0;
  }

  void Add(uint32_t vertex, uint32_t corner) {
    const MeshMorphs& morphs = mesh_.morphs;
    const ControlPoint& point = mesh_.PointOf(corner);
    const MeshCorner place = mesh_.CornerOf(corner);
    const FbxVector4 vertexNormal(mesh_.corners[corner].normal);
    if (!MeetMorphs(place)) return;

    const std::optional<BaseNormal> base = morphs.base.At(place);
    const FbxVector4 restNormal = base.has_value() ? Turned(base->normal) : kNoNormal;
    candidates_.clear();
    if (!(point.position - point.position).IsZero(4)) {
      // Not finite: no difference from it is 0.
      for (uint32_t i = 0; i < offered_.size(); ++i) Nominate(i);
    } else {
      for (const uint32_t i : otherNormals_) Nominate(i);
      if (!IsSameNormal(kNoNormal - vertexNormal)) {
        for (const uint32_t i : noNormals_) Nominate(i);
      }
      if (!IsSameNormal(restNormal - vertexNormal)) {
        for (const uint32_t i : baseNormals_) Nominate(i);
      }
    }
    const MeshMorphs::Entries moves = morphs.MovesOf(place.controlPoint);
    const MeshMorphs::Entries turns =
        base.has_value() ? morphs.TurnsOf(base->point) : MeshMorphs::Entries();
    const FbxVector4& raw = mesh_.mesh->ControlPoints()[static_cast<size_t>(place.controlPoint)];
    for (const PointIndex::Entry& move : moves) {
      Own& own = own_[move.channel];
      own.moved = morphs.Moved(move);
      own.isMoved = !(own.moved == raw);
      if (own.isMoved) Nominate(own.offered);
    }
    for (const PointIndex::Entry& turn : turns) {
      Own& own = own_[turn.channel];
      own.normal = Turned(morphs.Turned(base->normal, turn));
      own.isTurned = true;
      Nominate(own.offered);
    }
    // Each morph has a list of its own, so the order shows in the trace alone.
    if (trace_.IsOn()) std::sort(candidates_.begin(), candidates_.end());
    for (const uint32_t i : candidates_) {
      AddOffset(vertex, point.position, vertexNormal, restNormal, offered_[i]);
      offered_[i].isCandidate = false;
    }
    for (const PointIndex::Entry& move : moves) own_[move.channel].isMoved = false;
    for (const PointIndex::Entry& turn : turns) own_[turn.channel].isTurned = false;
  }

 private:
  static constexpr uint32_t kNone = 0xFFFFFFFF;

  // A channel of the mesh, and what it makes of the vertex at work.
  struct Own {
    bool isMet = false;
    uint32_t expected = 0;  // offsets of a list that has none yet
    uint32_t offered = kNone;
    bool isMoved = false;
    bool isTurned = false;  // by an offset of its own to the base normal
    FbxVector4 moved;       // in the mesh's frame; of a moved one
    FbxVector4 normal;      // in world orientation; of a turned one, and of others
  };
  // A morph of the submesh, and the channel of the mesh that has its name.
  struct Offered {
    cal3d::SSEArray<VertexOffset>* offsets;
    uint32_t channel;  // kNone if the mesh has none
    bool isCandidate;
  };

  // In world orientation; no normal if it is near zero.
  FbxVector4 Turned(const FbxVector4& normal) const {
    return IsNearZero(normal) ? kNoNormal : mesh_.TurnNormal(normal);
  }
  // Has the morph looked at for the vertex at work.
  void Nominate(uint32_t offered) {
    if (!std::exchange(offered_[offered].isCandidate, true)) candidates_.push_back(offered);
  }

  // Looks up other normals than base normals, and takes in the morphs that appear with this corner:
  // those that move points with the first, others with the first that has a normal. False for a
  // corner without morphs.
  bool MeetMorphs(const MeshCorner& corner) {
    bool hasMorphs = hasMovingMorphs_;
    bool isNew = false;
    const auto meet = [&](uint32_t channel) {
      hasMorphs = true;
      if (std::exchange(own_[channel].isMet, true)) return;
      isNew = true;
      map_.offsets.try_emplace(mesh_.morphs.channels[channel].name);
    };
    for (const uint32_t channel : mesh_.morphs.others) {
      FbxVector4 normal;
      const bool hasNormal = mesh_.morphs.channels[channel].NormalAt(corner, normal);
      own_[channel].normal = hasNormal ? mesh_.TurnNormal(normal) : kNoNormal;
      if (hasNormal) meet(channel);
    }
    if (!std::exchange(hasBegun_, true)) {
      for (uint32_t i = 0; i < own_.size(); ++i) {
        if (!mesh_.morphs.channels[i].points.Fits()) continue;
        hasMovingMorphs_ = true;
        meet(i);
      }
    }
    if (isNew) OfferMorphs();
    return hasMorphs;
  }

  // Vertices are offered the morphs met so far, those of earlier meshes included.
  void OfferMorphs() {
    offered_.clear();
    noNormals_.clear();
    baseNormals_.clear();
    otherNormals_.clear();
    const std::vector<MorphChannel>& channels = mesh_.morphs.channels;
    uint32_t next = 0;  // both are sorted by name
    for (auto& [name, offsets] : map_.offsets) {
      while (next < channels.size() && channels[next].name < name) ++next;
      const bool isOwn = next < channels.size() && channels[next].name == name;
      const auto place = static_cast<uint32_t>(offered_.size());
      offered_.push_back({&offsets, isOwn ? next : kNone, false});
      if (isOwn) own_[next].offered = place;
      if (isOwn && offsets.empty()) offsets.reserve(own_[next].expected);
      if (!isOwn || channels[next].normals.empty()) {
        noNormals_.push_back(place);
      } else if (channels[next].HasBaseNormals()) {
        baseNormals_.push_back(place);
      } else {
        otherNormals_.push_back(place);
      }
    }
  }

  // Adds the vertex to the morph unless it changes neither its place nor its normal.
  void AddOffset(uint32_t vertex, const FbxVector4& position, const FbxVector4& vertexNormal,
                 const FbxVector4& restNormal, const Offered& morph) {
    if (!map_.tooManyError.empty()) return;
    FbxVector4 morphed = position;
    FbxVector4 normal = kNoNormal;
    if (morph.channel != kNone) {
      const Own& own = own_[morph.channel];
      if (own.isMoved) morphed = ToOutputSpace(mesh_, own.moved, args_);
      const MorphChannel& channel = mesh_.morphs.channels[morph.channel];
      if (!channel.normals.empty()) {
        normal = !channel.HasBaseNormals() || own.isTurned ? own.normal : restNormal;
      }
    }
    const FbxVector4 delta = morphed - position;
    const FbxVector4 normalDelta = normal - vertexNormal;
    if (IsSameNormal(normalDelta) && delta.IsZero(4)) return;
    trace_.Offset(vertex, morphed, position, delta, normal, normalDelta);
    if (++map_.count > kMostOffsets) {
      map_.tooManyError =
          "Mesh " + mesh_.holder->name + " (" + mesh_.holder->path +
          ") has too many morphed vertices; a submesh is written without morph targets";
      return;
    }
    morph.offsets->push_back(
        {static_cast<int32_t>(vertex), ToCalVector4(delta), ToCalVector4(normal)});
  }

  MorphListMap& map_;
  const GroupMesh& mesh_;
  const ConversionArguments& args_;
  const MeshTrace& trace_;
  bool hasBegun_ = false;
  bool hasMovingMorphs_ = false;
  std::vector<Own> own_;          // by channel
  std::vector<Offered> offered_;  // by name
  // Places among those, by what becomes of a normal that the morph doesn't touch: there is none, it
  // is the base normal, or it has to be looked up.
  std::vector<uint32_t> noNormals_;
  std::vector<uint32_t> baseNormals_;
  std::vector<uint32_t> otherNormals_;
  std::vector<uint32_t> candidates_;
};

}  // namespace

void FillInControlPointsForMorph(GroupMesh& mesh, const ConversionArguments& args,
                                 const MeshTrace& trace) {
  trace.BlendShapes(mesh.mesh->GetSrcObjectCount<FbxBlendShape>());
  for (const MorphSource& source : mesh.morphs.sources) {
    trace.Channel(source);
    if (source.hasMoreTargets) PrintIgnoredTargets(source);
    ShapePoints points(*source.shape, *mesh.mesh);
    if (!points.Fits()) {
      AddWarning("Irregular morph target point count");
      continue;
    }
    MorphChannel& channel = mesh.morphs.Find(source.name);
    channel.points = std::move(points);
    trace.MorphPoints(mesh, channel, args);
  }
}

void BuildMorphListMap(MorphListMap& map, const GroupMesh& mesh,
                       const std::vector<uint32_t>& vertices, uint32_t firstVertex,
                       const ConversionArguments& args, const MeshTrace& trace) {
  if (mesh.morphs.channels.empty()) return;
  OffsetGatherer gatherer(map, mesh, args, trace);
  gatherer.Expect(vertices);
  for (size_t i = 0; i < vertices.size() && map.tooManyError.empty(); ++i) {
    gatherer.Add(firstVertex + static_cast<uint32_t>(i), vertices[i]);
  }
}

void AddMorphs(MorphListMap& map, CalCoreSubmesh& submesh) {
  if (!map.tooManyError.empty()) {
    AddWarning(map.tooManyError);
    return;
  }
  for (auto& [name, offsets] : map.offsets) {
    if (offsets.empty()) continue;
    submesh.addMorphTarget(boost::make_shared<CalCoreMorphTarget>(
        name, static_cast<int32_t>(submesh.vertices().size()), std::move(offsets)));
  }
}
