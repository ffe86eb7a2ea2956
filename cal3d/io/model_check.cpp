#include "cal3d/io/model_check.h"

#include <cstddef>
#include <stdexcept>

#include <boost/make_shared.hpp>

#include "cal3d/io/file_format.h"

namespace {

std::string BoneFault(size_t bone, const std::string& fault) {
  return "bone " + std::to_string(bone) + " " + fault;
}

std::string FaultOf(const CalCoreSubmesh& submesh) {
  const size_t vertices = submesh.vertices().size();
  for (size_t i = 0; i < submesh.faces().size(); ++i) {
    for (const uint16_t vertex : submesh.faces()[i].vertexId) {
      if (vertex < vertices) continue;
      return "face " + std::to_string(i) + " names the vertex " + std::to_string(vertex) + " of " +
             std::to_string(vertices);
    }
  }
  bool startsRun = true;
  for (const CalCoreSubmesh::Influence& influence : submesh.influences()) {
    const bool standsForNone =
        startsRun && influence.lastInfluenceForThisVertex != 0 && influence.boneId == -1;
    if (influence.boneId < 0 && !standsForNone) {
      return "an influence names the bone " + std::to_string(influence.boneId);
    }
    startsRun = influence.lastInfluenceForThisVertex != 0;
  }
  for (const boost::shared_ptr<CalCoreMorphTarget>& target : submesh.morphTargets()) {
    if (!target) return "a morph target is missing";
    for (const VertexOffset& offset : target->vertexOffsets()) {
      if (offset.vertexId >= 0 && static_cast<size_t>(offset.vertexId) < vertices) continue;
      return "the morph " + target->name() + " names the vertex " +
             std::to_string(offset.vertexId) + " of " + std::to_string(vertices);
    }
  }
  return {};
}

}  // namespace

std::string FaultOf(const CalCoreSkeleton& skeleton) {
  const auto& bones = skeleton.coreBones;
  for (size_t i = 0; i < bones.size(); ++i) {
    if (!bones[i]) return BoneFault(i, "is missing");
    const int32_t parent = bones[i]->parentId;
    if (parent >= -1 && parent < static_cast<int64_t>(bones.size())) continue;
    return BoneFault(i, "has the parent " + std::to_string(parent) + " in a list of " +
                            std::to_string(bones.size()));
  }
  // Each walk towards a root stops at a bone that an earlier one has seen; meeting its own mark it
  // goes in a circle.
  std::vector<size_t> walkOf(bones.size(), 0);
  for (size_t i = 0; i < bones.size(); ++i) {
    const size_t walk = i + 1;
    for (int32_t at = static_cast<int32_t>(i); at >= 0;
         at = bones[static_cast<size_t>(at)]->parentId) {
      size_t& mark = walkOf[static_cast<size_t>(at)];
      if (mark == walk) return BoneFault(i, "is its own ancestor, or hangs on a bone that is");
      if (mark != 0) break;
      mark = walk;
    }
  }
  return {};
}

std::string FaultOf(const CalCoreMesh& mesh) {
  for (size_t i = 0; i < mesh.submeshes.size(); ++i) {
    const std::string fault =
        mesh.submeshes[i] ? FaultOf(*mesh.submeshes[i]) : std::string("it is missing");
    if (!fault.empty()) return "submesh " + std::to_string(i) + ": " + fault;
  }
  return {};
}

std::string FaultOf(const CalCoreAnimation& animation) {
  for (const CalCoreTrack& track : animation.tracks) {
    if (track.coreBoneId < 0) return "a track names the bone " + std::to_string(track.coreBoneId);
  }
  return {};
}

int32_t CheckedVersion(int32_t version) {
  if (version >= kOldestFileVersion && version <= kFileVersion) return version;
  throw std::runtime_error("version " + std::to_string(version) + " is outside " +
                           std::to_string(kOldestFileVersion) + " to " +
                           std::to_string(kFileVersion));
}

int32_t CheckedBoneId(int32_t bone) {
  if (bone >= 0) return bone;
  throw std::runtime_error("the bone id " + std::to_string(bone) + " is out of range");
}

int32_t CheckedVertexId(int32_t vertex, int32_t vertices) {
  if (vertex >= 0 && vertex < vertices) return vertex;
  throw std::runtime_error("the vertex id " + std::to_string(vertex) +
                           " is out of range: there are " + std::to_string(vertices) + " vertices");
}

CalCoreSubmesh::Face CheckedFace(std::span<const int32_t, 3> corners, int32_t vertices) {
  CalCoreSubmesh::Face face;
  for (size_t i = 0; i < 3; ++i) {
    const int32_t vertex = CheckedVertexId(corners[i], vertices);
    if (vertex >= CalCoreSubmesh::kAddressableVertices) {
      throw std::runtime_error("the vertex id " + std::to_string(vertex) + " of a face is above " +
                               std::to_string(CalCoreSubmesh::kAddressableVertices - 1));
    }
    face.vertexId[i] = static_cast<uint16_t>(vertex);
  }
  return face;
}

VertexOffset LoadedOffset(const CalCoreSubmesh& submesh, int32_t id, const CalVector& position,
                          const CalVector& normal) {
  const CalVector4& base = submesh.vertices()[static_cast<size_t>(id)].position;
  return {id,
          {MorphOffset(base.x, position.x), MorphOffset(base.y, position.y),
           MorphOffset(base.z, position.z), 0},
          normal.asCalVector4()};
}

boost::shared_ptr<CalCoreSkeleton> LoadedSkeleton::Finish(const CalVector& ambient) const {
  auto skeleton = boost::make_shared<CalCoreSkeleton>(bones);
  skeleton->sceneAmbientColor = ambient;
  const std::string fault = FaultOf(*skeleton);
  if (!fault.empty()) throw std::runtime_error(fault);
  for (const auto& [parent, child] : children) {
    if (child >= 0 && static_cast<size_t>(child) < bones.size() &&
        bones[static_cast<size_t>(child)]->parentId == parent) {
      continue;
    }
    throw std::runtime_error("bone " + std::to_string(parent) + " lists the child " +
                             std::to_string(child) + ", which is no bone below it");
  }
  return skeleton;
}
