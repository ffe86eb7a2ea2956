// A scene for tests of mesh export: built in a few lines, exported in process, and read back.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "cal3d/model/core_mesh.h"
#include "converter/base/conversion_arguments.h"
#include "converter/scene/fbx_wrapper.h"
#include "tests/support/fbx_builder.h"
#include "tests/support/temp_dir.h"

// What the export of the mesh "m" of one material says.
inline const std::string kWritten = "MESH: m MATERIAL: 0  FILENAME: m.xmf\n";
inline const std::vector<double> kQuad{0, 0, 0, 200, 0, 0, 200, 200, 0, 0, 200, 0};
// Two triangles with the points 0 and 2 in common.
inline const std::vector<std::vector<int32_t>> kTwo{{0, 1, 2}, {0, 2, 3}};

// A layer element as the file has it. The data field's name goes with the type.
FbxRecord Normals(const std::string& mapping, const std::string& reference,
                  std::vector<double> values, std::vector<int32_t> index = {});
FbxRecord UVs(const std::string& name, const std::string& mapping, const std::string& reference,
              std::vector<double> values, std::vector<int32_t> index = {});
FbxRecord Colors(const std::string& mapping, const std::string& reference,
                 std::vector<double> values, std::vector<int32_t> index = {});
FbxRecord Materials(std::vector<int32_t> index);

class MeshScene {
 public:
  MeshScene();

  int64_t AddNode(const std::string& name, const std::string& type = "Null",
                  int64_t parent = SceneBuilder::kRoot, FbxRecords properties = {});
  // A node with a mesh of these points, polygons and elements; the first element of a type is that
  // of layer 0, the second that of layer 1. Returns the node; the geometry is in `geometry`.
  int64_t AddMesh(const std::string& name, std::vector<double> points,
                  const std::vector<std::vector<int32_t>>& polygons, FbxRecords elements = {},
                  int64_t parent = SceneBuilder::kRoot, FbxRecords nodeProperties = {});
  void AddMaterial(const std::string& name, int64_t node);
  // A skin of the last mesh.
  int64_t AddSkin();
  // `bone` 0 leaves the cluster without a link.
  int64_t AddCluster(int64_t skin, int64_t bone, std::vector<int32_t> points,
                     std::vector<double> weights, const std::string& mode = "Normalize");
  // A blend shape of the last mesh; a channel of it; a target shape of the channel.
  int64_t AddBlendShape();
  int64_t AddChannel(const std::string& name, int64_t blendShape);
  void AddTarget(int64_t channel, std::vector<int32_t> points, std::vector<double> offsets,
                 std::vector<double> normals = {});

  // Exports with `args` and returns what was printed.
  std::string Export();
  std::string List(bool print);
  // The mesh of that name as it was written; an empty mesh if there is none.
  CalCoreMesh Load(const std::string& name) const;
  // One of its submeshes; a test failure and an empty one if it isn't there.
  boost::shared_ptr<CalCoreSubmesh> Submesh(const std::string& name, size_t i = 0) const;
  bool HasFile(const std::string& name) const;

  SceneBuilder builder;
  int64_t geometry = 0;
  ConversionArguments args;
  std::unique_ptr<FbxWrapper> scene;  // once exported or listed
  bool succeeded = false;

 private:
  void LoadOnce();

  TempDir dir_;
};

// Vertex `i` of a submesh.
std::vector<float> PositionOf(const CalCoreSubmesh& submesh, size_t i);
std::vector<float> NormalOf(const CalCoreSubmesh& submesh, size_t i);
// As "bone:weight" in the order of the file, separated by blanks.
std::string InfluencesOf(const CalCoreSubmesh& submesh, size_t vertex);
std::vector<std::vector<int>> FacesOf(const CalCoreSubmesh& submesh);
