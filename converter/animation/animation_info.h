// One animation as users see it: a stack applied to the tree below one node. All layers of a stack
// feed one animation. The pointers lead into the loaded scene and are good as long as it is.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "converter/scene/node_visitors.h"

class FbxAnimStack;
class SceneChannels;

// Texts of the time modes and protocols for listings; "UNKNOWN" for a number without one. Tools
// compare them, odd spacing included.
const char* GlobalTimeModeHumanReadable(int mode);
const char* GlobalProtocolHumanReadable(int protocol);

// The row of a listing. Frames are thirtieths of a second whatever the scene's time mode.
struct sAnim {
  // Reads the stack, the node's path and the global time settings.
  void Init(const FbxNode* node, const FbxAnimStack* stack);

  // The path of the root node, which is also how it is displayed. Made when asked for: in a chain
  // of skeleton roots, each with its animations, the paths would be most of the memory.
  std::string rootName() const;
  std::string displayName() const { return rootName(); }

  const FbxNode* rootNode = nullptr;
  std::string stackName;
  std::string timeMode;
  std::string timeProtocol;
  int64_t startFrame = 0;
  int64_t endFrame = 0;
  int64_t durationFrames = 0;
  int64_t referenceStartFrame = 0;
  int64_t referenceEndFrame = 0;
  int64_t referenceDurationFrames = 0;
};

// Puts the most readable name first: names without "|" before names with one, then short before
// long, then byte-wise.
struct animNameSorter {
  bool operator()(std::string_view a, std::string_view b) const;
};

// Without nodes it stands for no animation.
struct AnimationInfoHolder {
  // The readable name of the stack, what the animation moves, and for a morph its channels. Not
  // unique yet.
  std::string buildFileName() const;
  // A dump on one line, without a newline.
  std::string toString() const;
  // The curves of the nodes as text. Morphs with the same text are the same animation, whatever the
  // names of their nodes are.
  std::string dataString(SceneChannels& channels) const;
  // The nodes grouped by the text of their curves in a layer: copies of this holder, each with the
  // nodes of one text.
  std::map<std::string, AnimationInfoHolder> getMorphs(SceneChannels& channels) const;

  bool isMorph = false;
  FbxAnimStack* animStack = nullptr;       // null until a node is found
  std::vector<std::string> morphChannels;  // of a morph, each name once
  std::vector<NodeSpan> nodes;  // the animated ones, for each layer a run in walk order; none empty
  std::string fileName;         // unique in its list; set once all are known
  FbxNode* rootNode = nullptr;  // where the search started
  std::set<std::string, animNameSorter> animNames;  // of all stacks that hold this animation
  sAnim info;
};

// From the path of a skeleton's root to its animations. Two more keys hold the complete lists.
using AnimationMap = std::map<std::string, std::vector<AnimationInfoHolder>>;

inline constexpr char kCompleteSkeletalList[] = "COMPLETE_SKELETAL_ANIM_LIST";
inline constexpr char kCompleteMorphList[] = "COMPLETE_MORPH_ANIM_LIST";

// The animations of a scene, which the session keeps with it, so that several export commands on
// one file analyse it only once.
struct AnimationCache {
  std::string fileName;  // the input file that the maps describe; empty until they are filled
  AnimationMap skeletalAnimations;
  AnimationMap morphAnimations;
};
