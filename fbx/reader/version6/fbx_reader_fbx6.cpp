#include "fbx/reader/version6/fbx_reader_fbx6.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

#include "fbx/io/fbx_io.h"
#include "fbx/io/stored_value.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

namespace {

// The records of `Objects` that are read, and their kinds, "" meaning any.
constexpr auto kRecords = std::to_array<std::pair<std::string_view, std::string_view>>({
    {"Model", ""},
    {"Material", ""},
    {"Texture", ""},
    {"LayeredTexture", ""},
    {"Video", ""},
    {"Deformer", "Skin"},
    {"Deformer", "Cluster"},
    {"Pose", "BindPose"},
    {"Pose", "RestPose"},
    {"Geometry", "Mesh"},
    {"Geometry", "Shape"},
});

bool IsRead(std::string_view type, std::string_view kind) {
  return std::ranges::any_of(kRecords, [&](const auto& record) {
    return record.first == type && (record.second.empty() || record.second == kind);
  });
}

// The rates of the time modes as files write them, by mode. Two modes have none.
constexpr std::array<std::string_view, 18> kRates = {
    "",           "120", "100", "60",   "50",     "48", "30", "",   "29.97 drop",
    "29.97 full", "25",  "24",  "1000", "23.976", "",   "96", "72", "59.94"};

template <typename T>
void SetIfSilent(const FbxGlobalSettings& settings, const char* name, const T& value) {
  FbxProperty property = settings.FindProperty(name);
  if (!property.Modified()) property.Set(value);
}

void SetFrameRate(const FbxGlobalSettings& settings, std::string_view text) {
  if (text.empty() || settings.FindProperty("TimeMode").Modified()) return;
  for (size_t mode = 0; mode < kRates.size(); ++mode) {
    if (kRates[mode] == text) return SetIfSilent(settings, "TimeMode", static_cast<int>(mode));
  }
  const double rate = ParseReal(text);
  if (!std::isfinite(rate) || rate <= 0.0) return;
  SetIfSilent(settings, "TimeMode", static_cast<int>(FbxTime::eCustom));
  SetIfSilent(settings, "CustomFrameRate", rate);
}

// Fills what `settings`, read before, are silent about: the ambient colour and the time mode. The
// current list is the document's; they are in its `Version5`.
void ReadOldSettings(FbxIO& io, FbxGlobalSettings& settings) {
  if (!io.FieldReadBlockBegin("Version5")) return;
  if (io.FieldReadBlockBegin("AmbientRenderSettings")) {
    FbxDouble3 color{};
    const auto count = static_cast<int>(color.size());
    if (io.FieldReadBegin("AmbientLightColor") && io.FieldReadGetRemain() >= count) {
      io.FieldReadDn(color.data(), count);
      SetIfSilent(settings, "AmbientColor", color);
    }
    io.FieldReadBlockEnd();
  }
  if (io.FieldReadBlockBegin("Settings")) {
    SetFrameRate(settings, io.FieldReadC("FrameRate"));
    io.FieldReadBlockEnd();
  }
  io.FieldReadBlockEnd();
}

}  // namespace

void FbxReaderFbx6::ReadSettings(FbxGlobalSettings& settings) {
  if (EnterBlock("Objects")) {
    if (EnterBlock("GlobalSettings")) {
      ReadProperties(*io_, settings);
      LeaveBlock();
    }
    LeaveBlock();
  }
  ReadOldSettings(*io_, settings);
}

bool FbxReaderFbx6::ReadSections() {
  if (scene_ != nullptr) ReadSettings(scene_->GetGlobalSettings());
  ReadObjectSection();
  ConnectObjects();
  layerTextures_.Connect(*document_);
  FindEmbeddedTextures(*document_, media_);
  if (GetOption("Animation", true)) ReadTakeSection();
  return true;
}

void FbxReaderFbx6::ReadObjectSection() {
  if (!EnterBlock("Objects")) return;
  struct Pose {
    FbxIORecordPlace place;
    FbxObject** object;
  };
  std::vector<Pose> poses;
  for (const FbxIORecordPlace place : io_->FieldGetFileOrder()) {
    const std::string type(io_->FieldGetName(place.field));
    io_->FieldReadBegin(place.field, place.instance);
    std::string name(io_->FieldReadC());
    const std::string kind(io_->FieldReadC());
    if (name.empty() || !IsRead(type, kind) || !io_->FieldReadIsBlock()) continue;
    // Of several records with one name the first is kept.
    const auto [object, isNew] = objects_.emplace(std::move(name), nullptr);
    if (!isNew) continue;
    if (type == "Pose") {
      // Poses may name models that stand behind them.
      poses.push_back({place, &object->second});
      continue;
    }
    if (io_->FieldReadBlockBegin()) {
      object->second = ReadKeptRecord(type, kind, StripPrefix(object->first));
      LeaveBlock();
    }
    // A name is kept by an object alone.
    if (object->second == nullptr) objects_.erase(object);
  }
  for (const Pose& pose : poses) {
    io_->FieldReadBegin(pose.place.field, pose.place.instance);
    const std::string name = StripPrefix(io_->FieldReadC());
    const std::string kind(io_->FieldReadC());
    if (!io_->FieldReadBlockBegin()) continue;
    *pose.object = ReadRecord("Pose", kind, name);
    LeaveBlock();
  }
  LeaveBlock();
}

FbxObject* FbxReaderFbx6::ReadKeptRecord(std::string_view type, const std::string& kind,
                                         std::string_view name) {
  FbxObject* object = ReadRecord(type, kind, name);
  if (object == nullptr) return nullptr;
  if (object->Is<FbxNode>()) ReadInlineAttribute(static_cast<FbxNode&>(*object), kind);
  if (object->Is<FbxMesh>()) layerTextures_.Read(*io_, static_cast<FbxMesh&>(*object));
  return object;
}

void FbxReaderFbx6::ReadInlineAttribute(FbxNode& node, const std::string& kind) {
  const bool isMesh = kind == "Mesh";
  FbxObject* attribute = ReadRecord(isMesh ? "Geometry" : "NodeAttribute", kind,
                                    StripPrefix(io_->FieldReadC("NodeAttributeName")));
  if (attribute == nullptr) return;
  node.ConnectSrcObject(attribute);
  if (!isMesh) return;
  auto& mesh = static_cast<FbxMesh&>(*attribute);
  layerTextures_.Read(*io_, mesh);
  if (GetOption("Shape", true)) ReadShapes(mesh, node);
}

void FbxReaderFbx6::ReadShapes(FbxMesh& mesh, const FbxNode& node) {
  FbxObject* blendShape = nullptr;
  const int32_t count = io_->FieldGetInstanceCount("Shape");
  for (int32_t i = 0; i < count; ++i) {
    io_->FieldReadBegin("Shape", i);
    const std::string name = StripPrefix(io_->FieldReadC());
    if (!io_->FieldReadBlockBegin()) continue;
    auto& shape = static_cast<FbxShape&>(*AddObject(FbxShape::ClassId, name));
    ReadShape(*io_, shape);
    LeaveBlock();
    auto& channel =
        static_cast<FbxBlendShapeChannel&>(*AddObject(FbxBlendShapeChannel::ClassId, name));
    channel.fullWeights = {100.0};
    if (const FbxProperty percent = node.FindProperty(name); percent.IsValid()) {
      channel.DeformPercent().Set(percent.Get<double>());
    }
    channel.ConnectSrcObject(&shape);
    if (blendShape == nullptr) {
      blendShape = AddObject(FbxBlendShape::ClassId, "");
      mesh.ConnectSrcObject(blendShape);
    }
    blendShape->RootProperty().ConnectSrcObject(&channel, true);
    shapeChannels_[&mesh].emplace(name, &channel);
  }
}

FbxObject* FbxReaderFbx6::AddObject(FbxClassId classId, std::string_view name) {
  FbxObject* object = NewObject(classId, name);
  document_->RootProperty().ConnectSrcObject(object, true);
  return object;
}

FbxObject* FbxReaderFbx6::ReadObject() {
  const auto found = objects_.find(std::string(io_->FieldReadC()));
  return found == objects_.end() ? nullptr : found->second;
}

FbxObject* FbxReaderFbx6::ReadEnd(bool isDestination) {
  const std::string name(io_->FieldReadC());
  if (isDestination && name == "Model::Scene") return RootNode();
  const auto found = objects_.find(name);
  return found == objects_.end() ? nullptr : found->second;
}

void FbxReaderFbx6::ConnectObjects() {
  std::vector<FbxConnection> connections = ReadConnections(*io_, *document_, *this);
  const auto is = [](const FbxProperty& end, FbxClassId classId) {
    return end.IsRoot() && end.GetFbxObject()->GetClassId().Is(classId);
  };
  // The meshes of models that have a record of their own; they aren't connected yet.
  std::unordered_map<const FbxObject*, const FbxMesh*> meshes;
  for (const auto& [source, destination] : connections) {
    if (!is(source, FbxMesh::ClassId) || !is(destination, FbxNode::ClassId)) continue;
    meshes.emplace(destination.GetFbxObject(), static_cast<FbxMesh*>(source.GetFbxObject()));
  }
  // A deformer of a model deforms its mesh.
  std::erase_if(connections, [&](FbxConnection& connection) {
    const auto& [source, destination] = connection;
    if (!is(source, FbxDeformer::ClassId) || !is(destination, FbxNode::ClassId)) return false;
    const auto* node = static_cast<FbxNode*>(destination.GetFbxObject());
    const FbxMesh* mesh = node->GetMesh();
    if (const auto found = meshes.find(node); mesh == nullptr && found != meshes.end()) {
      mesh = found->second;
    }
    if (mesh == nullptr) return true;
    connection.destination = mesh->RootProperty();
    return false;
  });
  MakeConnections(connections, RootNode());
}
