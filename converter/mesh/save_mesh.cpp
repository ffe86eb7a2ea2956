// The data of a group becomes a Cal3D mesh, a submesh for each material with vertices, faces, the
// bones that move them, and morph targets; and the mesh a file, with the warnings and the records
// that go with it.
#include <algorithm>
#include <cmath>
#include <iomanip>
#include <locale>
#include <sstream>
#include <utility>

#include <boost/make_shared.hpp>

#include "cal3d/io/saver.h"
#include "converter/base/complaint.h"
#include "converter/base/names.h"
#include "converter/base/records.h"
#include "converter/mesh/mesh_stages.h"
#include "converter/mesh/vertex_splitting.h"
#include "converter/space/axis_mod.h"

namespace {

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

void AddVertices(const GroupMesh& mesh, const std::vector<uint32_t>& vertices,
                 CalCoreSubmesh& submesh) {
  std::vector<CalCoreSubmesh::Influence> influences;
  for (const uint32_t corner : vertices) {
    const ControlPoint& point = mesh.PointOf(corner);
    const MeshCorner place = mesh.CornerOf(corner);
    influences.clear();
    for (uint32_t w = 0; w < point.weightCount; ++w) {
      const BoneWeight& weight = mesh.weights[point.firstWeight + w];
      influences.push_back({weight.boneId, weight.weight, w + 1 == point.weightCount ? 1U : 0U});
    }
    if (influences.empty()) influences.push_back({0, 1.0F, 1U});
    const auto index = static_cast<int32_t>(submesh.vertices().size());
    submesh.addVertex({ToCalVector4(point.position), ToCalNormal(mesh.corners[corner].normal)},
                      ColorWord(getColor(mesh, place)), influences);

    // Of several texture coordinates the file takes the first.
    const FbxVector2 uv = mesh.uvs.empty() ? FbxVector2() : getUV(mesh.uvs.front(), place);
    submesh.setTextureCoordinate(index,
                                 {static_cast<float>(uv[0]), static_cast<float>(1.0 - uv[1])});
  }
}

void AddFaces(const std::vector<Triangle>& triangles, const VertexSplitter& splitter,
              uint32_t firstVertex, CalCoreSubmesh& submesh) {
  for (const Triangle& triangle : triangles) {
    CalCoreSubmesh::Face face;
    for (size_t c = 0; c < 3; ++c) {
      // A face has 16 bits for a vertex; the indices of a larger submesh wrap.
      face.vertexId[c] = static_cast<uint16_t>(firstVertex + splitter.VertexOf(triangle[c]));
    }
    submesh.addFace(face);
  }
}

}  // namespace

void AddToSubmeshes(GroupMesh& mesh, MeshGroup& group, const ConversionArguments& args,
                    const MeshTrace& trace) {
  for (const ControlPoint& point : mesh.controlPoints) group.bounds.Extend(point.position);
  VertexSplitter splitter(mesh, trace);
  for (const auto& [id, polygons] : mesh.polygons) {
    SubmeshDraft& draft = group.submeshes[id];
    const std::vector<Triangle> triangles =
        Triangulate(mesh, group.controlPointCount, polygons,
                    MeshTrace(args.verbosity, &draft.triangulationTrace));
    if (triangles.empty()) continue;
    const std::vector<uint32_t> vertices = splitter.BuildControlPointNormalGroupMap(triangles);
    if (draft.submesh == nullptr) {
      draft.submesh = boost::make_shared<CalCoreSubmesh>(
          static_cast<int32_t>(vertices.size()), true, static_cast<int32_t>(triangles.size()));
      draft.submesh->coreMaterialThreadId = id;
    }
    const uint32_t firstVertex = draft.submesh->vertices().size();
    AddVertices(mesh, vertices, *draft.submesh);
    AddFaces(triangles, splitter, firstVertex, *draft.submesh);
    BuildMorphListMap(draft.morphs, mesh, vertices, firstVertex, args,
                      MeshTrace(args.verbosity, &draft.morphTrace));
  }
}

CalCoreMesh BuildMesh(MeshGroup& group) {
  CalCoreMesh mesh;
  for (auto& [id, draft] : group.submeshes) {
    Print(draft.triangulationTrace + draft.morphTrace);
    if (draft.submesh == nullptr) continue;
    AddMorphs(draft.morphs, *draft.submesh);
    constexpr uint32_t kMost = CalCoreSubmesh::kAddressableVertices;
    if (const uint32_t count = draft.submesh->vertices().size(); count > kMost) {
      Complain("mesh '" + group.name + "' has " + std::to_string(count) + " vertices of material " +
               std::to_string(id) + ", more than the " + std::to_string(kMost) +
               " that faces can tell apart: its triangles come out wrong");
    }
    mesh.submeshes.push_back(std::move(draft.submesh));
  }
  return mesh;
}

namespace {

constexpr double kAvatarSize = 600.0;  // in output units
constexpr int kSmallestSize = 100;
constexpr int kLargestSize = 5000;

// Cut to whole units.
int SizeOf(const Bounds& bounds, size_t axis) {
  const double size = std::abs(bounds.max[axis] - bounds.min[axis]);
  constexpr int kMost = std::numeric_limits<int>::max();
  return size < kMost ? static_cast<int>(size) : kMost;
}

void WarnOfSize(const std::string& name, const Bounds& bounds) {
  const int largest = std::max({SizeOf(bounds, 0), SizeOf(bounds, 1), SizeOf(bounds, 2)});
  std::ostringstream ratio;
  ratio.imbue(std::locale::classic());
  ratio << std::setprecision(2) << static_cast<double>(static_cast<float>(largest)) / kAvatarSize;
  const std::string text = "Exported mesh " + name + " is " + ratio.str() +
                           " times the size of an ZEVO avatar, and may be too ";
  if (largest < kSmallestSize) AddWarning(text + "small.");
  if (largest > kLargestSize) AddWarning(text + "large.");
}

// Also of materials all of whose triangles vanished.
std::string JoinIds(const MeshGroup& group) {
  std::string ids;
  for (const auto& [id, draft] : group.submeshes) {
    if (!ids.empty()) ids += ',';
    ids += std::to_string(id);
  }
  return ids;
}

}  // namespace

bool SaveMesh(const ConversionArguments& args, MeshGroup& group, const MeshTrace& trace) {
  CalCoreMesh mesh = BuildMesh(group);
  if (mesh.submeshes.empty()) {
    AddWarning(group.name + " has no geometry");
    return true;
  }
  trace.Measured(group.bounds);
  WarnOfSize(group.name, group.bounds);
  std::string fileName = args.outputFilename;
  if (fileName.empty()) {
    fileName = OutputPath(args, group.name, kMeshKind);
  }
  if (!CalSaver::saveCoreMesh(fileName, &mesh)) {
    ComplainOfOutput(fileName);
    return false;
  }
  AddOutput(kMeshKind.label, encodeName(args.encodeNames, group.name), false);
  AddOutput("MATERIAL", JoinIds(group) + " ", false);
  AddOutput("FILENAME", fileName, true);
  return true;
}
