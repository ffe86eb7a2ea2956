#include "cal3d/io/load_checks.h"

#include <cstddef>
#include <stdexcept>
#include <string>

#include <boost/make_shared.hpp>

#include "cal3d/io/file_format.h"
#include "cal3d/io/model_check.h"

std::int32_t CheckedVersion(std::int32_t version) {
  if (version >= kOldestFileVersion && version <= kFileVersion) return version;
  throw std::runtime_error("version " + std::to_string(version) + " is outside " +
                           std::to_string(kOldestFileVersion) + " to " +
                           std::to_string(kFileVersion));
}

std::int32_t CheckedBoneId(std::int32_t bone) {
  if (bone >= 0) return bone;
  throw std::runtime_error("the bone id " + std::to_string(bone) + " is out of range");
}

std::int32_t CheckedVertexId(std::int32_t vertex, std::int32_t vertices) {
  if (vertex >= 0 && vertex < vertices) return vertex;
  throw std::runtime_error("the vertex id " + std::to_string(vertex) +
                           " is out of range: there are " + std::to_string(vertices) + " vertices");
}

CalCoreSubmesh::Face CheckedFace(std::span<const std::int32_t, 3> corners, std::int32_t vertices) {
  CalCoreSubmesh::Face face;
  for (std::size_t i = 0; i < 3; ++i) {
    const std::int32_t vertex = CheckedVertexId(corners[i], vertices);
    if (vertex >= CalCoreSubmesh::kAddressableVertices) {
      throw std::runtime_error("the vertex id " + std::to_string(vertex) + " of a face is above " +
                               std::to_string(CalCoreSubmesh::kAddressableVertices - 1));
    }
    face.vertexId[i] = static_cast<std::uint16_t>(vertex);
  }
  return face;
}

VertexOffset LoadedOffset(const CalCoreSubmesh& submesh, std::int32_t id, const CalVector& position,
                          const CalVector& normal) {
  const CalVector4& base = submesh.vertices()[static_cast<std::size_t>(id)].position;
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
    if (child >= 0 && static_cast<std::size_t>(child) < bones.size() &&
        bones[static_cast<std::size_t>(child)]->parentId == parent) {
      continue;
    }
    throw std::runtime_error("bone " + std::to_string(parent) + " lists the child " +
                             std::to_string(child) + ", which is no bone below it");
  }
  return skeleton;
}
