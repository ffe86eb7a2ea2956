// Which triangles come out of a polygon, and in what order. The shortcuts that large polygons need
// must not show: beside hand-made cases, polygons of many kinds are compared with a plain reading
// of the rule.
#include "converter/mesh/triangulation.h"

#include <cmath>
#include <numbers>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using Points = std::vector<FbxVector4>;
using Triangles = std::vector<Triangle>;

const FbxDouble3 kUp{0.0, 0.0, 1.0};
const FbxDouble3 kAskew{0.64, -0.48, 0.6};

MeshGroup GroupOf(const Points& points, const FbxDouble3& normal) {
  MeshGroup group;
  group.meshes.emplace_back();
  for (size_t i = 0; i < points.size(); ++i) {
    group.controlPoints.push_back({points[i], 0, 0, 0});
    group.corners.push_back({normal, static_cast<int32_t>(i), 0, 0, -1});
  }
  return group;
}

Triangles Cut(const Points& points, const FbxDouble3& normal = kUp) {
  const MeshGroup group = GroupOf(points, normal);
  return Triangulator(group, 0).Triangulate({{0, static_cast<uint32_t>(points.size())}});
}

// The rule word for word, at its own cost: every corner is looked at again after each cut.
class PlainClipper {
 public:
  PlainClipper(const Points& points, const FbxDouble3& normal) : normal_(normal) {
    for (size_t i = 0; i < points.size(); ++i) {
      left_.push_back({points[i], static_cast<uint32_t>(i), 2});
    }
  }

  Triangles Cut() {
    if (IsConvex()) return Fan();
    while (left_.size() > 3) {
      if (IsConvex()) return Fan();
      const int ear = FindEar();
      if (ear < 0) return Fan();
      Add(Before(ear), ear, After(ear));
      At(Before(ear)).convexity = At(After(ear)).convexity = 2;
      left_.erase(left_.begin() + ear);
    }
    triangles_.push_back({left_[0].number, left_[1].number, left_[2].number});
    return triangles_;
  }

 private:
  struct Corner {
    FbxVector4 position;
    uint32_t number;
    int convexity;
  };

  Corner& At(int i) { return left_[static_cast<size_t>(i)]; }
  int Count() const { return static_cast<int>(left_.size()); }
  int Before(int i) const { return i == 0 ? Count() - 1 : i - 1; }
  int After(int i) const { return i == Count() - 1 ? 0 : i + 1; }

  bool IsConvex(int i) {
    if (At(i).convexity == 2) {
      const FbxVector4 cross =
          getCrossProductOfCorner(At(Before(i)).position, At(i).position, At(After(i)).position);
      At(i).convexity = cross.DotProduct(FbxVector4(normal_)) > 0.0 ? 1 : 0;
    }
    return At(i).convexity == 1;
  }
  bool IsConvex() {
    if (Count() < 4) return true;
    bool all = true;
    for (int i = 0; i < Count(); ++i) all = IsConvex(i) && all;
    return all;
  }

  bool IsInside(int ear, int k) {
    const FbxVector4 previous = At(Before(ear)).position;
    const FbxVector4 corner = At(ear).position;
    const FbxVector4 next = At(After(ear)).position;
    const FbxVector4 point = At(k).position;
    const FbxVector4 c1 = getCrossProductOfCorner(previous, corner, point);
    const FbxVector4 c2 = getCrossProductOfCorner(corner, next, point);
    const FbxVector4 c3 = getCrossProductOfCorner(next, previous, point);
    const double d12 = c1.DotProduct(c2);
    const double d23 = c2.DotProduct(c3);
    if ((d12 < 0.0) != (d23 < 0.0)) return false;
    return (d23 < 0.0) == (c3.DotProduct(c1) < 0.0);
  }
  int FindEar() {
    for (int i = 0; i < Count(); ++i) {
      if (!IsConvex(i)) continue;
      bool isBlocked = false;
      for (int k = 0; k < Count() && !isBlocked; ++k) {
        if (k == Before(i) || k == i || k == After(i) || IsConvex(k)) continue;
        isBlocked = IsInside(i, k);
      }
      if (!isBlocked) return i;
    }
    return -1;
  }

  void Add(int a, int b, int c) {
    const FbxVector4& p = At(a).position;
    const FbxVector4& q = At(b).position;
    const FbxVector4& r = At(c).position;
    constexpr double kEps = 0.0000999999974737875;
    if (VecNearZero(p - q, kEps) || VecNearZero(q - r, kEps) || VecNearZero(p - r, kEps)) return;
    triangles_.push_back({At(a).number, At(b).number, At(c).number});
  }
  Triangles Fan() {
    for (int i = 2; i < Count(); ++i) Add(0, i - 1, i);
    return triangles_;
  }

  FbxDouble3 normal_;
  std::vector<Corner> left_;
  Triangles triangles_;
};

TEST(Triangulation, ConvexPolygonsBecomeFans) {
  EXPECT_THAT(Cut({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}),
              ElementsAre(Triangle{0, 1, 2}, Triangle{0, 2, 3}));
  EXPECT_THAT(Cut({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {0, 0, -1}), ElementsAre(Triangle{0, 1, 2}))
      << "a triangle is never tested";
  EXPECT_THAT(Cut({{0, 0, 0}, {1, 0, 0}}), ElementsAre());
  // Normals that face away leave no convex corner, so no ear: a fan all the same.
  EXPECT_THAT(Cut({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {0, 0, -1}),
              ElementsAre(Triangle{0, 1, 2}, Triangle{0, 2, 3}));
}

TEST(Triangulation, TrianglesAtOnePlaceAreDropped) {
  EXPECT_THAT(Cut({{0, 0, 0}, {1, 0, 0}, {1, 0.00005, 0}}), ElementsAre());
  EXPECT_EQ(Cut({{0, 0, 0}, {1, 0, 0}, {1, 0.00011, 0}}).size(), 1U);
  EXPECT_EQ(Cut({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}).size(), 1U) << "collinear ones stay";
  // Ends included, on all axes at once.
  constexpr double kEps = 0.0000999999974737875;
  EXPECT_THAT(Cut({{0, 0, 0}, {kEps, -kEps, kEps}, {1, 1, 0}}), ElementsAre());
}

TEST(Triangulation, EarsAreCutFromTheLowestCorner) {
  // An arrowhead, its tip at corner 0: corner 2 lies inside the ear at 0.
  EXPECT_THAT(Cut({{0, 10, 0}, {-5, 0, 0}, {0, 3, 0}, {5, 0, 0}}),
              ElementsAre(Triangle{0, 1, 2}, Triangle{0, 2, 3}));
  // The reflex corner first: the ear at 1 holds nothing, and what is left is a triangle.
  EXPECT_THAT(Cut({{0, 3, 0}, {5, 0, 0}, {0, 10, 0}, {-5, 0, 0}}),
              ElementsAre(Triangle{0, 1, 2}, Triangle{0, 2, 3}));
  // The last three go in although two of them coincide.
  const Points pinched = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 0, 0}};
  EXPECT_EQ(Cut(pinched), PlainClipper(pinched, kUp).Cut());
}

// Polygons of many kinds by number.
Points MakePolygon(int kind, int count, std::mt19937& random) {
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  const auto narrow = [](double x) { return static_cast<double>(static_cast<float>(x)); };
  Points points;
  for (int i = 0; i < count; ++i) {
    const double angle = 2.0 * std::numbers::pi * i / count;
    const double x = std::cos(angle);
    const double y = std::sin(angle);
    switch (kind) {
      case 0:  // a star with spikes of many lengths
        points.emplace_back((0.3 + unit(random)) * x, (0.3 + unit(random)) * y, 0.0);
        break;
      case 1:  // crossing itself everywhere
        points.emplace_back(unit(random), unit(random), 0.0);
        break;
      case 2:  // a comb on a line, closed far below
        points.emplace_back(count - i, i == 0 || i == count - 1 ? -9.0 : i % 2, 0.0);
        break;
      case 3:  // the same, on a plane askew, with the noise of floats
        points.emplace_back(narrow(0.6 * (count - i) + 0.1 * (i % 2)),
                            narrow(0.8 * (count - i) - 0.7 * (i % 2)),
                            narrow(0.2 * (count - i) + 0.7 * (i % 2)));
        break;
      case 4:  // not flat at all
        points.emplace_back(x * unit(random), y * unit(random), unit(random));
        break;
      case 5:  // on a coarse grid: collinear and coinciding corners
        points.emplace_back(std::floor(unit(random) * 5), std::floor(unit(random) * 5), 0.0);
        break;
      case 6:  // a spiral
        points.emplace_back((i < count / 2 ? i + 2.0 : count - i) * std::cos(i * 0.3),
                            (i < count / 2 ? i + 2.0 : count - i) * std::sin(i * 0.3), 0.0);
        break;
      case 7:  // grid corners on a plane askew
        points.emplace_back(narrow(std::floor(unit(random) * 9) * 0.36),
                            narrow(std::floor(unit(random) * 9) * 0.48),
                            narrow(std::floor(unit(random) * 2) * 0.1));
        break;
      case 8: {  // a comb like the first, its teeth across all axes, on a rough plane
        const double height = i == 0 || i == count - 1 ? -9.0 : i % 2;
        points.emplace_back(narrow(0.6 * (count - i) - 0.48 * height),
                            narrow(0.8 * (count - i) + 0.36 * height),
                            narrow(0.8 * height + 0.01 * unit(random)));
        break;
      }
      default:  // some points nowhere
        points.emplace_back(unit(random) < 0.02 ? std::nan("") : x * unit(random), y,
                            unit(random) < 0.01 ? INFINITY : 0.0);
    }
  }
  return points;
}

TEST(Triangulation, ShortcutsDontShow) {
  std::mt19937 random(1);
  for (int kind = 0; kind < 10; ++kind) {
    for (const int count : {4, 5, 6, 9, 17, 40, 65, 90, 150}) {
      for (int turn = 0; turn < (count < 65 ? 20 : 3); ++turn) {
        const Points points = MakePolygon(kind, count, random);
        const FbxDouble3 normal = turn % 3 != 2 ? kUp : kAskew;
        ASSERT_EQ(Cut(points, normal), PlainClipper(points, normal).Cut())
            << "kind " << kind << ", " << count << " corners, turn " << turn;
      }
    }
  }
}

TEST(Triangulation, HugePolygonsEnd) {
  std::mt19937 random(2);
  constexpr int kCount = 100000;
  for (const int kind : {0, 1, 2, 5, 8, 9}) {
    const Triangles triangles = Cut(MakePolygon(kind, kCount, random), kind == 8 ? kAskew : kUp);
    EXPECT_LE(triangles.size(), static_cast<size_t>(kCount - 2));
    if (kind == 2) {
      EXPECT_EQ(triangles.size(), static_cast<size_t>(kCount - 2));
    }
  }
  EXPECT_TRUE(Cut(Points(kCount, FbxVector4(1, 2, 3))).empty());
}

}  // namespace
