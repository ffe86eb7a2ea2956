// Which triangles come out of a polygon, and in what order. The shortcuts that large polygons need
// must not show: beside hand-made cases, polygons of many kinds are compared with a plain reading
// of the rule.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "converter/mesh/corner_geometry.h"
#include "converter/mesh/mesh_stages.h"

namespace {

using testing::ElementsAre;
using Points = std::vector<FbxVector4>;
using Triangles = std::vector<Triangle>;

const FbxDouble3 kUp{0.0, 0.0, 1.0};
const FbxDouble3 kAskew{0.64, -0.48, 0.6};
constexpr double kEps = 0.0000999999974737875;  // corners no further apart are at one place

GroupMesh MeshOf(const Points& points, const FbxDouble3& normal) {
  GroupMesh mesh;
  for (size_t i = 0; i < points.size(); ++i) {
    mesh.controlPoints.push_back({points[i], 0, 0});
    mesh.corners.push_back({normal, static_cast<int32_t>(i), 0, 0, -1});
  }
  return mesh;
}

Triangles Cut(const Points& points, const FbxDouble3& normal = kUp) {
  const auto count = static_cast<uint32_t>(points.size());
  return Triangulate(MeshOf(points, normal), count, {{0, count}}, MeshTrace(0));
}

// By the sides of the edges that the point lies on.
bool IsInside(const FbxVector4& previous, const FbxVector4& corner, const FbxVector4& next,
              const FbxVector4& point) {
  const FbxVector4 c1 = getCrossProductOfCorner(previous, corner, point);
  const FbxVector4 c2 = getCrossProductOfCorner(corner, next, point);
  const FbxVector4 c3 = getCrossProductOfCorner(next, previous, point);
  const bool isNegative = c2.DotProduct(c3) < 0.0;
  return (c1.DotProduct(c2) < 0.0) == isNegative && (c3.DotProduct(c1) < 0.0) == isNegative;
}

// The rule word for word, at its own cost: every corner is looked at again after each cut.
Triangles CutPlainly(const Points& points, const FbxDouble3& normal) {
  std::vector<uint32_t> left(points.size());
  std::iota(left.begin(), left.end(), 0U);
  Triangles triangles;
  const auto at = [&](size_t i) -> const FbxVector4& { return points[left[i % left.size()]]; };
  const auto add = [&](size_t i, size_t j, size_t k) {
    const bool isTriangle = !VecNearZero(at(i) - at(j), kEps) &&
                            !VecNearZero(at(j) - at(k), kEps) && !VecNearZero(at(i) - at(k), kEps);
    const size_t n = left.size();
    if (isTriangle) triangles.push_back({left[i % n], left[j % n], left[k % n]});
  };
  // The number of corners if there is no ear, or no need of one.
  const auto findEar = [&] {
    const size_t n = left.size();
    std::vector<bool> isConvex;
    for (size_t i = 0; i < n; ++i) {
      const FbxVector4 cross = getCrossProductOfCorner(at(i + n - 1), at(i), at(i + 1));
      isConvex.push_back(cross.DotProduct(FbxVector4(normal)) > 0.0);
    }
    if (std::count(isConvex.begin(), isConvex.end(), false) == 0) return n;
    for (size_t i = 0; i < n; ++i) {
      bool isEar = isConvex[i];
      for (size_t k = i + 2; isEar && k < i + n - 1; ++k) {
        isEar = isConvex[k % n] || !IsInside(at(i + n - 1), at(i), at(i + 1), at(k));
      }
      if (isEar) return i;
    }
    return n;
  };
  while (left.size() > 3) {
    const size_t ear = findEar();
    if (ear == left.size()) break;
    add(ear + left.size() - 1, ear, ear + 1);
    left.erase(left.begin() + static_cast<ptrdiff_t>(ear));
  }
  if (left.size() == 3 && points.size() > 3) {
    triangles.push_back({left[0], left[1], left[2]});
  } else {
    for (size_t i = 2; i < left.size(); ++i) add(0, i - 1, i);
  }
  return triangles;
}

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
  EXPECT_EQ(Cut(pinched), CutPlainly(pinched, kUp));
}

// Corner `i` of polygons of many kinds.
FbxVector4 CornerOf(int kind, int i, int count, std::mt19937& random) {
  std::uniform_real_distribution<double> distribution(0.0, 1.0);
  const auto unit = [&] { return distribution(random); };
  const auto narrow = [](double x) { return static_cast<double>(static_cast<float>(x)); };
  const auto grid = [&](int cells) { return std::floor(unit() * cells); };
  const double x = std::cos(2.0 * std::numbers::pi * i / count);
  const double y = std::sin(2.0 * std::numbers::pi * i / count);
  const double along = count - i;
  const double tooth = i == 0 || i == count - 1 ? -9.0 : i % 2;
  switch (kind) {
    case 0:  // a star with spikes of many lengths
      return {(0.3 + unit()) * x, (0.3 + unit()) * y, 0.0};
    case 1:  // crossing itself everywhere
      return {unit(), unit(), 0.0};
    case 2:  // a comb on a line, closed far below
      return {along, tooth, 0.0};
    case 3:  // on a coarse grid: collinear and coinciding corners
      return {grid(5), grid(5), 0.0};
    case 4:  // grid corners on a plane askew, not flat at all
      return {narrow(grid(9) * 0.36), narrow(grid(9) * 0.48), narrow(grid(2) * 0.1)};
    case 5:  // a comb like the first, its teeth across all axes, on a rough plane
      return {narrow(0.6 * along - 0.48 * tooth), narrow(0.8 * along + 0.36 * tooth),
              narrow(0.8 * tooth + 0.01 * unit())};
    default:  // some points nowhere
      return {unit() < 0.02 ? std::nan("") : x * unit(), y, unit() < 0.01 ? INFINITY : 0.0};
  }
}

Points MakePolygon(int kind, int count, std::mt19937& random) {
  Points points;
  for (int i = 0; i < count; ++i) points.push_back(CornerOf(kind, i, count, random));
  return points;
}

TEST(Triangulation, ShortcutsDontShow) {
  std::mt19937 random(1);
  for (int kind = 0; kind < 7; ++kind) {
    for (const int count : {4, 5, 6, 9, 17, 40, 65, 90, 150}) {
      for (int turn = 0; turn < (count < 65 ? 20 : 3); ++turn) {
        const Points points = MakePolygon(kind, count, random);
        const FbxDouble3 normal = turn % 3 != 2 ? kUp : kAskew;
        ASSERT_EQ(Cut(points, normal), CutPlainly(points, normal))
            << "kind " << kind << ", " << count << " corners, turn " << turn;
      }
    }
  }
}

TEST(Triangulation, HugePolygonsEnd) {
  std::mt19937 random(2);
  constexpr int kCount = 5000;
  for (const int kind : {0, 1, 2, 3, 5, 6}) {
    const Triangles triangles = Cut(MakePolygon(kind, kCount, random), kind == 5 ? kAskew : kUp);
    EXPECT_LE(triangles.size(), kCount - 2U);
    EXPECT_TRUE(kind != 2 || triangles.size() == kCount - 2U);
  }
  EXPECT_TRUE(Cut(Points(kCount, FbxVector4(1, 2, 3))).empty());
}

}  // namespace
