#include "gltf/glb_builder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "gltf/view_model.h"

namespace {

// Component types in the numbers of the format.
constexpr int kUnsignedShort = 5123;
constexpr int kUnsignedInt = 5125;
constexpr int kFloat = 5126;

struct ShapeInfo {
  const char* name;
  size_t components;
};

ShapeInfo InfoOf(GlbBuilder::Shape shape) {
  constexpr std::array<ShapeInfo, 5> kShapes = {
      {{"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4}, {"MAT4", 16}}};
  return kShapes[static_cast<size_t>(shape)];
}

void AppendLittleEndian(std::string& bytes, uint32_t value, int size) {
  for (int i = 0; i < size; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
}

Json Accessor(int componentType, size_t count, const ShapeInfo& shape) {
  return {{"componentType", componentType}, {"count", count}, {"type", shape.name}};
}

// The least and the greatest of each component, as the format wants them for positions and times.
void SetBounds(Json& accessor, std::span<const float> values, size_t components, bool withZero) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  std::vector<float> least(components, withZero ? 0 : kInfinity);
  std::vector<float> greatest(components, withZero ? 0 : -kInfinity);
  for (size_t i = 0; i < values.size(); ++i) {
    float& low = least[i % components];
    float& high = greatest[i % components];
    low = std::min(low, values[i]);
    high = std::max(high, values[i]);
  }
  accessor["min"] = least;
  accessor["max"] = greatest;
}

}  // namespace

std::string FileStem(const std::string& path) {
  const size_t name = path.rfind('/') + 1;  // 0 when there is none
  const size_t dot = path.rfind('.');
  return path.substr(name, dot == std::string::npos || dot <= name ? dot : dot - name);
}

template <typename Number>
size_t GlbBuilder::AppendAll(std::span<const Number> values) {
  buffer_.resize((buffer_.size() + 3) / 4 * 4);
  const size_t begin = buffer_.size();
  buffer_.reserve(std::max(begin + values.size_bytes(),
                           std::min(2 * buffer_.capacity(), begin + (size_t{64} << 20))));
  for (const Number value : values) {
    if constexpr (std::is_same_v<Number, float>) {
      AppendLittleEndian(buffer_, std::bit_cast<uint32_t>(value), 4);
    } else {
      AppendLittleEndian(buffer_, value, sizeof(Number));
    }
  }
  return begin;
}

size_t GlbBuilder::AddView(size_t begin, Target target) {
  Json view = {{"buffer", 0}, {"byteOffset", begin}, {"byteLength", buffer_.size() - begin}};
  if (target != Target::kNone) view["target"] = static_cast<int>(target);
  return Add("bufferViews", std::move(view));
}

size_t GlbBuilder::AddFloats(std::span<const float> values, Shape shape, Target target) {
  const ShapeInfo info = InfoOf(shape);
  Json accessor = {{"bufferView", AddView(AppendAll(values), target)}};
  accessor.update(Accessor(kFloat, values.size() / info.components, info));
  if (shape == Shape::kScalar || shape == Shape::kVec3) {
    SetBounds(accessor, values, info.components, false);
  }
  return Add("accessors", std::move(accessor));
}

size_t GlbBuilder::AddInts(std::span<const uint16_t> values, Shape shape, Target target,
                           bool normalized) {
  const ShapeInfo info = InfoOf(shape);
  Json accessor = {{"bufferView", AddView(AppendAll(values), target)}};
  accessor.update(Accessor(kUnsignedShort, values.size() / info.components, info));
  if (normalized) accessor["normalized"] = true;
  return Add("accessors", std::move(accessor));
}

size_t GlbBuilder::AddInts(std::span<const uint32_t> values, Shape shape, Target target) {
  const ShapeInfo info = InfoOf(shape);
  Json accessor = {{"bufferView", AddView(AppendAll(values), target)}};
  accessor.update(Accessor(kUnsignedInt, values.size() / info.components, info));
  return Add("accessors", std::move(accessor));
}

size_t GlbBuilder::AddSparseVectors(size_t count, std::span<const uint32_t> indices,
                                    std::span<const float> values) {
  Json accessor = Accessor(kFloat, count, InfoOf(Shape::kVec3));
  SetBounds(accessor, values, 3, indices.size() < count);
  if (!indices.empty()) {
    const size_t indexView = AddView(AppendAll(indices), Target::kNone);
    const size_t valueView = AddView(AppendAll(values), Target::kNone);
    accessor["sparse"] = {{"count", indices.size()},
                          {"indices", {{"bufferView", indexView}, {"componentType", kUnsignedInt}}},
                          {"values", {{"bufferView", valueView}}}};
  }
  return Add("accessors", std::move(accessor));
}

size_t GlbBuilder::AddImage(std::string_view bytes, const std::string& mimeType) {
  const size_t begin = AppendAll(std::span<const uint16_t>());
  buffer_ += bytes;
  const size_t view = AddView(begin, Target::kNone);
  return Add("images", {{"bufferView", view}, {"mimeType", mimeType}});
}

size_t GlbBuilder::Add(const char* array, Json element) {
  Json& elements = json_[array];
  elements.push_back(std::move(element));
  return elements.size() - 1;
}

void GlbBuilder::Use(const char* extension) {
  Json& used = json_["extensionsUsed"];
  if (std::find(used.begin(), used.end(), extension) == used.end()) used.push_back(extension);
}

std::string GlbBuilder::Finish() {
  if (!buffer_.empty()) Add("buffers", {{"byteLength", buffer_.size()}});
  // Names may hold what is no UTF-8.
  std::string text = json_.dump(-1, ' ', false, Json::error_handler_t::replace);
  text.resize((text.size() + 3) / 4 * 4, ' ');
  buffer_.resize((buffer_.size() + 3) / 4 * 4);

  const auto chunk = [](std::string& file, std::string_view name, std::string_view bytes) {
    AppendLittleEndian(file, static_cast<uint32_t>(bytes.size()), 4);
    file.append(name).append(bytes);
  };
  constexpr size_t kHead = 12;
  constexpr size_t kChunkHead = 8;
  const size_t size =
      kHead + kChunkHead + text.size() + (buffer_.empty() ? 0 : kChunkHead + buffer_.size());
  if (size > std::numeric_limits<uint32_t>::max()) {
    throw std::runtime_error("the model takes more than 4 GB, which a .glb can't hold");
  }
  std::string file = "glTF";
  file.reserve(size);
  AppendLittleEndian(file, 2, 4);
  AppendLittleEndian(file, static_cast<uint32_t>(size), 4);
  chunk(file, "JSON", text);
  if (!buffer_.empty()) chunk(file, std::string_view("BIN\0", 4), buffer_);
  return file;
}
