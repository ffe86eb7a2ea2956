#include "cal3d/io/loader.h"

#include <stdexcept>
#include <string>
#include <string_view>

#include "cal3d/io/file_format.h"
#include "cal3d/io/forms.h"

namespace {

// Whether the first character is '<', behind a byte order mark and white space.
bool LooksLikeXml(std::string_view text) {
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  const size_t content = text.find_first_not_of(" \t\r\n");
  return content != std::string_view::npos && text[content] == '<';
}

// Tells the two forms apart by the first bytes.
template <typename ReadBinary, typename ReadText>
auto Load(CalBufferSource source, const CalFileKind& kind, const ReadBinary& readBinary,
          const ReadText& readText) {
  if (source.Rest().starts_with(kind.binaryMagic)) {
    source.ReadBytes(kind.binaryMagic.size());
    return readBinary(source);
  }
  if (LooksLikeXml(source.Rest())) return readText(source.Rest());
  throw std::runtime_error("the file is no Cal3D " + std::string(kind.name) +
                           ": it begins neither with " +
                           std::string(kind.binaryMagic.substr(0, 3)) + " nor as XML");
}

}  // namespace

boost::shared_ptr<CalCoreSkeleton> CalLoader::loadCoreSkeleton(CalBufferSource source) {
  return Load(source, kSkeletonFile, ReadBinarySkeleton, ReadTextSkeleton);
}

boost::shared_ptr<CalCoreMesh> CalLoader::loadCoreMesh(CalBufferSource source) {
  return Load(source, kMeshFile, ReadBinaryMesh, ReadTextMesh);
}

boost::shared_ptr<CalCoreAnimation> CalLoader::loadCoreAnimation(CalBufferSource source) {
  return Load(source, kAnimationFile, ReadBinaryAnimation, ReadTextAnimation);
}

boost::shared_ptr<CalCoreMaterial> CalLoader::loadCoreMaterial(CalBufferSource source) {
  return Load(source, kMaterialFile, ReadBinaryMaterial, ReadTextMaterial);
}

boost::shared_ptr<CalCoreMorphAnimation> CalLoader::loadCoreMorphAnimation(CalBufferSource source) {
  return Load(source, kMorphAnimationFile, ReadBinaryMorphAnimation, ReadTextMorphAnimation);
}
