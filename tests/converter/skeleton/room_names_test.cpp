#include "converter/skeleton/room_names.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fbx/core/fbx_object.h"
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
    NodeNameVisitor visitor(RoomPatterns(), false, false, true);
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
  std::string hostile;
  while (hostile.size() < 100000) hostile += "seat furniture floor\n";
  const struct {
    std::vector<std::string> names;
    std::vector<std::string> renamed;
  } cases[] = {
      // Furniture is numbered over all kinds.
      {{"wall_FURNITURE", "Furniture_Floor_A", "ceilingfurniture", "floor furniture 2"},
       {"furniture.Wall.4", "furniture.Floor.1", "furniture.Ceiling.3", "furniture.Floor.2"}},
      // Names are looked at as far as 256 bytes go.
      {{"floor" + filler.substr(0, 242) + "furniture"}, {"furniture.Floor.1"}},
      {{"floor" + filler.substr(0, 243) + "furniture"},
       {"floor" + filler.substr(0, 243) + "furniture"}},
      {{hostile, "seat" + filler + "7.Sit"}, {"Seat1.", "Seat2."}},
      {{"floor", "furniture", "floor\nfurniture"}, {"floor", "furniture", "floor\nfurniture"}},
      {{"CameraTarget1", "Camera1", "camera2", "camera2_target"},
       {"camera.01.01.root.Target", "camera.01.01.root", "camera2", "camera2_target"}},
      {{"seat01.Sit", "catcher01", "handle01", "pitcher01"},
       {"Seat1.Sit", "Catcher1.Sit", "Handle1", "pitcher01"}},
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

}  // namespace
