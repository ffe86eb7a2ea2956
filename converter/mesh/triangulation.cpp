// Cuts polygons into triangles: a convex polygon into a fan, any other by clipping ears, always the
// one at the lowest corner, until what is left is convex.
//
// Which triangles come out, in what order, follows from that rule alone. The work is arranged so
// that polygons of a hundred thousand corners, which files may hold, don't take hours: a corner
// that was found blocked by another is not tried again until either changes, and blocking corners
// are found through a tree.
#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numeric>
#include <optional>
#include <utility>

#include "converter/mesh/corner_geometry.h"
#include "converter/mesh/mesh_stages.h"

namespace {

// Corners of a triangle closer than this on all axes are at one place: 1e-4 as a float.
constexpr double kSamePlace = 0.0000999999974737875;

// Polygons above this size get a tree.
constexpr int32_t kSmallPolygon = 64;

constexpr uint8_t kUnknown = 2;

class Triangulator {
 public:
  Triangulator(const GroupMesh& mesh, size_t groupPointCount, const MeshTrace& trace)
      : mesh_(mesh), hasEnoughPoints_(groupPointCount >= 3), trace_(trace) {}

  std::vector<Triangle> Run(const PolygonList& polygons);

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
  // The same for corners of the mesh.
  void AddTriangle(uint32_t a, uint32_t b, uint32_t c);
  void TriangulateConvexFace();
  void TriangulateConcaveFace();
  int32_t findEar();
  int32_t FindBlocker(int32_t ear);
  void CutEar(int32_t ear);
  void SetUnknown(int32_t corner);
  void Unblock(int32_t blocker);
  void PushCandidate(int32_t corner);

  const GroupMesh& mesh_;
  bool hasEnoughPoints_;
  const MeshTrace& trace_;
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

std::vector<Triangle> Triangulator::Run(const PolygonList& polygons) {
  triangles_.clear();
  triangles_.reserve(polygons.size());
  for (const Polygon& polygon : polygons) {
    if (polygon.cornerCount < 3) continue;
    if (polygon.cornerCount == 3) {
      // Most polygons, and convex without a test.
      AddTriangle(polygon.firstCorner, polygon.firstCorner + 1, polygon.firstCorner + 2);
      continue;
    }
    LoadPolygon(polygon);
    if (isNGonConvex()) {
      TriangulateConvexFace();
    } else {
      TriangulateConcaveFace();
    }
  }
  return std::move(triangles_);
}

void Triangulator::LoadPolygon(const Polygon& polygon) {
  const size_t count = polygon.cornerCount;
  firstCorner_ = polygon.firstCorner;
  positions_.resize(count);
  for (size_t i = 0; i < count; ++i) {
    positions_[i] = mesh_.PointOf(firstCorner_ + static_cast<uint32_t>(i)).position;
  }
  head_ = 0;
  size_ = static_cast<int32_t>(count);
  notConvexCount_ = 0;
  previous_.resize(count);
  next_.resize(count);
  std::iota(previous_.begin(), previous_.end(), -1);
  std::iota(next_.begin(), next_.end(), 1);
  previous_.front() = size_ - 1;
  next_.back() = 0;
  convexity_.assign(count, kUnknown);
}

bool Triangulator::isNGonConvex() {
  // All corners are tested, so that later tests find them known.
  int32_t corner = head_;
  for (int32_t place = 0; place < size_; ++place, corner = next_[static_cast<size_t>(corner)]) {
    UpdateConvexity(corner, place);
    trace_.CornerIsConvex(place, convexity_[static_cast<size_t>(corner)] == 1);
  }
  return notConvexCount_ == 0;
}

void Triangulator::UpdateConvexity(int32_t corner, int32_t place) {
  const auto at = static_cast<size_t>(corner);
  if (convexity_[at] != kUnknown) return;
  const FbxDouble3& normal = mesh_.corners[firstCorner_ + at].normal;
  const FbxVector4& before = Position(previous_[at]);
  const FbxVector4& after = Position(next_[at]);
  convexity_[at] = IsConvexCorner(before, positions_[at], after, normal) ? 1 : 0;
  if (convexity_[at] == 0) ++notConvexCount_;
  trace_.TestedCorner({place == 0 ? size_ - 1 : place - 1, before}, {place, positions_[at]},
                      {place == size_ - 1 ? 0 : place + 1, after}, FbxVector4(normal));
}

void Triangulator::AddPoly(int32_t a, int32_t b, int32_t c) {
  AddTriangle(firstCorner_ + static_cast<uint32_t>(a), firstCorner_ + static_cast<uint32_t>(b),
              firstCorner_ + static_cast<uint32_t>(c));
}

void Triangulator::AddTriangle(uint32_t a, uint32_t b, uint32_t c) {
  const FbxVector4& atA = mesh_.PointOf(a).position;
  const FbxVector4& atB = mesh_.PointOf(b).position;
  const FbxVector4& atC = mesh_.PointOf(c).position;
  if (!hasEnoughPoints_ || VecNearZero(atA - atB, kSamePlace) ||
      VecNearZero(atB - atC, kSamePlace) || VecNearZero(atA - atC, kSamePlace)) {
    return;
  }
  triangles_.push_back({a, b, c});
}

void Triangulator::TriangulateConvexFace() {
  int32_t before = next_[static_cast<size_t>(head_)];
  for (int32_t place = 2; place < size_; ++place) {
    const int32_t corner = next_[static_cast<size_t>(before)];
    AddPoly(head_, before, corner);
    before = corner;
  }
}

void Triangulator::TriangulateConcaveFace() {
  const auto count = static_cast<size_t>(size_);
  blockedBy_.assign(count, kNone);
  blockedLists_.assign(count, kNone);
  links_.clear();
  freeLink_ = kNone;
  candidates_.clear();
  notFinite_ = kNone;
  for (size_t i = 0; i < count; ++i) {
    if (convexity_[i] == 1) candidates_.push_back(static_cast<int32_t>(i));
    for (size_t axis = 0; axis < 3; ++axis) {
      if (!std::isfinite(positions_[i][axis])) notFinite_ = static_cast<int32_t>(i);
    }
  }
  tree_.reset();
  if (size_ > kSmallPolygon && notFinite_ == kNone) {
    std::vector<bool> isOn(count);
    for (size_t i = 0; i < count; ++i) isOn[i] = convexity_[i] == 0;
    tree_.emplace(positions_, isOn);
  }

  // The corners that a cut leaves unknown are known again at once; only the verbose form has to
  // walk all of them, to say what they are.
  if (trace_.IsOn() && size_ > 3) isNGonConvex();
  while (size_ > 3) {
    const int32_t ear = notConvexCount_ == 0 ? kNone : findEar();
    if (ear == kNone) {
      TriangulateConvexFace();
      return;
    }
    CutEar(ear);
  }
  // The last three go in whatever their place.
  const int32_t second = next_[static_cast<size_t>(head_)];
  const int32_t third = next_[static_cast<size_t>(second)];
  triangles_.push_back({firstCorner_ + static_cast<uint32_t>(head_),
                        firstCorner_ + static_cast<uint32_t>(second),
                        firstCorner_ + static_cast<uint32_t>(third)});
}

int32_t Triangulator::findEar() {
  while (!candidates_.empty()) {
    std::pop_heap(candidates_.begin(), candidates_.end(), std::greater<>());
    const int32_t corner = candidates_.back();
    candidates_.pop_back();
    const auto at = static_cast<size_t>(corner);
    if (next_[at] == kNone || convexity_[at] != 1 || blockedBy_[at] != kNone) continue;
    const int32_t blocker = FindBlocker(corner);
    if (blocker == kNone) return corner;
    blockedBy_[at] = blocker;
    int32_t& list = blockedLists_[static_cast<size_t>(blocker)];
    if (freeLink_ == kNone) {
      links_.push_back({corner, list});
      list = static_cast<int32_t>(links_.size()) - 1;
    } else {
      Link& link = links_[static_cast<size_t>(freeLink_)];
      const int32_t taken = std::exchange(freeLink_, link.next);
      link = {corner, list};
      list = taken;
    }
  }
  return kNone;
}

// Only a corner that isn't convex can lie inside an ear.
int32_t Triangulator::FindBlocker(int32_t ear) {
  const auto at = static_cast<size_t>(ear);
  const int32_t before = previous_[at];
  const int32_t after = next_[at];
  // A point that is nowhere is inside everything, and no corner next to it is convex.
  if (notFinite_ != kNone) return notFinite_;
  const EarTriangle triangle(Position(before), Position(ear), Position(after));
  if (tree_.has_value()) {
    return tree_->FindInside(triangle, static_cast<uint32_t>(before), static_cast<uint32_t>(ear),
                             static_cast<uint32_t>(after));
  }
  for (int32_t other = next_[static_cast<size_t>(after)]; other != before;
       other = next_[static_cast<size_t>(other)]) {
    if (convexity_[static_cast<size_t>(other)] == 0 && triangle.Contains(Position(other))) {
      return other;
    }
  }
  return kNone;
}

void Triangulator::CutEar(int32_t ear) {
  const auto at = static_cast<size_t>(ear);
  const int32_t before = previous_[at];
  const int32_t after = next_[at];
  AddPoly(before, ear, after);
  if (trace_.IsOn()) {
    int32_t place = 0;
    for (int32_t i = head_; i != ear; i = next_[static_cast<size_t>(i)]) ++place;
    trace_.CutEar(place == 0 ? size_ - 1 : place - 1, place, place == size_ - 1 ? 0 : place + 1);
  }
  next_[static_cast<size_t>(before)] = after;
  previous_[static_cast<size_t>(after)] = before;
  next_[at] = kNone;
  if (head_ == ear) head_ = after;
  --size_;

  const std::array<int32_t, 2> changed{before, after};
  std::array<uint8_t, 2> known{};
  for (size_t i = 0; i < 2; ++i) {
    known[i] = convexity_[static_cast<size_t>(changed[i])];
    SetUnknown(changed[i]);
  }
  if (size_ < 4) return;
  if (trace_.IsOn()) {
    isNGonConvex();
  } else {
    for (const int32_t corner : changed) UpdateConvexity(corner, 0);
  }
  for (size_t i = 0; i < 2; ++i) {
    const auto corner = static_cast<size_t>(changed[i]);
    if (tree_.has_value()) {
      tree_->Switch(static_cast<uint32_t>(corner), convexity_[corner] == 0);
    }
    if (known[i] == 0 && convexity_[corner] == 1) Unblock(changed[i]);
    if (convexity_[corner] == 1) PushCandidate(changed[i]);
  }
}

void Triangulator::SetUnknown(int32_t corner) {
  const auto at = static_cast<size_t>(corner);
  if (convexity_[at] == 0) --notConvexCount_;
  convexity_[at] = kUnknown;
  blockedBy_[at] = kNone;
}

void Triangulator::Unblock(int32_t blocker) {
  int32_t link = std::exchange(blockedLists_[static_cast<size_t>(blocker)], kNone);
  while (link != kNone) {
    Link& entry = links_[static_cast<size_t>(link)];
    if (blockedBy_[static_cast<size_t>(entry.corner)] == blocker) {
      blockedBy_[static_cast<size_t>(entry.corner)] = kNone;
      PushCandidate(entry.corner);
    }
    const int32_t next = entry.next;
    entry.next = std::exchange(freeLink_, link);
    link = next;
  }
}

void Triangulator::PushCandidate(int32_t corner) {
  candidates_.push_back(corner);
  std::push_heap(candidates_.begin(), candidates_.end(), std::greater<>());
}

}  // namespace

std::vector<Triangle> Triangulate(const GroupMesh& mesh, size_t groupPointCount,
                                  const PolygonList& polygons, const MeshTrace& trace) {
  return Triangulator(mesh, groupPointCount, trace).Run(polygons);
}
