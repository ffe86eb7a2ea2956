#include "programs/veltrum-all/export_scene.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "cal3d/io/output_file.h"
#include "cal3d/io/saver.h"
#include "converter/base/complaint.h"
#include "converter/base/names.h"
#include "converter/base/records.h"
#include "converter/driver/export_commands.h"
#include "converter/driver/list_commands.h"
#include "converter/driver/material_export.h"
#include "converter/driver/session.h"
#include "converter/material/material_text.h"
#include "converter/mesh/export_mesh.h"
#include "converter/scene/node_paths.h"

namespace fs = std::filesystem;

namespace {

// What the converter says about things that went another way than one would think, by a word that
// stays the same for tools that count them.
constexpr char kOther[] = "other";
constexpr char kExportError[] = "export";
struct Kind {
  const char* word;
  const char* text;  // stands in the message
};
constexpr std::array kKinds{
    Kind{"size", " times the size of an ZEVO avatar"},
    Kind{"empty-mesh", " has no geometry"},
    Kind{"texture-use", " is not a supported use for texture map "},
    Kind{"texture-layers", " texture layers on "},
    Kind{"transparency", " is not consistant"},
    Kind{"renamed", " is renamed "},
    Kind{"camera-added", "Adding camera"},
    Kind{"skin-mode", "Unsupported cluster mode"},
    Kind{"morph-points", "Irregular morph target point count"},
    Kind{"morph-count", " has too many morphed vertices"},
    Kind{"missing-point", "control point"},
    Kind{"foreign-bone", " which is not in the specified skeleton hierarchy"},
};

const char* KindOf(const std::string& text) {
  const auto* kind = std::find_if(kKinds.begin(), kKinds.end(), [&text](const Kind& candidate) {
    return text.find(candidate.text) != std::string::npos;
  });
  return kind == kKinds.end() ? kOther : kind->word;
}

// The records that the exporters print, as messages. They say what a message is about by what they
// write next, and for an empty mesh in the text.
class Messages {
 public:
  explicit Messages(SceneReport& report) : report_(report) {
    RedirectOutput([this](std::string_view text) { Take(text); });
    RedirectComplaints([this](std::string_view text) { TakeComplaint(std::string(text)); });
  }
  ~Messages() {
    Belong("");
    RedirectOutput({});
    RedirectComplaints({});
  }
  Messages(const Messages&) = delete;
  Messages& operator=(const Messages&) = delete;

  // The messages since the last call are about this.
  void Belong(const std::string& about) {
    for (Message& message : waiting_) {
      message.about = about;
      (message.kind == kExportError ? report_.errors : report_.warnings)
          .push_back(std::move(message));
    }
    waiting_.clear();
    counts_.clear();
  }
  // The last complaint, which is no message then.
  std::string TakeLastComplaint() {
    waiting_.clear();
    counts_.clear();
    return std::exchange(lastComplaint_, {});
  }

 private:
  void Take(std::string_view text) {
    for (const char c : text) {
      if (c != '\n') {
        line_ += c;
      } else {
        TakeLine(std::exchange(line_, {}));
      }
    }
  }

  void TakeLine(const std::string& line) {
    constexpr std::string_view kWarning = "WARNING: ";
    constexpr std::string_view kError = "ERROR: ";
    constexpr std::string_view kEmptyMesh = " has no geometry";
    if (line.starts_with(kWarning)) {
      const std::string text = line.substr(kWarning.size());
      Add(KindOf(text), text);
      if (text.ends_with(kEmptyMesh)) Belong(text.substr(0, text.size() - kEmptyMesh.size()));
    } else if (line.starts_with(kError)) {
      // An error after which the file is written all the same is a warning here.
      const std::string text = line.substr(kError.size());
      const std::string kind = KindOf(text);
      Add(kind == kOther ? kExportError : kind, text);
    }
  }

  void TakeComplaint(const std::string& text) {
    lastComplaint_ = text;
    // The gate of the files has told it already.
    if (text.ends_with(" can't be written: " + CalSaver::lastError())) return;
    Add(KindOf(text), text);
  }

  // A message for each vertex, say, is one message.
  void Add(const std::string& kind, const std::string& text) {
    const auto [known, isNew] = counts_.try_emplace(text, waiting_.size());
    if (isNew) {
      waiting_.push_back({kind, "", text});
    } else {
      ++waiting_[known->second].count;
    }
  }

  SceneReport& report_;
  std::vector<Message> waiting_;
  std::unordered_map<std::string, size_t> counts_;  // from text to place in waiting_
  std::string line_;
  std::string lastComplaint_;
};

// Copies a file, whole or not at all. Returns the errno of what failed, 0 if nothing did.
int CopyWhole(const std::string& from, const std::string& to) {
  std::ifstream source(from, std::ios::binary);
  OutputFile copy(to);
  while (source) {
    char* at = copy.Room();
    source.read(at, OutputFile::kRoom);
    copy.Advance(at + source.gcount());
  }
  if (!source.eof()) return EIO;
  return copy.Commit() ? 0 : copy.Error();
}

class SceneExport {
 public:
  SceneExport(const Options& options, std::string scene, std::string folder, SceneReport& report)
      : options_(options),
        scene_(std::move(scene)),
        folder_(std::move(folder)),
        report_(report),
        messages_(report) {
    CalSaver::setGate(
        [this](const std::string& path, const CalObject& object,
               const std::function<bool()>& write) { return Save(path, object, write); });
  }
  ~SceneExport() { CalSaver::setGate({}); }
  SceneExport(const SceneExport&) = delete;
  SceneExport& operator=(const SceneExport&) = delete;

  void Load() { session_.SceneOf(SceneArguments()); }
  void Run();
  // Warns of files that take each other's place on a disk where case doesn't count.
  void CompareCases();
  // Why the scene can't be loaded.
  std::string LoadFault() { return messages_.TakeLastComplaint(); }

 private:
  ConversionArguments SceneArguments() const {
    ConversionArguments args = options_.args;
    args.inputFilename = scene_;
    return args;
  }
  // The skeleton's report and folder become those at work.
  ConversionArguments Enter(const ListedSkeleton& skeleton, size_t index);
  bool Wants(ObjectType type) const { return (options_.args.type & type) != 0; }
  void ExportContent(const std::vector<std::string>& meshNames, const ConversionArguments& args);
  void AddAnimations(const AnimationMap& animations, const ConversionArguments& args, bool morphs);
  void AddMaterials(FbxWrapper& scene, const ConversionArguments& args);
  void FindTexture(MaterialReport::Map& map, const std::string& folder);
  bool Save(const std::string& path, const CalObject& object, const std::function<bool()>& write);
  void Describe(const std::string& file, const CalCoreSkeleton& object);
  void Describe(const std::string& file, const CalCoreMesh& object);
  void Describe(const std::string& file, const CalCoreMaterial& object);
  void Describe(const std::string& file, const CalCoreAnimation& object);
  void Describe(const std::string& file, const CalCoreMorphAnimation& object);
  void AddError(const char* kind, const std::string& about, const std::string& text) {
    report_.errors.push_back({kind, about, text});
  }
  // Enters the file with the object that it was made from; null if there is none.
  template <typename Report>
  Report* Written(std::vector<Report>& reports, const std::string& file, const char* extension) {
    for (Report& report : reports) {
      if (place_ + urlencode(report.name) + extension != file) continue;
      report.file = file;
      return &report;
    }
    return nullptr;
  }
  // A path as the manifest has it.
  std::string Relative(const std::string& path) const {
    return path.substr(options_.directory.size());
  }

  const Options& options_;
  const std::string scene_;
  const std::string folder_;         // relative to the output folder
  std::vector<std::string> places_;  // the folders of the skeletons, likewise
  std::string place_;                // of the skeleton at work
  SceneReport& report_;
  Messages messages_;
  Session session_;
  SkeletonReport* skeleton_ = nullptr;         // at work
  std::map<std::string, std::string> copies_;  // of textures, by where they came from
};

// A scene may come from anywhere and may name any file of the machine as a texture.
bool HasPictureName(const std::string& name) {
  constexpr std::array<std::string_view, 13> kExtensions = {
      ".png", ".jpg",  ".jpeg", ".tga", ".bmp", ".dds", ".tif",
      ".gif", ".tiff", ".psd",  ".hdr", ".exr", ".webp"};
  const std::string extension = ToLower(fs::path(name).extension().string());
  return std::find(kExtensions.begin(), kExtensions.end(), extension) != kExtensions.end();
}

// The scene's root has a name for people only.
std::string NameOf(const ListedSkeleton& skeleton) {
  return skeleton.path == kRootNodeName ? skeleton.path : skeleton.friendlyName;
}

ConversionArguments SceneExport::Enter(const ListedSkeleton& skeleton, size_t index) {
  skeleton_ = &report_.skeletons[index];
  place_ = places_[index];
  ConversionArguments args = SceneArguments();
  args.skeletonRootPath = skeleton.path;
  args.directoryForOutputFiles = options_.directory + place_;
  return args;
}

void SceneExport::Run() {
  const ConversionArguments args = SceneArguments();
  std::vector<ListedSkeleton> skeletons = SkeletonsToList(session_.SceneOf(args), args);
  if (skeletons.empty()) skeletons.push_back({std::string(kRootNodeName), "", {}, 0});
  std::set<std::string> taken;
  for (const ListedSkeleton& skeleton : skeletons) {
    report_.skeletons.emplace_back();
    report_.skeletons.back().name = NameOf(skeleton);
    report_.skeletons.back().root = skeleton.path;
    places_.push_back(folder_);
    if (skeletons.size() > 1)
      places_.back() += UniqueName(urlencode(NameOf(skeleton)), taken) + "/";
    if (!options_.dryRun) fs::create_directories(options_.directory + places_.back());
  }
  for (size_t i = 0; i < skeletons.size(); ++i) {
    ExportContent(skeletons[i].meshNames, Enter(skeletons[i], i));
  }
  // At the end, since a room's names and ambient light change the scene for all exports behind it.
  if (!Wants(NODE_OBJECT)) return;
  for (size_t i = 0; i < skeletons.size(); ++i) {
    ConversionArguments bones = Enter(skeletons[i], i);
    bones.exportObjectNames = {NameOf(skeletons[i])};
    if (bones.treatAsRoom && i != 0) session_.DropScene();
    ExportSkeletons(session_.SceneOf(bones), bones);
  }
}

void SceneExport::ExportContent(const std::vector<std::string>& meshNames,
                                const ConversionArguments& args) {
  FbxWrapper& scene = session_.SceneOf(args);
  if (Wants(ANIM_OBJECT)) {
    AddAnimations(session_.AnimationsOf(args).skeletalAnimations, args, false);
  }
  if (Wants(MORPHANIM_OBJECT)) {
    AddAnimations(session_.AnimationsOf(args).morphAnimations, args, true);
  }
  // No names would mean all meshes of the scene.
  if (Wants(MESH_OBJECT) && !meshNames.empty()) {
    ConversionArguments meshes = args;
    meshes.exportObjectNames = meshNames;
    for (const std::string& name : meshNames) skeleton_->meshes.push_back({name, "", {}});
    ExportMeshes(scene, meshes);
    std::erase_if(skeleton_->meshes, [](const MeshReport& mesh) { return mesh.file.empty(); });
  }
  if (Wants(TEXTURE_OBJECT)) AddMaterials(scene, args);
}

void SceneExport::AddAnimations(const AnimationMap& animations, const ConversionArguments& args,
                                bool morphs) {
  const auto list = animations.find(args.skeletonRootPath);
  if (list == animations.end()) return;
  ConversionArguments selected = args;
  for (const AnimationInfoHolder& holder : list->second) {
    selected.exportObjectNames.push_back(holder.fileName);
    AnimationReport animation;
    animation.name = holder.fileName;
    animation.isMorph = morphs;
    animation.start = holder.info.startFrame;
    animation.end = holder.info.endFrame;
    animation.rate = holder.info.timeMode;
    skeleton_->animations.push_back(std::move(animation));
  }
  if (morphs) {
    ExportMorphAnimations(session_, selected);
  } else {
    ExportAnimations(session_, selected);
  }
  std::erase_if(skeleton_->animations,
                [](const AnimationReport& animation) { return animation.file.empty(); });
}

void SceneExport::AddMaterials(FbxWrapper& scene, const ConversionArguments& args) {
  const MaterialMasterMap master =
      BuildMaterialMasterMap(ExportMesh(scene, args).ListMeshesForSkeleton().meshes);
  for (const auto& [map, id] : master) {
    if (map.empty()) continue;
    MaterialReport material;
    material.id = id;
    material.name = MaterialName(map);
    for (const auto& [channel, file] : map) {
      if (channel == _MATERIAL || !isSupportedTextureType(channel)) continue;
      // A name made up for a colour or an opacity ends in the channel.
      const bool isPlain = file.ends_with('-' + channel) && getFileNameFromPath(file) == file;
      material.maps.push_back({getCal3dTextureType(channel), file, "", "", isPlain});
    }
    skeleton_->materials.push_back(std::move(material));
  }
  ExportMaterials(scene, args);
  for (MaterialReport& material : skeleton_->materials) {
    for (MaterialReport::Map& map : material.maps) FindTexture(map, args.directoryForOutputFiles);
  }
}

void SceneExport::FindTexture(MaterialReport::Map& map, const std::string& folder) {
  const std::string name = getFileNameFromPath(map.file);
  if (map.isPlain) return;
  const fs::path beside = fs::path(scene_).parent_path();
  const std::array places{beside / map.file, beside / name, fs::path(GetMediaFolder(scene_)) / name,
                          beside / "textures" / name, beside / "_textures" / name};
  const auto* place = std::find_if(places.begin(), places.end(), [](const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
  });
  if (place == places.end()) {
    report_.warnings.push_back(
        {"missing-texture", map.file, "texture " + map.file + " is not there"});
    return;
  }
  map.found = place->string();
  if (!options_.copyTextures) return;
  if (!HasPictureName(name)) {
    report_.warnings.push_back({"texture-kind", map.file,
                                "texture " + map.file + " isn't copied: its name is no picture's"});
    return;
  }
  const std::string copy = folder + name;
  map.copy = Relative(copy);
  if (const auto [known, isNew] = copies_.try_emplace(copy, map.found); !isNew) {
    if (known->second != map.found) {
      report_.warnings.push_back(
          {"texture-name", map.file,
           "texture " + map.found + " has the name of " + known->second + ", which was copied"});
    }
    return;
  }
  if (!options_.dryRun) {
    if (const int error = CopyWhole(map.found, copy); error != 0) {
      AddError("texture", map.file, copy + ": " + std::generic_category().message(error));
      copies_.erase(copy);
      map.copy.clear();
      return;
    }
  }
  report_.files.push_back(map.copy);
}

void SceneExport::CompareCases() {
  std::map<std::string, std::string> files;
  for (const std::string& file : report_.files) {
    const auto [known, isNew] = files.try_emplace(ToLower(file), file);
    if (isNew || known->second == file) continue;
    report_.warnings.push_back(
        {"case", file, "file " + file + " differs from " + known->second + " in case alone"});
  }
}

bool SceneExport::Save(const std::string& path, const CalObject& object,
                       const std::function<bool()>& write) {
  const std::string file = Relative(path);
  messages_.Belong(file);
  if (!options_.dryRun && !write()) {
    AddError("write", file, path + ": " + CalSaver::lastError());
    return false;
  }
  report_.files.push_back(file);
  std::visit([this, &file](const auto* model) { Describe(file, *model); }, object);
  return true;
}

void SceneExport::Describe(const std::string& file, const CalCoreSkeleton& object) {
  skeleton_->file = file;
  for (const auto& bone : object.coreBones) {
    skeleton_->bones.push_back({bone->name, bone->parentId});
  }
}

void SceneExport::Describe(const std::string& file, const CalCoreMesh& object) {
  MeshReport* mesh = Written(skeleton_->meshes, file, ".xmf");
  if (mesh == nullptr) return;
  for (const auto& submesh : object.submeshes) {
    SubmeshReport report;
    report.material = submesh->coreMaterialThreadId;
    report.vertices = static_cast<int64_t>(submesh->vertices().size());
    report.faces = static_cast<int64_t>(submesh->faces().size());
    for (const auto& target : submesh->morphTargets())
      report.morphTargets.push_back(target->name());
    mesh->submeshes.push_back(std::move(report));
  }
}

void SceneExport::Describe(const std::string& file, const CalCoreMaterial& /*object*/) {
  Written(skeleton_->materials, file, ".xrf");
}

void SceneExport::Describe(const std::string& file, const CalCoreAnimation& object) {
  AnimationReport* animation = Written(skeleton_->animations, file, ".xaf");
  if (animation == nullptr) return;
  animation->duration = object.duration;
  animation->tracks = static_cast<int64_t>(object.tracks.size());
  for (const CalCoreTrack& track : object.tracks) {
    animation->keys += static_cast<int64_t>(track.keyframes.size());
  }
}

void SceneExport::Describe(const std::string& file, const CalCoreMorphAnimation& object) {
  AnimationReport* animation = Written(skeleton_->animations, file, ".xpf");
  if (animation == nullptr) return;
  animation->duration = object.duration;
  animation->tracks = static_cast<int64_t>(object.tracks.size());
  for (const CalCoreMorphTrack& track : object.tracks) {
    animation->keys += static_cast<int64_t>(track.keyframes.size());
  }
}

void ExportInto(SceneReport& report, const Options& options, const std::string& scene,
                const std::string& folder) {
  SceneExport job(options, scene, folder, report);
  std::string reason;
  try {
    job.Load();
  } catch (const FbxInitException&) {
    reason = job.LoadFault();
  } catch (const FbxImportException&) {
    reason = job.LoadFault();
  } catch (const FbxMissingException& missing) {
    reason = missing.complaint;
  } catch (const std::exception& exception) {
    reason = exception.what();
  }
  if (!reason.empty()) {
    report.state = SceneReport::kUnreadable;
    report.errors.push_back({"unreadable", report.fileName, reason});
    return;
  }
  try {
    job.Run();
    job.CompareCases();
  } catch (const std::exception& exception) {
    report.errors.push_back({"exception", report.fileName, exception.what()});
  }
}

}  // namespace

std::string UniqueName(const std::string& name, std::set<std::string>& taken) {
  std::string unique = name;
  for (int number = 2; !taken.insert(ToLower(unique)).second; ++number) {
    unique = name + '_' + std::to_string(number);
  }
  return unique;
}

SceneReport ExportScene(const Options& options, const std::string& scene, const std::string& name,
                        const std::string& folder) {
  SceneReport report;
  report.name = name;
  report.fileName = getBaseFilenameWithExtension(scene);
  ExportInto(report, options, scene, folder);
  if (report.state != SceneReport::kUnreadable && !report.errors.empty()) {
    report.state = SceneReport::kPartial;
  }
  return report;
}
