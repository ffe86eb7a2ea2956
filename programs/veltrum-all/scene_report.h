// What came of one scene: the account that the manifest is written from.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct BoneReport {
  std::string name;
  int32_t parent = -1;  // index among the bones
};

struct SubmeshReport {
  int32_t material = 0;  // id
  int64_t vertices = 0;
  int64_t faces = 0;
  std::vector<std::string> morphTargets;
};

struct MeshReport {
  std::string name;  // unique in the scene
  std::string file;
  std::vector<SubmeshReport> submeshes;
};

struct MaterialReport {
  struct Map {
    std::string type;      // as the material file has it
    std::string file;      // as the scene has it
    std::string found;     // where it lies; empty if nowhere
    std::string copy;      // of --textures; empty if there is none
    bool isPlain = false;  // a colour or an opacity that stands in for a texture
  };
  int32_t id = 0;
  std::string name;
  std::string file;  // empty if none was written: a material without maps has none
  std::vector<Map> maps;
};

struct AnimationReport {
  std::string name;
  std::string file;
  bool isMorph = false;
  int64_t start = 0;  // in thirtieths of a second
  int64_t end = 0;
  std::string rate;       // the scene's, as listings say it
  float duration = 0.0F;  // of the file, seconds
  int64_t tracks = 0;
  int64_t keys = 0;
};

struct SkeletonReport {
  std::string name;
  std::string root;  // node path
  std::string file;
  std::vector<BoneReport> bones;
  std::vector<MeshReport> meshes;
  std::vector<MaterialReport> materials;
  std::vector<AnimationReport> animations;
};

struct Message {
  std::string kind;   // a word that is the same for all messages of a cause
  std::string about;  // the file or name that it is about; empty if none is known
  std::string text;
  int64_t count = 1;  // how often it was said
};

// All files are relative to the output folder.
struct SceneReport {
  enum State { kDone, kPartial, kUnreadable };

  State state = kDone;
  std::string name;      // unique in the run; the manifest's
  std::string fileName;  // of the scene, without folders
  std::vector<SkeletonReport> skeletons;
  std::vector<std::string> files;  // in the order in which they were written
  std::vector<Message> warnings;
  std::vector<Message> errors;
};
