#include "gltf/picture.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <vector>

#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#define STBI_ONLY_TGA
#define STBI_ONLY_BMP
#define STBI_NO_STDIO
#define STBI_MAX_DIMENSIONS 16384
#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#include <stb_image.h>
#define STBI_WRITE_NO_STDIO
#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb_image_write.h>

namespace {

constexpr int kRgba = 4;

struct Pixels {
  int width = 0;
  int height = 0;
  bool hasAlpha = false;
  std::unique_ptr<stbi_uc, decltype(&std::free)> rgba{nullptr, &std::free};

  const stbi_uc* At(int x, int y) const {
    return rgba.get() +
           (static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)) * kRgba;
  }
};

const stbi_uc* Data(const std::string& file) {
  return reinterpret_cast<const stbi_uc*>(file.data());
}

int Size(const std::string& file) {
  constexpr size_t kMost = size_t{256} << 20;
  if (file.size() > kMost) throw std::runtime_error("has more than 256 MB");
  return static_cast<int>(file.size());
}

// A file of a few bytes may claim any size, and decoding pays for what it claims.
void CheckHead(const std::string& file) {
  int width = 0;
  int height = 0;
  int components = 0;
  if (stbi_info_from_memory(Data(file), Size(file), &width, &height, &components) == 0) {
    throw std::runtime_error("is no picture that can be shown (PNG, JPEG, TGA or BMP)");
  }
  if (width < 1 || height < 1 || width > STBI_MAX_DIMENSIONS || height > STBI_MAX_DIMENSIONS) {
    throw std::runtime_error("is " + std::to_string(width) + " by " + std::to_string(height) +
                             " points large, more than can be shown");
  }
}

Pixels Decoded(const std::string& file) {
  CheckHead(file);
  Pixels pixels;
  int components = 0;
  stbi_info_from_memory(Data(file), Size(file), &pixels.width, &pixels.height, &components);
  constexpr int64_t kMostPoints = int64_t{1} << 26;  // 256 MB when decoded
  if (int64_t{pixels.width} * pixels.height > kMostPoints) {
    throw std::runtime_error("has too many points to be converted");
  }
  pixels.rgba.reset(stbi_load_from_memory(Data(file), Size(file), &pixels.width, &pixels.height,
                                          &components, kRgba));
  if (!pixels.rgba) throw std::runtime_error("is a damaged picture");
  pixels.hasAlpha = components == 2 || components == 4;
  return pixels;
}

Picture Png(int width, int height, const uint8_t* rgba) {
  Picture picture{{}, "image/png"};
  const auto append = [](void* bytes, void* data, int size) {
    static_cast<std::string*>(bytes)->append(static_cast<const char*>(data),
                                             static_cast<size_t>(size));
  };
  if (stbi_write_png_to_func(append, &picture.bytes, width, height, kRgba, rgba, width * kRgba) ==
      0) {
    throw std::runtime_error("can't be turned into PNG");
  }
  return picture;
}

}  // namespace

Picture EmbeddedPicture(const std::string& file) {
  CheckHead(file);
  if (file.starts_with("\x89PNG\r\n\x1A\n")) {
    // Some viewers show nothing of it. The rest of a JPEG is shown by all, and some good ones have
    // no end.
    if (file.find("IEND") == std::string::npos) throw std::runtime_error("is a picture cut off");
    return {file, "image/png"};
  }
  if (file.starts_with("\xFF\xD8\xFF")) return {file, "image/jpeg"};
  const Pixels pixels = Decoded(file);
  return Png(pixels.width, pixels.height, pixels.rgba.get());
}

Picture PictureWithOpacity(const std::string* base, const std::string& opacity, Opacity& spread) {
  const Pixels alpha = Decoded(opacity);
  const Pixels color = base == nullptr ? Pixels() : Decoded(*base);
  // An alpha channel that is full everywhere says nothing.
  const size_t points = static_cast<size_t>(alpha.width) * static_cast<size_t>(alpha.height);
  bool usesAlpha = false;
  for (size_t i = 0; i < points && alpha.hasAlpha && !usesAlpha; ++i) {
    usesAlpha = alpha.rgba.get()[i * kRgba + 3] != 255;
  }

  const int width = base == nullptr ? alpha.width : color.width;
  const int height = base == nullptr ? alpha.height : color.height;
  std::vector<uint8_t> rgba;
  rgba.reserve(static_cast<size_t>(width) * static_cast<size_t>(height) * kRgba);
  size_t full = 0;
  size_t between = 0;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const stbi_uc* from = alpha.At(static_cast<int>(int64_t{x} * alpha.width / width),
                                     static_cast<int>(int64_t{y} * alpha.height / height));
      const int value = usesAlpha ? from[3] : (from[0] * 77 + from[1] * 151 + from[2] * 28) / 256;
      constexpr std::array<stbi_uc, 3> kWhite = {255, 255, 255};
      const stbi_uc* tint = base == nullptr ? kWhite.data() : color.At(x, y);
      rgba.insert(rgba.end(), {tint[0], tint[1], tint[2], static_cast<uint8_t>(value)});
      full += value > 250 ? 1 : 0;
      between += value > 15 && value < 240 ? 1 : 0;
    }
  }
  // The soft rim of a cut-out is a few points in a hundred.
  const size_t all = rgba.size() / kRgba;
  spread = full == all           ? Opacity::kFull
           : between * 20 <= all ? Opacity::kCutOut
                                 : Opacity::kBlended;
  return Png(width, height, rgba.data());
}

Picture Checker() {
  constexpr int kSide = 64;
  constexpr int kSquare = 8;
  std::vector<uint8_t> rgba;
  for (int y = 0; y < kSide; ++y) {
    for (int x = 0; x < kSide; ++x) {
      const bool light = (x / kSquare + y / kSquare) % 2 == 0;
      rgba.insert(rgba.end(),
                  {static_cast<uint8_t>(light ? 230 : 60), static_cast<uint8_t>(light ? 60 : 20),
                   static_cast<uint8_t>(light ? 230 : 60), 255});
    }
  }
  return Png(kSide, kSide, rgba.data());
}
