// Writes a scene of one rig and many clips, every channel of every bone keyed on every frame.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "tests/support/scene_builder.h"

namespace {

// Chains of this many bones hang on the first one.
constexpr int kChain = 8;

void KeyBone(SceneBuilder& scene, const SceneBuilder::Clip& clip, int64_t bone, double phase,
             const SceneBuilder::Frames& frames) {
  for (const char* property : {"T", "R", "S"}) {
    for (const char* axis : {"X", "Y", "Z"}) {
      phase += 1.3;
      SceneBuilder::Values values;
      for (const double frame : frames) {
        const double wave = std::sin(frame * 0.05 + phase);
        const double value = *property == 'T'   ? 10.0 * wave
                             : *property == 'R' ? 45.0 * wave
                                                : 1.0 + 0.01 * wave;
        values.push_back(static_cast<float>(value));
      }
      scene.Key(clip.layer, bone, std::string(property) + axis, frames, values);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fprintf(stderr, "usage: make_animation_scene FILE BONES CLIPS FRAMES\n");
    return 2;
  }
  const int bones = std::atoi(argv[2]);
  const int clips = std::atoi(argv[3]);
  const int length = std::atoi(argv[4]);
  SceneBuilder scene;
  std::vector<int64_t> rig;
  for (int i = 0; i < bones; ++i) {
    const int64_t parent = rig.empty()       ? SceneBuilder::kRoot
                           : i % kChain == 1 ? rig.front()
                                             : rig.back();
    rig.push_back(scene.Bone("bone" + std::to_string(i), parent));
  }
  SceneBuilder::Frames frames;
  for (int frame = 0; frame < length; ++frame) frames.push_back(frame);
  for (int i = 0; i < clips; ++i) {
    const SceneBuilder::Clip clip = scene.AddClip("clip" + std::to_string(i), 0, length - 1);
    double phase = i;
    for (const int64_t bone : rig) KeyBone(scene, clip, bone, phase += 0.7, frames);
  }
  std::ofstream file(argv[1], std::ios::binary);
  file << scene.Write({.compress = true});
  return file.flush() ? 0 : 1;
}
