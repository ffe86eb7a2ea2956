// The records of `Objects`: which class a record becomes, and who reads it.
#include <array>

#include "fbx/anim/fbx_anim_curve.h"
#include "fbx/anim/fbx_anim_stack.h"
#include "fbx/reader/fbx_reader_fbx7.h"
#include "fbx/reader/read_animation.h"
#include "fbx/reader/read_deformer.h"
#include "fbx/reader/read_material.h"
#include "fbx/reader/read_mesh.h"
#include "fbx/reader/read_node.h"
#include "fbx/reader/read_pose.h"
#include "fbx/reader/read_properties.h"
#include "fbx/reader/read_video.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_pose.h"
#include "fbx/scene/fbx_scene.h"

namespace {

// Whether the record that the cursor stands on has an id, or its name first. Text files don't tell
// a number from a text.
bool BeginsWithId(FbxIO& io) {
  if (io.IsBinary()) return io.FieldReadGetType() != 'S';
  if (io.FieldReadGetCount() > 2) return true;
  std::string_view first = io.FieldReadC();
  if (first.starts_with('-')) first.remove_prefix(1);
  return !first.empty() && first.find_first_not_of("0123456789") == std::string_view::npos;
}

}  // namespace

// A rule for the records of a type and a subclass, "" meaning any subclass.
struct FbxReaderFbx7::ObjectRule {
  using Read = FbxObject* (*)(FbxReaderFbx7&, std::string_view name, const std::string& subclass);

  std::string_view type;
  std::string_view subclass;
  Read read;
  bool isShape = false;  // read only if the option for shapes is on

  // Makes a T and reads it.
  template <typename T, void (*ReadT)(FbxIO&, T&)>
  static FbxObject* As(FbxReaderFbx7& reader, std::string_view name, const std::string&) {
    FbxObject* object = reader.NewObject(T::ClassId, name);
    ReadT(*reader.io_, static_cast<T&>(*object));
    return object;
  }
  template <typename T>
  static FbxObject* WithProperties(FbxReaderFbx7& reader, std::string_view name,
                                   const std::string&) {
    FbxObject* object = reader.NewObject(T::ClassId, name);
    ReadProperties(*reader.io_, *object);
    return object;
  }
  template <FbxSkeleton::ESkeletonType type>
  static FbxObject* Skeleton(FbxReaderFbx7& reader, std::string_view name, const std::string&) {
    FbxObject* object = reader.NewObject(FbxSkeleton::ClassId, name);
    ReadSkeleton(*reader.io_, static_cast<FbxSkeleton&>(*object), type);
    return object;
  }
  template <bool isBindPose>
  static FbxObject* Pose(FbxReaderFbx7& reader, std::string_view name, const std::string&) {
    FbxObject* object = reader.NewObject(FbxPose::ClassId, name);
    auto& pose = static_cast<FbxPose&>(*object);
    pose.SetIsBindPose(isBindPose);
    ReadPose(*reader.io_, pose, reader.objects_);
    return object;
  }
  static FbxObject* Material(FbxReaderFbx7& reader, std::string_view name,
                             const std::string& subclass) {
    const std::string shadingModel = ReadShadingModel(*reader.io_, subclass);
    FbxObject* object = reader.NewObject(SurfaceMaterialClass(shadingModel), name);
    ReadSurfaceMaterial(*reader.io_, static_cast<FbxSurfaceMaterial&>(*object), shadingModel);
    return object;
  }
  static FbxObject* FileTexture(FbxReaderFbx7& reader, std::string_view name, const std::string&) {
    FbxObject* object = reader.NewObject(FbxFileTexture::ClassId, name);
    ReadFileTexture(*reader.io_, static_cast<FbxFileTexture&>(*object), reader.media_);
    return object;
  }
  static FbxObject* Video(FbxReaderFbx7& reader, std::string_view name, const std::string&) {
    FbxObject* object = reader.NewObject(FbxVideo::ClassId, name);
    ReadVideo(*reader.io_, static_cast<FbxVideo&>(*object), reader.media_);
    return object;
  }
  // The settings exist already, and so nothing is made of their record.
  static FbxObject* GlobalSettings(FbxReaderFbx7& reader, std::string_view, const std::string&) {
    if (reader.scene_ != nullptr) {
      ReadProperties(*reader.io_, reader.scene_->GetGlobalSettings());
    }
    return nullptr;
  }
};

const FbxReaderFbx7::ObjectRule* FbxReaderFbx7::FindRule(std::string_view type,
                                                         std::string_view subclass) {
  using R = ObjectRule;
  static constexpr auto kRules = std::to_array<ObjectRule>({
      {"Model", "", &R::As<FbxNode, ReadNode>},
      {"NodeAttribute", "Null", &R::WithProperties<FbxNull>},
      {"NodeAttribute", "Light", &R::WithProperties<FbxLight>},
      {"NodeAttribute", "Camera", &R::WithProperties<FbxCamera>},
      {"NodeAttribute", "LimbNode", &R::Skeleton<FbxSkeleton::eLimbNode>},
      {"NodeAttribute", "Limb", &R::Skeleton<FbxSkeleton::eLimb>},
      {"NodeAttribute", "Root", &R::Skeleton<FbxSkeleton::eRoot>},
      {"NodeAttribute", "Effector", &R::Skeleton<FbxSkeleton::eEffector>},
      {"Geometry", "Mesh", &R::As<FbxMesh, ReadMesh>},
      {"Geometry", "Shape", &R::As<FbxShape, ReadShape>, true},
      {"Material", "", &R::Material},
      {"Texture", "", &R::FileTexture},
      {"LayeredTexture", "", &R::As<FbxLayeredTexture, ReadLayeredTexture>},
      {"Video", "", &R::Video},
      {"Deformer", "Skin", &R::As<FbxSkin, ReadSkin>},
      {"Deformer", "Cluster", &R::As<FbxCluster, ReadCluster>},
      {"Deformer", "BlendShape", &R::As<FbxBlendShape, ReadBlendShape>, true},
      {"Deformer", "BlendShapeChannel", &R::As<FbxBlendShapeChannel, ReadBlendShapeChannel>, true},
      {"Pose", "BindPose", &R::Pose<true>},
      {"Pose", "RestPose", &R::Pose<false>},
      {"AnimationStack", "", &R::WithProperties<FbxAnimStack>},
      {"AnimationLayer", "", &R::WithProperties<FbxAnimLayer>},
      {"AnimationCurveNode", "", &R::WithProperties<FbxAnimCurveNode>},
      {"AnimationCurve", "", &R::As<FbxAnimCurve, ReadCurve>},
      {"GlobalSettings", "", &R::GlobalSettings},
  });
  for (const ObjectRule& rule : kRules) {
    if (rule.type == type && (rule.subclass.empty() || rule.subclass == subclass)) return &rule;
  }
  return nullptr;
}

void FbxReaderFbx7::ReadObjectSection() {
  if (!EnterBlock("Objects")) return;
  for (const std::string& type : types_) ReadObjectsOfType(type);
  LeaveBlock();
}

void FbxReaderFbx7::ReadObjectsOfType(const std::string& type) {
  const int32_t count = io_->FieldGetInstanceCount(type);
  for (int32_t i = 0; i < count; ++i) {
    io_->FieldReadBegin(type, i);
    const bool hasId = BeginsWithId(*io_);
    io_->FieldReadBegin(type, i);
    const int64_t id = hasId ? io_->FieldReadLL() : 0;
    const std::string name = StripPrefix(io_->FieldReadC());
    const std::string subclass(io_->FieldReadC());
    // Of several objects with one id the first is kept.
    const bool isTaken = id != 0 && objects_.contains(id);
    if (isTaken || !io_->FieldReadBlockBegin()) continue;
    ReadObject(type, subclass, name, id);
    LeaveBlock();
  }
}

void FbxReaderFbx7::ReadObject(const std::string& type, const std::string& subclass,
                               std::string_view name, int64_t id) {
  const ObjectRule* rule = FindRule(type, subclass);
  if (rule == nullptr || (rule->isShape && !GetOption("Shape", true))) return;
  FbxObject* object = rule->read(*this, name, subclass);
  if (object == nullptr) return;
  if (id != 0) objects_.emplace(id, object);
  document_->RootProperty().ConnectSrcObject(object, true);
}

FbxObject* FbxReaderFbx7::NewObject(FbxClassId classId, std::string_view name) {
  FbxObject* object = manager_.CreateNewObjectFromClassId(classId, std::string(name).c_str());
  templates_.MergeWithTemplate(*object);
  return object;
}
