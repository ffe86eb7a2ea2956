// What the verbose modes show of an export of meshes. The stages tell what they have done, and the
// trace prints it from its verbosity on: 1 names and decisions, 2 matrices and normals, 3 points.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "converter/base/conversion_arguments.h"
#include "converter/mesh/morph_channel.h"
#include "fbx/math/fbx_matrix.h"

class FbxNode;
struct Bounds;
struct GroupMesh;
struct MeshHolder_;

class MeshTrace {
 public:
  // Prints to standard output; or, if `held` isn't null, to its end, for whoever prints that.
  explicit MeshTrace(int verbosity, std::string* held = nullptr)
      : verbosity_(verbosity), held_(held) {}

  // For what is worth doing only to be shown.
  bool IsOn() const { return verbosity_ != 0; }

  void Listed(const MeshHolder_& holder) const;
  void Considered(const MeshHolder_& holder) const;

  // Before and after the control points are placed.
  void PlacingPoints(const GroupMesh& mesh, const FbxNode* node) const;
  void PlacedPoints(const GroupMesh& mesh) const;
  void BlendShapes(int count) const;
  // Before the points of a channel are looked at, and when they are known.
  void Channel(const MorphSource& source) const;
  void MorphPoints(const GroupMesh& mesh, const MorphChannel& channel,
                   const ConversionArguments& args) const;

  void ReadingCorners(const GroupMesh& mesh) const;

  // A corner is named by its place in what is left of the polygon.
  struct Corner {
    int32_t place;
    const FbxVector4& position;
  };
  void TestedCorner(const Corner& previous, const Corner& corner, const Corner& next,
                    const FbxVector4& normal) const {
    if (verbosity_ != 0) PrintTestedCorner(previous, corner, next, normal);
  }
  void CornerIsConvex(int32_t place, bool isConvex) const;
  void CutEar(int32_t previous, int32_t ear, int32_t next) const;

  void Offset(uint32_t vertex, const FbxVector4& morphed, const FbxVector4& position,
              const FbxVector4& delta, const FbxVector4& normal,
              const FbxVector4& normalDelta) const {
    if (verbosity_ >= 3) PrintOffset(vertex, morphed, position, delta, normal, normalDelta);
  }

  void Measured(const Bounds& bounds) const;

 private:
  friend class MorphNormalReport;

  void PrintTestedCorner(const Corner& previous, const Corner& corner, const Corner& next,
                         const FbxVector4& normal) const;
  void PrintOffset(uint32_t vertex, const FbxVector4& morphed, const FbxVector4& position,
                   const FbxVector4& delta, const FbxVector4& normal,
                   const FbxVector4& normalDelta) const;
  // "[x, y, z]" to two decimals, with `before` and `after` around it.
  void PrintPoint(const char* before, const FbxVector4& point, const char* after) const;
  // One line for each point's image.
  void dumpControlPoints(const std::vector<FbxVector4>& points, const FbxAMatrix& matrix) const;
  [[gnu::format(printf, 2, 3)]] void Print(const char* format, ...) const;

  int verbosity_;
  std::string* held_;
};

// The note on a channel of which only the last target is exported. It goes out whatever the
// verbosity, once for the points and once for each corner.
void PrintIgnoredTargets(const MorphSource& source);

// What there is to say of the morph normals of each corner: those notes, and the normals
// themselves.
class MorphNormalReport {
 public:
  MorphNormalReport(const GroupMesh& mesh, const MeshTrace& trace);

  void Report(const MeshCorner& corner) const;

 private:
  const GroupMesh& mesh_;
  const MeshTrace& trace_;
  std::vector<const MorphSource*> sources_;  // of which there is something to say
  std::vector<ShapeNormals> normals_;        // of those, from verbosity 2 on
};
