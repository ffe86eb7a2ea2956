#include "tests/support/clip_scene.h"

namespace {

const std::vector<double> kIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

std::vector<int64_t> ToTicks(const ClipScene::Frames& frames) {
  std::vector<int64_t> times;
  for (const double frame : frames) times.push_back(ClipScene::Ticks(frame));
  return times;
}

}  // namespace

ClipScene::ClipScene() {
  builder.SetAxes(2, 1, 1, -1, 0, 1);
  builder.SetTimeMode(6);
}

int64_t ClipScene::Node(const std::string& name, int64_t parent, FbxRecords properties,
                        const std::string& type) {
  const int64_t node = builder.AddModel(name, type, std::move(properties));
  builder.Connect(node, parent);
  return node;
}

int64_t ClipScene::Bone(const std::string& name, int64_t parent, FbxRecords properties) {
  const int64_t bone = Node(name, parent, std::move(properties), "LimbNode");
  builder.Connect(builder.AddNodeAttribute(name, "LimbNode"), bone);
  return bone;
}

ClipScene::Morphed ClipScene::Mesh(const std::string& name,
                                   const std::vector<std::string>& channels, int64_t parent) {
  Morphed result;
  result.mesh = builder.AddMesh(name, {0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, -3});
  result.node = Node(name, parent, {}, "Mesh");
  builder.Connect(result.mesh, result.node);
  if (channels.empty()) return result;
  const int64_t shape = builder.AddObject("Deformer", "Deformer", "", "BlendShape");
  builder.Connect(shape, result.mesh);
  for (const std::string& channel : channels) {
    result.channels.push_back(
        builder.AddObject("Deformer", "SubDeformer", channel, "BlendShapeChannel"));
    builder.Connect(result.channels.back(), shape);
  }
  return result;
}

void ClipScene::Skin(int64_t mesh, int64_t bone, double weight) {
  const int64_t skin = builder.AddSkin();
  const int64_t cluster = builder.AddCluster("", {0}, {weight}, kIdentity, kIdentity);
  builder.Connect(skin, mesh);
  builder.Connect(cluster, skin);
  builder.Connect(bone, cluster);
}

ClipScene::Clip ClipScene::AddClip(const std::string& name, double start, double stop,
                                   double referenceStop) {
  const double end = referenceStop < 0 ? stop : referenceStop;
  Clip clip{builder.AddAnimationStack(name, Ticks(start), Ticks(stop), Ticks(end)), 0};
  clip.layer = AddLayer(clip);
  return clip;
}

int64_t ClipScene::AddLayer(const Clip& clip) {
  const int64_t layer = builder.AddAnimationLayer();
  builder.Connect(layer, clip.stack);
  return layer;
}

void ClipScene::Key(int64_t layer, int64_t node, const std::string& channel, const Frames& frames,
                    const Values& values) {
  KeyTicks(layer, node, channel, ToTicks(frames), values);
}

void ClipScene::KeyTicks(int64_t layer, int64_t node, const std::string& channel,
                         std::vector<int64_t> times, Values values) {
  const std::string property = channel.substr(0, 1);
  int64_t& curves =
      curveNodes_[std::to_string(layer) + " " + std::to_string(node) + " " + property];
  if (curves == 0) {
    const double rest = property == "S" ? 1.0 : 0.0;
    curves = builder.AddAnimationCurveNode(
        property, {P("d|X", "Number", "", "A", {rest}), P("d|Y", "Number", "", "A", {rest}),
                   P("d|Z", "Number", "", "A", {rest})});
    builder.Connect(curves, layer);
    builder.ConnectProperty(curves, node,
                            property == "T"   ? "Lcl Translation"
                            : property == "R" ? "Lcl Rotation"
                                              : "Lcl Scaling");
  }
  const int64_t curve = builder.AddAnimationCurve(std::move(times), std::move(values));
  builder.ConnectProperty(curve, curves, "d|" + channel.substr(1));
}

void ClipScene::KeyMorph(int64_t layer, int64_t channel, const Frames& frames,
                         const Values& values) {
  const int64_t curves = builder.AddAnimationCurveNode(
      "DeformPercent", {P("d|DeformPercent", "Number", "", "A", {0.0})});
  builder.Connect(curves, layer);
  builder.ConnectProperty(curves, channel, "DeformPercent");
  const int64_t curve = builder.AddAnimationCurve(ToTicks(frames), values);
  builder.ConnectProperty(curve, curves, "d|DeformPercent");
}
