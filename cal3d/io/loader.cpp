#include "cal3d/io/loader.h"

#include <stdexcept>
#include <string>
#include <string_view>

#include "cal3d/io/binary_loader.h"
#include "cal3d/io/file_format.h"
#include "cal3d/io/text_loader.h"

namespace {

// Whether the first character is '<', behind a byte order mark and white space.
bool LooksLikeXml(std::string_view text) {
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  const std::size_t content = text.find_first_not_of(" \t\r\n");
  return content != std::string_view::npos && text[content] == '<';
}

// Tells the two forms apart by the first bytes.
template <typename ReadBinary, typename ReadText>
auto Load(CalBufferSource source, std::string_view kind, std::string_view magic,
          const ReadBinary& read_binary, const ReadText& read_text) {
  if (source.Rest().starts_with(magic)) {
    source.ReadBytes(magic.size());
    return read_binary(source);
  }
  if (LooksLikeXml(source.Rest())) return read_text(source.Rest());
  throw std::runtime_error("the file is no Cal3D " + std::string(kind) +
                           ": it begins neither with " + std::string(magic.substr(0, 3)) +
                           " nor as XML");
}

}  // namespace

boost::shared_ptr<CalCoreSkeleton> CalLoader::loadCoreSkeleton(CalBufferSource source) {
  return Load(source, "skeleton", kBinarySkeletonMagic, ReadBinarySkeleton, ReadTextSkeleton);
}

boost::shared_ptr<CalCoreMesh> CalLoader::loadCoreMesh(CalBufferSource source) {
  return Load(source, "mesh", kBinaryMeshMagic, ReadBinaryMesh, ReadTextMesh);
}

boost::shared_ptr<CalCoreAnimation> CalLoader::loadCoreAnimation(CalBufferSource source) {
  return Load(source, "animation", kBinaryAnimationMagic, ReadBinaryAnimation, ReadTextAnimation);
}
