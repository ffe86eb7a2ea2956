// A glTF 2.0 binary as it grows: the JSON, and one buffer that everything else lies in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

// Keys stay in the order in which they are set, so that the same input gives the same bytes.
using Json = nlohmann::ordered_json;

class GlbBuilder {
 public:
  // What a block of the buffer is for, in the numbers of the format.
  enum class Target { kNone = 0, kVertices = 34962, kIndices = 34963 };
  // An accessor's element.
  enum class Shape { kScalar, kVec2, kVec3, kVec4, kMat4 };

  // Each adds an accessor over the values, whose number is a multiple of the shape's components and
  // not 0, and returns its index. Floats must be finite.
  size_t AddFloats(std::span<const float> values, Shape shape, Target target);
  size_t AddInts(std::span<const uint16_t> values, Shape shape, Target target, bool normalized);
  size_t AddInts(std::span<const uint32_t> values, Shape shape, Target target);
  // Adds an accessor of `count` vectors, all zero but for `values` at `indices`, which ascend
  // strictly and may be empty.
  size_t AddSparseVectors(size_t count, std::span<const uint32_t> indices,
                          std::span<const float> values);
  // Adds an embedded picture and returns its index.
  size_t AddImage(std::string_view bytes, const std::string& mimeType);

  // Appends to an array of the JSON, which is made when it isn't there, and returns the index.
  size_t Add(const char* array, Json element);
  Json& operator[](const char* key) { return json_[key]; }
  Json& At(const char* array, size_t index) { return json_[array][index]; }

  // Whether the JSON says that it uses the extension is up to this.
  void Use(const char* extension);

  // The whole file. Throws std::runtime_error when it has 4 GB or more, which the format can't
  // hold.
  std::string Finish();

 private:
  size_t AddView(size_t begin, Target target);
  template <typename Number>
  size_t AppendAll(std::span<const Number> values);

  Json json_ = Json::object();
  std::string buffer_;
};
