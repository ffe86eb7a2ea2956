#include "fbx/reader/fbx_reader.h"

#include <array>
#include <utility>

#include "fbx/anim/fbx_animation.h"
#include "fbx/reader/fbx_importer.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

FbxReader::FbxReader(FbxManager& manager, FbxStatus& status, const FbxIOSettings* settings,
                     std::unique_ptr<FbxIO> io, FbxMediaFolder media)
    : manager_(manager), status_(status), settings_(settings), io_(std::move(io)) {
  if (GetOption("ExtractEmbeddedData", true)) media_ = std::move(media);
}

FbxReader::~FbxReader() = default;

bool FbxReader::GetOption(const char* name, bool fallback) const {
  return settings_ == nullptr
             ? fallback
             : settings_->GetBoolProp(std::string("Import|AdvOptGrp|FileFormat|Fbx|") + name,
                                      fallback);
}

bool FbxReader::EnterBlock(std::string_view field) { return io_->FieldReadBlockBegin(field); }

void FbxReader::LeaveBlock() { io_->FieldReadBlockEnd(); }

FbxNode* FbxReader::RootNode() const { return scene_ == nullptr ? nullptr : scene_->GetRootNode(); }

bool FbxReader::ReadOutline(FbxGlobalSettings& settings) {
  if (io_->ProjectOpenMainSection()) {
    ReadSettings(settings);
    io_->ProjectCloseSection();
  }
  status_.Clear();
  return io_->CheckRead();
}

bool FbxReader::Read(FbxDocument& document) {
  if (io_->ProjectGetCurrentSection() < 0 && !io_->ProjectOpenMainSection()) {
    status_.SetCode(FbxStatus::eFailure, "File is corrupted (or invalid)");
    io_->CheckRead();
    return false;
  }
  const std::string password =
      settings_ == nullptr
          ? std::string()
          : settings_->GetStringProp("Import|AdvOptGrp|FileFormat|Fbx|Password", "");
  if (!io_->ProjectGetPassword().empty() && io_->ProjectGetPassword() != password) {
    status_.SetCode(FbxStatus::ePasswordError, "Wrong password");
    return false;
  }

  document_ = &document;
  scene_ = document.Is<FbxScene>() ? static_cast<FbxScene*>(document_) : nullptr;
  io_->FieldReadResetPosition();
  if (!ReadSections()) {
    io_->CheckRead();
    return false;
  }
  if (scene_ != nullptr) {
    scene_->FixInheritType(RootNode());
    if (GetOption("Shape", true)) RebuildTargetShapes(*scene_);
    const FbxGlobalSettings& settings = scene_->GetGlobalSettings();
    FbxTime::SetGlobalTimeMode(settings.GetTimeMode(), settings.GetCustomFrameRate());
    FbxTime::SetGlobalTimeProtocol(settings.GetTimeProtocol());
  }
  io_->ProjectCloseSection();
  // Parts that could not be read have left their mark here; the document has the rest.
  status_.Clear();
  return io_->CheckRead();
}

FbxObject* FbxReader::NewObject(FbxClassId classId, std::string_view name) {
  return manager_.CreateNewObjectFromClassId(classId, std::string(name).c_str());
}

// A rule for the records of a type and a subclass, "" meaning any subclass.
struct FbxReader::ObjectRule {
  using Read = FbxObject* (*)(FbxReader&, std::string_view name, const std::string& subclass);

  std::string_view type;
  std::string_view subclass;
  Read read;
  bool isShape = false;  // read only if the option for shapes is on

  // Makes a T and reads it.
  template <typename T, void (*ReadT)(FbxIO&, T&)>
  static FbxObject* As(FbxReader& reader, std::string_view name, const std::string&) {
    FbxObject* object = reader.NewObject(T::ClassId, name);
    ReadT(*reader.io_, static_cast<T&>(*object));
    return object;
  }
  template <typename T>
  static FbxObject* WithProperties(FbxReader& reader, std::string_view name, const std::string&) {
    FbxObject* object = reader.NewObject(T::ClassId, name);
    ReadProperties(*reader.io_, *object);
    return object;
  }
  template <FbxSkeleton::ESkeletonType type>
  static FbxObject* Skeleton(FbxReader& reader, std::string_view name, const std::string&) {
    FbxObject* object = reader.NewObject(FbxSkeleton::ClassId, name);
    ReadSkeleton(*reader.io_, static_cast<FbxSkeleton&>(*object), type);
    return object;
  }
  template <bool isBindPose>
  static FbxObject* Pose(FbxReader& reader, std::string_view name, const std::string&) {
    FbxObject* object = reader.NewObject(FbxPose::ClassId, name);
    auto& pose = static_cast<FbxPose&>(*object);
    pose.SetIsBindPose(isBindPose);
    ReadPose(*reader.io_, pose, reader);
    return object;
  }
  static FbxObject* Material(FbxReader& reader, std::string_view name,
                             const std::string& subclass) {
    const std::string shadingModel = ReadShadingModel(*reader.io_, subclass);
    FbxObject* object = reader.NewObject(SurfaceMaterialClass(shadingModel), name);
    ReadSurfaceMaterial(*reader.io_, static_cast<FbxSurfaceMaterial&>(*object), shadingModel);
    return object;
  }
  static FbxObject* FileTexture(FbxReader& reader, std::string_view name, const std::string&) {
    FbxObject* object = reader.NewObject(FbxFileTexture::ClassId, name);
    ReadFileTexture(*reader.io_, static_cast<FbxFileTexture&>(*object), reader.media_);
    return object;
  }
  static FbxObject* Video(FbxReader& reader, std::string_view name, const std::string&) {
    FbxObject* object = reader.NewObject(FbxVideo::ClassId, name);
    ReadVideo(*reader.io_, static_cast<FbxVideo&>(*object), reader.media_);
    return object;
  }
  static FbxObject* Curve(FbxReader& reader, std::string_view name, const std::string&) {
    FbxObject* object = reader.NewObject(FbxAnimCurve::ClassId, name);
    ReadCurve(*reader.io_, static_cast<FbxAnimCurve&>(*object), reader.curveAttributes_);
    return object;
  }
  // The settings exist already, and so nothing is made of their record.
  static FbxObject* GlobalSettings(FbxReader& reader, std::string_view, const std::string&) {
    if (reader.scene_ != nullptr) {
      ReadProperties(*reader.io_, reader.scene_->GetGlobalSettings());
    }
    return nullptr;
  }
};

const FbxReader::ObjectRule* FbxReader::FindRule(std::string_view type, std::string_view subclass) {
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
      {"AnimationCurve", "", &R::Curve},
      {"GlobalSettings", "", &R::GlobalSettings},
  });
  for (const ObjectRule& rule : kRules) {
    if (rule.type == type && (rule.subclass.empty() || rule.subclass == subclass)) return &rule;
  }
  return nullptr;
}

FbxObject* FbxReader::ReadRecord(std::string_view type, const std::string& subclass,
                                 std::string_view name) {
  const ObjectRule* rule = FindRule(type, subclass);
  if (rule == nullptr || (rule->isShape && !GetOption("Shape", true))) return nullptr;
  FbxObject* object = rule->read(*this, name, subclass);
  if (object != nullptr) document_->RootProperty().ConnectSrcObject(object, true);
  return object;
}
