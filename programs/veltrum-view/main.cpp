// veltrum-view: exported Cal3D files as one glTF binary, or as a page that shows them.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <system_error>
#include <vector>

#include <getopt.h>

#include "cal3d/io/number_text.h"
#include "cal3d/io/output_file.h"
#include "gltf/glb_export.h"
#include "programs/veltrum-view/model_files.h"
#include "programs/veltrum-view/page.h"
#include "programs/veltrum-view/texture_search.h"

namespace {

constexpr int kSomeLeftOut = 1;
constexpr int kNothingWritten = 2;

constexpr char kUsage[] =
    R"(Usage: veltrum-view [options] DIR|FILE... -o model.glb
       veltrum-view [options] DIR|FILE... -o page.html

Makes one glTF 2.0 binary, or one HTML page that shows it in any browser, from
exported files: a folder of them, or the files of one skeleton (.xsf, .xmf,
.xrf, .xaf, .xpf, or their binary forms .csf, .cmf, .crf, .caf, .cpf). A
manifest (.json) among them tells the numbers of the materials.

  -o, --output FILE    what to write; the ending tells which of the two
  -t, --textures DIR   where to look for textures besides the folder of the
                       materials and its media folders; may be given often
  -n, --name NAME      the name of the model
  -h, --help           this text
  -V, --version        the version

Exit status: 0 all of it is shown, 1 some files couldn't be used, 2 nothing was
written. What is left out or missing is told on standard error.
)";

struct Options {
  std::vector<std::string> inputs;
  std::vector<std::string> textureFolders;
  std::string output;
  std::string name;
};

void Tell(std::string line) {
  // One line, whatever the names in it hold.
  std::ranges::replace(line, '\n', ' ');
  std::fprintf(stderr, "veltrum-view: %s\n", line.c_str());
}

std::string Summary(const ViewModel& model) {
  size_t vertices = 0;
  for (const auto& mesh : model.meshes) {
    for (const auto& submesh : mesh.core->submeshes) vertices += submesh->vertices().size();
  }
  const size_t bones = model.skeleton.core ? model.skeleton.core->coreBones.size() : 0;
  return Counted(bones, "bone") + ", " + Counted(model.meshes.size(), "mesh", "es") + " with " +
         (vertices == 1 ? "1 vertex, " : std::to_string(vertices) + " vertices, ") +
         Counted(model.materials.size(), "material") + ", " +
         Counted(model.animations.size() + model.morphAnimations.size(), "animation");
}

int Run(const Options& options) {
  const bool wantsPage = options.output.ends_with(".html") || options.output.ends_with(".htm");
  const std::string pageTemplate = wantsPage ? ReadPageTemplate() : std::string();
  LoadedModel loaded = LoadModel(options.inputs);
  for (const std::string& error : loaded.errors) Tell(error);
  ViewModel& model = loaded.model;
  if (!model.skeleton.core && model.meshes.empty()) {
    Tell("there is neither a skeleton nor a mesh to show");
    return kNothingWritten;
  }
  if (!options.name.empty()) model.name = options.name;

  const std::string generator = "veltrum-view " VELTRUM_VERSION;
  TextureSearch search(options.textureFolders);
  const TextureFinder find = [&search](const ViewMaterial& material, const std::string& name) {
    return search.Find(material, name);
  };
  const std::string glb = MakeGlb(model, find, generator, loaded.notes);
  for (const std::string& warning : loaded.notes.warnings) Tell(warning);
  for (const auto& [material, file] : loaded.notes.missingTextures) {
    Tell("material " + material + ": the texture " + file + " isn't there");
  }
  // The page tells it too.
  loaded.notes.warnings.insert(loaded.notes.warnings.end(), loaded.errors.begin(),
                               loaded.errors.end());
  OutputFile output(options.output);
  output.Append(wantsPage ? MakePage(pageTemplate, glb, model, loaded.notes, generator) : glb);
  if (!output.Commit()) {
    Tell("'" + options.output +
         "' can't be written: " + std::generic_category().message(output.Error()));
    return kNothingWritten;
  }
  std::printf("%s: %s\n", options.output.c_str(), Summary(model).c_str());
  return loaded.errors.empty() ? 0 : kSomeLeftOut;
}

// Fills in the options; false, with a line on standard error, if they make no sense.
bool Parse(int argc, char** argv, Options& options, bool& isDone) {
  const option names[] = {
      {"output", required_argument, nullptr, 'o'}, {"textures", required_argument, nullptr, 't'},
      {"name", required_argument, nullptr, 'n'},   {"help", no_argument, nullptr, 'h'},
      {"version", no_argument, nullptr, 'V'},      {}};
  for (int letter; (letter = getopt_long(argc, argv, "o:t:n:hV", names, nullptr)) != -1;) {
    if (letter == 'o') {
      options.output = optarg;
    } else if (letter == 't') {
      options.textureFolders.emplace_back(optarg);
    } else if (letter == 'n') {
      options.name = optarg;
    } else if (letter == 'h') {
      std::fputs(kUsage, stdout);
      isDone = true;
    } else if (letter == 'V') {
      std::puts("veltrum-view " VELTRUM_VERSION);
      isDone = true;
    } else {
      return false;  // getopt has said why
    }
  }
  options.inputs.assign(argv + optind, argv + argc);
  if (isDone) return true;
  if (options.inputs.empty()) {
    Tell("what is to be shown? Name a folder, or files (--help tells more)");
  } else if (options.output.empty()) {
    Tell("where to? Name a .glb or .html file behind -o (--help tells more)");
  } else if (!options.output.ends_with(".glb") && !options.output.ends_with(".html") &&
             !options.output.ends_with(".htm")) {
    Tell("'" + options.output + "' should end in .glb or .html");
  } else {
    return true;
  }
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  RemoveUnfinishedFilesOnSignals();
  try {
    Options options;
    bool isDone = false;
    if (!Parse(argc, argv, options, isDone)) return kNothingWritten;
    return isDone ? 0 : Run(options);
  } catch (const std::exception& exception) {
    Tell(exception.what());
    return kNothingWritten;
  }
}
