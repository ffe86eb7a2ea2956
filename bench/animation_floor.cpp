// What any converter must do at least: read the scene, inflate its arrays, and format the numbers
// of the animations that come out of it. Takes the scene and the exported animations, and prints
// the CPU seconds for that and the bytes of the inflated arrays: "<seconds> <bytes>".
//
// The formatted text holds the numbers alone, separated by blanks and line ends, and goes to the
// file named first.
#include <cstdio>
#include <string>
#include <vector>

#include "bench/floor.h"
#include "cal3d/io/loader.h"

namespace {

void AddAnimation(Formatter& formatter, const CalCoreAnimation& animation) {
  for (const CalCoreTrack& track : animation.tracks) {
    formatter.Add(track.coreBoneId, '\n');
    for (const CalCoreKeyframe& keyframe : track.keyframes) {
      formatter.Add(keyframe.time, '\n');
      formatter.Add(keyframe.translation.x, ' ');
      formatter.Add(keyframe.translation.y, ' ');
      formatter.Add(keyframe.translation.z, '\n');
      formatter.Add(keyframe.rotation.x, ' ');
      formatter.Add(keyframe.rotation.y, ' ');
      formatter.Add(keyframe.rotation.z, ' ');
      formatter.Add(keyframe.rotation.w, '\n');
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: animation_floor OUTPUT SCENE ANIMATION...\n");
    return 2;
  }
  std::vector<boost::shared_ptr<CalCoreAnimation>> animations;
  for (int i = 3; i < argc; ++i) {
    const std::string text = ReadWhole(argv[i]);
    animations.push_back(CalLoader::loadCoreAnimation(CalBufferSource(text.data(), text.size())));
  }

  const double start = CpuSeconds();
  const std::string scene = ReadScene(argv[2]);
  const uint64_t inflated = Inflater(scene).Run();
  {
    Formatter formatter(argv[1]);
    for (const auto& animation : animations) AddAnimation(formatter, *animation);
  }
  std::printf("%.3f %llu\n", CpuSeconds() - start, static_cast<unsigned long long>(inflated));
  return 0;
}
