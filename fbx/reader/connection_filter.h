// Decides which connections of a file may be made. A scene file is untrusted: nodes must form
// trees, and neither textures nor properties may feed themselves, or whoever walks them would never
// come to an end. All connections of a file are looked at together, in time that grows with their
// number: one at a time, the depth of a tree that is connected from the leaves up, or the search
// for a ring through layered textures, would cost the square of it.
#pragma once

#include <vector>

#include "fbx/core/fbx_property.h"

class FbxNode;

// One connection of a file. Objects are their root properties.
struct FbxConnection {
  FbxProperty source;
  FbxProperty destination;
};

// Levels that a tree of nodes, or a chain of textures or properties, may have.
inline constexpr int kMaxConnectionDepth = 10000;
// Layers that a curve node, and stacks that a layer, may belong to. One is what files hold; shared
// without limit, a few thousand connections would stand for millions of animated properties.
inline constexpr int kMaxAnimationOwners = 16;

// Removes connections, keeping the order of the others: of a node to a second parent, of a node
// below itself, of the root node, of a texture or a property that would close a ring, those that
// lead deeper than the limit, and those of a curve node or layer to more owners than the limit.
// What hangs below a node without its connection isn't in the scene's tree then.
void FilterConnections(std::vector<FbxConnection>& connections, const FbxNode* rootNode);
