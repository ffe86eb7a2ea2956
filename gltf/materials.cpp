#include "gltf/materials.h"

#include <array>
#include <charconv>
#include <cmath>
#include <stdexcept>
#include <string_view>

// The maps of one material by their use; null where it has none.
struct MaterialTable::Textures {
  explicit Textures(const CalCoreMaterial& material) {
    for (const CalCoreMaterial::Map& map : material.maps) {
      if (map.type == "Diffuse Color") diffuse = &map.filename;
      if (map.type == "Opacity") opacity = &map.filename;
      if (map.type == "Normal") normal = &map.filename;
      if (map.type == "Specular") specular = &map.filename;
    }
  }

  const std::string* diffuse = nullptr;
  const std::string* opacity = nullptr;
  const std::string* normal = nullptr;
  const std::string* specular = nullptr;
};

namespace {

// The three bytes of a made-up name that begins with `mark`, six hexadecimal digits and "-", each
// from 0 to 1; nothing for another name.
std::optional<std::array<double, 3>> MadeUpBytes(std::string_view name, std::string_view mark) {
  constexpr size_t kDigits = 6;
  if (!name.starts_with(mark) || name.size() <= mark.size() + kDigits ||
      name[mark.size() + kDigits] != '-') {
    return {};
  }
  uint32_t value = 0;
  const char* digits = name.data() + mark.size();
  const auto parsed = std::from_chars(digits, digits + kDigits, value, 16);
  if (parsed.ec != std::errc() || parsed.ptr != digits + kDigits) return {};
  return {{(value >> 16) / 255.0, (value >> 8 & 0xFF) / 255.0, (value & 0xFF) / 255.0}};
}

// A name that stands for no file: what materials without texture and colour get.
bool IsPlaceholder(std::string_view name) {
  return name.empty() || name == "unused" || name.starts_with("MISSING-") ||
         name.starts_with("COLOR-") || name.starts_with("ALPHA-");
}

// From the colours of a picture to those that light is reckoned in (the curve of sRGB), to six
// digits, so that the last bits of a library's pow don't show.
double LinearColor(double value) {
  const double linear = value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  return std::round(linear * 1e6) / 1e6;
}

}  // namespace

MaterialTable::MaterialTable(GlbBuilder& glb, const ViewModel& model, const TextureFinder& find,
                             ViewNotes& notes)
    : glb_(glb), find_(find), notes_(notes) {
  for (const ViewMaterial& material : model.materials) {
    const size_t index = glb_.Add("materials", MaterialOf(material));
    const auto [entry, isNew] =
        entries_.try_emplace(material.id, Entry{index, FileStem(material.file)});
    if (!isNew) {
      notes_.warnings.push_back("the materials " + entry->second.name + " and " +
                                FileStem(material.file) + " both have the number " +
                                std::to_string(material.id) + "; the first is shown");
    }
  }
}

const MaterialTable::Entry* MaterialTable::Find(int32_t id) const {
  const auto found = entries_.find(id);
  return found == entries_.end() ? nullptr : &found->second;
}

Json MaterialTable::MaterialOf(const ViewMaterial& material) {
  const Textures textures(*material.core);
  Json missing = Json::array();
  Json json = {{"name", FileStem(material.file)},
               {"pbrMetallicRoughness", {{"metallicFactor", 0}, {"roughnessFactor", 0.8}}}};
  SetBase(material, textures, json, missing);
  if (textures.normal != nullptr) {
    if (const auto texture = TextureOf(material, *textures.normal, missing)) {
      json["normalTexture"] = {{"index", *texture}};
    }
  }
  if (textures.specular != nullptr) {
    if (const auto texture = TextureOf(material, *textures.specular, missing)) {
      json["extensions"]["KHR_materials_specular"] = {
          {"specularColorTexture", {{"index", *texture}}}};
      glb_.Use("KHR_materials_specular");
    }
  }
  json["extras"] = {{"file", material.file}, {"id", material.id}};
  if (!missing.empty()) json["extras"]["missing"] = missing;
  return json;
}

void MaterialTable::SetBase(const ViewMaterial& material, const Textures& textures, Json& json,
                            Json& missing) {
  constexpr double kGrey = 0.6;
  std::array<double, 4> factor = {1, 1, 1, 1};
  const std::string diffuse = textures.diffuse == nullptr ? "" : *textures.diffuse;
  const bool hasPicture = !IsPlaceholder(diffuse);
  if (const auto color = MadeUpBytes(diffuse, "COLOR-")) {
    for (size_t i = 0; i < 3; ++i) factor[i] = LinearColor((*color)[i]);
  } else if (!hasPicture) {
    factor = {kGrey, kGrey, kGrey, 1};
  }

  // Taken anew each time: a key that is set moves the others.
  const auto base = [&json](const char* key) -> Json& { return json["pbrMetallicRoughness"][key]; };
  const std::string opacity = textures.opacity == nullptr ? "" : *textures.opacity;
  std::optional<TextureFile> picture;
  if (hasPicture) picture = Load(material, diffuse, missing);
  std::optional<TextureFile> alpha;
  if (const auto plain = MadeUpBytes(opacity, "ALPHA-")) {
    factor[3] = std::round((*plain)[0] * 1e6) / 1e6;
    if (factor[3] < 1) json["alphaMode"] = "BLEND";
  } else if (!IsPlaceholder(opacity)) {
    alpha = Load(material, opacity, missing);
  }

  const Blend* blend = picture || !hasPicture ? BlendOf(material, picture, alpha) : nullptr;
  if (hasPicture && !picture) {
    base("baseColorTexture") = {{"index", CheckerTexture()}};
  } else if (blend != nullptr) {
    base("baseColorTexture") = {{"index", blend->texture}};
    if (blend->opacity != Opacity::kFull) {
      json["alphaMode"] = blend->opacity == Opacity::kCutOut ? "MASK" : "BLEND";
    }
  } else if (picture) {
    if (const auto texture = TextureOf(material, diffuse, missing)) {
      base("baseColorTexture") = {{"index", *texture}};
    }
  }
  if (factor != std::array<double, 4>{1, 1, 1, 1}) base("baseColorFactor") = factor;
}

const MaterialTable::Blend* MaterialTable::BlendOf(const ViewMaterial& material,
                                                   const std::optional<TextureFile>& color,
                                                   const std::optional<TextureFile>& opacity) {
  if (!opacity) return nullptr;
  const auto key = std::pair(color ? color->path : std::string(), opacity->path);
  const auto found = blends_.find(key);
  if (found != blends_.end()) return &found->second;
  try {
    Blend blend{};
    const Picture picture =
        PictureWithOpacity(color ? &color->bytes : nullptr, opacity->bytes, blend.opacity);
    blend.texture = AddTexture(picture.bytes, picture.mimeType);
    return &blends_.emplace(key, blend).first->second;
  } catch (const std::runtime_error& error) {
    notes_.warnings.push_back("material " + FileStem(material.file) +
                              ": its opacity isn't shown, since a texture " + error.what());
    return nullptr;
  }
}

std::optional<TextureFile> MaterialTable::Load(const ViewMaterial& material,
                                               const std::string& name, Json& missing) {
  std::optional<TextureFile> file = find_(material, name);
  std::string fault;
  if (file) {
    try {
      EmbeddedPicture(file->bytes);
      return file;
    } catch (const std::runtime_error& error) {
      fault = error.what();
    }
  }
  if (!fault.empty()) {
    notes_.warnings.push_back("material " + FileStem(material.file) + ": the texture " + name +
                              " " + fault);
  } else {
    notes_.missingTextures.push_back({FileStem(material.file), name});
  }
  missing.push_back(name);
  return {};
}

std::optional<size_t> MaterialTable::TextureOf(const ViewMaterial& material,
                                               const std::string& name, Json& missing) {
  if (IsPlaceholder(name)) return {};
  const std::optional<TextureFile> file = Load(material, name, missing);
  if (!file) return {};
  const auto found = plain_.find(file->path);
  if (found != plain_.end()) return found->second;
  const Picture picture = EmbeddedPicture(file->bytes);
  return plain_.emplace(file->path, AddTexture(picture.bytes, picture.mimeType)).first->second;
}

size_t MaterialTable::AddTexture(const std::string& bytes, const std::string& mimeType) {
  return glb_.Add("textures", {{"source", glb_.AddImage(bytes, mimeType)}});
}

size_t MaterialTable::CheckerTexture() {
  if (!checker_) {
    const Picture picture = Checker();
    checker_ = AddTexture(picture.bytes, picture.mimeType);
  }
  return *checker_;
}
