#include "tests/fbx/reader/scene_text.h"

#include <cmath>
#include <sstream>

#include "fbx/anim/fbx_animation.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"

namespace {

using Out = std::ostringstream;

template <typename Number>
void Add(Out& out, Number number) {
  out << " " << number;
}
// Without what rounding leaves of 0.
void Add(Out& out, double number) { out << " " << std::round(number * 1e6) / 1e6 + 0.0; }
void Add(Out& out, const FbxDouble3& v) {
  for (const double number : v) Add(out, number);
  out << ",";
}
void Add(Out& out, const FbxVector2& v) {
  for (const double number : v.data) Add(out, number);
  out << ",";
}
void Add(Out& out, const FbxVector4& v) {
  for (const double number : v.data) Add(out, number);
  out << ",";
}
void Add(Out& out, const FbxColor& c) { Add(out, FbxVector4(c.mRed, c.mGreen, c.mBlue, c.mAlpha)); }

template <typename List>
void AddList(Out& out, const char* what, const List& list) {
  if (list.empty()) return;
  out << "  " << what << ":";
  for (const auto& entry : list) Add(out, entry);
  out << "\n";
}

template <typename Matrix>
void AddMatrix(Out& out, const Matrix& matrix) {
  for (int row = 0; row < 4; ++row) {
    Add(out,
        FbxVector4(matrix.Get(row, 0), matrix.Get(row, 1), matrix.Get(row, 2), matrix.Get(row, 3)));
  }
  out << "\n";
}

std::string NameOf(const FbxObject* object) {
  if (object == nullptr) return "nothing";
  return std::string(object->GetClassId().GetName()) + " '" + object->Name() + "'";
}

void AddSources(Out& out, const FbxProperty& property) {
  for (const FbxProperty& source : property.Sources()) {
    out << "    from " << NameOf(source.GetFbxObject());
    if (!source.IsRoot()) out << ", " << source.GetHierarchicalName().Text();
    out << "\n";
  }
}

void AddProperties(Out& out, const FbxObject& object, bool all = false) {
  for (FbxProperty p = object.GetFirstProperty(); p.IsValid(); p = object.GetNextProperty(p)) {
    if (!all && !p.Modified() && p.Sources().empty()) continue;
    out << "  " << p.GetHierarchicalName().Text() << ": " << p.GetPropertyDataType().GetName()
        << " of type " << p.GetPropertyDataType().GetType() << ", flags " << p.GetFlags() << ", "
        << p.Get<FbxString>().Text();
    if (p.HasMinLimit()) out << ", at least " << p.GetMinLimit();
    if (p.HasMaxLimit()) out << ", at most " << p.GetMaxLimit();
    for (int i = 0; i < p.GetEnumCount(); ++i) out << ", '" << p.GetEnumValue(i).Text() << "'";
    out << "\n";
    AddSources(out, p);
  }
}

void AddElement(Out& out, const char* what, const FbxLayerElement& element) {
  out << "  " << what << " '" << element.GetName() << "', mapping " << element.GetMappingMode()
      << ", reference " << element.GetReferenceMode() << "\n";
  AddList(out, "  index", element.index.Values());
}

void AddLayers(Out& out, const FbxLayerContainer& geometry) {
  for (int i = 0; i < geometry.GetLayerCount(); ++i) {
    const FbxLayer& layer = *geometry.GetLayer(i);
    const auto add = [&](const char* what, const auto& element) {
      if (element == nullptr) return;
      AddElement(out, what, *element);
      AddList(out, "  values", element->direct.Values());
    };
    out << "  layer " << i << "\n";
    add("normals", layer.normals);
    if (layer.normals != nullptr) AddList(out, "  fourth components", layer.normals->w.Values());
    add("colors", layer.vertexColors);
    for (size_t channel = 0; channel < layer.uvs.size(); ++channel) {
      add(kUVElementNames.at(channel), layer.uvs.at(channel));
    }
    if (layer.materials != nullptr) AddElement(out, "materials", *layer.materials);
  }
  for (const int type : {0, int{FbxLayerElement::eUVFirst}}) {
    const int count = geometry.GetElementUVCount(type);
    if (count > 0) out << "  UVs of type " << type << ":";
    for (int i = 0; i < count; ++i) out << " " << geometry.GetElementUV(i, type)->GetName();
    if (count > 0) out << "\n";
  }
}

void AddCurve(Out& out, const KFCurve& curve) {
  out << "  default " << curve.GetDefaultValue() << "\n";
  for (int i = 0; i < curve.KeyGetCount(); ++i) {
    const KFCurveKeyAttr attr = curve.KeyGetAttr(i);
    out << "  " << curve.KeyGetTime(i).Get() << ": " << curve.KeyGetValue(i) << ", flags "
        << std::hex << attr.flags << ", words";
    for (const uint32_t word : attr.words) out << " " << word;
    out << std::dec << "\n";
  }
  for (const auto& end : {curve.GetPreExtrapolation(), curve.GetPostExtrapolation()}) {
    if (end.mode != KFCurve::eConstant) out << "  goes on " << end.mode << " " << end.count << "\n";
  }
}

void AddContent(Out& out, const FbxObject& object) {
  if (const auto* node = dynamic_cast<const FbxNode*>(&object)) {
    for (const FbxNode* child : node->Children()) out << "  child " << NameOf(child) << "\n";
    out << "  attribute " << NameOf(node->GetNodeAttribute()) << "\n";
    for (int i = 0; i < node->GetMaterialCount(); ++i) {
      out << "  material " << NameOf(node->GetMaterial(i)) << "\n";
    }
  } else if (const auto* skeleton = dynamic_cast<const FbxSkeleton*>(&object)) {
    out << "  skeleton type " << skeleton->GetSkeletonType() << "\n";
  } else if (const auto* geometry = dynamic_cast<const FbxGeometryBase*>(&object)) {
    AddList(out, "points", geometry->ControlPoints());
    AddLayers(out, *geometry);
    const auto* mesh = dynamic_cast<const FbxMesh*>(geometry);
    const auto* layer = object.GetScene()->GetSrcObject<FbxAnimLayer>();
    if (mesh != nullptr && mesh->GetShapeChannel(0, 0, layer) != nullptr) {
      out << "  the first of " << mesh->GetShapeCount() << " shapes is driven\n";
    }
    for (int p = 0; mesh != nullptr && p < mesh->GetPolygonCount(); ++p) {
      out << "  polygon at " << mesh->GetPolygonVertexIndex(p) << ":";
      for (int k = 0; k < mesh->GetPolygonSize(p); ++k) Add(out, mesh->GetPolygonVertex(p, k));
      out << "\n";
    }
  } else if (const auto* skin = dynamic_cast<const FbxSkin*>(&object)) {
    out << "  skinning type " << skin->skinningType << "\n";
    AddList(out, "blend weights", skin->blendWeights);
  } else if (const auto* cluster = dynamic_cast<const FbxCluster*>(&object)) {
    out << "  link mode " << cluster->GetLinkMode() << "\n";
    AddList(out, "indices", cluster->indices);
    AddList(out, "weights", cluster->weights);
    AddMatrix(out, cluster->transform);
    AddMatrix(out, cluster->transformLink);
  } else if (const auto* channel = dynamic_cast<const FbxBlendShapeChannel*>(&object)) {
    AddList(out, "full weights", channel->GetTargetShapeFullWeights());
  } else if (const auto* pose = dynamic_cast<const FbxPose*>(&object)) {
    out << "  type " << pose->TypeLetter() << "\n";
    for (int i = 0; i < pose->GetCount(); ++i) {
      out << "  " << (pose->IsLocalMatrix(i) ? "local " : "") << NameOf(pose->GetNode(i));
      AddMatrix(out, pose->GetMatrix(i));
    }
  } else if (const auto* stack = dynamic_cast<const FbxAnimStack*>(&object)) {
    if (stack->GetScene()->GetTakeInfo(stack->GetName()) != nullptr) out << "  with take info\n";
  } else if (const auto* texture = dynamic_cast<const FbxFileTexture*>(&object)) {
    out << "  file '" << texture->GetFileName() << "', '" << texture->GetRelativeFileName()
        << "', media '" << texture->GetMediaName() << "'\n";
  } else if (const auto* layers = dynamic_cast<const FbxLayeredTexture*>(&object)) {
    for (const auto& input : layers->inputs) {
      out << "  input of mode " << input.blendMode << ", alpha " << input.alpha << "\n";
    }
  } else if (const auto* video = dynamic_cast<const FbxVideo*>(&object)) {
    out << "  file '" << video->GetFileName() << "', '" << video->GetRelativeFileName()
        << (video->useMipMap ? "', mip map\n" : "'\n");
  } else if (const auto* curve = dynamic_cast<const FbxAnimCurve*>(&object)) {
    AddCurve(out, curve->curve);
  }
}

}  // namespace

std::string PropertiesText(const FbxObject& object) {
  Out out;
  out << NameOf(&object) << "\n";
  AddProperties(out, object, true);
  return out.str();
}

std::string SceneText(const FbxScene& scene) {
  Out out;
  out << "scene '" << scene.Name() << "'\n";
  for (int i = 0; i < scene.GetSrcObjectCount(); ++i) {
    const FbxObject& object = *scene.GetSrcObject(i);
    out << NameOf(&object) << "\n";
    AddProperties(out, object);
    AddSources(out, object.RootProperty());
    AddContent(out, object);
  }
  return out.str();
}
