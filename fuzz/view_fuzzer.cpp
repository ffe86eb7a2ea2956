// Makes a .glb of a few files: the block is cut at each NUL 0xFF NUL, each piece is whatever kind
// takes it, and what no kind takes is the texture that materials find.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cal3d/io/loader.h"
#include "gltf/glb_export.h"

namespace {

template <typename Load, typename Take>
bool Try(const Load& load, std::string_view piece, const Take& take) {
  try {
    take(load(CalBufferSource(piece.data(), piece.size())));
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

void Add(ViewModel& model, std::string& texture, std::string_view piece) {
  const bool taken = Try(CalLoader::loadCoreSkeleton, piece,
                         [&](auto s) {
                           model.skeleton = {"s", s};
                         }) ||
                     Try(CalLoader::loadCoreMesh, piece,
                         [&](auto m) {
                           model.meshes.push_back({"m", m});
                         }) ||
                     Try(CalLoader::loadCoreMaterial, piece,
                         [&](auto m) {
                           model.materials.push_back({{"x", m}, 0, ""});
                         }) ||
                     Try(CalLoader::loadCoreAnimation, piece,
                         [&](auto a) {
                           model.animations.push_back({"a", a});
                         }) ||
                     Try(CalLoader::loadCoreMorphAnimation, piece, [&](auto a) {
                       model.morphAnimations.push_back({"p", a});
                     });
  if (!taken) texture = piece;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr std::string_view kCut("\0\xFF\0", 3);
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  ViewModel model;
  std::string texture;
  while (!rest.empty()) {
    const size_t cut = rest.find(kCut);
    Add(model, texture, rest.substr(0, cut));
    rest.remove_prefix(cut == std::string_view::npos ? rest.size() : cut + kCut.size());
  }
  ViewNotes notes;
  const TextureFinder find = [&texture](const ViewMaterial&, const std::string& name) {
    return std::optional(TextureFile{name, texture});
  };
  if (!MakeGlb(model, find, "fuzz", notes).starts_with("glTF")) std::abort();
  return 0;
}
