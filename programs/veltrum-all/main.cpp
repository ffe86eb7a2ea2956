#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <set>
#include <string>
#include <system_error>

#include "cal3d/io/number_text.h"
#include "cal3d/io/output_file.h"
#include "converter/base/names.h"
#include "converter/base/records.h"
#include "programs/veltrum-all/export_scene.h"
#include "programs/veltrum-all/manifest.h"
#include "programs/veltrum-all/options.h"

namespace {

constexpr int kUnreadableStatus = 2;

void Tell(std::string line) {
  // One line, whatever the names in it hold.
  std::ranges::replace(line, '\n', ' ');
  std::fprintf(stderr, "veltrum-all: %s\n", line.c_str());
}

// The file's name without its extension, as names of files are written.
std::string StemOf(const std::string& scene) {
  std::string name = getBaseFilenameWithExtension(scene);
  const size_t dot = name.rfind('.');
  if (dot != std::string::npos && dot != 0) name.resize(dot);
  return urlencode(name);
}

void Summarise(const SceneReport& report, const Options& options) {
  size_t bones = 0;
  size_t meshes = 0;
  size_t materials = 0;
  size_t animations = 0;
  for (const SkeletonReport& skeleton : report.skeletons) {
    bones += skeleton.bones.size();
    meshes += skeleton.meshes.size();
    for (const MaterialReport& material : skeleton.materials) materials += !material.file.empty();
    animations += skeleton.animations.size();
  }
  std::printf("%s: %s (%s), %s, %s, %s, %s%s\n", report.fileName.c_str(),
              Counted(report.skeletons.size(), "skeleton").c_str(), Counted(bones, "bone").c_str(),
              Counted(meshes, "mesh", "es").c_str(), Counted(materials, "material").c_str(),
              Counted(animations, "animation").c_str(),
              Counted(report.warnings.size(), "warning").c_str(),
              options.dryRun ? "; nothing written" : "");
  for (const std::string& file : report.files) {
    std::printf("  %s%s\n", options.directory.c_str(), file.c_str());
  }
}

// False if it can't be written.
bool WriteManifest(const SceneReport& report, const Options& options) {
  const std::string path = options.directory + report.name + ".json";
  const std::string text = ManifestText(report, options);
  OutputFile file(path);
  file.Append(text);
  if (file.Commit()) return true;
  Tell("'" + path + "' can't be written: " + std::generic_category().message(file.Error()));
  return false;
}

int Run(int argc, char** argv) {
  const ParsedOptions parsed = ParseOptions(argc, argv);
  if (parsed.status >= 0) return parsed.status;
  const Options& options = parsed.options;
  if (!options.dryRun) {
    std::error_code error;
    std::filesystem::create_directories(options.directory, error);
    if (error) {
      Tell("'" + options.directory + "' can't be made: " + error.message());
      return kUnreadableStatus;
    }
  }
  std::set<std::string> names;
  int status = 0;
  for (const std::string& scene : options.scenes) {
    const std::string name = UniqueName(StemOf(scene), names);
    const std::string folder = options.scenes.size() > 1 ? name + "/" : "";
    const SceneReport report = ExportScene(options, scene, name, folder);
    for (const Message& error : report.errors) {
      Tell(scene + ": " + error.text);
    }
    if (report.state != SceneReport::kUnreadable) Summarise(report, options);
    status = std::max(status, static_cast<int>(report.state));
    if (!options.dryRun && !WriteManifest(report, options)) status = std::max(status, 1);
  }
  // The manifests have it all, so the status stays. Who stops reading knows that.
  if (std::fflush(stdout) != 0 && errno != EPIPE) {
    Tell("standard output can't be written: " + std::generic_category().message(errno));
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  RemoveUnfinishedFilesOnSignals();
  // The JSON library needs memory to free its trees. Where there is none left, its destructors end
  // the program here, past all handlers.
  std::set_terminate([] {
    std::fputs("veltrum-all: there is not enough memory\n", stderr);
    std::_Exit(kUnreadableStatus);
  });
  try {
    return Run(argc, argv);
  } catch (const std::exception& exception) {
    Tell(exception.what());
    return kUnreadableStatus;
  }
}
