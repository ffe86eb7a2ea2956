#include "programs/veltrum-view/model_files.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <nlohmann/json.hpp>

#include "cal3d/io/file_format.h"
#include "cal3d/io/input_file.h"
#include "cal3d/io/loader.h"

namespace fs = std::filesystem;

namespace {

using ManifestJson = nlohmann::json;

std::string LowerExtension(const std::string& path) {
  std::string extension = fs::path(path).extension().string();
  std::ranges::transform(extension, extension.begin(), AsciiLower);
  return extension;
}

bool IsOfKind(const std::string& path, const CalFileKind& kind) {
  const std::string extension = LowerExtension(path);
  return extension == kind.extension || extension == kind.binaryExtension;
}

bool IsManifest(const std::string& path) { return LowerExtension(path) == ".json"; }

bool IsOurs(const std::string& path) {
  return IsManifest(path) || std::ranges::any_of(kFileKinds, [&path](const CalFileKind& kind) {
           return IsOfKind(path, kind);
         });
}

std::string NameOf(const std::string& path) { return fs::path(path).filename().string(); }

// One text for one file, however a path leads there.
std::string WholePath(const fs::path& path) {
  std::error_code error;
  const fs::path whole = fs::weakly_canonical(path, error);
  return (error ? path : whole).string();
}

// The slot that an artist wrote into a material's name, whose file's name may be encoded.
std::optional<int32_t> SlotOf(const std::string& file) {
  static const std::regex slot("(?:\\[|%5[Bb])([0-9]{1,6})(?:\\]|%5[Dd])");
  std::smatch found;
  if (!std::regex_search(file, found, slot)) return {};
  return std::stoi(found[1]);
}

class ModelLoader {
 public:
  LoadedModel Load(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
      Try([&] { Collect(path); });
    }
    // The manifest first: it numbers the materials.
    for (const std::string& file : files_) {
      if (IsManifest(file)) Try([&] { LoadManifest(file); });
    }
    for (const std::string& file : files_) {
      if (!IsManifest(file)) Try([&] { LoadFile(file); });
    }
    NumberMaterials();
    if (loaded_.model.name.empty()) loaded_.model.name = DefaultName();
    return std::move(loaded_);
  }

 private:
  template <typename Work>
  void Try(const Work& work) {
    try {
      work();
    } catch (const std::exception& error) {
      loaded_.errors.emplace_back(error.what());
    }
  }

  void Collect(const std::string& path) {
    if (!fs::is_directory(path)) {
      if (!IsOurs(path) && !fs::exists(path)) {
        throw std::runtime_error("'" + path + "' can't be opened: No such file or directory");
      }
      files_.push_back(path);
      return;
    }
    std::vector<std::string> found;
    std::vector<std::string> folders;
    for (const fs::directory_entry& entry : fs::directory_iterator(path)) {
      std::error_code ignored;
      if (entry.is_directory(ignored)) folders.push_back(NameOf(entry.path()));
      if (entry.is_regular_file(ignored) && IsOurs(entry.path())) found.push_back(entry.path());
    }
    if (std::ranges::all_of(found, IsManifest)) {
      std::ranges::sort(folders);
      std::string text = "'" + path + "' holds no Cal3D files";
      if (!folders.empty()) text += "; there may be some in its folder " + folders[0];
      throw std::runtime_error(text);
    }
    std::ranges::sort(found);
    if (std::ranges::none_of(found, IsManifest)) LookAbove(path);
    files_.insert(files_.end(), found.begin(), found.end());
  }

  // The manifest of a scene with several skeletons lies above their folders, or beside the scene's
  // folder and named like it. It counts only for the files that it names, so others may lie there
  // too.
  void LookAbove(const std::string& folder) {
    std::vector<std::string> manifests;
    const std::string beside = WholePath(fs::path(folder) / "..") + ".json";
    if (fs::is_regular_file(beside)) manifests.push_back(beside);
    for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(folder) / "..")) {
      std::error_code ignored;
      if (entry.is_regular_file(ignored) && IsManifest(entry.path())) {
        manifests.push_back(entry.path());
      }
    }
    std::ranges::sort(manifests);
    for (const std::string& path : manifests) {
      const ManifestJson manifest = ManifestJson::parse(ReadInputFile(path), nullptr, false);
      if (!manifest.is_object()) continue;
      TakeAllMaterials(manifest, path, false);
      TakeMessagesOf(folder, manifest, path);
    }
  }

  // What a manifest elsewhere tells, if files in the folder are from its scene: all but what is
  // about files that lie in other folders.
  void TakeMessagesOf(const std::string& folder, const ManifestJson& manifest,
                      const std::string& path) {
    const auto files = manifest.find("files");
    if (files == manifest.end() || !files->is_array()) return;
    bool isOfScene = false;
    std::set<std::string> elsewhere;
    for (const ManifestJson& file : *files) {
      if (!file.is_string()) continue;
      const std::string name = file.get<std::string>();
      if (WholePath((fs::path(path).parent_path() / name).parent_path()) == WholePath(folder)) {
        isOfScene = true;
      } else {
        elsewhere.insert(name);
      }
    }
    if (isOfScene) TakeMessages(manifest, elsewhere);
  }

  void TakeMessages(const ManifestJson& manifest, const std::set<std::string>& elsewhere) {
    for (const char* kind : {"warnings", "errors"}) {
      const auto messages = manifest.find(kind);
      if (messages == manifest.end() || !messages->is_array()) continue;
      for (const ManifestJson& message : *messages) {
        const bool isObject = message.is_object();
        if (isObject && message.contains("about") && message["about"].is_string() &&
            elsewhere.contains(message["about"].get<std::string>())) {
          continue;
        }
        const ManifestJson& text = isObject && message.contains("text") ? message["text"] : message;
        if (text.is_string()) loaded_.notes.warnings.push_back(text.get<std::string>());
      }
    }
  }

  void LoadManifest(const std::string& path) {
    const std::string bytes = ReadInputFile(path);
    const ManifestJson manifest = ManifestJson::parse(bytes, nullptr, false);
    if (!manifest.is_object())
      throw std::runtime_error("'" + path + "' is no manifest: no JSON object");
    TakeAllMaterials(manifest, path, true);
    if (loaded_.model.name.empty()) loaded_.model.name = FileStem(NameOf(path));
    TakeMessages(manifest, {});
  }

  // Several skeletons have their materials each.
  void TakeAllMaterials(const ManifestJson& manifest, const std::string& path, bool alsoByName) {
    TakeMaterials(manifest, path, alsoByName);
    const auto skeletons = manifest.find("skeletons");
    if (skeletons == manifest.end() || !skeletons->is_array()) return;
    for (const ManifestJson& skeleton : *skeletons) {
      if (skeleton.is_object()) TakeMaterials(skeleton, path, alsoByName);
    }
  }

  // Numbers of materials by their files, whose paths begin at the manifest; with `alsoByName` also
  // by their names alone, for files that have been moved.
  void TakeMaterials(const ManifestJson& owner, const std::string& path, bool alsoByName) {
    const auto materials = owner.find("materials");
    if (materials == owner.end() || !materials->is_array()) return;
    for (const ManifestJson& material : *materials) {
      if (!material.is_object() || !material.contains("id") || !material.contains("file")) continue;
      const ManifestJson& id = material["id"];
      const ManifestJson& file = material["file"];
      if (!id.is_number_integer() || !file.is_string()) continue;
      const fs::path place = fs::path(path).parent_path() / file.get<std::string>();
      numbers_.emplace(WholePath(place), id.get<int32_t>());
      if (alsoByName) numbersByName_.emplace(NameOf(place), id.get<int32_t>());
    }
  }

  void LoadFile(const std::string& path) {
    if (!IsOurs(path)) {
      throw std::runtime_error("'" + path + "' has a name of no kind that can be shown");
    }
    const std::string bytes = ReadInputFile(path);
    const CalBufferSource source(bytes.data(), bytes.size());
    ViewModel& model = loaded_.model;
    try {
      if (IsOfKind(path, kSkeletonFile)) {
        TakeSkeleton(path, CalLoader::loadCoreSkeleton(source));
      } else if (IsOfKind(path, kMeshFile)) {
        model.meshes.push_back({NameOf(path), CalLoader::loadCoreMesh(source)});
      } else if (IsOfKind(path, kMaterialFile)) {
        const std::string folder = path.substr(0, path.rfind('/') + 1);
        model.materials.push_back({{NameOf(path), CalLoader::loadCoreMaterial(source)}, 0, folder});
      } else if (IsOfKind(path, kAnimationFile)) {
        model.animations.push_back({NameOf(path), CalLoader::loadCoreAnimation(source)});
      } else {
        model.morphAnimations.push_back({NameOf(path), CalLoader::loadCoreMorphAnimation(source)});
      }
    } catch (const std::runtime_error& error) {
      throw std::runtime_error("'" + path + "': " + error.what());
    }
  }

  void TakeSkeleton(const std::string& path, boost::shared_ptr<CalCoreSkeleton> skeleton) {
    ViewPart<CalCoreSkeleton>& shown = loaded_.model.skeleton;
    if (shown.core) {
      throw std::runtime_error("not shown: the skeleton is " + shown.file +
                               ", and a model has one");
    }
    shown = {NameOf(path), std::move(skeleton)};
  }

  void NumberMaterials() {
    std::vector<ViewMaterial>& materials = loaded_.model.materials;
    std::vector<ViewMaterial*> unknown;
    int32_t next = 0;
    for (ViewMaterial& material : materials) {
      const auto byPath = numbers_.find(WholePath(material.folder + material.file));
      const auto byName = numbersByName_.find(material.file);
      if (byPath == numbers_.end() && byName == numbersByName_.end()) {
        unknown.push_back(&material);
        continue;
      }
      material.id = byPath != numbers_.end() ? byPath->second : byName->second;
      next = std::max(next, material.id == INT32_MAX ? material.id : material.id + 1);
    }
    if (unknown.size() == materials.size()) {
      GuessNumbers();
      if (materials.size() > 1) {
        loaded_.notes.warnings.emplace_back(
            "no manifest tells the numbers of the materials: they are guessed from their textures");
      }
      return;
    }
    for (ViewMaterial* material : unknown) {
      material->id = next;
      if (next != INT32_MAX) ++next;
    }
  }

  // As an export of all meshes numbers them: a slot in the name ("Skin[3]") counts, the others
  // follow above the highest slot, the greatest diffuse texture first, then the greatest name. It
  // misses where textures lay in several folders, or a material has no file.
  void GuessNumbers() {
    std::vector<ViewMaterial*> rest;
    int32_t next = 0;
    for (ViewMaterial& material : loaded_.model.materials) {
      const std::optional<int32_t> slot = SlotOf(material.file);
      if (slot) {
        material.id = *slot;
        next = std::max(next, *slot + 1);
      } else {
        rest.push_back(&material);
      }
    }
    const auto key = [](const ViewMaterial* material) {
      const auto& maps = material->core->maps;
      const auto diffuse = std::ranges::find(maps, "Diffuse Color", &CalCoreMaterial::Map::type);
      return std::pair(diffuse == maps.end() ? std::string() : diffuse->filename, material->file);
    };
    std::ranges::sort(rest, std::greater<>(), key);
    for (ViewMaterial* material : rest) material->id = next++;
  }

  std::string DefaultName() const {
    const ViewModel& model = loaded_.model;
    if (model.skeleton.core) return FileStem(model.skeleton.file);
    return model.meshes.empty() ? "model" : FileStem(model.meshes[0].file);
  }

  LoadedModel loaded_;
  std::vector<std::string> files_;
  std::map<std::string, int32_t> numbers_;  // by WholePath
  std::map<std::string, int32_t> numbersByName_;
};

}  // namespace

LoadedModel LoadModel(const std::vector<std::string>& paths) { return ModelLoader().Load(paths); }
