#include "converter/driver/cal3d_to_text.h"

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

#include <boost/filesystem.hpp>

#include "cal3d/io/loader.h"
#include "cal3d/io/saver.h"

namespace {

std::string ReadWholeFile(const std::string& path) {
  const auto close = [](std::FILE* stream) { std::fclose(stream); };
  std::unique_ptr<std::FILE, decltype(close)> file(nullptr, close);
  // A directory opens too, but has no length; a pipe that nobody writes into would hang us.
  boost::system::error_code error;
  if (boost::filesystem::is_regular_file(path, error)) {
    file.reset(std::fopen(path.c_str(), "rb"));
  }
  if (!file) throw std::runtime_error("[" + path + "] can't be opened");
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

bool Convert(const CalBufferSource& source, const ConversionArguments& args) {
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

}  // namespace

bool Cal3d2Text(const ConversionArguments& args) {
  const std::string bytes = ReadWholeFile(args.inputFilename);
  try {
    return Convert(CalBufferSource(bytes.data(), bytes.size()), args);
  } catch (const std::runtime_error& fault) {
    throw std::runtime_error("[" + args.inputFilename + "] " + fault.what());
  }
}
