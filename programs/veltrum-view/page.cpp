#include "programs/veltrum-view/page.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <nlohmann/json.hpp>
#include <zlib.h>

#include "cal3d/io/file_format.h"
#include "cal3d/io/input_file.h"

namespace fs = std::filesystem;

namespace {

using PageJson = nlohmann::ordered_json;

std::string Base64(std::string_view bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (size_t i = 0; i < bytes.size(); i += 3) {
    uint32_t group = 0;
    for (size_t j = 0; j < 3; ++j) {
      group = group << 8 | (i + j < bytes.size() ? static_cast<unsigned char>(bytes[i + j]) : 0U);
    }
    for (int shift = 18; shift >= 0; shift -= 6) text += kDigits[group >> shift & 63];
  }
  for (size_t i = 0; i < (3 - bytes.size() % 3) % 3; ++i) text[text.size() - 1 - i] = '=';
  return text;
}

// In zlib's format: what the page costs beside its template is less than the model itself then,
// where textures aren't most of it. Throws std::runtime_error if there isn't memory enough.
std::string Deflated(std::string_view bytes) {
  uLongf size = compressBound(bytes.size());
  std::string packed(size, '\0');
  if (compress(reinterpret_cast<Bytef*>(packed.data()), &size,
               reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()) != Z_OK) {
    throw std::runtime_error("there is not enough memory");
  }
  packed.resize(size);
  return packed;
}

std::string HtmlText(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (c == '&') {
      out += "&amp;";
    } else if (c == '<') {
      out += "&lt;";
    } else {
      out += c;
    }
  }
  return out;
}

template <typename Animation>
void AddAnimationTo(PageJson& list, const ViewPart<Animation>& animation, const char* kind) {
  list.push_back({{"file", animation.file},
                  {"kind", kind},
                  {"duration", FiniteOrZero(animation.core->duration)},
                  {"tracks", animation.core->tracks.size()}});
}

// Width, depth and height of all meshes at rest, in the model's units; null without any.
PageJson SizeOf(const ViewModel& model) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  CalVector least{kInfinity, kInfinity, kInfinity};
  CalVector greatest{-kInfinity, -kInfinity, -kInfinity};
  for (const auto& mesh : model.meshes) {
    for (const auto& submesh : mesh.core->submeshes) {
      for (const auto& [position, normal] : submesh->vertices()) {
        for (float CalVector::*axis : {&CalVector::x, &CalVector::y, &CalVector::z}) {
          const float at = FiniteOrZero(axis == &CalVector::x   ? position.x
                                        : axis == &CalVector::y ? position.y
                                                                : position.z);
          least.*axis = std::min(least.*axis, at);
          greatest.*axis = std::max(greatest.*axis, at);
        }
      }
    }
  }
  if (least.x > greatest.x) return nullptr;
  return {greatest.x - least.x, greatest.y - least.y, greatest.z - least.z};
}

PageJson ManifestOf(const ViewModel& model, const ViewNotes& notes, const std::string& generator) {
  PageJson manifest = {{"name", model.name}, {"generator", generator}};
  if (model.skeleton.core) {
    manifest["skeleton"] = {{"file", model.skeleton.file},
                            {"bones", model.skeleton.core->coreBones.size()}};
  }
  manifest["meshes"] = PageJson::array();
  for (const auto& mesh : model.meshes) {
    PageJson submeshes = PageJson::array();
    size_t vertices = 0;
    size_t faces = 0;
    for (const auto& submesh : mesh.core->submeshes) {
      PageJson entry = PageJson::object();
      const auto material =
          std::ranges::find(model.materials, submesh->coreMaterialThreadId, &ViewMaterial::id);
      if (material != model.materials.end()) entry["material"] = FileStem(material->file);
      entry["materialId"] = submesh->coreMaterialThreadId;
      entry["vertices"] = submesh->vertices().size();
      entry["faces"] = submesh->faces().size();
      submeshes.push_back(std::move(entry));
      vertices += submesh->vertices().size();
      faces += submesh->faces().size();
    }
    manifest["meshes"].push_back({{"file", mesh.file},
                                  {"vertices", vertices},
                                  {"faces", faces},
                                  {"submeshes", std::move(submeshes)}});
  }
  PageJson animations = PageJson::array();
  for (const auto& each : model.animations) AddAnimationTo(animations, each, "skeletal");
  for (const auto& each : model.morphAnimations) AddAnimationTo(animations, each, "morph");
  manifest["animations"] = std::move(animations);
  manifest["warnings"] = notes.warnings;
  manifest["missingTextures"] = PageJson::array();
  for (const auto& [material, file] : notes.missingTextures) {
    manifest["missingTextures"].push_back({{"material", material}, {"file", file}});
  }
  if (PageJson size = SizeOf(model); !size.is_null()) manifest["size"] = std::move(size);
  manifest["up"] = "z";
  return manifest;
}

// Puts `filled` in the place of the one occurrence of `place`.
void Fill(std::string& page, const std::string& place, const std::string& filled) {
  const size_t at = page.find(place);
  if (at == std::string::npos) {
    throw std::runtime_error("the template of the page has no " + place);
  }
  page.replace(at, place.size(), filled);
}

}  // namespace

std::string ReadPageTemplate() {
  const fs::path program = fs::read_symlink("/proc/self/exe").parent_path();
  for (const char* place : {"../share/veltrum/viewer.html", "../../viewer/dist/viewer.html"}) {
    const fs::path path = program / place;
    std::error_code error;
    if (fs::is_regular_file(path, error)) return ReadInputFile(path.string());
  }
  throw std::runtime_error("the page's template viewer.html isn't installed; .glb files need none");
}

std::string MakePage(const std::string& pageTemplate, const std::string& glb,
                     const ViewModel& model, const ViewNotes& notes, const std::string& generator) {
  std::string words =
      ManifestOf(model, notes, generator).dump(-1, ' ', false, PageJson::error_handler_t::replace);
  for (size_t at = 0; (at = words.find('<', at)) != std::string::npos;) {
    words.replace(at, 1, "\\u003c");
  }
  const std::string model64 =
      R"(<script id="veltrum-model" type="application/gltf-binary;deflate;base64">)";
  const std::string manifest = R"(<script id="veltrum-manifest" type="application/json">)";
  std::string page = pageTemplate;
  Fill(page, "<title>veltrum</title>", "<title>" + HtmlText(model.name) + " - veltrum</title>");
  Fill(page, manifest + "</script>", manifest + words + "</script>");
  Fill(page, model64 + "</script>", model64 + Base64(Deflated(glb)) + "</script>");
  return page;
}
