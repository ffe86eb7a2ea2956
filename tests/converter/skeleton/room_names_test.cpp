#include "converter/skeleton/room_names.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "converter/skeleton/substring_index.h"
#include "fbx/core/fbx_manager.h"
#include "fbx/scene/fbx_node.h"

namespace {

class RoomNames : public testing::Test {
 protected:
  ~RoomNames() override { manager_->Destroy(); }

  // From old to new name, over a root whose children have the given names.
  std::map<std::string, std::string> Rename(const std::vector<std::string>& names) {
    FbxNode* root = FbxNode::Create(manager_, "Root");
    for (const std::string& name : names) {
      root->ConnectSrcObject(FbxNode::Create(manager_, name.c_str()));
    }
    NodeNameVisitor visitor(RoomPatterns(), false, false);
    WalkNodes(root, visitor);
    std::map<std::string, std::string> renamed;
    for (const auto& [node, name] : RenameSpecialRoomNodes(visitor)) renamed[node->Name()] = name;
    return renamed;
  }

  bool IsCamera(const std::string& name) {
    NodeNameFinderVisitor finder(kRoomCameraPattern);
    finder.VisitNode(FbxNode::Create(manager_, name.c_str()));
    return finder.Found();
  }

  FbxManager* manager_ = FbxManager::Create();
};

using Names = std::map<std::string, std::string>;

TEST_F(RoomNames, FurnitureIsNumberedOverAllKinds) {
  EXPECT_EQ(Rename({"wall_FURNITURE", "Furniture_Floor_A", "ceilingfurniture", "floor furniture 2",
                    "floor", "furniture", "floor\nfurniture"}),
            (Names{{"Furniture_Floor_A", "furniture.Floor.1"},
                   {"floor furniture 2", "furniture.Floor.2"},
                   {"ceilingfurniture", "furniture.Ceiling.3"},
                   {"wall_FURNITURE", "furniture.Wall.4"}}));
}

TEST_F(RoomNames, Cameras) {
  EXPECT_EQ(
      Rename({"CameraTarget1", "Camera1", "camera2", "camera2_target"}),
      (Names{{"CameraTarget1", "camera.01.01.root.Target"}, {"Camera1", "camera.01.01.root"}}));
  EXPECT_TRUE(IsCamera("camera.01.01.root"));
  EXPECT_TRUE(IsCamera("camera.01.01_root"));
  EXPECT_FALSE(IsCamera("Camera.01.01.root"));
  EXPECT_FALSE(IsCamera("camera.01.01.root.Target"));
  EXPECT_FALSE(IsCamera("camera.01.01root"));
}

TEST_F(RoomNames, SeatsWithTheirPlaces) {
  EXPECT_EQ(
      Rename({"seat01.Sit", "catcher01", "handle01", "pitcher01"}),
      (Names{{"seat01.Sit", "Seat1.Sit"}, {"catcher01", "Catcher1.Sit"}, {"handle01", "Handle1"}}));
  EXPECT_EQ(Rename({"seat2.Lounge"}), (Names{{"seat2.Lounge", "Seat1.Lounge"}}));
  EXPECT_EQ(Rename({"SEAT3"}), (Names{{"SEAT3", "Seat1."}}));
  // What follows the word decides first: here "3", which "catcher13" holds too and stands before.
  EXPECT_EQ(Rename({"seat3", "catcher13", "catcher3"}),
            (Names{{"seat3", "Seat1."}, {"catcher13", "Catcher1."}}));
  // An empty rest is held by every name.
  EXPECT_EQ(Rename({"seat", "catcherB"}), (Names{{"seat", "Seat1."}, {"catcherB", "Catcher1."}}));
  // Numbers are compared as texts: "01" is not "1".
  EXPECT_EQ(Rename({"seat1.X", "catcher01"}), (Names{{"seat1.X", "Seat1.X"}}));
  // Both numbers count for handles, then the first one alone.
  EXPECT_EQ(Rename({"seat1.3", "handle1.2", "handle1.3"}),
            (Names{{"seat1.3", "Seat1."}, {"handle1.3", "Handle1"}}));
  EXPECT_EQ(Rename({"seat1.3", "handle1.2"}),
            (Names{{"seat1.3", "Seat1."}, {"handle1.2", "Handle1"}}));
  // A node taken by one seat is not there for the next.
  EXPECT_EQ(Rename({"seat1.A", "seat1.B", "handle1"}),
            (Names{{"seat1.A", "Seat1.A"}, {"seat1.B", "Seat2.B"}, {"handle1", "Handle1"}}));
}

TEST(SubstringIndex, AnswersAsASearchOfEachTextWould) {
  // Repetitive texts, so that long parts agree in most of their bytes.
  std::vector<std::string> texts;
  for (int i = 0; i < 60; ++i) {
    std::string text = std::string(static_cast<size_t>(i % 23), 'a') + (i % 3 == 0 ? "b" : "");
    texts.push_back(text + std::string(static_cast<size_t>(i * 7 % 19), 'a') + std::to_string(i));
  }
  SubstringIndex index({texts.begin(), texts.end()}, 50);
  for (int round = 0; round < 60; ++round) {
    for (size_t a = 0; a < 40; a += 3) {
      for (const char* end : {"", "b", "ba", "1", "baaaaaaaaaa"}) {
        const std::string part = std::string(a, 'a') + end;
        const auto holds = [&](const std::string& text) {
          return text != "gone" && text.find(part) != std::string::npos;
        };
        const auto first = std::find_if(texts.begin(), texts.end(), holds);
        ASSERT_EQ(index.FirstHolding(part), first == texts.end() ? -1 : first - texts.begin());
      }
    }
    const int gone = round * 37 % 60;
    index.Remove(gone);
    texts[static_cast<size_t>(gone)] = "gone";
  }
  EXPECT_EQ(SubstringIndex({}, 3).FirstHolding(""), -1);
}

TEST_F(RoomNames, NamesOfAnyLength) {
  const std::string filler(100000, 'x');
  EXPECT_EQ(Rename({"seat" + filler + "7.Sit"}), (Names{{"seat" + filler + "7.Sit", "Seat1.Sit"}}));
  EXPECT_EQ(Rename({"floor" + filler + "furniture"}),
            (Names{{"floor" + filler + "furniture", "furniture.Floor.1"}}));
}

}  // namespace
