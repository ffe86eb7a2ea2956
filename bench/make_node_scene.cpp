// Writes a scene of many nodes and little else: a tree of bones with small meshes among them, the
// properties that a modelling tool stores with each, and templates for the rest.
//
//   make_node_scene FILE NODES MESHES
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "tests/support/scene_builder.h"

namespace {

constexpr int kChildren = 4;

FbxRecords NodeProperties(int number) {
  return {P("RotationActive", "bool", "", "", {1}),
          P("InheritType", "enum", "", "", {1}),
          P("DefaultAttributeIndex", "int", "Integer", "", {0}),
          P("Lcl Translation", {number % 7, number % 11, 1.5}),
          P("Lcl Rotation", {number % 90, 0, 30}),
          P("Lcl Scaling", {1, 1, 1})};
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: make_node_scene FILE NODES MESHES\n");
    return 2;
  }
  const int meshes = std::atoi(argv[3]);
  const int bones = std::atoi(argv[2]) - meshes;
  SceneBuilder scene;
  scene.AddTemplate("Model", "FbxNode", NodeProperties(0));
  const int64_t material = scene.AddMaterial("skin");
  std::vector<int64_t> nodes = {SceneBuilder::kRoot};
  for (int i = 0; i < bones; ++i) {
    const int64_t parent = nodes[static_cast<size_t>((i + kChildren - 1) / kChildren)];
    nodes.push_back(scene.Bone("bone" + std::to_string(i), parent, NodeProperties(i)));
  }
  for (int i = 0; i < meshes; ++i) {
    const auto parent = static_cast<size_t>(1 + int64_t{i} * bones / meshes);
    const auto ids = scene.Mesh("mesh" + std::to_string(i), {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0},
                                {{0, 1, 2, 3}}, {Materials({0})}, nodes[parent], NodeProperties(i));
    scene.Connect(material, ids.node);
  }
  std::ofstream file(argv[1], std::ios::binary);
  file << scene.Write({.compress = true});
  return file.flush() ? 0 : 1;
}
