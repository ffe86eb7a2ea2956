// A text file as authoring tools write it: comments and banners, arrays over many lines, names in
// other scripts; and the same text laid out otherwise.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/anim/fbx_animation.h"
#include "fbx/scene/fbx_mesh.h"
#include "tests/support/loaded_scene.h"

using testing::ElementsAre;

namespace {

constexpr const char* kScene = R"(; FBX 7.3.0 project file
; ----------------------------------------------------

FBXHeaderExtension:  {
	FBXVersion: 7300
	Creator: "Exporter { build 2014 } version"
}
GlobalSettings:  {
	Properties70:  {
		; the unit is the inch
		P: "UnitScaleFactor", "double", "Number", "",2.54
	}
}
Documents:  {
	Count: 1
	Document: 736853824, "", "Scene" {
		RootNode: 0
	}
}
References:  {
}
Definitions:  {
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
		Properties70:  {
			; a comment, "quoted" {
			P: "Lcl Translation", "Lcl Translation", "", "A+",1.5,-2e1,3
			P: "note", "KString", "", "U", "two&lf;lines&cr;; &quot;quoted&quot; {braces}"
		}
		Shading: T
	}
	Model: 101, "Model::Licht::1", "Light" {
		Version: 232
	}
	AnimationCurve: 403, "AnimCurve::", "" {
		KeyTime: *2 {
			a: 0,46186158000
		}
		KeyValueFloat: *2 {
			a: 0,10
		}
		;KeyAttrFlags
		KeyAttrFlags: *1 {
			a: 4
		}
		KeyAttrRefCount: *1 {
			a: 2
		}
	}
}

Connections:  {

	;Model::Würfel 箱, Model::RootNode
	C: "OO",100,0
	C: "OO",101,100
	C: "OO",2035541511296,100
}
;Takes section
Takes:  {
	Current: "Take 001"
	Take: "Take 001" {
		LocalTime: 0,46186158000
	}
}
)";

TEST(AsciiScene, LoadsHoweverItIsLaidOut) {
  const std::vector<std::pair<std::string, std::string>> layouts = {
      {"\n", "\n"}, {"\n", "\r\n"},      {"\t", ""},
      {",", " , "}, {" {\n", "  {  \n"}, {"7300", "7500"}};
  for (const auto& [from, to] : layouts) {
    SCOPED_TRACE(to);
    std::string text = kScene;
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
      text.replace(at, from.size(), to);
    }
    const LoadedScene file(text);
    ASSERT_TRUE(file.isLoaded) << file.Status();
    EXPECT_EQ(file.scene->GetGlobalSettings().GetSystemUnit(), 2.54);
    EXPECT_NE(file.scene->GetTakeInfo("Take 001"), nullptr);
    ASSERT_THAT(ChildNames(*file.scene->GetRootNode()), ElementsAre("Würfel 箱"));
    const FbxNode& box = file.Node("Würfel 箱");
    EXPECT_THAT(ChildNames(box), ElementsAre("Licht::1"));
    EXPECT_EQ(box.LclTranslation().Get<FbxDouble3>(), (FbxDouble3{1.5, -20, 3}));
    EXPECT_EQ(box.FindProperty("note").Get<FbxString>(), "two\nlines\r; \"quoted\" {braces}");
    EXPECT_THAT(box.GetMesh()->ControlPoints(),
                ElementsAre(FbxVector4(-0.5, 0, 1e-05, 0), FbxVector4(0.5, 0, 0, 0),
                            FbxVector4(0.5, 1000, 0, 0), FbxVector4(-0.5, 1.25, 0, 0)));
    EXPECT_EQ(box.GetMesh()->GetPolygonSize(0), 4);
    const FbxTime half(FbxTime::kTicksPerSecond / 2);
    EXPECT_NEAR(file.Find<FbxAnimCurve>("")->Evaluate(half), 5.0F, 1e-6);
  }
}

}  // namespace
