// The last stage: one submesh for each material of the group, its vertices with their influences,
// and the file with its records.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>

#include <boost/make_shared.hpp>

#include "cal3d/io/file_kinds.h"
#include "cal3d/io/saver.h"
#include "converter/base/names.h"
#include "converter/base/records.h"
#include "converter/mesh/export_mesh.h"
#include "converter/mesh/triangulation.h"
#include "converter/mesh/vertex_splitting.h"

namespace {

constexpr double kAvatarSize = 600.0;  // in output units
constexpr int kSmallestSize = 100;
constexpr int kLargestSize = 5000;

// The box around the control points of a group. Its upper end starts just above 0, so that it isn't
// that of points that all lie below.
struct Bounds {
  explicit Bounds(const std::vector<ControlPoint>& points) {
    for (const ControlPoint& point : points) {
      for (size_t i = 0; i < 3; ++i) {
        if (point.position[i] < min[i]) min[i] = point.position[i];
        if (point.position[i] > max[i]) max[i] = point.position[i];
      }
    }
  }

  // Cut to whole units.
  int Size(size_t axis) const {
    const double size = std::abs(max[axis] - min[axis]);
    constexpr int kMost = std::numeric_limits<int>::max();
    return size < kMost ? static_cast<int>(size) : kMost;
  }

  FbxDouble3 min{std::numeric_limits<float>::max(), std::numeric_limits<float>::max(),
                 std::numeric_limits<float>::max()};
  FbxDouble3 max{std::numeric_limits<float>::min(), std::numeric_limits<float>::min(),
                 std::numeric_limits<float>::min()};
};

void WarnOfSize(const std::string& name, const Bounds& bounds) {
  const int largest = std::max({bounds.Size(0), bounds.Size(1), bounds.Size(2)});
  std::ostringstream ratio;
  ratio.imbue(std::locale::classic());
  ratio << std::setprecision(2) << static_cast<double>(static_cast<float>(largest)) / kAvatarSize;
  const std::string text = "Exported mesh " + name + " is " + ratio.str() +
                           " times the size of an ZEVO avatar, and may be too ";
  if (largest < kSmallestSize) AddWarning(text + "small.");
  if (largest > kLargestSize) AddWarning(text + "large.");
}

// 0 to 255 for components in 0 to 1; others wrap into their neighbours.
uint32_t ColorByte(double component) {
  const double scaled = static_cast<double>(static_cast<float>(component)) * 255.0;
  constexpr double kMost = 2147483648.0;
  if (!(scaled > -kMost && scaled < kMost)) return 0;
  return static_cast<uint32_t>(static_cast<int32_t>(scaled));
}

uint32_t ColorWord(const FbxColor& color) {
  return 0xFF000000U + ColorByte(color.mRed) * 0x10000U + ColorByte(color.mGreen) * 0x100U +
         ColorByte(color.mBlue);
}

CalVector4 NarrowNormal(const FbxDouble3& normal) {
  const auto x = static_cast<float>(normal[0]);
  const auto y = static_cast<float>(normal[1]);
  const auto z = static_cast<float>(normal[2]);
  const float length = std::sqrt(x * x + y * y + z * z);
  if (length == 0.0F) return {x, y, z, 0.0F};
  return {x / length, y / length, z / length, 0.0F};
}

std::string JoinIds(const PolygonMap& polygons) {
  std::string ids;
  for (const auto& [id, list] : polygons) {
    if (!ids.empty()) ids += ',';
    ids += std::to_string(id);
  }
  return ids;
}

}  // namespace

void ExportMesh::AddVertices(const MeshGroup& group, const std::vector<uint32_t>& vertices,
                             CalCoreSubmesh& submesh) const {
  std::vector<CalCoreSubmesh::Influence> influences;
  for (size_t i = 0; i < vertices.size(); ++i) {
    const uint32_t corner = vertices[i];
    const ControlPoint& point = group.PointOf(corner);
    const GroupMesh& mesh = group.meshes[point.mesh];
    const MeshCorner place = group.CornerOf(mesh, corner);
    const FbxVector4& position = point.position;

    CalCoreSubmesh::Vertex vertex;
    vertex.position = {static_cast<float>(position[0]), static_cast<float>(position[1]),
                       static_cast<float>(position[2]), static_cast<float>(position[3])};
    vertex.normal = NarrowNormal(group.corners[corner].normal);
    influences.clear();
    for (uint32_t w = 0; w < point.weightCount; ++w) {
      const BoneWeight& weight = group.weights[point.firstWeight + w];
      influences.push_back({weight.boneId, weight.weight, w + 1 == point.weightCount ? 1U : 0U});
    }
    if (influences.empty()) influences.push_back({0, 1.0F, 1U});
    submesh.addVertex(vertex, ColorWord(getColor(mesh, place)), influences);

    // Of several texture coordinates the file takes the first.
    const FbxVector2 uv = mesh.uvs.empty() ? FbxVector2() : getUV(*mesh.uvs.front(), place);
    submesh.setTextureCoordinate(static_cast<int32_t>(i),
                                 {static_cast<float>(uv[0]), static_cast<float>(1.0 - uv[1])});
  }
}

bool ExportMesh::Save(const std::string& name, MeshGroup& group) const {
  std::string fileName = args_.outputFilename;
  if (fileName.empty()) {
    fileName = prependPathToFileName(args_.directoryForOutputFiles,
                                     urlencode(name).append(kMeshFile.extension));
  }
  CalCoreMesh mesh;
  Triangulator triangulator(group, args_.verbosity);
  VertexSplitter splitter(group, args_.verbosity);
  for (const auto& [id, polygons] : group.polygons) {
    const std::vector<Triangle> triangles = triangulator.Triangulate(polygons);
    if (triangles.empty()) continue;
    const std::vector<uint32_t> vertices = splitter.BuildControlPointNormalGroupMap(triangles);
    const auto submesh = boost::make_shared<CalCoreSubmesh>(
        static_cast<int32_t>(vertices.size()), true, static_cast<int32_t>(triangles.size()));
    submesh->coreMaterialThreadId = id;
    AddVertices(group, vertices, *submesh);
    for (const Triangle& triangle : triangles) {
      CalCoreSubmesh::Face face;
      for (size_t c = 0; c < 3; ++c) {
        // A face has 16 bits for a vertex; the indices of a larger submesh wrap.
        face.vertexId[c] = static_cast<uint16_t>(splitter.VertexOf(triangle[c]));
      }
      submesh->addFace(face);
    }
    AddMorphs(group, vertices, *submesh);
    mesh.submeshes.push_back(submesh);
  }
  if (mesh.submeshes.empty()) {
    AddWarning(name + " has no geometry");
    return true;
  }

  const Bounds bounds(group.controlPoints);
  if (args_.verbosity != 0) {
    std::printf("\n mesh min:%f,%f,%f max:%f,%f,%f\n", bounds.min[0], bounds.min[1], bounds.min[2],
                bounds.max[0], bounds.max[1], bounds.max[2]);
  }
  WarnOfSize(name, bounds);
  if (!CalSaver::saveCoreMesh(fileName, &mesh)) return false;
  AddOutput("MESH", encodeName(args_.encodeNames, name), false);
  AddOutput("MATERIAL", JoinIds(group.polygons) + " ", false);
  AddOutput("FILENAME", fileName, true);
  return true;
}
