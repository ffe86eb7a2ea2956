// Reads a document of major version 6, which says what one of version 7 says in other words:
// objects are told apart by their whole names, "Class::Name"; models hold their attributes, meshes
// and shapes; layers of a mesh say what its model's textures are for; animation lies in takes. The
// records are found here and handed to the readers of version 7's.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "fbx/reader/fbx_reader.h"
#include "fbx/reader/version6/layer_textures.h"

class FbxBlendShapeChannel;

class FbxReaderFbx6 : public FbxReader {
 public:
  using FbxReader::FbxReader;

 protected:
  void ReadSettings(FbxGlobalSettings& settings) override;
  bool ReadSections() override;
  FbxObject* ReadObject() override;
  FbxObject* ReadEnd(bool isDestination) override;

 private:
  // The shape channels of a mesh by name.
  using ShapeChannels = std::unordered_map<std::string, FbxBlendShapeChannel*>;

  // The properties that a take moves, by object and index.
  using AnimatedProperties = std::set<std::pair<const FbxObject*, int>>;

  void ReadObjectSection();
  // Reads the record whose list is the current one. Null if it makes no object.
  FbxObject* ReadKeptRecord(std::string_view type, const std::string& kind, std::string_view name);
  // Makes the attribute that stands among the fields of a model's record, the current list.
  void ReadInlineAttribute(FbxNode& node, const std::string& kind);
  void ReadShapes(FbxMesh& mesh, const FbxNode& node);
  void ConnectObjects();
  void ReadTakeSection();
  void ReadTake(const std::string& name);
  void ReadModelChannels(const FbxNode& node, FbxObject& layer, AnimatedProperties& animated);
  // Makes a curve node of a property, from the current list, unless the take has one already.
  void ReadCurveNode(const std::string& name, FbxProperty property, FbxObject& layer,
                     AnimatedProperties& animated);
  // Reads the default value and the keys of a curve node's channel from the current list.
  void ReadCurve(FbxProperty channel);
  // Calls `read` with the name of each `Channel` that has a block, inside that block.
  template <typename ReadChannel>
  void ForEachChannel(const ReadChannel& read);
  FbxObject* AddObject(FbxClassId classId, std::string_view name);

  // By whole name. Null for a record that is kept, but not read yet.
  std::unordered_map<std::string, FbxObject*> objects_;
  std::unordered_map<const FbxObject*, ShapeChannels> shapeChannels_;
  FbxLayerTextures layerTextures_;
  FbxSharedArray<int64_t> times_;  // of the last curve
};
