// Documents of version 6: a scene that both versions can say gives the same bytes.
#include <bit>
#include <filesystem>
#include <map>

#include "tests/support/fbx6_writer.h"
#include "tests/support/program_test.h"

namespace {

using Doubles = std::vector<double>;
using Ints = std::vector<int32_t>;

constexpr int64_t kSecond = 46186158000;

class Version6 : public ProgramTest {
 protected:
  // Everything that the program prints of a scene, and every file that it writes, by name.
  std::map<std::string, std::string> Everything(const std::string& folder,
                                                const std::string& bytes) {
    std::filesystem::create_directory(dir_.File(folder));
    dir_.Write(folder + "/s.fbx", bytes);
    const auto run = [&](const Words& words) {
      const RunResult result = RunVeltrum(words, dir_.File(folder));
      return result.out + "status " + std::to_string(result.status) + "\n" + result.err;
    };
    std::map<std::string, std::string> all;
    const std::string root = "--root=RootNode/Hips";
    const std::vector<Words> commands = {
        {"-2", "s.fbx", "list"},
        {"-2", "--room", "s.fbx", "list"},
        {"-2", "-vvv", "--root=RootNode", "s.fbx", "list", "node"},
        {"-2", root, "s.fbx", "list", "anim", "-", "s.fbx", "list", "morphanim"},
        {"-2", root, "s.fbx", "export", "skel", "bound"},
        {"-2", "-u", "--up=y", "--front=z", root, "s.fbx", "export", "skel", "rest"},
        {"-2", root, "s.fbx", "export", "mesh"},
        {"-2", "-g", root, "s.fbx", "export", "mesh", "-", "s.fbx", "export", "texture"},
        {"-2", root, "s.fbx", "export", "anim", "Walk", "Still"},
        {"-2", root, "s.fbx", "export", "morphanim", "Walk-frown"},
        {"-2", "--room", "--rename", "--root=RootNode/room_skeleton", "s.fbx", "export", "skel",
         "room"},
    };
    for (size_t i = 0; i < commands.size(); ++i) all[std::to_string(i)] = run(commands[i]);
    const auto begin = std::filesystem::recursive_directory_iterator(dir_.File(folder));
    for (const auto& entry : begin) {
      const std::string path = std::filesystem::relative(entry.path(), dir_.File(folder)).string();
      if (entry.is_regular_file() && path != "s.fbx") all[path] = ReadFile(entry.path().string());
    }
    for (auto& [name, text] : all) {
      // Pictures are found under the folder's own path.
      for (size_t at; (at = text.find(dir_.File(folder))) != std::string::npos;) {
        text.replace(at, dir_.File(folder).size(), "FOLDER");
      }
    }
    return all;
  }

  void ExpectTwins(const SceneBuilder& builder) {
    const auto expected = Everything("seven", builder.Write());
    EXPECT_GT(expected.size(), 15U);
    const FbxRecords document = builder.Document(6100);
    for (const FbxFormat& format :
         {FbxFormat{.version = 6100}, FbxFormat{.version = 6000, .bigEndian = true},
          FbxFormat{.ascii = true, .version = 6100}}) {
      SCOPED_TRACE(format.ascii ? "text" : format.bigEndian ? "big-endian" : "little-endian");
      FbxRecords old = AsVersion6(document);
      old[0].children[1].values = {format.version};
      const auto found = Everything("six", WriteFbx(old, format));
      for (const auto& [name, text] : expected) {
        EXPECT_EQ(found.contains(name) ? found.at(name) : "(missing)", text) << name;
      }
      EXPECT_EQ(found.size(), expected.size());
      std::filesystem::remove_all(dir_.File("six"));
    }
  }
};

// Rows of a matrix that moves by x, y, z.
Doubles Moved(double x, double y, double z) {
  return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, z, 1};
}

// A skinned and morphed body with two materials, an animated skeleton in its bind pose, and a room.
void AddAvatar(SceneBuilder& builder) {
  builder.SetTimeMode(10);
  builder.SetAxes(1, 1, 2, 1, 0, 1);
  builder.AddTemplate("Model", "FbxNode", {P("RotationActive", "bool", "", "", {1})});
  const auto bone = [&](const char* name, int64_t parent, FbxRecords properties) {
    const int64_t node = builder.AddModel(name, "LimbNode", std::move(properties));
    builder.Connect(builder.AddNodeAttribute(name, "LimbNode", {P("Size", {3.5})}), node);
    builder.Connect(node, parent);
    return node;
  };
  const int64_t hips = bone("Hips", SceneBuilder::kRoot,
                            {P("Lcl Translation", {1, 90, 2}), P("PreRotation", {0, 15, 0})});
  const int64_t arm = bone("Arm", hips,
                           {P("Lcl Translation", {10, 0, 0}), P("Lcl Rotation", {0, 0, 30}),
                            P("RotationOrder", "enum", "", "", {2})});

  const auto [body, mesh, none] = builder.Mesh(
      "Body", {0, 0, 0, 4, 0, 0, 4, 5, 0, 0, 5, 0}, {{0, 1, 2}, {2, 3, 0}},
      {Normals("ByPolygon", "Direct", {0, 0, 1, 0, 1, 0}),
       UVs("", "ByPolygonVertex", "IndexToDirect", {0, 0, 1, 0, 0.5, 1}, {0, 1, 2, 2, 1, 0}),
       Colors("ByVertice", "Direct", {1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 1, 0.5, 0.5, 0.5, 1}),
       ::Materials({1, 0})},
      SceneBuilder::kRoot, {P("GeometricTranslation", {0, 0, 1})});
  const int64_t skin = builder.AddSkin("skin");
  builder.Connect(skin, mesh);
  const std::pair<int64_t, Ints> links[] = {{hips, {0, 1, 3}}, {arm, {1, 2}}};
  for (const auto& [link, points] : links) {
    const int64_t cluster = builder.AddCluster("cluster", points, Doubles(points.size(), 0.5),
                                               Moved(0, -90, 0), Moved(0, 90, 0));
    builder.Connect(cluster, skin);
    builder.Connect(link, cluster);
  }

  const int64_t blendShape = builder.AddObject("Deformer", "Deformer", "", "BlendShape");
  builder.Connect(blendShape, mesh);
  std::vector<int64_t> channels;
  for (const char* name : {"smile", "frown"}) {
    channels.push_back(builder.AddObject("Deformer", "SubDeformer", name, "BlendShapeChannel",
                                         {P("DeformPercent", "Number", "", "A", {0.0})},
                                         {{"FullWeights", {Doubles{100}}}}));
    builder.Connect(channels.back(), blendShape);
    const double offset = channels.size() == 1 ? 1.0 : -1.0;
    const int64_t shape = builder.AddObject("Geometry", "Geometry", name, "Shape", {},
                                            {{"Indexes", {Ints{0, 2}}},
                                             {"Vertices", {Doubles{0, 0, offset, 0, offset, 0}}},
                                             {"Normals", {Doubles{0, 0.1, 0, 0, 0, 0}}}});
    builder.Connect(shape, channels.back());
  }

  const int64_t cloth =
      builder.AddMaterial("Cloth", "phong", {P("SpecularColor", {0.1, 0.2, 0.3})});
  const int64_t flesh = builder.AddMaterial("Flesh", "lambert", {P("DiffuseColor", {1, 0.5, 0})});
  const int64_t idle = builder.AddMaterial("Idle", "lambert");
  for (const int64_t material : {cloth, flesh, idle}) builder.Connect(material, body);
  const auto texture = [&](const char* path, int64_t material, const char* property) {
    const int64_t made = builder.AddTexture(path, path);
    builder.ConnectProperty(made, material, property);
    return made;
  };
  texture("art/cloth.png", cloth, "DiffuseColor");
  const int64_t embedded = texture("C:\\art\\flesh.png", flesh, "DiffuseColor");
  texture("art/bumps.png", cloth, "NormalMap");
  texture("art/idle.png", idle, "DiffuseColor");
  builder.Connect(builder.AddObject("Video", "Video", "flesh", "Clip", {},
                                    {{"Filename", {"C:\\art\\flesh.png"}},
                                     {"RelativeFilename", {"flesh.png"}},
                                     {"Content", {FbxRaw{std::string("\x89PNG\0", 5)}}}}),
                  embedded);

  FbxRecords pose = {{"Type", {"BindPose"}}, {"NbPoseNodes", {3}}};
  for (const auto& [node, matrix] :
       {std::pair(body, Moved(0, 0, 0)), std::pair(hips, Moved(1, 91, 2)),
        std::pair(arm, Moved(12, 91, 2))}) {
    pose.push_back({"PoseNode", {}, {{"Node", {node}}, {"Matrix", {matrix}}}});
  }
  builder.AddObject("Pose", "Pose", "bind", "BindPose", {}, std::move(pose));

  const int64_t room = builder.AddModel("room_skeleton", "Null");
  builder.Connect(room, SceneBuilder::kRoot);
  for (const char* name : {"camera1", "seat3.Sit", "LightAmbient_rgb336699"}) {
    builder.Connect(builder.AddModel(name, "Null"), room);
  }
  const int64_t lamp = builder.AddModel("lamp", "Light", {P("Lcl Translation", {0, 50, 0})});
  builder.Connect(lamp, room);
  builder.Connect(builder.AddNodeAttribute("lamp", "Light",
                                           {P("LightType", "enum", "", "", {2}),
                                            P("Color", {0.5, 0.25, 1}), P("Intensity", {50})}),
                  lamp);

  const int64_t walk = builder.AddAnimationStack("Walk", 0, 2 * kSecond, 3 * kSecond);
  const int64_t layer = builder.AddAnimationLayer();
  builder.Connect(layer, walk);
  const auto curveNode = [&](const char* name, int64_t target, const char* property,
                             FbxRecords defaults) {
    const int64_t node = builder.AddAnimationCurveNode(name, std::move(defaults));
    builder.Connect(node, layer);
    builder.ConnectProperty(node, target, property);
    return node;
  };
  const auto axes = [](double x, double y, double z) {
    return FbxRecords{P("d|X", "Number", "", "A", {x}), P("d|Y", "Number", "", "A", {y}),
                      P("d|Z", "Number", "", "A", {z})};
  };
  const auto curve = [&](int64_t node, const char* channel, Ints flags, std::vector<float> words) {
    // Apart from channel to channel, so that each is evaluated between its keys.
    const int64_t apart = std::max(0, channel[2] - 'X') * kSecond / 10;
    const std::vector<int64_t> times = {0, kSecond / 2 + apart, kSecond + apart, 2 * kSecond};
    const int64_t made = builder.AddAnimationCurve(times, {1, 5, 3, 8});
    builder.ConnectProperty(made, node, channel);
    const auto count = static_cast<size_t>(flags.size());
    for (FbxRecord& field : builder.Object(made).children) {
      if (field.name == "KeyAttrFlags") field.values = {flags};
      if (field.name == "KeyAttrDataFloat") field.values = {words};
      if (field.name == "KeyAttrRefCount")
        field.values = {Ints(count, 4 / static_cast<int32_t>(count))};
    }
    return made;
  };
  const float weights = std::bit_cast<float>(uint32_t{2500} << 16 | 5000U);
  const int64_t moved = curveNode("T", hips, "Lcl Translation", axes(1, 90, 2));
  curve(moved, "d|X", {4}, std::vector<float>(4));
  curve(moved, "d|Y", {0x108}, std::vector<float>(4));
  const int64_t repeated = curve(moved, "d|Z", {0x2, 0x102}, std::vector<float>(8));
  builder.Object(repeated).Add({"Post-Extrapolation", {}, {{"Type", {'R'}}, {"Repetition", {-1}}}});
  const int64_t turned = curveNode("R", arm, "Lcl Rotation", axes(0, 0, 30));
  curve(turned, "d|X", {0x408, 0xC08}, {1, 2, 0, 0, -3, 4, 0, 0});
  curve(turned, "d|Y", {0x208}, {0.5F, 0.25F, -0.5F, 0});
  curve(turned, "d|Z", {0x3000408, 0x1000408, 0x2000C08, 0x408},
        {1, 2, weights, 0, 3, -4, std::bit_cast<float>(3000U), 0, 5, 6,
         std::bit_cast<float>(6000U << 16), 0, 0, 0, 0, 0});
  curve(curveNode("S", arm, "Lcl Scaling", axes(1, 1.5, 1)), "d|X", {4}, std::vector<float>(4));
  const FbxRecords percent = {P("d|DeformPercent", "Number", "", "A", {0.0})};
  curve(curveNode("DeformPercent", channels[1], "DeformPercent", percent), "d|DeformPercent", {4},
        std::vector<float>(4));
  const int64_t still = builder.AddAnimationStack("Still", 0, kSecond);
  const int64_t stillLayer = builder.AddAnimationLayer();
  builder.Connect(stillLayer, still);
  const int64_t fixed = builder.AddAnimationCurveNode("T", axes(4, 5, 6));
  builder.Connect(fixed, stillLayer);
  builder.ConnectProperty(fixed, hips, "Lcl Translation");
}

TEST_F(Version6, Avatar) {
  SceneBuilder builder;
  AddAvatar(builder);
  ExpectTwins(builder);
}

}  // namespace
