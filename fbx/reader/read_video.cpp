#include "fbx/reader/read_video.h"

#include <utility>

#include "fbx/io/fbx_io.h"
#include "fbx/reader/media_folder.h"
#include "fbx/reader/read_properties.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_scene.h"

namespace {

// The pieces of the embedded file one after the other: text files hold it in several values.
void ExtractContent(FbxIO& io, FbxVideo& video, const FbxMediaFolder& media) {
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

void ReadVideo(FbxIO& io, FbxVideo& video, const FbxMediaFolder& media) {
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
