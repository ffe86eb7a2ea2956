// Text files as authoring tools write them, by hand: comments and banners, arrays over many lines,
// Windows line ends, names in other scripts.
#include <ostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/anim/fbx_anim_curve.h"
#include "fbx/scene/fbx_mesh.h"
#include "tests/support/loaded_scene.h"

using testing::ElementsAre;

namespace {

constexpr const char* kScene = R"(; FBX 7.3.0 project file
; Copyright (C) 1997-2010 A Tool Maker
; ----------------------------------------------------

FBXHeaderExtension:  {
	FBXHeaderVersion: 1003
	FBXVersion: 7300
	Creator: "Exporter { build 2014 } version"
	SceneInfo: "SceneInfo::GlobalInfo", "UserData" {
		Properties70:  {
			P: "DocumentUrl", "KString", "Url", "", "C:\scenes\{old}\box.fbx"
		}
	}
}
GlobalSettings:  {
	Properties70:  {
		; the unit is the inch
		P: "UnitScaleFactor", "double", "Number", "",2.54
	}
}

; Documents Description
;------------------------------------------------------------------

Documents:  {
	Count: 1
	Document: 736853824, "", "Scene" {
		RootNode: 0
	}
}
References:  {
}
Definitions:  {
	ObjectType: "GlobalSettings" {
		Count: 1
	}
	ObjectType: "Model"  {
	}
	ObjectType: "Geometry" {
	}
	ObjectType: "AnimationCurve" {
	}
}

; Object properties
;------------------------------------------------------------------

Objects:  {
	Geometry: 2035541511296, "Geometry::", "Mesh" {
		Vertices: *12 {
			a: -0.5,0,1e-05,0.5,0,0,0.5,
1E3,-0,
			-.5,+1.25,0
		}
		PolygonVertexIndex: *4 {
			a: 0,1,2,-4
		}
	}
	Model: 100, "Model::Würfel 箱", "Mesh" {
		Version: 232
		Properties70:  {
			; a comment, "quoted" {
			P: "RotationActive", "bool", "", "",1
			P: "Lcl Translation", "Lcl Translation", "", "A+",1.5,-2e1,3
			P: "note", "KString", "", "U", "two&lf;lines&cr;; &quot;quoted&quot; {braces}"
			P: "behind", "KString", "", "U", "map1"
		}
		Shading: T
	}
	Model: 101, "Model::Licht::1", "Light" {
		Version: 232
	}
	AnimationCurve: 403, "AnimCurve::", "" {
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
	C: "OO",2035541511296,100
}
;Takes section
;----------------------------------------------------

Takes:  {
	Current: "Take 001"
	Take: "Take 001" {
		FileName: "Take_001.tak"
		LocalTime: 0,46186158000
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
  const LoadedScene file(LaidOut(GetParam()));
  ASSERT_TRUE(file.isLoaded) << file.Status();
  EXPECT_EQ(file.scene->GetGlobalSettings().GetSystemUnit(), 2.54);
  EXPECT_NE(file.scene->GetTakeInfo("Take 001"), nullptr);

  ASSERT_THAT(ChildNames(*file.scene->GetRootNode()), ElementsAre("Würfel 箱"));
  const FbxNode& box = file.Node("Würfel 箱");
  EXPECT_THAT(ChildNames(box), ElementsAre("Licht::1"));
  EXPECT_EQ(box.LclTranslation().Get<FbxDouble3>(), (FbxDouble3{1.5, -20, 3}));
  EXPECT_EQ(box.FindProperty("note").Get<FbxString>(), "two\nlines\r; \"quoted\" {braces}");
  EXPECT_EQ(box.FindProperty("behind").Get<FbxString>(), "map1");
  EXPECT_TRUE(box.GetTransform().rotationActive);

  const FbxMesh* mesh = box.GetMesh();
  ASSERT_NE(mesh, nullptr);
  EXPECT_THAT(mesh->ControlPoints(),
              ElementsAre(FbxVector4(-0.5, 0, 1e-05, 0), FbxVector4(0.5, 0, 0, 0),
                          FbxVector4(0.5, 1000, 0, 0), FbxVector4(-0.5, 1.25, 0, 0)));
  EXPECT_EQ(mesh->GetPolygonSize(0), 4);
  const FbxTime half(FbxTime::kTicksPerSecond / 2);
  EXPECT_NEAR(file.Find<FbxAnimCurve>("")->Evaluate(half), 5.0F, 1e-6);
}

}  // namespace
