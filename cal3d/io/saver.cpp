#include "cal3d/io/saver.h"

#include <algorithm>
#include <string_view>
#include <system_error>
#include <utility>

#include "cal3d/io/file_format.h"
#include "cal3d/io/forms.h"
#include "cal3d/io/model_check.h"
#include "cal3d/io/output_file.h"

namespace {

bool WantsBinary(std::string_view path) {
  return std::ranges::any_of(kFileKinds, [path](const CalFileKind& kind) {
    const std::string_view ending = kind.binaryExtension;
    return path.size() >= ending.size() &&
           std::ranges::equal(path.substr(path.size() - ending.size()), ending, {}, AsciiLower);
  });
}

// Why the last save failed.
std::string& LastError() {
  static std::string error;
  return error;
}

bool Refuse(const std::string& fault) {
  LastError() = fault;
  return false;
}

CalSaveGate& Gate() {
  static CalSaveGate gate;
  return gate;
}

template <typename Object>
bool Write(const std::string& path, const Object* object) {
  if (const std::string fault = FaultOf(*object); !fault.empty()) return Refuse(fault);
  OutputFile file(path);
  if (WantsBinary(path)) {
    WriteBinary(file, *object);
  } else {
    WriteText(file, *object);
  }
  return file.Commit() || Refuse(std::generic_category().message(file.Error()));
}

template <typename Object>
bool Save(const std::string& path, const Object* object) {
  if (object == nullptr) return Refuse("there is nothing to write");
  const auto write = [&path, object] { return Write(path, object); };
  return Gate() ? Gate()(path, object, write) : write();
}

}  // namespace

const std::string& CalSaver::lastError() { return LastError(); }

void CalSaver::setGate(CalSaveGate gate) { Gate() = std::move(gate); }

bool CalSaver::saveCoreSkeleton(const std::string& path, const CalCoreSkeleton* skeleton) {
  return Save(path, skeleton);
}

bool CalSaver::saveCoreMesh(const std::string& path, const CalCoreMesh* mesh) {
  return Save(path, mesh);
}

bool CalSaver::saveCoreMaterial(const std::string& path, const CalCoreMaterial* material) {
  return Save(path, material);
}

bool CalSaver::saveCoreAnimation(const std::string& path, const CalCoreAnimation* animation) {
  return Save(path, animation);
}

bool CalSaver::saveCoreMorphAnimation(const std::string& path,
                                      const CalCoreMorphAnimation* animation) {
  return Save(path, animation);
}
