// Text files as authoring tools write them, by hand: comments and banners, arrays over many lines,
// Windows line ends, names in other scripts.
#include <ostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/anim/fbx_anim_curve.h"
#include "fbx/anim/fbx_anim_stack.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_pose.h"
#include "tests/fbx/reader/imported.h"

using testing::ElementsAre;

namespace {

constexpr const char* kScene = R"(; FBX 7.3.0 project file
; Copyright (C) 1997-2010 A Tool Maker
; ----------------------------------------------------

FBXHeaderExtension:  {
	FBXHeaderVersion: 1003
	FBXVersion: 7300
	CreationTimeStamp:  {
		Version: 1000
		Year: 2014
		Month: 3
		Day: 1
		Hour: 9
		Minute: 59
		Second: 0
		Millisecond: 7
	}
	Creator: "Exporter { build 2014 } version"
	SceneInfo: "SceneInfo::GlobalInfo", "UserData" {
		Type: "UserData"
		Properties70:  {
			P: "DocumentUrl", "KString", "Url", "", "C:\scenes\{old}\box.fbx"
		}
	}
}
GlobalSettings:  {
	Version: 1000
	Properties70:  {
		P: "UpAxis", "int", "Integer", "",2
		P: "UpAxisSign", "int", "Integer", "",1
		P: "FrontAxis", "int", "Integer", "",1
		P: "FrontAxisSign", "int", "Integer", "",-1
		; the unit is the inch
		P: "UnitScaleFactor", "double", "Number", "",2.54
		P: "TimeMode", "enum", "", "",6
	}
}

; Documents Description
;------------------------------------------------------------------

Documents:  {
	Count: 1
	Document: 736853824, "", "Scene" {
		Properties70:  {
			P: "SourceObject", "object", "", ""
			P: "ActiveAnimStackName", "KString", "", "", "Take 001"
		}
		RootNode: 0
	}
}

; Document References
;------------------------------------------------------------------

References:  {
}

; Object definitions
;------------------------------------------------------------------

Definitions:  {
	Version: 100
	Count: 10
	ObjectType: "GlobalSettings" {
		Count: 1
	}
	ObjectType: "NodeAttribute"  {
	}
	ObjectType: "Pose" {
	}
	ObjectType: "Model" {
		Count: 2
		PropertyTemplate: "FbxNode" {
			Properties70:  {
				P: "QuaternionInterpolate", "enum", "", "",0
				P: "InheritType", "enum", "", "",1
				P: "Visibility", "Visibility", "", "A",1
			}
		}
	}
	ObjectType: "Geometry" {
		Count: 2
		PropertyTemplate: "FbxMesh" {
			Properties70:  {
				P: "Color", "ColorRGB", "Color", "",0.8,0.8,0.8
			}
		}
	}
	ObjectType: "Material" {
		Count: 1
	}
	ObjectType: "Deformer" {
		Count: 2
	}
	ObjectType: "AnimationStack" {
	}
	ObjectType: "AnimationLayer" {
	}
	ObjectType: "AnimationCurveNode" {
	}
	ObjectType: "AnimationCurve" {
	}
}

; Object properties
;------------------------------------------------------------------

Objects:  {
	NodeAttribute: 600, "NodeAttribute::", "Light" {
		Properties70:  {
			P: "Color", "Color", "", "A",1,0.5,-0
			P: "Intensity", "Number", "", "A",1e+02
		}
		TypeFlags: "Light"
	}
	Geometry: 2035541511296, "Geometry::", "Mesh" {
		Vertices: *12 {
			a: -0.5,0,1e-05,0.5,0,0,0.5,
1E3,-0,
			-.5,+1.25,0
		}
		PolygonVertexIndex: *4 {
			a: 0,1,2,-4
		}
		Edges: *4 {
			a: 0,1,2,3
		}
		GeometryVersion: 124
		LayerElementNormal: 0 {
			Version: 102
			Name: ""
			MappingInformationType: "ByPolygonVertex"
			ReferenceInformationType: "Direct"
			Normals: *12 {
				a: 0,0,1,0,0,1,0,0,1,0,0,1
			}
			NormalsW: *4 {
				a: 1,1,1,1
			}
		}
		LayerElementUV: 0 {
			Version: 101
			Name: "map1"
			MappingInformationType: "ByPolygonVertex"
			ReferenceInformationType: "IndexToDirect"
			UV: *4 {
				a: 0,0,1,1
			}
			UVIndex: *4 {
				a: 0,1,1,-1
			}
		}
		Layer: 0 {
			Version: 100
			LayerElement:  {
				Type: "LayerElementNormal"
				TypedIndex: 0
			}
			LayerElement:  {
				Type: "LayerElementUV"
				TypedIndex: 0
			}
		}
	}
	Geometry: 2035541511297, "Geometry::smile", "Shape" {
		Version: 100
		Indexes: *1 {
			a: 3
		}
		Vertices: *3 {
			a: 0,0,2.5
		}
		Normals: *3 {
			a: 0,1,0
		}
	}
	Model: 100, "Model::Würfel 箱", "Mesh" {
		Version: 232
		Properties70:  {
			; a comment, "quoted" {
			P: "RotationActive", "bool", "", "",1
			P: "ScalingMax", "Vector3D", "Vector", "",0,0,0
			P: "DefaultAttributeIndex", "int", "Integer", "",0
			P: "Lcl Translation", "Lcl Translation", "", "A+",1.5,-2e1,3
			P: "note", "KString", "", "U", "two&lf;lines&cr;; &quot;quoted&quot; {braces}"
			P: "currentUVSet", "KString", "", "U", "map1"
		}
		Shading: T
		Culling: "CullingOff"
	}
	Model: 101, "Model::Licht::1", "Light" {
		Version: 232
	}
	Pose: 700, "Pose::BIND_POSES", "BindPose" {
		Type: "BindPose"
		Version: 100
		NbPoseNodes: 1
		PoseNode:  {
			Node: 100
			Matrix: *16 {
				a: 1,0,0,0,0,1,0,0,0,0,1,0,7,8,9,1
			}
		}
	}
	Material: 200, "Material::skin", "" {
		Version: 102
		ShadingModel: "lambert"
		MultiLayer: 0
		Properties70:  {
			P: "DiffuseColor", "Color", "", "A",0.25,0.5,1
			P: "Opacity", "double", "Number", "",0.5
		}
	}
	Deformer: 300, "Deformer::face", "BlendShape" {
		Version: 100
	}
	Deformer: 301, "SubDeformer::smile", "BlendShapeChannel" {
		Version: 100
		DeformPercent: 0
		FullWeights: *1 {
			a: 100
		}
	}
	AnimationStack: 400, "AnimStack::Take 001", "" {
		Properties70:  {
			P: "LocalStop", "KTime", "Time", "",46186158000
		}
	}
	AnimationLayer: 401, "AnimLayer::BaseLayer", "" {
	}
	AnimationCurveNode: 402, "AnimCurveNode::T", "" {
		Properties70:  {
			P: "d|X", "Number", "", "A",1.5
		}
	}
	AnimationCurve: 403, "AnimCurve::", "" {
		Default: 0
		KeyVer: 4008
		KeyTime: *2 {
			a: 0,46186158000
		}
		KeyValueFloat: *2 {
			a: 0,10
		}
		;KeyAttrFlags
		KeyAttrFlags: *1 {
			a: 24840
		}
		;KeyAttrDataFloat
		KeyAttrDataFloat: *4 {
			a: 0,0,218434821,0
		}
		KeyAttrRefCount: *1 {
			a: 2
		}
	}
}

; Object connections
;------------------------------------------------------------------

Connections:  {

	;Model::Würfel 箱, Model::RootNode
	C: "OO",100,0

	;Model::Licht::1, Model::Würfel 箱
	C: "OO",101,100

	;NodeAttribute::, Model::Licht::1
	C: "OO",600,101

	;Geometry::, Model::Würfel 箱
	C: "OO",2035541511296,100
	C: "OO",200,100
	C: "OO",300,2035541511296
	C: "OO",301,300
	C: "OO",2035541511297,301
	C: "OO",401,400
	C: "OO",402,401
	C: "OP",402,100, "Lcl Translation"

	;AnimCurve::, AnimCurveNode::T
	C: "OP",403,402, "d|X"
}
;Takes section
;----------------------------------------------------

Takes:  {
	Current: "Take 001"
	Take: "Take 001" {
		FileName: "Take_001.tak"
		LocalTime: 0,46186158000
		ReferenceTime: 0,46186158000
	}
}
)";

// Another way of laying out the same text.
struct Layout {
  const char* name;
  const char* from;
  const char* to;

  friend void PrintTo(const Layout& layout, std::ostream* out) { *out << layout.name; }
};

std::string LaidOut(const Layout& layout) {
  std::string text = kScene;
  const std::string_view from = layout.from;
  const std::string_view to = layout.to;
  for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

class AsciiScene : public testing::TestWithParam<Layout> {};

INSTANTIATE_TEST_SUITE_P(Layouts, AsciiScene,
                         testing::Values(Layout{"AsItIs", "\t", "\t"},
                                         Layout{"WindowsLineEnds", "\n", "\r\n"},
                                         Layout{"NoIndentation", "\t", ""},
                                         Layout{"Blanks", "\t", "    "},
                                         Layout{"BlanksBehindCommas", ",", ", "},
                                         Layout{"BlanksAroundBraces", " {\n", "  {  \n"},
                                         Layout{"WideVersion", "7300", "7500"}),
                         [](const auto& layout) { return layout.param.name; });

TEST_P(AsciiScene, Loads) {
  const Imported file(LaidOut(GetParam()));
  ASSERT_TRUE(file.isLoaded) << file.Status();
  EXPECT_EQ(file.scene->GetGlobalSettings().GetSystemUnit(), 2.54);
  EXPECT_EQ(file.scene->GetGlobalSettings().GetTimeMode(), 6);
  EXPECT_TRUE(file.scene->GetGlobalSettings().GetAxisSystem() == FbxAxisSystem::MayaZUp);
  EXPECT_NE(file.scene->GetTakeInfo("Take 001"), nullptr);

  ASSERT_THAT(ChildNames(*file.scene->GetRootNode()), ElementsAre("Würfel 箱"));
  const FbxNode& box = file.Node("Würfel 箱");
  EXPECT_THAT(ChildNames(box), ElementsAre("Licht::1"));
  EXPECT_EQ(box.LclTranslation().Get<FbxDouble3>(), (FbxDouble3{1.5, -20, 3}));
  EXPECT_EQ(box.FindProperty("note").Get<FbxString>(), "two\nlines\r; \"quoted\" {braces}");
  EXPECT_EQ(box.FindProperty("InheritType").Get<int>(), 1);
  EXPECT_TRUE(box.GetTransform().rotationActive);

  const FbxMesh* mesh = box.GetMesh();
  ASSERT_NE(mesh, nullptr);
  ASSERT_EQ(mesh->GetControlPointsCount(), 4);
  EXPECT_EQ(mesh->GetControlPointAt(0)[2], 1e-05);
  EXPECT_EQ(mesh->GetControlPointAt(2)[1], 1000.0);
  EXPECT_EQ(mesh->GetControlPointAt(3)[0], -0.5);
  EXPECT_EQ(mesh->GetControlPointAt(3)[1], 1.25);
  EXPECT_EQ(mesh->GetPolygonSize(0), 4);
  FbxVector4 normal;
  EXPECT_TRUE(mesh->GetPolygonVertexNormal(0, 3, normal));
  EXPECT_EQ(normal[2], 1.0);
  FbxVector2 uv;
  bool unmapped = false;
  EXPECT_TRUE(mesh->GetPolygonVertexUV(0, 2, "map1", uv, unmapped) && !unmapped);
  EXPECT_EQ(uv[1], 1.0);
  EXPECT_TRUE(mesh->GetPolygonVertexUV(0, 3, "map1", uv, unmapped) && unmapped);

  ASSERT_EQ(mesh->GetShapeCount(), 1);
  const auto* shape = file.Find<FbxShape>("smile");
  ASSERT_EQ(shape->GetControlPointsCount(), 4);
  EXPECT_EQ(shape->GetControlPointAt(3)[2], 2.5);

  const FbxLight* light = file.Node("Licht::1").GetLight();
  ASSERT_NE(light, nullptr);
  EXPECT_EQ(light->GetColor(), (FbxDouble3{1, 0.5, -0.0}));
  EXPECT_EQ(light->FindProperty("Intensity").Get<double>(), 100.0);
  ASSERT_EQ(box.GetMaterialCount(), 1);
  EXPECT_TRUE(box.GetMaterial(0)->Is<FbxSurfaceLambert>());
  EXPECT_EQ(box.GetMaterial(0)->FindProperty("DiffuseColor").Get<FbxDouble3>(),
            (FbxDouble3{0.25, 0.5, 1}));
  EXPECT_EQ(file.Find<FbxPose>("BIND_POSES")->GetMatrix(0).Get(3, 2), 9.0);

  auto* stack = file.Find<FbxAnimStack>("Take 001");
  ASSERT_NE(stack, nullptr);
  file.scene->SetCurrentAnimationStack(stack);
  const FbxTime half(FbxTime::kTicksPerSecond / 2);
  EXPECT_NEAR(box.EvaluateLocalTranslation(half)[0], 5.0, 1e-6);
  EXPECT_EQ(box.EvaluateLocalTranslation(half)[1], -20.0);
}

}  // namespace
