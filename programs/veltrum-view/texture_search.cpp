#include "programs/veltrum-view/texture_search.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "cal3d/io/file_format.h"
#include "cal3d/io/input_file.h"

namespace fs = std::filesystem;

namespace {

std::string InLowerCase(std::string name) {
  std::ranges::transform(name, name.begin(), AsciiLower);
  return name;
}

}  // namespace

const TextureSearch::Folder& TextureSearch::List(const std::string& folder) {
  const auto [entry, isNew] = lists_.try_emplace(folder);
  if (!isNew) return entry->second;
  std::error_code error;
  std::vector<fs::path> paths;
  for (fs::directory_iterator at(folder.empty() ? "." : folder, error), end; !error && at != end;
       at.increment(error)) {
    paths.push_back(at->path());
  }
  std::ranges::sort(paths);
  for (const fs::path& path : paths) {
    const std::string name = InLowerCase(path.filename().string());
    if (fs::is_regular_file(path, error)) {
      entry->second.files.emplace(name, path.string());
    } else if (fs::is_directory(path, error) &&
               (name.ends_with(".fbm") || name.ends_with("_textures") || name == "textures")) {
      entry->second.below.push_back(path.string());
    }
  }
  return entry->second;
}

std::optional<std::string> TextureSearch::FindIn(const std::string& folder,
                                                 const std::string& name) {
  const std::string own = (fs::path(folder) / name).string();
  std::error_code error;
  if (fs::is_regular_file(own, error)) return own;
  const Folder& list = List(folder);
  const auto found = list.files.find(InLowerCase(name));
  if (found != list.files.end()) return found->second;
  return {};
}

std::optional<TextureFile> TextureSearch::Find(const ViewMaterial& material,
                                               const std::string& name) {
  const std::string file = name.substr(name.find_last_of("/\\") + 1);
  if (file.empty() || file == "." || file == ".." || file.find('\0') != std::string::npos)
    return {};
  std::vector<std::string> folders = {material.folder};
  folders.insert(folders.end(), folders_.begin(), folders_.end());
  for (const std::string& folder : folders) {
    std::optional<std::string> path = FindIn(folder, file);
    for (const std::string& below : List(folder).below) {
      if (!path) path = FindIn(below, file);
    }
    if (!path) continue;
    try {
      return TextureFile{*path, ReadInputFile(*path)};
    } catch (const std::runtime_error&) {
      // It is as good as missing, and told so.
    }
  }
  return {};
}
