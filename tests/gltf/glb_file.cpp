#include "tests/gltf/glb_file.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include <gtest/gtest.h>

using nlohmann::json;

namespace {

// Column by column, as in the format.
using Matrix = std::array<double, 16>;

Matrix Product(const Matrix& a, const Matrix& b) {
  Matrix c{};
  for (size_t column = 0; column < 4; ++column) {
    for (size_t row = 0; row < 4; ++row) {
      for (size_t k = 0; k < 4; ++k) c[column * 4 + row] += a[k * 4 + row] * b[column * 4 + k];
    }
  }
  return c;
}

Point Applied(const Matrix& m, const Point& p) {
  Point q{};
  for (size_t row = 0; row < 3; ++row) {
    q[row] = m[row] * p[0] + m[4 + row] * p[1] + m[8 + row] * p[2] + m[12 + row];
  }
  return q;
}

Matrix LocalMatrix(const json& node) {
  const auto q = node.value("rotation", std::vector<double>{0, 0, 0, 1});
  const auto t = node.value("translation", std::vector<double>{0, 0, 0});
  const double x = q[0];
  const double y = q[1];
  const double z = q[2];
  const double w = q[3];
  return {1 - 2 * (y * y + z * z),
          2 * (x * y + z * w),
          2 * (x * z - y * w),
          0,
          2 * (x * y - z * w),
          1 - 2 * (x * x + z * z),
          2 * (y * z + x * w),
          0,
          2 * (x * z + y * w),
          2 * (y * z - x * w),
          1 - 2 * (x * x + y * y),
          0,
          t[0],
          t[1],
          t[2],
          1};
}

template <typename Number>
Number At(const std::string& bytes, size_t offset) {
  Number value{};
  EXPECT_LE(offset + sizeof value, bytes.size());
  std::memcpy(&value, bytes.data() + offset, sizeof value);
  return value;
}

}  // namespace

GlbFile::GlbFile(const std::string& bytes) {
  EXPECT_EQ(bytes.substr(0, 4), "glTF");
  EXPECT_EQ(At<uint32_t>(bytes, 8), bytes.size());
  const size_t size = At<uint32_t>(bytes, 12);
  EXPECT_EQ(bytes.substr(16, 4), "JSON");
  json = nlohmann::json::parse(bytes.substr(20, size));
  if (20 + size < bytes.size()) buffer = bytes.substr(28 + size);
  EXPECT_EQ(size % 4 + buffer.size() % 4, 0U);
}

std::vector<double> GlbFile::Numbers(size_t index) const {
  const nlohmann::json& accessor = json["accessors"][index];
  const auto numbers = [this](const nlohmann::json& view, int type, size_t count) {
    const size_t offset = json["bufferViews"][view.get<size_t>()]["byteOffset"];
    std::vector<double> values;
    for (size_t i = 0; i < count; ++i) {
      values.push_back(type == 5126   ? static_cast<double>(At<float>(buffer, offset + 4 * i))
                       : type == 5125 ? At<uint32_t>(buffer, offset + 4 * i)
                                      : At<uint16_t>(buffer, offset + 2 * i));
    }
    return values;
  };
  const std::string shape = accessor["type"];
  const size_t width = shape == "SCALAR" ? 1
                       : shape == "MAT4" ? 16
                                         : static_cast<size_t>(shape[3] - '0');
  const size_t count = accessor["count"].get<size_t>() * width;
  const int type = accessor["componentType"];
  std::vector<double> values(count);
  if (accessor.contains("bufferView")) values = numbers(accessor["bufferView"], type, count);
  if (!accessor.contains("sparse")) return values;
  const nlohmann::json& sparse = accessor["sparse"];
  const size_t moved = sparse["count"];
  const auto ids =
      numbers(sparse["indices"]["bufferView"], sparse["indices"]["componentType"], moved);
  const auto each = numbers(sparse["values"]["bufferView"], type, moved * width);
  for (size_t i = 0; i < moved; ++i) {
    EXPECT_TRUE(i == 0 || ids[i] > ids[i - 1]);
    for (size_t k = 0; k < width; ++k) {
      values[static_cast<size_t>(ids[i]) * width + k] = each[i * width + k];
    }
  }
  return values;
}

std::string GlbFile::Image(size_t image) const {
  const nlohmann::json& view =
      json["bufferViews"][json["images"][image]["bufferView"].get<size_t>()];
  return buffer.substr(view["byteOffset"], view["byteLength"]);
}

std::vector<Point> GlbFile::SkinnedVertices(size_t node, size_t primitive) const {
  const nlohmann::json& nodes = json["nodes"];
  // Transforms from node 0 downwards, which itself turns everything.
  std::vector<Matrix> global(nodes.size(), LocalMatrix(nlohmann::json::object()));
  std::vector<size_t> open = {0};
  while (!open.empty()) {
    const size_t parent = open.back();
    open.pop_back();
    for (const size_t child : nodes[parent].value("children", std::vector<size_t>())) {
      global[child] = Product(global[parent], LocalMatrix(nodes[child]));
      open.push_back(child);
    }
  }
  const nlohmann::json& skin = json["skins"][nodes[node]["skin"].get<size_t>()];
  const std::vector<double> inverses = Numbers(skin["inverseBindMatrices"]);
  std::vector<Matrix> joints;
  for (size_t i = 0; i < skin["joints"].size(); ++i) {
    Matrix inverse;
    std::copy_n(inverses.begin() + static_cast<std::ptrdiff_t>(16 * i), 16, inverse.begin());
    joints.push_back(Product(global[skin["joints"][i].get<size_t>()], inverse));
  }
  const nlohmann::json& mesh = json["meshes"][nodes[node]["mesh"].get<size_t>()];
  const nlohmann::json& attributes = mesh["primitives"][primitive]["attributes"];
  const std::vector<double> positions = Numbers(attributes["POSITION"]);
  std::vector<Point> skinned(positions.size() / 3, Point{});
  for (int set = 0; attributes.contains("JOINTS_" + std::to_string(set)); ++set) {
    const auto ids = Numbers(attributes["JOINTS_" + std::to_string(set)]);
    const auto weights = Numbers(attributes["WEIGHTS_" + std::to_string(set)]);
    for (size_t i = 0; i < ids.size(); ++i) {
      const size_t vertex = i / 4;
      const Point at = {positions[3 * vertex], positions[3 * vertex + 1],
                        positions[3 * vertex + 2]};
      const Point moved = Applied(joints.at(static_cast<size_t>(ids[i])), at);
      for (size_t k = 0; k < 3; ++k) skinned[vertex][k] += weights[i] * moved[k];
    }
  }
  return skinned;
}
