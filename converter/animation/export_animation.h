// Finds the animations of the loaded scene, lists them and writes them to files. An exporter is
// made for one command.
//
// Animations are written by visitors of the channels below a node (ExportAnimationsFromList). What
// stands under the older route is reached by no command (older_route.h).
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "converter/animation/animation_info.h"
#include "converter/base/conversion_arguments.h"
#include "converter/skeleton/skeleton_roots.h"

class FbxAnimLayer;
class FbxAnimStack;
class FbxNode;
class FbxWrapper;
class SceneChannels;
struct CalCoreAnimation;
struct CalCoreMorphAnimation;
struct NodeChannels;

// Turns a save of the older route into a dry run that answers whether there is anything to write:
// one value for each of its two exports, to the other of which it means a save.
enum zevoMagicStops {
  kNoMagicStop = 0,
  kStopBeforeAnimation = 1,
  kStopBeforeMorphAnimation = 2,
};

class ExportAnimation {
 public:
  // Both must stay alive as long as the exporter. Logs the command when a log is open.
  ExportAnimation(FbxWrapper& scene, const ConversionArguments& args);

  // Fills the two maps with the animations of the scene, named and in the order of the
  // listing. A scene without a skeleton has none, and leaves the maps as they are.
  void BuildAnimLists(AnimationMap& skeletal, AnimationMap& morph);
  // Prints the records of the animations of the command's root, or of all. The result is empty.
  std::vector<sAnim> List();
  // Writes those of the animations of the command's root that `names` selects by their file names,
  // with a record for each file and an ERROR record for each that could not be written. Returns the
  // names that select none, unless no skeleton begins at the root.
  std::vector<std::string> ExportAnimationsFromList(const AnimationMap& animations,
                                                    const std::vector<std::string>& names);

  // The stack applied to the tree below the node: what it moves, then what it morphs.
  std::vector<AnimationInfoHolder> GetAnimatedNodes(FbxNode* node, FbxAnimStack* stack);

  // The older route, down to Compare.

  // Whether any layer of the stack, or the layer, has a translation or rotation curve on a node of
  // the tree whose name is among the bones'; curves of any number of keys count. Prints which one.
  bool IsAnimationOnSkeleton(FbxAnimStack* stack, FbxNode* node,
                             const std::set<std::string>& boneNames);
  bool IsAnimationOnNode(FbxAnimStack* stack, FbxAnimLayer* layer, FbxNode* node,
                         const std::set<std::string>& boneNames);
  // The nodes of the tree that some layer of the stack morphs.
  std::shared_ptr<std::vector<FbxNode*>> GetMorphNodes(FbxNode* node, FbxAnimStack* stack);
  void GetMorphInLayer(FbxAnimLayer* layer, FbxNode* node, std::vector<FbxNode*>& nodes);
  // The channels of the first node of the tree that the layer, or a layer of the stack, morphs.
  std::vector<std::string> GetMorphChannelName(FbxAnimLayer* layer, FbxNode* node);
  std::vector<std::string> GetMorphChannelName(FbxNode* node, FbxAnimStack* stack);

  // Writes the stacks of the command's object name to its output file. In the dry run, whether any
  // track has keyframes.
  bool Export(const ConversionArguments& args, zevoMagicStops magicStops);
  // False if the command names no skeleton.
  bool AddAnimation(const ConversionArguments& args, CalCoreAnimation& animation);

  // Writes the morph tracks of the stacks that the command selects to its output file. In the dry
  // run, whether there are any tracks.
  bool ExportMorphAnim(const ConversionArguments& args, zevoMagicStops magicStops);
  // With version 1 the stack that the command names is taken. With version 2 the stacks that it
  // doesn't name are, so that no names at all take every stack.
  bool AddMorphAnimation(const ConversionArguments& args, CalCoreMorphAnimation& animation);

  // Whether the stack morphs any mesh of the scene; prints which one.
  bool CheckTracksForMorphAnimation(FbxWrapper* wrapper, FbxAnimStack* stack);

  // Prints the transforms of every bone in the scene and in `animation` side by side, for 120 steps
  // in time. False if the command names no skeleton.
  bool Compare(const ConversionArguments& args, const CalCoreAnimation& animation);

 private:
  using HoldersByRoot = std::map<std::string, std::vector<AnimationInfoHolder>>;

  SceneChannels& Channels();
  // Writes the animation's file and its record.
  void ExportOne(const AnimationInfoHolder& holder, const BoneNameMap& bones);
  HoldersByRoot FindByRoot(const std::vector<FbxAnimStack*>& stacks);
  // Drops duplicates and sorts what is left into the maps.
  void Analyze(HoldersByRoot& byRoot, AnimationMap& skeletal, AnimationMap& morph);
  // These add what the layer animates below the node.
  void GetAnimationsInLayer(FbxAnimStack* stack, FbxAnimLayer* layer, FbxNode* node,
                            AnimationInfoHolder& skeletal, AnimationInfoHolder& morph);
  void GetSkelAnimationInLayer(FbxAnimStack* stack, FbxAnimLayer* layer, FbxNode* node,
                               AnimationInfoHolder& holder);
  void GetMorphAnimationInLayer(FbxAnimStack* stack, FbxAnimLayer* layer, FbxNode* node,
                                AnimationInfoHolder& holder);

  // Of the older route: a track for each layer of the stack and each bone of the scene with keys.
  void AddTracksToAnimation(const ConversionArguments& args, FbxAnimStack* stack,
                            CalCoreAnimation& animation, const BoneNameMap& bones);
  void AddTracksFromLayer(const ConversionArguments& args, FbxNode* node, FbxAnimLayer* layer,
                          CalCoreAnimation& animation, const BoneNameMap& bones);
  static void AddTracksFromChannels(const ConversionArguments& args, const NodeChannels& channels,
                                    CalCoreAnimation& animation, const BoneNameMap& bones);

  // A track for each curve of a blend shape channel in the scene that changes.
  void AddTracksToMorphAnimation(const ConversionArguments& args, FbxAnimStack* stack,
                                 CalCoreMorphAnimation& animation);
  void AddTracksToMorphAnimationFromLayer(const ConversionArguments& args, FbxNode* node,
                                          FbxAnimLayer* layer, CalCoreMorphAnimation& animation);
  static void AddTracksToMorphAnimationFromChannels(const ConversionArguments& args,
                                                    const NodeChannels& channels,
                                                    CalCoreMorphAnimation& animation);

  bool CheckTracksForMorphAnimationInLayer(FbxNode* node, FbxAnimStack* stack, FbxAnimLayer* layer);
  static bool CheckTracksForMorphAnimationInChannels(const NodeChannels& channels,
                                                     FbxAnimStack* stack);

  FbxWrapper& scene_;
  const ConversionArguments& args_;
};
