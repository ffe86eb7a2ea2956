// The connections of a document, and which of them may be made.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <numeric>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "fbx/anim/fbx_animation.h"
#include "fbx/io/fbx_io.h"
#include "fbx/reader/read_records.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

namespace {

// Levels that a tree of nodes, or a chain of textures or properties, may have.
inline constexpr int kMaxConnectionDepth = 10000;
// Layers that a curve node, and stacks that a layer, may belong to. One is what files hold; shared
// without limit, a few thousand connections would stand for millions of animated properties.
inline constexpr int kMaxAnimationOwners = 16;

struct EndHash {
  size_t operator()(const FbxProperty& end) const {
    const size_t object = std::hash<const FbxObject*>()(end.GetFbxObject());
    return object ^ (static_cast<size_t>(static_cast<unsigned>(end.GetIndex())) << 40);
  }
};

// Numbers for the ends of connections, in the order in which they are met.
class EndNumbers {
 public:
  uint32_t operator()(const FbxProperty& end) {
    return numbers_.emplace(end, static_cast<uint32_t>(numbers_.size())).first->second;
  }
  size_t Count() const { return numbers_.size(); }

 private:
  std::unordered_map<FbxProperty, uint32_t, EndHash> numbers_;
};

struct Edge {
  uint32_t destination;
  uint32_t source;
  size_t connection;
};

// For each end the edges that lead to it as their destination, in file order.
class EdgesByDestination {
 public:
  EdgesByDestination(const std::vector<Edge>& edges, size_t ends) : first_(ends + 1), order_() {
    for (const Edge& edge : edges) ++first_[edge.destination + 1];
    std::partial_sum(first_.begin(), first_.end(), first_.begin());
    order_.resize(edges.size());
    std::vector<size_t> next(first_.begin(), first_.end() - 1);
    for (const Edge& edge : edges) order_[next[edge.destination]++] = &edge;
  }

  size_t Begin(uint32_t end) const { return first_[end]; }
  size_t End(uint32_t end) const { return first_[end + 1]; }
  const Edge& operator[](size_t position) const { return *order_[position]; }

 private:
  std::vector<size_t> first_;
  std::vector<const Edge*> order_;
};

// What a connection ties, as far as it matters whether it may be made.
enum class Tie : uint8_t {
  kOther,
  kNodes,       // child and parent
  kTextures,    // texture and layered texture
  kMaterial,    // material and node
  kAnimation,   // curve node and layer, or layer and stack
  kProperties,  // any two
};

// Asked once for each connection: what looks at the objects themselves waits for memory.
Tie TieOf(const FbxConnection& connection) {
  const auto& [source, destination] = connection;
  if (!source.IsRoot() || !destination.IsRoot()) {
    return source.IsRoot() || destination.IsRoot() ? Tie::kOther : Tie::kProperties;
  }
  const FbxClassId from = source.GetFbxObject()->GetClassId();
  const FbxClassId to = destination.GetFbxObject()->GetClassId();
  const auto is = [&](FbxClassId wantedFrom, FbxClassId wantedTo) {
    return to.Is(wantedTo) && from.Is(wantedFrom);
  };
  if (is(FbxNode::ClassId, FbxNode::ClassId)) return Tie::kNodes;
  if (is(FbxSurfaceMaterial::ClassId, FbxNode::ClassId)) return Tie::kMaterial;
  if (is(FbxTexture::ClassId, FbxLayeredTexture::ClassId)) return Tie::kTextures;
  if (is(FbxAnimCurveNode::ClassId, FbxAnimLayer::ClassId) ||
      is(FbxAnimLayer::ClassId, FbxAnimStack::ClassId)) {
    return Tie::kAnimation;
  }
  return Tie::kOther;
}

// The top of the tree that `end` is in, so far.
uint32_t FindTop(std::vector<uint32_t>& above, uint32_t end) {
  while (above[end] != end) end = above[end] = above[above[end]];
  return end;
}

// Marks connections of nodes that don't make a tree.
void FilterNodes(const std::vector<FbxConnection>& connections, const std::vector<Tie>& ties,
                 const FbxNode* rootNode, std::vector<bool>& isDropped) {
  // The manager counts its objects up from 1, so that these serve as numbers without a look-up.
  const auto number = [](const FbxProperty& end) {
    return static_cast<uint32_t>(end.GetFbxObject()->GetUniqueID());
  };
  std::vector<Edge> edges;
  uint32_t count = 0;
  for (size_t i = 0; i < connections.size(); ++i) {
    if (ties[i] != Tie::kNodes) continue;
    edges.push_back({number(connections[i].destination), number(connections[i].source), i});
    count = std::max({count, edges.back().source + 1, edges.back().destination + 1});
  }
  std::vector<uint32_t> above(count);
  std::iota(above.begin(), above.end(), 0U);
  std::vector<bool> hasParent(count, false);
  const uint32_t root = rootNode == nullptr ? count : number(rootNode->RootProperty());
  size_t kept = 0;
  for (const Edge& edge : edges) {
    // A node without a parent is the top of its tree, so a ring is closed exactly by a parent in
    // the same tree.
    const uint32_t top = FindTop(above, edge.destination);
    if (edge.source == root || hasParent[edge.source] || top == edge.source) {
      isDropped[edge.connection] = true;
      continue;
    }
    above[edge.source] = top;
    hasParent[edge.source] = true;
    edges[kept++] = edge;
  }
  edges.resize(kept);

  const EdgesByDestination children(edges, count);
  std::vector<std::pair<uint32_t, int>> next;  // with the level of each
  next.reserve(count);
  for (uint32_t end = 0; end < count; ++end) {
    if (!hasParent[end]) next.emplace_back(end, 0);
  }
  for (size_t i = 0; i < next.size(); ++i) {
    const auto [parent, level] = next[i];
    for (size_t k = children.Begin(parent); k < children.End(parent); ++k) {
      const bool isTooDeep = level + 1 > kMaxConnectionDepth;
      if (isTooDeep) isDropped[children[k].connection] = true;
      next.emplace_back(children[k].source, isTooDeep ? 0 : level + 1);
    }
  }
}

// Marks connections of textures to layered textures, and of properties to properties, that close a
// ring. Of a ring the one goes that a walk from its first destination in the file finds last.
void FilterChains(const std::vector<FbxConnection>& connections, const std::vector<Tie>& ties,
                  std::vector<bool>& isDropped) {
  EndNumbers numbers;
  std::vector<Edge> edges;
  for (size_t i = 0; i < connections.size(); ++i) {
    if (ties[i] != Tie::kTextures && ties[i] != Tie::kProperties) continue;
    const uint32_t to = numbers(connections[i].destination);
    edges.push_back({to, numbers(connections[i].source), i});
  }

  const EdgesByDestination sources(edges, numbers.Count());
  enum class State : uint8_t { kNew, kOpen, kDone };
  struct Step {
    uint32_t end;
    size_t next;
  };
  std::vector<State> states(numbers.Count(), State::kNew);
  std::vector<int> depths(numbers.Count(), 0);
  std::vector<Step> path;
  for (uint32_t start = 0; start < numbers.Count(); ++start) {
    if (states[start] != State::kNew) continue;
    path.push_back({start, sources.Begin(start)});
    states[start] = State::kOpen;
    while (!path.empty()) {
      Step& step = path.back();
      if (step.next == sources.End(step.end)) {
        states[step.end] = State::kDone;
        path.pop_back();
        continue;
      }
      const Edge& edge = sources[step.next];
      if (states[edge.source] == State::kNew) {
        // Looked at again once the source is done.
        states[edge.source] = State::kOpen;
        path.push_back({edge.source, sources.Begin(edge.source)});
        continue;
      }
      ++step.next;
      const bool closesRing = states[edge.source] == State::kOpen;
      if (closesRing || depths[edge.source] + 1 > kMaxConnectionDepth) {
        isDropped[edge.connection] = true;
      } else {
        depths[edge.destination] = std::max(depths[edge.destination], depths[edge.source] + 1);
      }
    }
  }
}

// Marks connections of curve nodes to more layers, and of layers to more stacks, than the limit.
void FilterAnimations(const std::vector<FbxConnection>& connections, const std::vector<Tie>& ties,
                      std::vector<bool>& isDropped) {
  std::unordered_map<const FbxObject*, int> owners;
  for (size_t i = 0; i < connections.size(); ++i) {
    if (ties[i] != Tie::kAnimation) continue;
    if (++owners[connections[i].source.GetFbxObject()] > kMaxAnimationOwners) isDropped[i] = true;
  }
}

// Marks connections that aren't to be made: of a node to a second parent, of a node
// below itself, of the root node, of a texture or a property that would close a ring, those that
// lead deeper than the limit, and those of a curve node or layer to more owners than the limit.
// What hangs below a node without its connection isn't in the scene's tree then.
//
// A scene file is untrusted: nodes must form trees, and neither textures nor properties may feed
// themselves, or whoever walks them would never come to an end. All connections of a file are
// looked at together, in time that grows with their number: one at a time, the depth of a tree that
// is connected from the leaves up, or the search for a ring through layered textures, would cost
// the square of it.
std::vector<bool> FilterConnections(const std::vector<FbxConnection>& connections,
                                    const std::vector<Tie>& ties, const FbxNode* rootNode) {
  std::vector<bool> isDropped(connections.size(), false);
  FilterNodes(connections, ties, rootNode, isDropped);
  FilterChains(connections, ties, isDropped);
  FilterAnimations(connections, ties, isDropped);
  return isDropped;
}

class ConnectionReader {
 public:
  ConnectionReader(FbxIO& io, FbxDocument& document, FbxObjectReferences& references)
      : io_(io), document_(document), references_(references) {}

  // The ends of the current record; an end is invalid if it isn't there.
  FbxConnection Read() {
    const std::string_view tag = io_.FieldReadC();
    FbxConnection connection;
    if (tag == "OO" || tag == "OD") {
      connection.source = ReadEnd(false);
      connection.destination = ReadEnd(true);
    } else if (tag == "OP") {
      connection.source = ReadEnd(false);
      connection.destination = ReadPropertyEnd(true);
    } else if (tag == "PO") {
      connection.source = ReadPropertyEnd(false);
      connection.destination = ReadEnd(true);
    } else if (tag == "PP") {
      connection.source = ReadPropertyEnd(false);
      connection.destination = ReadPropertyEnd(true);
    } else if (tag == "EP") {
      connection.source = document_.RootProperty();
      connection.destination = ReadPropertyEnd(true);
    }
    return connection;
  }

 private:
  FbxProperty ReadEnd(bool isDestination) {
    const FbxObject* object = references_.ReadEnd(isDestination);
    return object == nullptr ? FbxProperty() : object->RootProperty();
  }

  FbxProperty ReadPropertyEnd(bool isDestination) {
    const FbxProperty root = ReadEnd(isDestination);
    return root.FindHierarchical(io_.FieldReadC());
  }

  FbxIO& io_;
  FbxDocument& document_;
  FbxObjectReferences& references_;
};

struct ConnectionHash {
  size_t operator()(const FbxConnection& c) const {
    const auto end = [](const FbxProperty& p) {
      return std::hash<const FbxObject*>()(p.GetFbxObject()) * 31 +
             static_cast<size_t>(static_cast<unsigned>(p.GetIndex()));
    };
    return end(c.source) * 0x9E3779B97F4A7C15ULL + end(c.destination);
  }
};

struct SameConnection {
  bool operator()(const FbxConnection& a, const FbxConnection& b) const {
    return a.source == b.source && a.destination == b.destination;
  }
};

// The connections made so far, so that each is made once. The lists of the ends tell most of them
// without a search; looking through two long lists would cost their lengths for each connection,
// and only what ties two such ends is kept here.
class MadeConnections {
 public:
  bool Contains(const FbxConnection& c) const {
    const FbxPropertyEnds& sources = c.destination.Sources();
    const FbxPropertyEnds& destinations = c.source.Destinations();
    // One that was made while a list was short is among the first of that list.
    if (IsAmongFirst(sources, c.source) || IsAmongFirst(destinations, c.destination)) return true;
    return AreLong(sources, destinations) && betweenHubs_.contains(c);
  }
  // Before the connection is made.
  void Add(const FbxConnection& c) {
    if (AreLong(c.destination.Sources(), c.source.Destinations())) betweenHubs_.insert(c);
  }

 private:
  static constexpr size_t kShort = 16;

  static bool IsAmongFirst(const FbxPropertyEnds& ends, const FbxProperty& end) {
    const auto last = ends.begin() + static_cast<ptrdiff_t>(std::min(ends.size(), kShort));
    return std::find(ends.begin(), last, end) != last;
  }
  static bool AreLong(const FbxPropertyEnds& a, const FbxPropertyEnds& b) {
    return a.size() >= kShort && b.size() >= kShort;
  }

  std::unordered_set<FbxConnection, ConnectionHash, SameConnection> betweenHubs_;
};

}  // namespace

std::vector<FbxConnection> ReadConnections(FbxIO& io, FbxDocument& document,
                                           FbxObjectReferences& references) {
  std::vector<FbxConnection> connections;
  if (!io.FieldReadBlockBegin("Connections")) return connections;
  const std::string_view record = io.IsBeforeVersion7() ? "Connect" : "C";
  const int32_t count = io.FieldGetInstanceCount(record);
  ConnectionReader reader(io, document, references);
  connections.reserve(static_cast<size_t>(count));
  for (int32_t i = 0; i < count; ++i) {
    io.FieldReadBegin(record, i);
    const FbxConnection connection = reader.Read();
    if (connection.source.IsValid() && connection.destination.IsValid()) {
      connections.push_back(connection);
    }
  }
  io.FieldReadBlockEnd();
  return connections;
}

void MakeConnections(const std::vector<FbxConnection>& connections, const FbxNode* rootNode) {
  std::vector<Tie> ties(connections.size());
  std::transform(connections.begin(), connections.end(), ties.begin(), TieOf);
  const std::vector<bool> isDropped = FilterConnections(connections, ties, rootNode);
  MadeConnections made;
  for (size_t i = 0; i < connections.size(); ++i) {
    if (isDropped[i]) continue;
    const FbxConnection& connection = connections[i];
    // A material that a node uses twice, and a texture that is layered twice, count twice.
    if (ties[i] == Tie::kMaterial || ties[i] == Tie::kTextures || !made.Contains(connection)) {
      made.Add(connection);
      FbxProperty(connection.destination).ConnectSrcProperty(connection.source, true);
    }
  }
}
