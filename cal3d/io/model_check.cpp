#include "cal3d/io/model_check.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

std::string BoneFault(std::size_t bone, const std::string& fault) {
  return "bone " + std::to_string(bone) + " " + fault;
}

std::string FaultOf(const CalCoreSubmesh& submesh) {
  const std::size_t vertices = submesh.vertices().size();
  for (std::size_t i = 0; i < submesh.faces().size(); ++i) {
    for (const std::uint16_t vertex : submesh.faces()[i].vertexId) {
      if (vertex < vertices) continue;
      return "face " + std::to_string(i) + " names the vertex " + std::to_string(vertex) + " of " +
             std::to_string(vertices);
    }
  }
  bool starts_run = true;
  for (const CalCoreSubmesh::Influence& influence : submesh.influences()) {
    const bool stands_for_none =
        starts_run && influence.lastInfluenceForThisVertex != 0 && influence.boneId == -1;
    if (influence.boneId < 0 && !stands_for_none) {
      return "an influence names the bone " + std::to_string(influence.boneId);
    }
    starts_run = influence.lastInfluenceForThisVertex != 0;
  }
  for (const boost::shared_ptr<CalCoreMorphTarget>& target : submesh.morphTargets()) {
    if (!target) return "a morph target is missing";
    for (const VertexOffset& offset : target->vertexOffsets()) {
      if (offset.vertexId >= 0 && static_cast<std::size_t>(offset.vertexId) < vertices) continue;
      return "the morph " + target->name() + " names the vertex " +
             std::to_string(offset.vertexId) + " of " + std::to_string(vertices);
    }
  }
  return {};
}

}  // namespace

std::string FaultOf(const CalCoreSkeleton& skeleton) {
  const auto& bones = skeleton.coreBones;
  for (std::size_t i = 0; i < bones.size(); ++i) {
    if (!bones[i]) return BoneFault(i, "is missing");
    const std::int32_t parent = bones[i]->parentId;
    if (parent >= -1 && parent < static_cast<std::int64_t>(bones.size())) continue;
    return BoneFault(i, "has the parent " + std::to_string(parent) + " in a list of " +
                            std::to_string(bones.size()));
  }
  // Each walk towards a root stops at a bone that an earlier one has seen; meeting its own mark it
  // goes in a circle.
  std::vector<std::size_t> walk_of(bones.size(), 0);
  for (std::size_t i = 0; i < bones.size(); ++i) {
    const std::size_t walk = i + 1;
    for (std::int32_t at = static_cast<std::int32_t>(i); at >= 0;
         at = bones[static_cast<std::size_t>(at)]->parentId) {
      std::size_t& mark = walk_of[static_cast<std::size_t>(at)];
      if (mark == walk) return BoneFault(i, "is its own ancestor, or hangs on a bone that is");
      if (mark != 0) break;
      mark = walk;
    }
  }
  return {};
}

std::string FaultOf(const CalCoreMesh& mesh) {
  for (std::size_t i = 0; i < mesh.submeshes.size(); ++i) {
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
