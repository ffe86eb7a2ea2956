#include "converter/mesh/vertex_splitting.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <span>

#include "converter/base/records.h"

namespace {

// Vertices of one control point that a search passes one by one.
constexpr uint32_t kShortList = 32;
// The edge of a cell, in the most that equal corners may be apart: a search seldom looks into more
// than one, and few that differ fit in.
constexpr double kCell = 8.0;

constexpr FbxColor kWhite{1.0, 1.0, 1.0, 1.0};

int Sign(double a, double b) { return a > b ? 1 : a < b ? -1 : 0; }

// Orders values that differ. NaNs stand by their bits, so that one is the same only as itself.
int CompareBits(double a, double b) {
  if (a == b) return 0;
  if (const int sign = Sign(a, b); sign != 0) return sign;
  const auto bitsOfA = std::bit_cast<uint64_t>(a);
  const auto bitsOfB = std::bit_cast<uint64_t>(b);
  return bitsOfA > bitsOfB ? 1 : bitsOfA < bitsOfB ? -1 : 0;
}

class Hash {
 public:
  void Add(double value) { Add(std::bit_cast<uint64_t>(value + 0.0)); }  // -0 is the same as 0
  void Add(uint64_t bits) {
    value_ = (value_ ^ bits) * 0x9E3779B97F4A7C15U;
    value_ ^= value_ >> 32U;
  }
  uint64_t Value() const { return value_; }

 private:
  uint64_t value_ = 0;
};

// The components that are compared before all others, in that order.
using FirstComponents = std::array<double, 7>;

FirstComponents FirstComponentsOf(const GroupMesh& mesh, uint32_t corner) {
  const FbxDouble3& normal = mesh.corners[corner].normal;
  const FbxColor& color = getColor(mesh, mesh.CornerOf(corner));
  return {normal[0], normal[1], normal[2], color.mRed, color.mBlue, color.mGreen, color.mAlpha};
}

// The place of the first NaN; the number of components if there is none.
size_t FindNaN(const FirstComponents& components) {
  return static_cast<size_t>(std::find_if(components.begin(), components.end(),
                                          [](double value) { return std::isnan(value); }) -
                             components.begin());
}

// What a hash stands for: all of a vertex; its first components, and that a NaN follows; or its
// first components, whatever follows.
enum HashKind : uint64_t { kIsSo, kEndsThere, kBeginsSo };

Hash HashOf(const FirstComponents& components, size_t count, HashKind kind) {
  Hash hash;
  hash.Add(uint64_t{kind});
  hash.Add(uint64_t{count});
  for (size_t i = 0; i < count; ++i) hash.Add(components[i]);
  return hash;
}

// Of everything that is compared exactly, for a corner without a NaN in the first components.
Hash HashOfAll(const GroupMesh& mesh, uint32_t corner, const FirstComponents& components) {
  Hash hash = HashOf(components, components.size(), kIsSo);
  const MeshCorner place = mesh.CornerOf(corner);
  for (const CornerEntries<FbxVector2>& uvs : mesh.uvs) {
    const FbxVector2& uv = getUV(uvs, place);
    hash.Add(uv[0]);
    hash.Add(uv[1]);
  }
  hash.Add(static_cast<uint64_t>(mesh.corners[corner].materialIndex));
  return hash;
}

// Calls `visit` with `exact` and each cell of a grid that a point up to `reach` away from `sum` can
// lie in. An edge of 0 makes one cell of everything.
template <typename Visit>
void ForEachCell(const Hash& exact, const FbxVector4& sum, double edge, double reach,
                 const Visit& visit) {
  const auto cell = [&](size_t axis, double offset) {
    return edge == 0.0 ? 0.0 : std::floor((sum[axis] + offset) / edge);
  };
  for (double x = cell(0, -reach); x <= cell(0, reach); ++x) {
    for (double y = cell(1, -reach); y <= cell(1, reach); ++y) {
      for (double z = cell(2, -reach); z <= cell(2, reach); ++z) {
        Hash hash = exact;
        hash.Add(x);
        hash.Add(y);
        hash.Add(z);
        visit(hash);
      }
    }
  }
}

}  // namespace

const FbxColor& getColor(const GroupMesh& mesh, const MeshCorner& corner) {
  if (mesh.colors == nullptr) return kWhite;
  const FbxColor* color =
      LayerElementLookup(mesh.colors, MappedIndex(mesh.colors->mappingMode, corner));
  return color == nullptr ? kWhite : *color;
}

int ComparePolygonVertexPair::Compare(uint32_t a, uint32_t b) const {
  const PolygonVertexAttributes& first = mesh_.corners[a];
  const PolygonVertexAttributes& second = mesh_.corners[b];
  if (first.controlPoint != second.controlPoint) {
    return first.controlPoint > second.controlPoint ? 1 : -1;
  }
  for (size_t i = 0; i < 3; ++i) {
    if (first.normal[i] != second.normal[i]) return Sign(first.normal[i], second.normal[i]);
  }
  const MeshCorner placeOfA = mesh_.CornerOf(a);
  const MeshCorner placeOfB = mesh_.CornerOf(b);
  if (mesh_.colors != nullptr) {
    const FbxColor& colorOfA = getColor(mesh_, placeOfA);
    const FbxColor& colorOfB = getColor(mesh_, placeOfB);
    for (double FbxColor::*component :
         {&FbxColor::mRed, &FbxColor::mBlue, &FbxColor::mGreen, &FbxColor::mAlpha}) {
      if (colorOfA.*component != colorOfB.*component) {
        return Sign(colorOfA.*component, colorOfB.*component);
      }
    }
  }
  for (const CornerEntries<FbxVector2>& uvs : mesh_.uvs) {
    const FbxVector2& uvOfA = getUV(uvs, placeOfA);
    const FbxVector2& uvOfB = getUV(uvs, placeOfB);
    if (&uvOfA == &uvOfB) continue;
    for (size_t i = 0; i < 2; ++i) {
      if (const int order = CompareBits(uvOfA[i], uvOfB[i]); order != 0) return order;
    }
  }
  if (!mesh_.morphs.channels.empty()) {
    if (const int order = CompareMorphNormals(placeOfA, placeOfB); order != 0) return order;
  }
  if (first.materialIndex != second.materialIndex) {
    return first.materialIndex > second.materialIndex ? 1 : -1;
  }
  return 0;
}

int ComparePolygonVertexPair::CompareMorphNormals(const MeshCorner& a, const MeshCorner& b) const {
  const MeshMorphs& morphs = mesh_.morphs;
  if (morphs.baseNormalCount > 0) {
    const std::optional<BaseNormal> baseOfA = morphs.base.At(a);
    const std::optional<BaseNormal> baseOfB = morphs.base.At(b);
    if (const int order = CompareMovedNormals(baseOfA, baseOfB); order != 0) return order;
  }
  for (const uint32_t channel : morphs.others) {
    FbxVector4 normalOfA;
    FbxVector4 normalOfB;
    if (!morphs.channels[channel].NormalAt(a, normalOfA)) normalOfA = kNoNormal;
    if (!morphs.channels[channel].NormalAt(b, normalOfB)) normalOfB = kNoNormal;
    if (const int order = CompareNormals(normalOfA, normalOfB); order != 0) return order;
  }
  return 0;
}

int ComparePolygonVertexPair::CompareMovedNormals(const std::optional<BaseNormal>& a,
                                                  const std::optional<BaseNormal>& b) const {
  if (!a.has_value() && !b.has_value()) return 0;
  const bool areThere = a.has_value() && b.has_value();
  // The same offsets on the same normal.
  if (areThere && a->point == b->point && a->normal == b->normal) return 0;
  const MeshMorphs& morphs = mesh_.morphs;
  using Entries = MeshMorphs::Entries;
  Entries turnsOfA = a.has_value() ? morphs.TurnsOf(a->point) : Entries();
  Entries turnsOfB = b.has_value() ? morphs.TurnsOf(b->point) : Entries();
  const auto take = [&](Entries& turns, uint32_t channel, const std::optional<BaseNormal>& base) {
    if (!base.has_value()) return kNoNormal;
    if (turns.empty() || turns.front().channel != channel) return base->normal;
    const FbxVector4 turned = morphs.Turned(base->normal, turns.front());
    turns = turns.subspan(1);
    return turned;
  };
  uint32_t touched = 0;
  for (; !turnsOfA.empty() || !turnsOfB.empty(); ++touched) {
    const uint32_t channel = turnsOfB.empty() || (!turnsOfA.empty() && turnsOfA.front().channel <
                                                                           turnsOfB.front().channel)
                                 ? turnsOfA.front().channel
                                 : turnsOfB.front().channel;
    const FbxVector4 normalOfA = take(turnsOfA, channel, a);
    const FbxVector4 normalOfB = take(turnsOfB, channel, b);
    if (const int order = CompareNormals(normalOfA, normalOfB); order != 0) return order;
  }
  // All channels that touch neither do the same.
  if (touched == morphs.baseNormalCount) return 0;
  return CompareNormals(a.has_value() ? a->normal : kNoNormal,
                        b.has_value() ? b->normal : kNoNormal);
}

// One that is near zero counts as none.
int ComparePolygonVertexPair::CompareNormals(const FbxVector4& a, const FbxVector4& b) const {
  const bool hasA = !IsNearZero(a);
  const bool hasB = !IsNearZero(b);
  if (hasA != hasB) return hasA ? 1 : -1;
  if (!hasA || a == b) return 0;
  const FbxVector4 turnedA = mesh_.TurnNormal(a);
  const FbxVector4 turnedB = mesh_.TurnNormal(b);
  if (IsNearZero(turnedA - turnedB)) return 0;
  for (size_t i = 0; i < 3; ++i) {
    if (const int order = CompareBits(turnedA[i], turnedB[i]); order != 0) return order;
  }
  return 0;
}

VertexSplitter::VertexSplitter(GroupMesh& mesh, const MeshTrace& trace)
    : mesh_(mesh), trace_(trace), compare_(mesh), heads_(mesh.controlPoints.size(), kNone) {
  const MeshMorphs& morphs = mesh.morphs;
  double others = 0.0;
  for (const MorphChannel& channel : morphs.channels) {
    // Uneven, so that mirrored morphs don't cancel each other.
    Hash hash;
    hash.Add(uint64_t{weights_.size()});
    const double weight = 1.0 + static_cast<double>(hash.Value() % 1024) / 1024.0;
    weights_.push_back(weight);
    if (channel.HasBaseNormals()) baseWeight_ += weight;
    if (channel.HasOtherNormals()) others += weight;
  }
  // A little more than it takes, for what is lost in adding up.
  reach_ = 1.01 * kVectorTolerance * (baseWeight_ + others);
}

std::vector<uint32_t> VertexSplitter::BuildControlPointNormalGroupMap(
    const std::vector<Triangle>& triangles) {
  vertices_.clear();
  for (const Triangle& triangle : triangles) {
    for (const uint32_t corner : triangle) {
      int32_t& index = mesh_.corners[corner].vertexIndex;
      // A corner of several triangles has the same attributes in each.
      if (index == -1) index = static_cast<int32_t>(FindOrAdd(corner));
    }
  }
  std::vector<uint32_t> vertices = NumberVertices();
  CheckCorners(triangles, vertices);
  for (const int32_t point : used_) heads_[static_cast<size_t>(point)] = kNone;
  used_.clear();
  longLists_.clear();
  return vertices;
}

uint32_t VertexSplitter::FindOrAdd(uint32_t corner) {
  const int32_t point = mesh_.corners[corner].controlPoint;
  uint32_t& head = heads_[static_cast<size_t>(point)];
  if (head == kNone) {
    used_.push_back(point);
    head = Append(corner, kNone);
    return head;
  }
  uint32_t at = head;
  for (uint32_t passed = 1;; ++passed) {
    if (compare_.IsSame(corner, vertices_[at].corner)) return at;
    if (passed == kShortList) return FindOrAddInLongList(corner, at);
    if (vertices_[at].next == kNone) return Append(corner, at);
    at = vertices_[at].next;
  }
}

uint32_t VertexSplitter::FindOrAddInLongList(uint32_t corner, uint32_t last) {
  const auto [entry, isNew] = longLists_.try_emplace(mesh_.corners[corner].controlPoint);
  LongList& list = entry->second;
  if (isNew) {
    list.first = kNone;
    list.last = last;
  }
  const uint32_t found = FindInLongList(list, corner);
  if (found != kNone) return found;
  list.last = Append(corner, list.last);
  if (list.first == kNone) list.first = list.last;
  EnterInLongList(list, list.last);
  return list.last;
}

FbxVector4 VertexSplitter::SumOfMorphNormals(uint32_t corner) const {
  const MeshMorphs& morphs = mesh_.morphs;
  FbxVector4 sum;
  const auto add = [&](const FbxVector4& normal, double weight) {
    if (IsNearZero(normal)) return;
    const FbxVector4 turned = mesh_.TurnNormal(normal);
    for (size_t i = 0; i < 3; ++i) {
      if (!std::isnan(turned[i])) sum[i] += weight * turned[i];
    }
  };
  const MeshCorner place = mesh_.CornerOf(corner);
  const std::optional<BaseNormal> base =
      morphs.baseNormalCount > 0 ? morphs.base.At(place) : std::nullopt;
  if (base.has_value()) {
    double untouched = baseWeight_;
    for (const PointIndex::Entry& turn : morphs.TurnsOf(base->point)) {
      add(morphs.Turned(base->normal, turn), weights_[turn.channel]);
      untouched -= weights_[turn.channel];
    }
    add(base->normal, untouched);
  }
  for (const uint32_t channel : morphs.others) {
    FbxVector4 normal;
    if (morphs.channels[channel].NormalAt(place, normal)) add(normal, weights_[channel]);
  }
  return sum;
}

uint32_t VertexSplitter::FindInLongList(LongList& list, uint32_t corner) {
  uint32_t found = kNone;
  const auto search = [&](const Hash& hash) {
    const auto bucket = list.byHash.find(hash.Value());
    if (bucket == list.byHash.end()) return;
    for (const uint32_t at : bucket->second) {
      if (at >= found) return;
      if (compare_.IsSame(corner, vertices_[at].corner)) found = at;
    }
  };
  const FirstComponents components = FirstComponentsOf(mesh_, corner);
  const size_t nan = FindNaN(components);
  for (size_t i = 0; i < nan; ++i) {
    if (list.nanPlaces[i]) search(HashOf(components, i, kEndsThere));
  }
  if (nan == components.size()) {
    ForEachCell(HashOfAll(mesh_, corner, components), SumOfMorphNormals(corner), kCell * reach_,
                reach_, search);
    return found;
  }
  if (!list.prefixes[nan]) {
    list.prefixes[nan] = true;
    for (uint32_t at = list.first; at != kNone; at = vertices_[at].next) {
      const FirstComponents others = FirstComponentsOf(mesh_, vertices_[at].corner);
      if (FindNaN(others) < nan) continue;
      list.byHash[HashOf(others, nan, kBeginsSo).Value()].push_back(at);
    }
  }
  search(HashOf(components, nan, kBeginsSo));
  return found;
}

void VertexSplitter::EnterInLongList(LongList& list, uint32_t vertex) {
  const uint32_t corner = vertices_[vertex].corner;
  const FirstComponents components = FirstComponentsOf(mesh_, corner);
  const size_t nan = FindNaN(components);
  const auto enter = [&](const Hash& hash) { list.byHash[hash.Value()].push_back(vertex); };
  if (nan == components.size()) {
    ForEachCell(HashOfAll(mesh_, corner, components), SumOfMorphNormals(corner), kCell * reach_,
                0.0, enter);
  } else {
    list.nanPlaces[nan] = true;
    enter(HashOf(components, nan, kEndsThere));
  }
  for (size_t i = 0; i <= nan && i < components.size(); ++i) {
    if (list.prefixes[i]) enter(HashOf(components, i, kBeginsSo));
  }
}

uint32_t VertexSplitter::Append(uint32_t corner, uint32_t previous) {
  const auto added = static_cast<uint32_t>(vertices_.size());
  vertices_.push_back({corner, kNone, 0});
  if (previous != kNone) vertices_[previous].next = added;
  return added;
}

std::vector<uint32_t> VertexSplitter::NumberVertices() {
  if (used_.size() > heads_.size() / 16) {
    // Most points are in use: looking at all of them is quicker than sorting.
    used_.clear();
    for (size_t i = 0; i < heads_.size(); ++i) {
      if (heads_[i] != kNone) used_.push_back(static_cast<int32_t>(i));
    }
  } else {
    std::sort(used_.begin(), used_.end());
  }
  std::vector<uint32_t> vertices;
  vertices.reserve(vertices_.size());
  for (const int32_t point : used_) {
    for (uint32_t at = heads_[static_cast<size_t>(point)]; at != kNone; at = vertices_[at].next) {
      if (trace_.IsOn() && mesh_.corners[vertices_[at].corner].controlPoint != point) {
        AddWarning("control point mismatch");
      }
      if (trace_.IsOn() &&
          mesh_.corners[vertices_[at].corner].vertexIndex != static_cast<int32_t>(at)) {
        AddWarning("vertex attribute mismatch");
      }
      vertices_[at].number = static_cast<uint32_t>(vertices.size());
      vertices.push_back(vertices_[at].corner);
    }
  }
  return vertices;
}

void VertexSplitter::CheckCorners(const std::vector<Triangle>& triangles,
                                  const std::vector<uint32_t>& vertices) const {
  for (const Triangle& triangle : triangles) {
    for (const uint32_t corner : triangle) {
      const int32_t index = mesh_.corners[corner].vertexIndex;
      if (index == -1) {
        AddWarning("uninitialized vertex");
        continue;
      }
      const Vertex& vertex = vertices_[static_cast<size_t>(index)];
      // Comparing once more would cost as much as the search did.
      if (trace_.IsOn() && !compare_.IsSame(corner, vertex.corner)) {
        AddWarning("Polygon Vertex Pair mismatch");
      }
      if (vertices[vertex.number] != vertex.corner) {
        AddWarning("Vertex Index and Vertex Attribute Index mismatch (offset table incorrect)");
      }
    }
  }
}
