#include "converter/animation/curve_visitors.h"

#include <algorithm>
#include <bit>

#include "cal3d/io/number_text.h"
#include "converter/animation/advanced_channels.h"
#include "converter/space/frames.h"
#include "converter/space/key_values.h"
#include "fbx/anim/fbx_anim_curve.h"
#include "fbx/scene/fbx_node.h"

namespace {

void AppendKey(std::string& text, int64_t frame, float value) {
  AppendNumber(text, frame);
  text += ':';
  AppendNumber(text, value);
  text += ' ';
}

void AppendCurveHead(std::string& text, const std::string& channel, const FbxAnimCurve& curve) {
  text += channel;
  text += ' ';
  AppendNumber(text, int64_t{curve.KeyGetCount()});
  text += '\n';
}

// The curves that visitors are shown, one after the other.
class CurveWalk {
 public:
  explicit CurveWalk(const ChannelRuns& runs) : runs_(runs) {}

  // Goes to the next curve; false at the end.
  bool Next() {
    for (; run_ < runs_.size(); ++run_, node_ = 0) {
      for (; node_ < runs_[run_].size(); ++node_, shape_ = kTransform, channel_ = 0) {
        const NodeChannels& node = Node();
        const size_t shapes = node.showsMorphs ? node.morphs.size() : 0;
        for (; shape_ == kTransform || shape_ < shapes; ++shape_, channel_ = 0) {
          const ChannelCurves& curves = shape_ == kTransform ? node.transform : node.morphs[shape_];
          while (channel_ < curves.size()) {
            current_ = curves[channel_++];
            if (IsCurveValid(current_.curve)) return true;
          }
        }
      }
    }
    return false;
  }

  const NodeChannels& Node() const { return runs_[run_][node_]; }
  const std::string& Channel() const { return *current_.channel; }
  const FbxAnimCurve& Curve() const { return *current_.curve; }

 private:
  static constexpr size_t kTransform = static_cast<size_t>(-1);  // before the first shape

  const ChannelRuns& runs_;
  size_t run_ = 0;
  size_t node_ = 0;
  size_t shape_ = kTransform;
  size_t channel_ = 0;  // within the transform, or the shape
  ChannelCurve current_;
};

int CompareKeys(const FbxAnimCurve& a, const FbxAnimCurve& b) {
  std::string aText;
  std::string bText;
  const int count = a.KeyGetCount();
  for (int i = 0; i < count; ++i) {
    const KFCurve::Key aKey = a.curve.KeyGet(i);
    const KFCurve::Key bKey = b.curve.KeyGet(i);
    if (aKey.time == bKey.time &&
        std::bit_cast<uint32_t>(aKey.value) == std::bit_cast<uint32_t>(bKey.value)) {
      continue;
    }
    aText.clear();
    bText.clear();
    AppendKey(aText, FrameOf(aKey.time), clampKeyValue(aKey.value));
    AppendKey(bText, FrameOf(bKey.time), clampKeyValue(bKey.value));
    if (const int order = aText.compare(bText)) return order;
  }
  return 0;
}

}  // namespace

bool isSkeletal(std::string_view channel) {
  constexpr std::string_view kProperties = "TRS";
  constexpr std::string_view kAxes = "XYZ";
  return channel.size() == 2 && kProperties.find(channel[0]) != std::string_view::npos &&
         kAxes.find(channel[1]) != std::string_view::npos;
}

void AnimationCurveVisitorString::AppendCurve(const std::string& channel,
                                              const FbxAnimCurve& curve) {
  AppendCurveHead(text, channel, curve);
  if (detailLevel < 3) return;
  const int count = curve.KeyGetCount();
  for (int i = 0; i < count; ++i) {
    const KFCurve::Key key = curve.curve.KeyGet(i);
    AppendKey(text, FrameOf(key.time), clampKeyValue(key.value));
  }
  text += '\n';
}

void AnimationCurveVisitorString::VisitCurve(const std::string& channel, FbxAnimCurve* curve) {
  text += currentNode->Name();
  text += ' ';
  AppendCurve(channel, *curve);
}

void AnimationCurveVisitorString::VisitCurveProperty(const std::string& name, FbxAnimCurve* curve,
                                                     FbxProperty* /*property*/) {
  AppendCurveHead(text, name, *curve);
  if (detailLevel < 3) return;
  const int count = curve->KeyGetCount();
  for (int i = 0; i < count; ++i) {
    AppendNumber(text, FrameOf(curve->KeyGetTime(i)));
    text += ':';
    AppendNumber(text, Truncated<int64_t>(static_cast<double>(curve->KeyGetValue(i))));
    text += ' ';
  }
  text += '\n';
}

void AnimationCurveVisitorStringNoNode::VisitCurve(const std::string& channel,
                                                   FbxAnimCurve* curve) {
  AppendCurve(channel, *curve);
}

void DisplayAnimation(SceneChannels& channels, const FbxAnimStack* stack, const FbxNode* node,
                      AnimationCurveVisitor& visitor) {
  for (const LayerChannels* layer : channels.Of(stack)) DisplayAnimation(*layer, node, visitor);
}

void DisplayAnimation(const LayerChannels& layer, const FbxNode* node,
                      AnimationCurveVisitor& visitor) {
  if (!visitor.UseAdvancedCurves()) {
    for (const NodeChannels& channels : layer.Below(node)) DisplayChannels(channels, visitor);
    return;
  }
  for (FbxNode* any : layer.Subtree(node)) {
    visitor.VisitNode(any);
    for (const NodeChannels& channels : layer.Of(any)) {
      DisplaySkeletalChannels(channels, visitor);
      DisplayShapeChannels(channels, visitor);
    }
    DisplayAdvancedChannels(layer.Layer(), any, visitor);
  }
}

void DisplayChannels(const NodeChannels& channels, AnimationCurveVisitor& visitor) {
  visitor.VisitNode(channels.node);
  DisplaySkeletalChannels(channels, visitor);
  DisplayShapeChannels(channels, visitor);
}

void DisplaySkeletalChannels(const NodeChannels& channels, AnimationCurveVisitor& visitor) {
  for (const ChannelCurve& curve : channels.transform) {
    MaybeDisplayCurve(curve.curve, visitor, *curve.channel);
  }
}

void DisplayShapeChannels(const NodeChannels& channels, AnimationCurveVisitor& visitor) {
  if (!channels.showsMorphs) return;
  for (const ChannelCurves& shape : channels.morphs) {
    for (const ChannelCurve& curve : shape) {
      MaybeDisplayCurve(curve.curve, visitor, *curve.channel);
    }
  }
}

void MaybeDisplayCurve(FbxAnimCurve* curve, AnimationCurveVisitor& visitor,
                       const std::string& channel) {
  if (IsCurveValid(curve)) visitor.VisitCurve(channel, curve);
}

std::string CurveText(const ChannelRuns& runs, bool withNodes) {
  AnimationCurveVisitorString named;
  AnimationCurveVisitorStringNoNode nameless;
  AnimationCurveVisitorString& visitor = withNodes ? named : nameless;
  for (const std::span<const NodeChannels>& run : runs) {
    for (const NodeChannels& node : run) DisplayChannels(node, visitor);
  }
  return std::move(visitor.text);
}

int CompareCurveTexts(const ChannelRuns& a, const ChannelRuns& b, bool withNodes) {
  CurveWalk aWalk(a);
  CurveWalk bWalk(b);
  std::string aHead;
  std::string bHead;
  const auto head = [withNodes](std::string& text, const CurveWalk& walk) {
    text.clear();
    if (withNodes) text.append(walk.Node().node->Name()).append(" ");
    AppendCurveHead(text, walk.Channel(), walk.Curve());
  };
  while (true) {
    const bool aHas = aWalk.Next();
    const bool bHas = bWalk.Next();
    if (!aHas || !bHas) return static_cast<int>(aHas) - static_cast<int>(bHas);
    head(aHead, aWalk);
    head(bHead, bWalk);
    if (aHead != bHead) {
      // Heads that differ decide, unless one goes on where the other ends: names can hold line
      // ends.
      if (aHead.starts_with(bHead) || bHead.starts_with(aHead)) {
        return CurveText(a, withNodes).compare(CurveText(b, withNodes));
      }
      return aHead.compare(bHead);
    }
    if (&aWalk.Curve() == &bWalk.Curve()) continue;
    if (const int order = CompareKeys(aWalk.Curve(), bWalk.Curve())) return order;
  }
}
