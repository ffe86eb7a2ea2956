// The connections of a document.
#include <functional>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "fbx/io/fbx_io.h"
#include "fbx/reader/connection_filter.h"
#include "fbx/reader/read_records.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

namespace {

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

// A material that a node uses twice, and a texture that is layered twice, count twice.
bool MayRepeat(const FbxConnection& c) {
  if (!c.source.IsRoot() || !c.destination.IsRoot()) return false;
  const FbxObject& source = *c.source.GetFbxObject();
  const FbxObject& destination = *c.destination.GetFbxObject();
  return (destination.Is<FbxLayeredTexture>() && source.Is<FbxTexture>()) ||
         (destination.Is<FbxNode>() && source.Is<FbxSurfaceMaterial>());
}

}  // namespace

std::vector<FbxConnection> ReadConnections(FbxIO& io, FbxDocument& document,
                                           FbxObjectReferences& references) {
  std::vector<FbxConnection> connections;
  if (!io.FieldReadBegin("Connections") || !io.FieldReadBlockBegin()) return connections;
  const char* record = io.IsBeforeVersion7() ? "Connect" : "C";
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

void MakeConnections(std::vector<FbxConnection> connections, const FbxNode* rootNode) {
  FilterConnections(connections, rootNode);
  // Kept here, since looking through the ends of an object that has very many costs their number.
  std::unordered_set<FbxConnection, ConnectionHash, SameConnection> made;
  for (FbxConnection& connection : connections) {
    const bool isNew = made.insert(connection).second;
    if (isNew || MayRepeat(connection)) {
      connection.destination.ConnectSrcProperty(connection.source, true);
    }
  }
}
