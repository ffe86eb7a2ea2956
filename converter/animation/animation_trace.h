// What verbose commands tell about animations, on standard output. Each operation prints nothing
// below its own level of verbosity.
#pragma once

#include <string>
#include <vector>

#include "converter/animation/animation_info.h"
#include "converter/base/conversion_arguments.h"
#include "converter/scene/scene_channels.h"

class BoneNameMap;
class FbxWrapper;

// From level 1 the row's nodes, from level 3 its curves.
void TraceListedAnimation(const ConversionArguments& args, SceneChannels& channels,
                          const AnimationInfoHolder& holder);

// From level 2.
void TraceMorphLists(const ConversionArguments& args, const FbxWrapper& scene,
                     const AnimationMap& morph);
// The place and the number of each bone of the skeleton at that path.
void TraceBones(const ConversionArguments& args, const std::vector<NodeSpan>& skeletons,
                const std::string& rootPath, const BoneNameMap& bones);
// A candidate of the analysis; from level 3 with its curves.
void TraceCandidate(const ConversionArguments& args, SceneChannels& channels,
                    const AnimationInfoHolder& holder, const ChannelRuns& curves);

// From level 3.
void TraceStackCount(const ConversionArguments& args, size_t count);
void TraceMorphFound(const ConversionArguments& args, const FbxAnimStack& stack,
                     const FbxNode& node, const std::vector<std::string>& targets);
