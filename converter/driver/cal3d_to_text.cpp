#include "converter/driver/cal3d_to_text.h"

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

#include "cal3d/io/loader.h"
#include "cal3d/io/saver.h"
#include "converter/driver/names.h"

namespace {

std::string ReadWholeFile(const std::string& path) {
  const auto close = [](std::FILE* stream) { std::fclose(stream); };
  const std::unique_ptr<std::FILE, decltype(close)> file(std::fopen(path.c_str(), "rb"), close);
  // Opening a directory succeeds, and its length makes no sense.
  if (!file || isDirectory(path)) throw std::runtime_error("[" + path + "] can't be opened");
  std::string bytes;
  if (std::fseek(file.get(), 0, SEEK_END) == 0) {
    const long length = std::ftell(file.get());
    if (length < 0) throw std::runtime_error("[" + path + "] can't be read");
    bytes.resize(static_cast<size_t>(length));
    std::rewind(file.get());
  }
  if (std::fread(bytes.data(), 1, bytes.size(), file.get()) != bytes.size()) {
    throw std::runtime_error("[" + path + "] can't be read");
  }
  return bytes;
}

}  // namespace

bool Cal3d2Text(const ConversionArguments& args) {
  const std::string bytes = ReadWholeFile(args.inputFilename);
  const CalBufferSource source(bytes.data(), bytes.size());
  if ((args.type & NODE_OBJECT) != 0) {
    const auto loaded = CalLoader::loadCoreSkeleton(source);
    CalCoreSkeleton skeleton(loaded->coreBones);
    skeleton.sceneAmbientColor = loaded->sceneAmbientColor;
    return CalSaver::saveCoreSkeleton(args.outputFilename, &skeleton);
  }
  if ((args.type & MESH_OBJECT) != 0) {
    const CalCoreMesh mesh{CalLoader::loadCoreMesh(source)->submeshes};
    return CalSaver::saveCoreMesh(args.outputFilename, &mesh);
  }
  if ((args.type & ANIM_OBJECT) != 0) {
    const auto loaded = CalLoader::loadCoreAnimation(source);
    const CalCoreAnimation animation{loaded->duration, loaded->tracks};
    return CalSaver::saveCoreAnimation(args.outputFilename, &animation);
  }
  return false;
}
