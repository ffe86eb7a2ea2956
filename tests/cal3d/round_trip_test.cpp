// A file that is loaded and saved again is the same file, through either form.
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "tests/cal3d/sample_models.h"

namespace {

CalCoreSkeleton OddlyNamedSkeleton() {
  std::vector<boost::shared_ptr<CalCoreBone>> bones;
  for (const std::string& name :
       {std::string("a\"b'c&<>"), std::string(" tab\tline\nreturn\r "), std::string("caf\xE9 \x80"),
        std::string("\xE2\x82\xAC"), std::string("\x01\x1F"), std::string("a\0b", 3),
        std::string(100000, 'x')}) {
    bones.push_back(boost::make_shared<CalCoreBone>(name, -1));
  }
  return CalCoreSkeleton(bones);
}

// Morphs over many magnitudes: the files hold positions and the model offsets.
CalCoreMesh RandomMorphs() {
  std::mt19937 random(7);
  const auto number = [&random]() -> float {
    const auto roll = random();
    if (roll % 16 == 0) return roll % 32 == 0 ? 0.0F : -0.0F;
    if (roll % 64 == 1) return std::numeric_limits<float>::quiet_NaN();
    const float digits = static_cast<float>(random()) / 4294967296.0F + 1;
    return std::ldexp(roll % 2 == 0 ? digits : -digits, static_cast<int>(random() % 9) - 4);
  };
  const int32_t count = 20000;
  auto submesh = boost::make_shared<CalCoreSubmesh>(count, true, 0);
  cal3d::SSEArray<VertexOffset> offsets;
  for (int32_t i = 0; i < count; ++i) {
    const auto color = static_cast<uint32_t>(random());
    submesh->addVertex({{number(), number(), number(), 1}, {number(), number(), number(), 0}},
                       color, {{i, number(), 0}});
    submesh->setTextureCoordinate(i, {number(), number()});
    offsets.push_back({i, {number(), number(), number(), 0}, {number(), number(), number(), 0}});
  }
  submesh->addMorphTarget(boost::make_shared<CalCoreMorphTarget>("m", count, offsets));
  return CalCoreMesh{{submesh}};
}

// The forms hold the same, but for names that XML can't hold.
template <typename Model, typename Load>
void ExpectSameFiles(const Model& model, const Load& load, const char* text_ending,
                     const char* binary_ending, bool has_good_names = true) {
  const std::string text = Saved(model, text_ending);
  const std::string binary = Saved(model, binary_ending);
  // Compared as a whole: a mismatch would print megabytes.
  EXPECT_TRUE(Saved(*load(text), text_ending) == text) << text.substr(0, 200);
  EXPECT_TRUE(Saved(*load(binary), binary_ending) == binary) << text.substr(0, 200);
  EXPECT_TRUE(Saved(*load(binary), text_ending) == text) << text.substr(0, 200);
  EXPECT_EQ(Saved(*load(text), binary_ending) == binary, has_good_names) << text.substr(0, 200);
}

TEST(RoundTrip, TextAndBinaryComeBackTheSame) {
  for (const auto& skeleton : {SampleSkeleton(), CalCoreSkeleton({})}) {
    ExpectSameFiles(skeleton, LoadSkeleton, ".xsf", ".csf");
  }
  ExpectSameFiles(OddlyNamedSkeleton(), LoadSkeleton, ".xsf", ".csf", false);
  for (const auto& mesh : {SampleMesh(), RandomMorphs(), CalCoreMesh()}) {
    ExpectSameFiles(mesh, LoadMesh, ".xmf", ".cmf");
  }
  for (const auto& animation : {SampleAnimation(), CalCoreAnimation()}) {
    ExpectSameFiles(animation, LoadAnimation, ".xaf", ".caf");
  }
  for (const auto& material : {SampleMaterial(), CalCoreMaterial()}) {
    ExpectSameFiles(material, LoadMaterial, ".xrf", ".crf");
  }
  for (const auto& animation : {SampleMorphAnimation(), CalCoreMorphAnimation()}) {
    ExpectSameFiles(animation, LoadMorphAnimation, ".xpf", ".cpf");
  }
}

TEST(RoundTrip, NamesOnlyLoseWhatXmlCannotHold) {
  const auto back = LoadSkeleton(Saved(OddlyNamedSkeleton(), ".xsf"));
  std::vector<std::string> names;
  for (const auto& bone : back->coreBones) names.push_back(bone->name);
  EXPECT_EQ(names,
            (std::vector<std::string>{"a\"b'c&<>", " tab\tline\nreturn\r ", "caf\xC3\xA9 \xC2\x80",
                                      "\xE2\x82\xAC", "??", "a?b", std::string(100000, 'x')}));
  EXPECT_EQ(LoadSkeleton(Saved(OddlyNamedSkeleton(), ".csf"))->coreBones[5]->name,
            std::string("a\0b", 3));
}

}  // namespace
