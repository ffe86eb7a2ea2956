// Cuts polygons into triangles that keep their corners and their winding: a convex polygon into a
// fan, any other by clipping ears, always the one at the lowest corner, until what is left is
// convex.
//
// Which triangles come out, in what order, follows from that rule alone. The work is arranged so
// that polygons of a hundred thousand corners, which files may hold, don't take hours: a corner
// that was found blocked by another is not tried again until either changes, and blocking corners
// are found through a tree.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "converter/mesh/corner_geometry.h"
#include "converter/mesh/mesh_group.h"
#include "converter/mesh/point_tree.h"

class Triangulator {
 public:
  Triangulator(const MeshGroup& group, int verbosity) : group_(group), verbosity_(verbosity) {}

  // The triangles of all polygons, in order. A triangle of a fan or an ear is dropped if two of its
  // corners are at one place.
  std::vector<Triangle> Triangulate(const PolygonList& polygons);

 private:
  static constexpr int32_t kNone = -1;

  // From here on, indices are those of corners in the polygon at work.
  void LoadPolygon(const Polygon& polygon);
  const FbxVector4& Position(int32_t corner) const {
    return positions_[static_cast<size_t>(corner)];
  }
  bool isNGonConvex();
  void UpdateConvexity(int32_t corner, int32_t place);
  void AddPoly(int32_t a, int32_t b, int32_t c);
  void TriangulateConvexFace();
  void TriangulateConcaveFace();
  int32_t findEar();
  int32_t FindBlocker(int32_t ear);
  void CutEar(int32_t ear);
  void SetUnknown(int32_t corner);
  void Unblock(int32_t blocker);
  void PushCandidate(int32_t corner);

  const MeshGroup& group_;
  int verbosity_;
  std::vector<Triangle> triangles_;

  uint32_t firstCorner_ = 0;
  std::vector<FbxVector4> positions_;
  // 2 unknown, 1 convex, 0 not convex.
  std::vector<uint8_t> convexity_;
  // The corners left, in a ring; `head_` is the lowest.
  std::vector<int32_t> previous_;
  std::vector<int32_t> next_;
  int32_t head_ = 0;
  int32_t size_ = 0;
  int32_t notConvexCount_ = 0;

  // Corners that may be ears, as a heap with the lowest on top; some are out of date.
  std::vector<int32_t> candidates_;
  // What blocks a corner from being an ear, and the lists of the corners that each one blocks. A
  // list may name corners that it doesn't block any more.
  std::vector<int32_t> blockedBy_;
  struct Link {
    int32_t corner;
    int32_t next;
  };
  std::vector<int32_t> blockedLists_;
  std::vector<Link> links_;
  int32_t freeLink_ = kNone;
  std::optional<PointTree> tree_;
  int32_t notFinite_ = kNone;
};
