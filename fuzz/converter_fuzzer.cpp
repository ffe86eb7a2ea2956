// Takes a block as a scene file through the whole road of the program: listings and exports of
// every kind, for rooms and groups, with renaming, axes and scales, into a folder of this process.
// What comes out must be whole: no temporary file stays, and the loaders can read every file.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <unistd.h>

#include "cal3d/io/loader.h"
#include "converter/driver/command_set.h"
#include "converter/driver/session.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/scene/node_paths.h"
#include "converter/skeleton/skeleton_roots.h"

namespace {

namespace fs = std::filesystem;

// More roots and names than these add time, and few new ways.
constexpr size_t kMostRoots = 3;
constexpr size_t kMostNames = 4;

// The scene and its outputs, gone when the process ends as it should.
class Folder {
 public:
  Folder() : path_(fs::temp_directory_path() / ("veltrum-fuzz-" + std::to_string(getpid()))) {}
  ~Folder() { fs::remove_all(path_); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  const fs::path& Path() const { return path_; }
  std::string Scene() const { return path_ / "s.fbx"; }
  std::string Outputs() const { return path_ / "out/"; }
  // Nothing but a scene of these bytes.
  void Renew(const char* bytes, size_t size) const {
    fs::remove_all(path_);
    fs::create_directories(Outputs());
    std::ofstream(Scene(), std::ios::binary).write(bytes, static_cast<std::streamsize>(size));
  }

 private:
  fs::path path_;
};

const Folder& TheFolder() {
  static const Folder kFolder;
  return kFolder;
}

std::vector<ConversionArguments> Variants() {
  ConversionArguments plain;
  plain.commandVersion = 2;
  plain.inputFilename = TheFolder().Scene();
  plain.directoryForOutputFiles = TheFolder().Outputs();

  ConversionArguments room = plain;
  room.treatAsRoom = true;
  room.renameRoomNodes = true;
  room.groupMeshes = true;
  room.verbosity = 3;
  room.upAxis = "y";
  room.frontAxis = "-x";
  room.coordinateSystem = "left";

  ConversionArguments scaled = plain;
  scaled.scaleFactor = -2.5F;
  scaled.useEvaluatedLocal = true;
  scaled.encodeNames = true;
  scaled.normalizeWeight = true;
  return {plain, room, scaled};
}

std::vector<std::string> NamesOf(const AnimationMap& animations, const std::string& root) {
  std::vector<std::string> names;
  const auto list = animations.find(root);
  if (list == animations.end()) return names;
  for (const AnimationInfoHolder& holder : list->second) {
    if (names.size() < kMostNames) names.push_back(holder.fileName);
  }
  return names;
}

void Run(Session& session, ConversionArguments args, ModeType mode, int types,
         std::vector<std::string> names = {}) {
  args.mode = mode;
  args.type = static_cast<ObjectType>(types);
  args.exportObjectNames = std::move(names);
  processCommandSet(args, session);
}

void RunAll(Session& session, ConversionArguments args) {
  Run(session, args, LIST_MODE, ALL_OBJECT);
  std::vector<std::string> roots = {"RootNode", "find"};
  for (const FbxNode* root : BuildRootList(&session.SceneOf(args), args)) {
    if (roots.size() < kMostRoots) roots.push_back(BuildRootNodeName(root, nullptr));
  }
  for (const std::string& root : roots) {
    args.skeletonRootPath = root;
    Run(session, args, LIST_MODE, ALL_OBJECT);
    Run(session, args, EXPORT_MODE, NODE_OBJECT, {"Skeleton"});
    Run(session, args, EXPORT_MODE, MESH_OBJECT | TEXTURE_OBJECT);
    const AnimationCache& animations = session.AnimationsOf(args);
    Run(session, args, EXPORT_MODE, ANIM_OBJECT, NamesOf(animations.skeletalAnimations, root));
    Run(session, args, EXPORT_MODE, MORPHANIM_OBJECT, NamesOf(animations.morphAnimations, root));
  }
}

void CheckOutput(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  const CalBufferSource source(bytes.data(), bytes.size());
  const std::string extension = path.extension();
  // What these throw ends the run, as it should.
  if (extension == ".xsf") {
    CalLoader::loadCoreSkeleton(source);
  } else if (extension == ".xmf") {
    CalLoader::loadCoreMesh(source);
  } else if (extension == ".xrf") {
    CalLoader::loadCoreMaterial(source);
  } else if (extension == ".xaf") {
    CalLoader::loadCoreAnimation(source);
  } else if (extension == ".xpf") {
    CalLoader::loadCoreMorphAnimation(source);
  } else {
    std::abort();  // a temporary file, or one of no kind
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  if (std::freopen("/dev/null", "w", stdout) == nullptr) std::abort();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  TheFolder().Renew(reinterpret_cast<const char*>(data), size);
  Session session;
  try {
    for (const ConversionArguments& args : Variants()) RunAll(session, args);
  } catch (const FbxInitException&) {
    return 0;  // no scene
  } catch (const FbxImportException&) {
    return 0;
  }
  for (const auto& entry : fs::directory_iterator(TheFolder().Outputs())) {
    CheckOutput(entry.path());
  }
  return 0;
}
