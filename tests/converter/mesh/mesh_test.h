// A fixture of tests of mesh export: the scene is built in a few lines, exported by the program and
// read back.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>

#include "cal3d/io/loader.h"
#include "cal3d/model/core_mesh.h"
#include "tests/support/program_test.h"

// What the export of the mesh "m" of one material says.
inline const std::string kWritten = "MESH: m MATERIAL: 0  FILENAME: m.xmf\n";
inline const std::vector<double> kQuad{0, 0, 0, 200, 0, 0, 200, 200, 0, 0, 200, 0};
// Two triangles with the points 0 and 2 in common.
inline const std::vector<std::vector<int32_t>> kTwo{{0, 1, 2}, {0, 2, 3}};
inline const std::vector<std::vector<int32_t>> kOne{{0, 1, 2}};

class MeshTest : public SceneTest {
 protected:
  // Exports the meshes of these names, or all, and returns what was printed.
  std::string Export(Words options = {}, const Words& names = {}) {
    options.insert(options.end(), {"--root=" + root_, "s.fbx", "export", "mesh"});
    options.insert(options.end(), names.begin(), names.end());
    return Run(options);
  }
  // The mesh of that name as it was written.
  CalCoreMesh Load(const std::string& name) const {
    const std::string bytes = File(name + ".xmf");
    return *CalLoader::loadCoreMesh(CalBufferSource(bytes.data(), bytes.size()));
  }
  // One of its submeshes; a test failure and an empty one if it isn't there.
  boost::shared_ptr<CalCoreSubmesh> Submesh(const std::string& name = "m", size_t i = 0) const {
    const CalCoreMesh mesh = Load(name);
    if (i < mesh.submeshes.size()) return mesh.submeshes[i];
    ADD_FAILURE() << name << " has no submesh " << i;
    return boost::make_shared<CalCoreSubmesh>(0, false, 0);
  }
  // The influences of a vertex as "bone:weight", separated by blanks.
  std::string InfluencesOf(size_t vertex) const {
    std::ostringstream text;
    size_t at = 0;
    const auto submesh = Submesh();
    for (const CalCoreSubmesh::Influence& influence : submesh->influences()) {
      if (at == vertex) {
        text << (text.str().empty() ? "" : " ") << influence.boneId << ":" << influence.weight;
      }
      at += influence.lastInfluenceForThisVertex;
    }
    return text.str();
  }

  std::string root_ = "RootNode";
};

inline std::vector<float> PositionOf(const CalCoreSubmesh& submesh, size_t i) {
  const CalVector4& position = submesh.vertices()[i].position;
  return {position.x, position.y, position.z};
}

inline std::vector<float> NormalOf(const CalCoreSubmesh& submesh, size_t i) {
  const CalVector4& normal = submesh.vertices()[i].normal;
  return {normal.x, normal.y, normal.z};
}

inline std::vector<std::vector<int>> FacesOf(const CalCoreSubmesh& submesh) {
  std::vector<std::vector<int>> faces;
  for (const CalCoreSubmesh::Face& face : submesh.faces()) {
    faces.push_back({face.vertexId[0], face.vertexId[1], face.vertexId[2]});
  }
  return faces;
}
