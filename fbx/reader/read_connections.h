// Reads the connections of a document and makes them.
#pragma once

#include <cstdint>
#include <unordered_map>

class FbxDocument;
class FbxIO;
class FbxObject;
class FbxNode;

// Objects by their ids in the file.
using FbxObjectsById = std::unordered_map<int64_t, FbxObject*>;

// The current list is the document's. Id 0 means `rootNode`, which may be null. A connection with
// an end that isn't there is passed over.
void ReadConnections(FbxIO& io, const FbxObjectsById& objects, FbxDocument& document,
                     FbxNode* rootNode);
