#include "fbx/reader/version6/layer_textures.h"

#include <algorithm>
#include <climits>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_set>
#include <utility>

#include "fbx/io/fbx_io.h"
#include "fbx/reader/read_records.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

namespace {

// The channel whose textures the field holds: those of a UV channel's are called after it.
std::optional<size_t> TextureChannel(std::string_view field) {
  constexpr std::string_view kEnding = "Textures";
  if (field == "LayerElementTexture") return 0;
  if (!field.ends_with(kEnding)) return {};
  const std::string name = std::string(field.substr(0, field.size() - kEnding.size())) + "UV";
  const auto channel = std::find(kUVElementNames.begin() + 1, kUVElementNames.end(), name);
  if (channel == kUVElementNames.end()) return {};
  return static_cast<size_t>(channel - kUVElementNames.begin());
}

// Numbers of the polygons of a mesh, of materials or textures.
struct PolygonNumbers {
  FbxLayerElement::EMappingMode mapping = FbxLayerElement::eNone;
  std::vector<int32_t> numbers;

  bool IsAllSame() const { return mapping == FbxLayerElement::eAllSame; }
  // -1 for none.
  int32_t Of(int polygon) const {
    if (!IsAllSame() && mapping != FbxLayerElement::eByPolygon) return -1;
    const auto index = static_cast<size_t>(IsAllSame() ? 0 : polygon);
    return index < numbers.size() ? numbers[index] : -1;
  }
};

// Nothing if there is no such element.
std::optional<PolygonNumbers> ReadNumbers(FbxIO& io, std::string_view field, int32_t number,
                                          std::string_view array) {
  if (!io.FieldReadBegin(field, number) || !io.FieldReadBlockBegin()) return {};
  PolygonNumbers element;
  element.mapping = MappingModeFromName(io.FieldReadC("MappingInformationType"));
  io.FieldReadArray(array, element.numbers);
  io.FieldReadBlockEnd();
  return element;
}

}  // namespace

void FbxLayerTextures::Read(FbxIO& io, const FbxMesh& mesh) {
  // Elements that are looked at for each mesh; each may cost a look at all of its polygons.
  constexpr size_t kMostElements = 1000;
  // Pairs of a material and a texture that are kept for each mesh; real ones have a handful.
  constexpr size_t kMostUses = 10000;
  const std::map<int32_t, FbxLayerEntries> layers = ReadLayerEntries(io);
  std::map<std::pair<std::string, int32_t>, std::optional<PolygonNumbers>> elements;
  const auto element = [&](const std::string& field, int32_t number, const char* array) {
    const auto [found, isNew] = elements.try_emplace({field, number});
    if (isNew) found->second = ReadNumbers(io, field, number, array);
    return found->second.has_value() ? &*found->second : nullptr;
  };
  // What each layer says of the materials, the last element of a layer counting.
  const PolygonNumbers onlyMaterial = {FbxLayerElement::eAllSame, {0}};
  const PolygonNumbers* firstMaterials = nullptr;
  std::map<int32_t, const PolygonNumbers*> layerMaterials;
  for (const auto& [layer, entries] : layers) {
    for (const auto& [field, number] : entries) {
      if (field != "LayerElementMaterial") continue;
      const PolygonNumbers* materials = element(field, number, "Materials");
      if (materials == nullptr) continue;
      if (materials->IsAllSame() && materials->numbers.empty()) materials = &onlyMaterial;
      layerMaterials[layer] = materials;
    }
    if (firstMaterials == nullptr && layerMaterials.contains(layer)) {
      firstMaterials = layerMaterials[layer];
    }
  }
  if (firstMaterials == nullptr) firstMaterials = &onlyMaterial;

  // Some ten textures on each of millions of polygons; a second's work.
  constexpr int64_t kMostPolygons = 30'000'000;
  std::set<std::tuple<size_t, const PolygonNumbers*, const PolygonNumbers*>> done;
  int64_t polygonsLooked = 0;
  std::vector<Use> uses;
  size_t looked = 0;
  for (const auto& [layer, entries] : layers) {
    for (const auto& [field, number] : entries) {
      const std::optional<size_t> channel = TextureChannel(field);
      if (!channel.has_value() || ++looked > kMostElements) continue;
      const PolygonNumbers* textures = element(field, number, "TextureId");
      if (textures == nullptr) continue;
      const auto own = layerMaterials.find(layer);
      const PolygonNumbers* materials = own == layerMaterials.end() ? firstMaterials : own->second;
      // All polygons are alike where nothing goes by polygon.
      const bool areAlike = textures->IsAllSame() && materials->IsAllSame();
      const int polygons = std::min(mesh.GetPolygonCount(), areAlike ? 1 : INT_MAX);
      // An entry that repeats another adds nothing; what is left is bounded by its work.
      if (!done.insert({*channel, textures, materials}).second) continue;
      polygonsLooked += polygons;
      if (polygonsLooked > kMostPolygons) break;
      std::set<std::pair<int32_t, int32_t>> seen;
      for (int p = 0; p < polygons && uses.size() < kMostUses; ++p) {
        const int32_t material = materials->Of(p);
        const int32_t texture = textures->Of(p);
        if (material < 0 || texture < 0 || !seen.insert({material, texture}).second) continue;
        uses.push_back({*channel, material, texture});
      }
    }
  }
  if (!uses.empty()) uses_.emplace(&mesh, std::move(uses));
}

void FbxLayerTextures::Connect(const FbxDocument& document) const {
  // The sources of the properties that were looked at, which may be many.
  std::map<std::pair<const FbxObject*, int>, std::unordered_set<const FbxObject*>> sources;
  const int nodes = uses_.empty() ? 0 : document.GetSrcObjectCount<FbxNode>();
  for (int i = 0; i < nodes; ++i) {
    const FbxNode& node = *document.GetSrcObject<FbxNode>(i);
    const auto uses = uses_.find(node.GetMesh());
    if (uses == uses_.end()) continue;
    for (const auto& [channel, materialNumber, textureNumber] : uses->second) {
      const FbxSurfaceMaterial* material = node.GetMaterial(materialNumber);
      FbxTexture* texture = node.GetSrcObject<FbxTexture>(textureNumber);
      if (material == nullptr || texture == nullptr) continue;
      FbxProperty property = material->FindProperty(FbxLayerElement::sTextureChannelNames[channel]);
      if (!property.IsValid()) continue;
      const auto [known, isNew] = sources.try_emplace({material, property.GetIndex()});
      if (isNew) {
        for (const FbxProperty& source : property.Sources()) {
          if (source.IsRoot()) known->second.insert(source.GetFbxObject());
        }
      }
      if (known->second.insert(texture).second) property.ConnectSrcObject(texture, true);
    }
  }
}
