#include "converter/mesh/mesh_trace.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "converter/base/records.h"
#include "converter/mesh/corner_geometry.h"
#include "converter/mesh/mesh_group.h"
#include "converter/mesh/mesh_stages.h"
#include "converter/scene/scene_queries.h"
#include "converter/skeleton/node_matrices.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_node.h"

namespace {

FbxAMatrix WithoutScaling(FbxAMatrix matrix) {
  matrix.SetS({1.0, 1.0, 1.0});
  return matrix;
}

void PrintMatrix(const char* title, const FbxAMatrix& matrix) {
  PrintFormatted("\n%s", title);
  dumpMatrixInfo(matrix);
}

// The local matrices of the node and of what is above it, from the scene's root down.
void dumpTransformTree(const FbxNode* node) {
  std::vector<const FbxNode*> chain;
  for (const FbxNode* at = node; at != nullptr; at = at->GetParent()) chain.push_back(at);
  for (auto at = chain.rbegin(); at != chain.rend(); ++at) {
    PrintMatrix((*at)->GetName(), (*at)->EvaluateLocalTransform());
  }
}

// Where the mesh is, where the bind pose has its node, and where its clusters were made.
void PrintMeshMatrices(const GroupMesh& mesh, const FbxNode* node) {
  PrintMatrix("global position:", mesh.meshInit);
  PrintMatrix("pose:", getBindPoseMatrix(node));
  for (const auto& [bone, cluster] : GetClusterMap({mesh.holder})) {
    FbxAMatrix transform;
    cluster->GetTransformMatrix(transform);
    PrintMatrix("meshInit:", transform);
  }
}

}  // namespace

void MeshTrace::Print(const char* format, ...) const {
  va_list values;
  va_start(values, format);
  va_list again;
  va_copy(again, values);
  const int length = std::vsnprintf(nullptr, 0, format, values);
  std::string text(static_cast<size_t>(std::max(length, 0)) + 1, '\0');
  std::vsnprintf(text.data(), text.size(), format, again);
  va_end(again);
  va_end(values);
  text.pop_back();
  if (held_ == nullptr) {
    ::Print(text);
  } else {
    held_->append(text);
  }
}

void MeshTrace::PrintPoint(const char* before, const FbxVector4& point, const char* after) const {
  Print("%s[%2.2f, %2.2f, %2.2f]%s", before, point[0], point[1], point[2], after);
}

void MeshTrace::dumpControlPoints(const std::vector<FbxVector4>& points,
                                  const FbxAMatrix& matrix) const {
  for (const FbxVector4& point : points) PrintPoint("\n\t", matrix.MultT(point), "");
  Print("\n");
}

void MeshTrace::Listed(const MeshHolder_& holder) const {
  if (verbosity_ == 0) return;
  Print("%s is %s 0x%jx\n", holder.name.c_str(), holder.path.c_str(),
        static_cast<uintmax_t>(reinterpret_cast<uintptr_t>(holder.mesh)));
}

void MeshTrace::Considered(const MeshHolder_& holder) const {
  if (verbosity_ != 0) AddWarning("ExportMesh::Export " + holder.name);
}

void MeshTrace::PlacingPoints(const GroupMesh& mesh, const FbxNode* node) const {
  if (verbosity_ < 1) return;
  Print("\nexporting %d control points for %s %s", mesh.mesh->GetControlPointsCount(),
        mesh.holder->path.c_str(), mesh.holder->name.c_str());
  dumpTransformTree(node);
  if (verbosity_ >= 2) PrintMeshMatrices(mesh, node);
}

void MeshTrace::PlacedPoints(const GroupMesh& mesh) const {
  if (verbosity_ >= 3) {
    const std::vector<FbxVector4>& raw = mesh.mesh->ControlPoints();
    Print("\nraw points:");
    dumpControlPoints(raw, FbxAMatrix());
    dumpControlPoints(raw, mesh.meshInit);
    Print("\nglobal position no scale:");
    dumpControlPoints(raw, WithoutScaling(mesh.meshInit));
    std::vector<FbxVector4> placed;
    for (size_t i = 0; i < raw.size(); ++i) {
      placed.push_back(mesh.controlPoints[i].position);
      PrintPoint("", raw[i], "=>");
      PrintPoint("", placed.back(), "\t");
    }
    Print("\nscaled points:");
    dumpControlPoints(placed, FbxAMatrix());
  }
  if (verbosity_ >= 1) Print("\n");
}

void MeshTrace::BlendShapes(int count) const {
  if (count != 0 && verbosity_ != 0) Print("exporting %d morph blend deformer:", count);
}

void MeshTrace::Channel(const MorphSource& source) const {
  if (verbosity_ != 0) Print("%s ", source.name.c_str());
  if (verbosity_ >= 2) Print("\nposition: ");
}

void MeshTrace::MorphPoints(const GroupMesh& mesh, const MorphChannel& channel,
                            const ConversionArguments& args) const {
  if (verbosity_ == 0) return;
  std::vector<FbxVector4> raw = mesh.mesh->ControlPoints();
  const PointValues& moved = channel.points.Moved();
  for (size_t i = 0; i < moved.Points().size(); ++i) {
    raw[static_cast<size_t>(moved.Points()[i])] = moved.At(i);
  }
  std::vector<FbxVector4> placed;
  for (const FbxVector4& point : raw) placed.push_back(ToOutputSpace(mesh, point, args));
  Print("\nexporting %zu morph control points for %s\n", raw.size(), channel.name.c_str());
  if (verbosity_ >= 2) {
    Print("\nraw points:");
    dumpControlPoints(raw, FbxAMatrix());
    Print("\nglobal position:");
    dumpControlPoints(raw, mesh.meshInit);
    Print("\nglobal position no scale:");
    dumpControlPoints(raw, WithoutScaling(mesh.meshInit));
  }
  Print("\nscaled morph points:");
  dumpControlPoints(placed, FbxAMatrix());
}

void MeshTrace::ReadingCorners(const GroupMesh& mesh) const {
  if (verbosity_ >= 2) Print("\nnormals:\n");
  if (verbosity_ == 0) return;
  AddOutput("DEBUG",
            "ExportMesh::FillInPolygonVertexIndexes " + mesh.holder->name +
                " : #polys= " + std::to_string(mesh.mesh->GetPolygonCount()),
            true);
}

void MeshTrace::PrintTestedCorner(const Corner& previous, const Corner& corner, const Corner& next,
                                  const FbxVector4& normal) const {
  const FbxVector4 cross =
      getCrossProductOfCorner(previous.position, corner.position, next.position);
  for (const Corner& at : {previous, corner, next}) {
    Print(" pos: %d %g %g %g\n", at.place, at.position[0], at.position[1], at.position[2]);
  }
  Print(" cross: %g %g %g\n", cross[0], cross[1], cross[2]);
  Print(" normal: %g %g %g\n", normal[0], normal[1], normal[2]);
  Print("dot %g\n", cross.DotProduct(normal));
}

void MeshTrace::CornerIsConvex(int32_t place, bool isConvex) const {
  if (verbosity_ != 0) Print("%d is %s convex \n", place, isConvex ? "" : "not");
}

void MeshTrace::CutEar(int32_t previous, int32_t ear, int32_t next) const {
  if (verbosity_ != 0) Print("ear triangle %d %d %d Removing %d\n", previous, ear, next, ear);
}

void MeshTrace::PrintOffset(uint32_t vertex, const FbxVector4& morphed, const FbxVector4& position,
                            const FbxVector4& delta, const FbxVector4& normal,
                            const FbxVector4& normalDelta) const {
  Print("\n%u\t", vertex);
  PrintPoint(" morph pos:", morphed, "\t");
  PrintPoint(" vert pos:", position, "\t");
  PrintPoint(" delta:", delta, "\t");
  PrintPoint(" norm:", normal, "\t");
  PrintPoint(" deltaNorm:", normalDelta, "\t");
}

void MeshTrace::Measured(const Bounds& bounds) const {
  if (verbosity_ == 0) return;
  Print("\n mesh min:%f,%f,%f max:%f,%f,%f\n", bounds.min[0], bounds.min[1], bounds.min[2],
        bounds.max[0], bounds.max[1], bounds.max[2]);
}

void PrintIgnoredTargets(const MorphSource& source) {
  PrintFormatted(
      "Blend shape channel %s has more than 1 target shape, which isn't supported. Using final "
      "target shape only.",
      source.name.c_str());
}

MorphNormalReport::MorphNormalReport(const GroupMesh& mesh, const MeshTrace& trace)
    : mesh_(mesh), trace_(trace) {
  for (const MorphSource& source : mesh.morphs.sources) {
    if (!trace.IsOn() && !source.hasMoreTargets) continue;
    sources_.push_back(&source);
    if (trace.verbosity_ >= 2) normals_.emplace_back(*source.shape, *mesh.mesh);
  }
}

void MorphNormalReport::Report(const MeshCorner& corner) const {
  for (size_t i = 0; i < sources_.size(); ++i) {
    if (trace_.IsOn()) trace_.Print("%s ", sources_[i]->name.c_str());
    if (sources_[i]->hasMoreTargets) PrintIgnoredTargets(*sources_[i]);
    if (normals_.empty()) continue;
    const FbxVector4 normal = normals_[i].At(corner);
    if (IsNearZero(normal)) continue;
    if (trace_.verbosity_ >= 3) trace_.PrintPoint("", normal, "=>");
    trace_.PrintPoint("", mesh_.TurnNormal(normal), "\t");
  }
}
