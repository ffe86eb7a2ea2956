// A scene file with bones, morphing meshes and clips, in a few lines. Z is up and -Y front, so that
// loading converts nothing; there are 30 frames a second. Frames are given in that rate.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/fbx_builder.h"

class ClipScene {
 public:
  struct Clip {
    int64_t stack;
    int64_t layer;
  };
  using Frames = std::vector<double>;
  using Values = std::vector<float>;

  ClipScene();

  static int64_t Ticks(double frame) { return static_cast<int64_t>(frame * 1539538600.0); }

  // A node without a shape of its own, and a bone.
  int64_t Node(const std::string& name, int64_t parent = SceneBuilder::kRoot,
               FbxRecords properties = {}, const std::string& type = "Null");
  int64_t Bone(const std::string& name, int64_t parent = SceneBuilder::kRoot,
               FbxRecords properties = {});
  // A node with a triangle and one blend shape with these channels.
  struct Morphed {
    int64_t node;
    int64_t mesh;
    std::vector<int64_t> channels;
  };
  Morphed Mesh(const std::string& name, const std::vector<std::string>& channels = {},
               int64_t parent = SceneBuilder::kRoot);
  // Ties the first point of the mesh to the bone.
  void Skin(int64_t mesh, int64_t bone, double weight = 1.0);

  // A stack with one layer. The reference span is the local one unless `referenceStop` is given.
  Clip AddClip(const std::string& name, double start, double stop, double referenceStop = -1);
  int64_t AddLayer(const Clip& clip);
  // Keys of "TX" ... "SZ" of a node. Curves of one property share a curve node.
  void Key(int64_t layer, int64_t node, const std::string& channel, const Frames& frames,
           const Values& values);
  // The same by ticks, for times that are no frames.
  void KeyTicks(int64_t layer, int64_t node, const std::string& channel, std::vector<int64_t> times,
                Values values);
  // Keys of a blend shape channel, in percent.
  void KeyMorph(int64_t layer, int64_t channel, const Frames& frames, const Values& values);

  SceneBuilder builder;

 private:
  std::map<std::string, int64_t> curveNodes_;  // by layer, node and property
};
