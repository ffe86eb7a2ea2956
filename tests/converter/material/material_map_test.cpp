// What a listing shows of a material: its textures, and what stands in for those that it lacks.
#include <cmath>

#include <gmock/gmock.h>

#include "tests/support/program_test.h"

namespace {

using testing::StartsWith;
using Textures = std::vector<std::pair<const char*, const char*>>;  // channel and path

class MaterialListing : public SceneTest {
 protected:
  // The warnings and the material's line in a listing of a scene of one mesh.
  std::string ListOf(const std::string& shading, FbxRecords properties,
                     const Textures& textures = {}) {
    scene_ = SceneBuilder();
    const int64_t material = scene_.AddMaterial("M", shading, std::move(properties));
    scene_.Connect(material, scene_.Mesh("mesh").node);
    for (const auto& [channel, path] : textures) scene_.Texture(material, channel, path);
    return Listed();
  }
  std::string Listed() {
    const std::string out = Run({"s.fbx", "list", "texture"});
    return out.substr(0, out.find('\n', out.find("MATERIAL:")) + 1);
  }
};

// A line that shows these entries behind the material's name.
std::string Line(const std::string& entries, const std::string& warning = "") {
  return "\n" + warning + "MATERIAL: 0 M " + entries + "\n";
}

TEST_F(MaterialListing, TexturesAsTheSceneNamesThem) {
  EXPECT_EQ(ListOf("phong", {},
                   {{"DiffuseColor", "first.png"},
                    {"DiffuseColor", "C:\\art\\skin.png"},
                    {"NormalMap", "dir/.png"},
                    {"Bump", "noextension"}}),
            Line("TEXTURE: DiffuseColor C:\\art\\skin.png TEXTURE: NormalMap dir/.png"));
  for (const char* name : {"", "skin", "skin.", ".png", "dir.x/", "dir.x\\"}) {
    EXPECT_EQ(ListOf("phong", {P("DiffuseColor", {1.0, 0.5, 0.0})}, {{"DiffuseColor", name}}),
              Line("TEXTURE: DiffuseColor COLOR-FF7F00-M-DiffuseColor"))
        << name;
  }
}

TEST_F(MaterialListing, ColoursOfEveryKind) {
  struct Case {
    const char* shading;
    FbxRecords properties;
    std::string color;
  };
  const Case cases[] = {
      {"lambert", {}, "COLOR-CCCCCC"},
      // Components out of range: nothing below 0, as many digits as it takes above 1.
      {"phong", {P("DiffuseColor", {-1.0, 2.0, 1e300})}, "COLOR-001FEFFFFFFFF"},
      {"phong", {P("DiffuseColor", {NAN, 0.2, 1.0})}, "COLOR-0033FF"},
      {"toon", {P("DiffuseColor", {0.0, 1.0, 0.0})}, "COLOR-00FF00"},
      {"toon", {P("DiffuseColor", "Vector3D", "Vector", "A", {0.0, 1.0, 0.0})}, "MISSING"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(ListOf(c.shading, c.properties),
              Line("TEXTURE: DiffuseColor " + c.color + "-M-DiffuseColor"));
  }
}

TEST_F(MaterialListing, Transparency) {
  const std::string grey = "WARNING: TransparentColor is not consistant.\n";
  const std::string invisible = "WARNING: M is a fully transparent material\n";
  const struct {
    double factor;
    double opacity;  // below 0: the material has no such property
    std::vector<double> color;
    std::string alpha;  // "" for no entry
    std::string printed;
  } cases[] = {
      {0, 0.5, {0, 0, 0}, "7F7F7F", ""},
      {1, 1, {1, 1, 1}, "", ""},  // the opacity has the last word
      {0, -1, {1, 1, 1}, "", ""},
      {0.25, -1, {0, 0, 0}, "", ""},
      {0.25, -1, {0.5, 0.5, 0.5}, "7F7F7F", ""},  // the factor itself doesn't count
      {1, -1, {0.25, 0.5, 0.25}, "BFBFBF", grey},
      {1, -1, {1, 1, 1}, "000000", invisible},
      {0, 0, {0, 0, 0}, "000000", invisible},
      {0, 0.5, {1, 1, 1}, "7F7F7F", ""},  // the colour only stands in for the opacity
      {0, 2, {0, 0, 0}, "", ""},
  };
  for (const auto& c : cases) {
    FbxRecords properties = {P("TransparencyFactor", {c.factor}),
                             P("TransparentColor", {c.color[0], c.color[1], c.color[2]})};
    if (c.opacity >= 0) properties.push_back(P("Opacity", {c.opacity}));
    const std::string alpha =
        c.alpha.empty() ? ""
                        : " TEXTURE: TransparencyFactor ALPHA-" + c.alpha + "-M-TransparencyFactor";
    EXPECT_EQ(ListOf("phong", properties, {{"DiffuseColor", "d.png"}}),
              Line("TEXTURE: DiffuseColor d.png" + alpha, c.printed))
        << &c - cases;
  }
}

TEST_F(MaterialListing, LayersHaveEntriesThatNoFileCanHold) {
  const auto layered = [this](const std::vector<const char*>& paths) {
    const int64_t layers = scene_.AddObject("LayeredTexture", "LayeredTexture", "layers", "");
    for (const char* path : paths) scene_.Connect(scene_.AddTexture(path, path), layers);
    return layers;
  };
  const auto warning = [](int layer, const std::string& path) {
    return "WARNING: DiffuseColor" + std::to_string(layer) +
           " is not a supported use for texture map " + path + "\n";
  };
  const int64_t node = scene_.Mesh("mesh").node;
  const int64_t few = layered({"a.png", "none", "c.png"});
  scene_.Connect(layered({"n.png"}), few);  // layers of layers aren't read
  scene_.ConnectProperty(few, scene_.Material(node, "M"), "DiffuseColor");
  EXPECT_EQ(Run({"s.fbx", "export", "texture"}), warning(0, "a.png") + warning(2, "c.png"));
  EXPECT_FALSE(Exists("M.xrf"));

  scene_ = SceneBuilder();
  scene_.ConnectProperty(layered(std::vector<const char*>(65, "x.png")),
                         scene_.Material(scene_.Mesh("mesh").node, "Many"), "DiffuseColor");
  const std::string many = Run({"s.fbx", "export", "texture"});
  EXPECT_THAT(many, StartsWith("WARNING: Material Many has 65 texture layers on DiffuseColor, and "
                               "only the first 64 are used.\n" +
                               warning(0, "x.png")));
  EXPECT_EQ(std::count(many.begin(), many.end(), '\n'), 65);
}

TEST_F(MaterialListing, AMaterialWithoutEntriesIsPassedOver) {
  const int64_t node = scene_.Mesh("mesh").node;
  scene_.Connect(scene_.AddMaterial("Nothing", "toon"), node);
  scene_.Material(node, "M", {P("DiffuseColor", {1.0, 1.0, 1.0})});
  EXPECT_EQ(Listed(), Line("TEXTURE: DiffuseColor COLOR-FFFFFF-M-DiffuseColor"));
}

}  // namespace
