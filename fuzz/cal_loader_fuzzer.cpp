// Feeds a block to the Cal3D loaders: each must throw, or return an object that can be saved.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>

#include "cal3d/io/loader.h"
#include "cal3d/io/model_check.h"

namespace {

template <typename Load>
void Try(const Load& load, const CalBufferSource& source) {
  try {
    const auto object = load(source);
    if (!object || !FaultOf(*object).empty()) std::abort();
  } catch (const std::exception&) {
    // The block was refused, as most are.
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const CalBufferSource source(data, size);
  Try(CalLoader::loadCoreSkeleton, source);
  Try(CalLoader::loadCoreMesh, source);
  Try(CalLoader::loadCoreMaterial, source);
  Try(CalLoader::loadCoreAnimation, source);
  Try(CalLoader::loadCoreMorphAnimation, source);
  return 0;
}
