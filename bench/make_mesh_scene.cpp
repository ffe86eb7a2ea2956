// Writes a scene of skinned meshes, as large as asked for: each mesh a wavy sheet with four weights
// a point, a normal for each corner, indexed texture coordinates with a seam, three materials and,
// if asked for, morphs that each move some of the points and turn their normals.
//
//   make_mesh_scene FILE binary|text TRIANGLES MESHES [MORPHS PERCENT]
//
// PERCENT is how many of its mesh's points a morph moves.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "tests/support/scene_builder.h"

namespace {

constexpr int kBones = 60;
constexpr int kColumns = 125;  // quads across a sheet

struct Sheet {
  int mesh;
  int rows;

  int PointCount() const { return (kColumns + 1) * (rows + 1); }
  int PointAt(int row, int column) const { return row * (kColumns + 1) + column; }
  double Phase(int row, int column) const { return row * 0.07 + column * 0.11 + mesh; }
};

SceneBuilder::MeshIds AddSheet(SceneBuilder& scene, const Sheet& sheet) {
  std::vector<double> points;
  std::vector<double> uvs;
  for (int row = 0; row <= sheet.rows; ++row) {
    for (int column = 0; column <= kColumns; ++column) {
      const double phase = sheet.Phase(row, column);
      points.insert(points.end(), {column * 4.1 + std::sin(phase),
                                   row * 3.7 + std::cos(phase * 1.3), 30.0 * std::sin(phase)});
      uvs.insert(uvs.end(),
                 {column / static_cast<double>(kColumns), row / static_cast<double>(sheet.rows)});
    }
  }
  // The column in the middle is a seam: the quads on its right have coordinates of their own.
  const int seam = kColumns / 2;
  for (int row = 0; row <= sheet.rows; ++row) {
    uvs.insert(uvs.end(), {0.0, row / static_cast<double>(sheet.rows)});
  }

  std::vector<std::vector<int32_t>> triangles;
  std::vector<int32_t> uvIndex;
  std::vector<int32_t> materials;
  std::vector<double> normals;
  const auto addCorner = [&](int row, int column, bool isRightOfSeam) {
    const int point = sheet.PointAt(row, column);
    triangles.back().push_back(point);
    uvIndex.push_back(isRightOfSeam && column == seam ? sheet.PointCount() + row : point);
    const double phase = sheet.Phase(row, column);
    const double x = -std::cos(phase) * 0.6;
    const double y = -std::cos(phase) * 0.4;
    const double length = std::sqrt(x * x + y * y + 1.0);
    normals.insert(normals.end(), {x / length, y / length, 1.0 / length});
  };
  for (int row = 0; row < sheet.rows; ++row) {
    for (int column = 0; column < kColumns; ++column) {
      const bool isRight = column >= seam;
      triangles.emplace_back();
      addCorner(row, column, isRight);
      addCorner(row, column + 1, isRight);
      addCorner(row + 1, column + 1, isRight);
      triangles.emplace_back();
      addCorner(row, column, isRight);
      addCorner(row + 1, column + 1, isRight);
      addCorner(row + 1, column, isRight);
      materials.insert(materials.end(), 2, row * 3 / sheet.rows);
    }
  }
  return scene.Mesh(
      "mesh" + std::to_string(sheet.mesh), std::move(points), triangles,
      {Normals("ByPolygonVertex", "Direct", std::move(normals)),
       UVs("map", "ByPolygonVertex", "IndexToDirect", std::move(uvs), std::move(uvIndex)),
       Materials(std::move(materials))});
}

void AddSkin(SceneBuilder& scene, const Sheet& sheet, int64_t geometry,
             const std::vector<int64_t>& bones) {
  const int64_t skin = scene.Skin(geometry);
  std::vector<std::vector<int32_t>> points(bones.size());
  std::vector<std::vector<double>> weights(bones.size());
  for (int point = 0; point < sheet.PointCount(); ++point) {
    const double share = 0.5 + 0.4 * std::sin(point * 0.37);
    const double parts[] = {share * 0.7, share * 0.3, (1 - share) * 0.6, (1 - share) * 0.4};
    for (int i = 0; i < 4; ++i) {
      const auto bone = static_cast<size_t>((point / 250 + i * 7 + sheet.mesh) % kBones);
      points[bone].push_back(point);
      weights[bone].push_back(parts[i]);
    }
  }
  for (size_t bone = 0; bone < bones.size(); ++bone) {
    if (points[bone].empty()) continue;
    scene.Cluster(skin, bones[bone], std::move(points[bone]), std::move(weights[bone]));
  }
}

void AddMorphs(SceneBuilder& scene, const Sheet& sheet, int64_t geometry, int count, int percent) {
  if (count == 0) return;
  const int64_t blendShape = scene.BlendShape(geometry);
  const int moved = static_cast<int>(int64_t{sheet.PointCount()} * percent / 100);
  const int unmoved = sheet.PointCount() - moved;
  for (int morph = 0; morph < count; ++morph) {
    std::vector<int32_t> points;
    std::vector<double> offsets;
    std::vector<double> normals;
    const int first = static_cast<int>(int64_t{unmoved} * morph / count);
    for (int point = first; point < first + moved; ++point) {
      const double phase = point * 0.013 + morph;
      points.push_back(point);
      offsets.insert(offsets.end(),
                     {std::sin(phase), 2.0 * std::cos(phase), std::sin(phase * 0.3)});
      normals.insert(normals.end(), {0.2 * std::cos(phase), 0.2 * std::sin(phase), 0.0});
    }
    scene.Target(scene.Channel(blendShape, "morph" + std::to_string(morph)), std::move(points),
                 std::move(offsets), std::move(normals));
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5 && argc != 7) {
    std::fprintf(stderr,
                 "usage: make_mesh_scene FILE binary|text TRIANGLES MESHES [MORPHS PERCENT]\n");
    return 2;
  }
  const bool isText = std::string(argv[2]) == "text";
  const int meshes = std::max(std::atoi(argv[4]), 1);
  const int rows = std::max(std::atoi(argv[3]) / meshes / (2 * kColumns), 1);
  const int morphs = argc == 7 ? std::atoi(argv[5]) : 0;
  const int percent = argc == 7 ? std::clamp(std::atoi(argv[6]), 0, 100) : 0;
  SceneBuilder scene;
  scene.SetYUp();  // converted while it loads, as most scenes are
  std::vector<int64_t> bones;
  for (int i = 0; i < kBones; ++i) {
    bones.push_back(scene.Bone("bone" + std::to_string(i),
                               bones.empty() ? SceneBuilder::kRoot : bones[bones.size() / 2],
                               {P("Lcl Translation", {0, 10, 0})}));
  }
  std::vector<int64_t> materials;
  for (const char* name : {"skin", "cloth", "metal"}) materials.push_back(scene.AddMaterial(name));
  for (int mesh = 0; mesh < meshes; ++mesh) {
    const Sheet sheet{mesh, rows};
    const SceneBuilder::MeshIds ids = AddSheet(scene, sheet);
    for (const int64_t material : materials) scene.Connect(material, ids.node);
    AddSkin(scene, sheet, ids.mesh, bones);
    AddMorphs(scene, sheet, ids.mesh, morphs, percent);
  }
  std::ofstream file(argv[1], std::ios::binary);
  file << scene.Write({.ascii = isText, .compress = !isText});
  return file.flush() ? 0 : 1;
}
