#include "converter/animation/animation_info.h"

#include <cmath>
#include <tuple>

#include "converter/animation/curve_visitors.h"
#include "converter/scene/node_paths.h"
#include "converter/scene/scene_channels.h"
#include "converter/space/frames.h"
#include "fbx/anim/fbx_animation.h"
#include "fbx/scene/fbx_node.h"

namespace {

// The listing counts in thirtieths of a second, truncated toward zero.
int64_t ListedFrames(double seconds) { return Truncated<int64_t>(seconds * 30.0); }

int64_t ListedFrameOf(const FbxAnimStack& stack, const char* property) {
  return ListedFrames(stack.FindProperty(property).Get<double>());
}

int64_t ListedLengthOf(const FbxTimeSpan& span) {
  return ListedFrames(std::abs((span.stop - span.start).GetSecondDouble()));
}

}  // namespace

const char* GlobalTimeModeHumanReadable(int mode) {
  switch (mode) {
    case 0:
      return "DEFAULT";
    case 1:
      return "120 frames/s";
    case 2:
      return "100 frames/s";
    case 3:
      return "60 frames/s";
    case 4:
      return "50 frames/s";
    case 5:
      return "48 frame/s";
    case 6:
    case 7:
      return "30 frames/s";
    case 8:
    case 9:
      return "~29.97";
    case 10:
      return "25 frames/s";
    case 11:
      return "24 frames/s";
    case 12:
      return "1000 milli/s";
    case 13:
      return "~23.976 frames/s";
    case 14:
      return " Custom";
    case 15:
      return "96 frames/s";
    case 16:
      return "72 frames/s";
    case 17:
      return "~59.94 frames/s";
    case 18:
      return "    Number of time modes";
    default:
      return "UNKNOWN";
  }
}

const char* GlobalProtocolHumanReadable(int protocol) {
  switch (protocol) {
    case 0:
      return "SMPTE EProtocol";
    case 1:
      return "Frame count";
    case 2:
      return " Default protocol (initialized to eFRAMES)";
    default:
      return "UNKNOWN";
  }
}

void sAnim::Init(const FbxNode* node, const FbxAnimStack* stack) {
  timeMode = GlobalTimeModeHumanReadable(FbxTime::GetGlobalTimeMode());
  timeProtocol = GlobalProtocolHumanReadable(FbxTime::GetGlobalTimeProtocol());
  startFrame = ListedFrameOf(*stack, "LocalStart");
  endFrame = ListedFrameOf(*stack, "LocalStop");
  referenceStartFrame = ListedFrameOf(*stack, "ReferenceStart");
  referenceEndFrame = ListedFrameOf(*stack, "ReferenceStop");
  durationFrames = ListedLengthOf(stack->GetLocalTimeSpan());
  referenceDurationFrames = ListedLengthOf(stack->GetReferenceTimeSpan());
  rootNode = node;
  stackName = stack->Name();
}

std::string sAnim::rootName() const { return BuildRootNodeName(rootNode, nullptr); }

bool animNameSorter::operator()(std::string_view a, std::string_view b) const {
  const auto key = [](std::string_view name) {
    const bool hasNamespace = name.find('|') != std::string_view::npos;
    return std::tuple(hasNamespace, name.size(), name);
  };
  return key(a) < key(b);
}

std::string AnimationInfoHolder::buildFileName() const {
  std::string name = animNames.empty() ? info.stackName : *animNames.begin();
  const size_t bar = name.find('|');
  if (bar != std::string::npos && bar + 1 < name.size()) name.erase(0, bar + 1);
  if (!isMorph && bar != std::string::npos && !nodes.empty()) {
    name.append("-").append(nodes.front().front()->Name());
  }
  if (isMorph) {
    for (const std::string& channel : morphChannels) name.append("-").append(channel);
  }
  return name;
}

std::string AnimationInfoHolder::toString() const {
  std::string text = "ROOT:";
  if (isMorph) {
    text = "MORPH:";
    for (const std::string& channel : morphChannels) text.append(" ").append(channel);
    text += " MESH:";
  }
  text.append(BuildRootNodeName(rootNode, nullptr)).append("  NODES:");
  for (const NodeSpan& run : nodes) {
    for (const FbxNode* node : run) text.append(" ").append(BuildRootNodeName(node, nullptr));
  }
  text += " ANIM STACK:";
  if (animStack != nullptr) text += animStack->Name();
  return text += ' ';
}

std::string AnimationInfoHolder::dataString(SceneChannels& channels) const {
  return CurveText(ChannelsOfNodes(channels, animStack, nodes), !isMorph);
}

std::map<std::string, AnimationInfoHolder> AnimationInfoHolder::getMorphs(
    SceneChannels& channels) const {
  std::map<std::string, AnimationInfoHolder> groups;
  for (const LayerChannels* layer : channels.Of(animStack)) {
    for (const NodeSpan& run : nodes) {
      for (size_t i = 0; i < run.size(); ++i) {
        std::string text = CurveText({layer->Of(run[i])}, false);
        if (text.empty()) continue;
        const auto [group, added] = groups.try_emplace(std::move(text), *this);
        if (added) group->second.nodes.clear();
        group->second.nodes.push_back(run.subspan(i, 1));
      }
    }
  }
  return groups;
}
