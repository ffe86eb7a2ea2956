// Reads the records of a document of either version, one family a file: read_mesh.cpp and so on.
// Unless it is said otherwise, the current list is the object's record when a function is called,
// and again after it.
//
// A bad part never fails a load: what can't be understood is passed over, and the rest is read.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fbx/core/fbx_class_id.h"
#include "fbx/core/fbx_property.h"
#include "fbx/math/fbx_matrix.h"
#include "fbx/scene/fbx_node.h"

class FbxAnimCurve;
class FbxBlendShape;
class FbxBlendShapeChannel;
class FbxCluster;
class FbxDocument;
class FbxFileTexture;
class FbxIO;
class FbxLayeredTexture;
class FbxMediaFolder;
class FbxMesh;
class FbxNode;
class FbxPose;
class FbxScene;
class FbxShape;
class FbxSkin;
class FbxSurfaceMaterial;
class FbxVideo;
class KFCurve;
class KFCurveAttributes;
struct FbxTakeInfo;

// How the records of a document name its objects.
class FbxObjectReferences {
 public:
  virtual ~FbxObjectReferences() = default;
  // The object that the next value of the current record names; null if there is none.
  virtual FbxObject* ReadObject() = 0;
  // The same for an end of a connection, which may be the scene's root node, too.
  virtual FbxObject* ReadEnd(bool isDestination) = 0;
};

// Properties, the way of writing them that goes with the file's version. One that the object
// doesn't have is created, if its parent is there, and flagged as imported; a record of an unknown
// type is passed over.
void ReadProperties(FbxIO& io, FbxObject& object);

// Nodes, and their attributes that are no geometry.
void ReadNode(FbxIO& io, FbxNode& node);
void ReadSkeleton(FbxIO& io, FbxSkeleton& skeleton, FbxSkeleton::ESkeletonType type);
// A pose's entry that names no node is passed over.
void ReadPose(FbxIO& io, FbxPose& pose, FbxObjectReferences& references);

void ReadMesh(FbxIO& io, FbxMesh& mesh);
// What a layer says: the fields of its elements, and their numbers among the records of the field.
using FbxLayerEntries = std::vector<std::pair<std::string, int32_t>>;
// The layers of the mesh by their numbers.
std::map<int32_t, FbxLayerEntries> ReadLayerEntries(FbxIO& io);
// Sixteen doubles, as an array or one by one; false, with `out` untouched, if there aren't as many.
bool ReadMatrix(FbxIO& io, std::string_view field, FbxMatrix& out);

void ReadSkin(FbxIO& io, FbxSkin& skin);
void ReadCluster(FbxIO& io, FbxCluster& cluster);
void ReadBlendShape(FbxIO& io, FbxBlendShape& blendShape);
void ReadBlendShapeChannel(FbxIO& io, FbxBlendShapeChannel& channel);
void ReadShape(FbxIO& io, FbxShape& shape);
// Prepares the shapes of a scene once all is connected. Shapes apply their offsets to their
// geometry when they are asked, see FbxShape. What must be there before is the normals that theirs
// are offsets from: a mesh without normals, one of whose shapes has some, gets smooth normals by
// corner.
void RebuildTargetShapes(FbxScene& scene);

// The shading model of a material's record, which its subclass names, or else a field.
std::string ReadShadingModel(FbxIO& io, std::string_view subclass);
// Phong for "Phong" and "Blinn", Lambert for "Lambert", in any case, else the base class.
FbxClassId SurfaceMaterialClass(std::string_view shadingModel);
void ReadSurfaceMaterial(FbxIO& io, FbxSurfaceMaterial& material, std::string_view shadingModel);
void ReadFileTexture(FbxIO& io, FbxFileTexture& texture, const FbxMediaFolder& media);
void ReadLayeredTexture(FbxIO& io, FbxLayeredTexture& texture);
// Writes the media embedded in the video's record to the disk.
void ReadVideo(FbxIO& io, FbxVideo& video, FbxMediaFolder& media);
// Gives textures without a file the one that their video has written. Textures are read before
// videos, so this comes after the connections; the next load of the file finds the same.
void FindEmbeddedTextures(const FbxDocument& document, const FbxMediaFolder& media);

// Reads the attributes of curves' keys. They are mostly those of the curve before, which then are
// neither decoded nor kept again: without that, loading a baked clip takes a fifth longer.
class FbxAttributeReader {
 public:
  // Those of the curve whose list is the current one.
  std::shared_ptr<const KFCurveAttributes> Read(FbxIO& io);

 private:
  std::shared_ptr<const KFCurveAttributes> last_;
  std::array<std::string, 3> bytes_;  // that they came from; flags, words, counts
};
void ReadCurve(FbxIO& io, FbxAnimCurve& curve, FbxAttributeReader& attributes);
void ReadExtrapolations(FbxIO& io, KFCurve& curve);
// The current list is the take's record.
FbxTakeInfo ReadTakeInfo(FbxIO& io, std::string name);
// The current list is the document's; the takes are in its `Takes`.
void ReadTakes(FbxIO& io, FbxDocument& document);

// One connection of a file. Objects are their root properties.
struct FbxConnection {
  FbxProperty source;
  FbxProperty destination;
};

// The connections of the document whose list is the current one, in file order. One with an end
// that isn't there is passed over.
std::vector<FbxConnection> ReadConnections(FbxIO& io, FbxDocument& document,
                                           FbxObjectReferences& references);
// Makes connections, each once unless it may repeat, but for those that would give a node a second
// parent, close a ring or lead too deep. The root node may be null.
void MakeConnections(const std::vector<FbxConnection>& connections, const FbxNode* rootNode);
