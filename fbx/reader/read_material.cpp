// Materials, textures, and the videos that hold their pictures.
#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "fbx/core/fbx_string.h"
#include "fbx/io/fbx_io.h"
#include "fbx/reader/media_folder.h"
#include "fbx/reader/read_records.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_scene.h"

namespace {

// Version of a material's record from which on properties have their present names.
constexpr int32_t kVersionWithNewNames = 102;

constexpr int32_t kLastBlendMode = 30;
constexpr int kBlendModeOverUnknown = 5;

// Moves the value of a property under its old name to the one under its present name.
template <typename T>
bool Move(const FbxObject& object, const char* oldName, const char* newName) {
  const FbxProperty old = object.FindProperty(oldName);
  return old.IsValid() && object.FindProperty(newName).Set(old.Get<T>());
}

void MoveColor(const FbxObject& object, const std::string& oldName) {
  if (Move<FbxDouble3>(object, oldName.c_str(), (oldName + "Color").c_str())) {
    object.FindProperty(oldName + "Factor").Set(1.0);
  }
}

void MoveOldProperties(const FbxSurfaceMaterial& material) {
  if (!material.Is<FbxSurfaceLambert>()) return;
  for (const char* name : {"Emissive", "Ambient", "Diffuse"}) MoveColor(material, name);
  if (const FbxProperty opacity = material.FindProperty("Opacity"); opacity.IsValid()) {
    material.FindProperty("TransparencyFactor").Set(1.0 - opacity.Get<double>());
  }
  if (!material.Is<FbxSurfacePhong>()) return;
  MoveColor(material, "Specular");
  Move<double>(material, "Shininess", "ShininessExponent");
  Move<double>(material, "Reflectivity", "ReflectionFactor");
}

// Moves a pair of numbers from a field to the first two components of a triple.
void MoveFieldToTriple(FbxIO& io, const char* field, const FbxObject& object, const char* name) {
  if (!io.FieldReadBegin(field)) return;
  FbxProperty property = object.FindProperty(name);
  auto value = property.Get<FbxDouble3>();
  io.FieldReadDn(value.data(), 2);
  property.Set(value);
}

// The pieces of the embedded file one after the other: text files hold it in several values.
void ExtractContent(FbxIO& io, FbxVideo& video, FbxMediaFolder& media) {
  if (!io.FieldReadBegin("Content")) return;
  const auto next = [&io]() -> std::string_view {
    while (io.FieldReadGetRemain() > 0) {
      const std::string_view bytes = io.FieldReadR();
      if (!bytes.empty()) return bytes;
    }
    return {};
  };
  std::string_view first = next();
  if (first.empty()) return;
  std::string_view name = video.GetFileName();
  if (PlainFileName(name).empty()) name = video.GetRelativeFileName();
  const FbxMediaFolder::Written written = media.Write(
      name, [&] { return first.empty() ? next() : std::exchange(first, std::string_view()); });
  if (written.absolute.empty()) return;
  video.SetFileName(written.absolute);
  video.SetRelativeFileName(written.relative);
}

}  // namespace

std::string ReadShadingModel(FbxIO& io, std::string_view subclass) {
  return std::string(subclass.empty() ? io.FieldReadC("ShadingModel", "Phong") : subclass);
}

FbxClassId SurfaceMaterialClass(std::string_view shadingModel) {
  const FbxString name = FbxString(shadingModel).Lower();
  if (name == "phong" || name == "blinn") return FbxSurfacePhong::ClassId;
  if (name == "lambert") return FbxSurfaceLambert::ClassId;
  return FbxSurfaceMaterial::ClassId;
}

void ReadSurfaceMaterial(FbxIO& io, FbxSurfaceMaterial& material, std::string_view shadingModel) {
  if (!material.Is<FbxSurfaceLambert>()) material.FindProperty("ShadingModel").Set(shadingModel);
  if (io.FieldReadBegin("MultiLayer")) {
    material.FindProperty("MultiLayer").Set(io.FieldReadI() != 0);
  }
  ReadProperties(io, material);
  if (io.FieldReadI("Version", 100) < kVersionWithNewNames) MoveOldProperties(material);
}

void ReadFileTexture(FbxIO& io, FbxFileTexture& texture, const FbxMediaFolder& media) {
  if (io.FieldReadBegin("TextureName")) {
    texture.SetName(StripPrefix(io.FieldReadC()));
    texture.SetInitialName(texture.Name());
  }
  texture.SetFileName(io.FieldReadC("FileName"));
  texture.SetRelativeFileName(io.FieldReadC("RelativeFilename"));
  const std::string found = media.Find(texture.GetFileName(), texture.GetRelativeFileName());
  if (!found.empty()) texture.SetFileName(found);
  texture.SetMediaName(StripPrefix(io.FieldReadC("Media")));
  ReadProperties(io, texture);
  MoveFieldToTriple(io, "ModelUVTranslation", texture, "Translation");
  MoveFieldToTriple(io, "ModelUVScaling", texture, "Scaling");
  if (io.FieldReadBegin("Texture_Alpha_Source")) {
    texture.FindProperty("AlphaSource").Set(io.FieldReadC());
  }
}

void ReadLayeredTexture(FbxIO& io, FbxLayeredTexture& texture) {
  if (io.FieldReadBegin("BlendModes")) {
    std::vector<int32_t> modes;
    if (!io.FieldReadArray(modes)) {
      io.FieldReadBegin("BlendModes");
      while (io.FieldReadGetRemain() > 0) modes.push_back(io.FieldReadI());
    }
    texture.inputs.resize(modes.size());
    for (size_t i = 0; i < modes.size(); ++i) {
      texture.inputs[i].blendMode = modes[i] > kLastBlendMode ? kBlendModeOverUnknown : modes[i];
    }
  }
  if (io.FieldReadBegin("Alphas")) {
    std::vector<double> alphas;
    if (!io.FieldReadArray(alphas)) {
      io.FieldReadBegin("Alphas");
      while (io.FieldReadGetRemain() > 0) alphas.push_back(io.FieldReadD());
    }
    const size_t count = std::min(alphas.size(), texture.inputs.size());
    for (size_t i = 0; i < count; ++i) {
      if (!std::isnan(alphas[i])) texture.inputs[i].alpha = std::clamp(alphas[i], 0.0, 1.0);
    }
  }
  ReadProperties(io, texture);
}

void ReadVideo(FbxIO& io, FbxVideo& video, FbxMediaFolder& media) {
  ReadProperties(io, video);
  video.useMipMap = io.FieldReadI("UseMipMap") != 0;
  video.SetFileName(io.FieldReadC("Filename"));
  video.SetRelativeFileName(io.FieldReadC("RelativeFilename"));
  if (!media.IsEnabled()) return;
  ExtractContent(io, video, media);
  const std::string found = media.Find(video.GetFileName(), video.GetRelativeFileName());
  if (!found.empty()) video.SetFileName(found);
}

void FindEmbeddedTextures(const FbxDocument& document, const FbxMediaFolder& media) {
  if (!media.IsEnabled() || document.GetSrcObjectCount<FbxVideo>() == 0) return;
  const int count = document.GetSrcObjectCount<FbxFileTexture>();
  for (int i = 0; i < count; ++i) {
    FbxFileTexture& texture = *document.GetSrcObject<FbxFileTexture>(i);
    std::string found = media.Find(texture.GetFileName(), texture.GetRelativeFileName());
    const auto* video = texture.GetSrcObject<FbxVideo>();
    if (found.empty() && video != nullptr) {
      found = media.Find(texture.GetFileName(), video->GetRelativeFileName());
    }
    if (!found.empty()) texture.SetFileName(found);
  }
}
