#include "converter/skeleton/room_names.h"

#include <algorithm>
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

  // What the children of a root are called then.
  std::vector<std::string> Rename(std::vector<std::string> names) {
    FbxNode* root = FbxNode::Create(manager_, "Root");
    for (const std::string& name : names) {
      root->ConnectSrcObject(FbxNode::Create(manager_, name.c_str()));
    }
    NodeNameVisitor visitor(RoomPatterns(), false, false);
    WalkNodes(root, visitor);
    const NodeNames renamed = RenameSpecialRoomNodes(visitor);
    for (size_t i = 0; i < names.size(); ++i) {
      const auto found = renamed.find(root->Children()[i]);
      if (found != renamed.end()) names[i] = found->second;
    }
    return names;
  }

  bool IsCamera(const std::string& name) {
    NodeNameFinderVisitor finder(kRoomCameraPattern);
    finder.VisitNode(FbxNode::Create(manager_, name.c_str()));
    return finder.Found();
  }

  FbxManager* manager_ = FbxManager::Create();
};

TEST_F(RoomNames, Renaming) {
  const std::string filler(100000, 'x');
  const struct {
    std::vector<std::string> names;
    std::vector<std::string> renamed;
  } cases[] = {
      // Furniture is numbered over all kinds.
      {{"wall_FURNITURE", "Furniture_Floor_A", "ceilingfurniture", "floor furniture 2"},
       {"furniture.Wall.4", "furniture.Floor.1", "furniture.Ceiling.3", "furniture.Floor.2"}},
      {{"floor" + filler + "furniture"}, {"furniture.Floor.1"}},
      {{"floor", "furniture", "floor\nfurniture"}, {"floor", "furniture", "floor\nfurniture"}},
      {{"CameraTarget1", "Camera1", "camera2", "camera2_target"},
       {"camera.01.01.root.Target", "camera.01.01.root", "camera2", "camera2_target"}},
      {{"seat01.Sit", "catcher01", "handle01", "pitcher01"},
       {"Seat1.Sit", "Catcher1.Sit", "Handle1", "pitcher01"}},
      {{"seat" + filler + "7.Sit"}, {"Seat1.Sit"}},
      {{"SEAT3"}, {"Seat1."}},
      {{"seat1\nSit"}, {"Seat1.\nSit"}},  // the character behind the number is none of a line end
      // What follows the word decides first: here "3", which "catcher13" holds too and stands
      // before.
      {{"seat3", "catcher13", "catcher3"}, {"Seat1.", "Catcher1.", "catcher3"}},
      // An empty rest is held by every name.
      {{"seat", "catcherB"}, {"Seat1.", "Catcher1."}},
      // Numbers are compared as texts: "01" is not "1".
      {{"seat1.X", "catcher01"}, {"Seat1.X", "catcher01"}},
      // Both numbers count for handles, then the first one alone.
      {{"seat1.3", "handle1.2", "handle1.3"}, {"Seat1.", "handle1.2", "Handle1"}},
      {{"seat1.3", "handle1.2"}, {"Seat1.", "Handle1"}},
      {{"seat1.3", "handle1.3", "handle_1.3"}, {"Seat1.", "Handle1", "handle_1.3"}},
      // Pitchers are taken from their own list.
      {{"seatA", "seat_A", "catcher_A", "catcher2_A"},
       {"Seat1.", "Seat2.", "Catcher1.", "Catcher2."}},
      // A node taken by one seat is not there for the next.
      {{"seat1.A", "seat1.B", "handle1"}, {"Seat1.A", "Seat2.B", "Handle1"}},
  };
  for (const auto& c : cases) EXPECT_EQ(Rename(c.names), c.renamed);
}

TEST_F(RoomNames, Cameras) {
  for (const char* name : {"camera.01.01.root", "camera.01.01_root"}) {
    EXPECT_TRUE(IsCamera(name)) << name;
  }
  for (const char* name : {"Camera.01.01.root", "camera.01.01.root.Target", "camera.01.01root",
                           "camera.01.01\nroot"}) {
    EXPECT_FALSE(IsCamera(name)) << name;
  }
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

}  // namespace
