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
    if (roll % 16 == 0) return roll % 32 == 0 ? 0.0f : -0.0f;
    if (roll % 64 == 1) return std::numeric_limits<float>::quiet_NaN();
    const float digits = static_cast<float>(random()) / 4294967296.0f + 1;
    return std::ldexp(roll % 2 == 0 ? digits : -digits, static_cast<int>(random() % 9) - 4);
  };
  const std::int32_t count = 20000;
  auto submesh = boost::make_shared<CalCoreSubmesh>(count, true, 0);
  cal3d::SSEArray<VertexOffset> offsets;
  for (std::int32_t i = 0; i < count; ++i) {
    const auto color = static_cast<std::uint32_t>(random());
    submesh->addVertex({{number(), number(), number(), 1}, {number(), number(), number(), 0}},
                       color, {{i, number(), 0}});
    submesh->setTextureCoordinate(i, {number(), number()});
    offsets.push_back({i, {number(), number(), number(), 0}, {number(), number(), number(), 0}});
  }
  submesh->addMorphTarget(boost::make_shared<CalCoreMorphTarget>("m", count, offsets));
  return CalCoreMesh{{submesh}};
}

TEST(RoundTrip, TextAndBinaryComeBackTheSame) {
  for (const CalCoreSkeleton& skeleton :
       {SampleSkeleton(), OddlyNamedSkeleton(), CalCoreSkeleton({})}) {
    const std::string text = Saved(skeleton, ".xsf");
    const std::string binary = Saved(skeleton, ".csf");
    EXPECT_EQ(Saved(*LoadSkeleton(text), ".xsf"), text);
    EXPECT_EQ(Saved(*LoadSkeleton(binary), ".csf"), binary);
    EXPECT_EQ(Saved(*LoadSkeleton(binary), ".xsf"), text);
    EXPECT_EQ(Saved(*LoadSkeleton(Saved(*LoadSkeleton(text), ".csf")), ".xsf"), text);
  }
  for (const CalCoreMesh& mesh : {SampleMesh(), RandomMorphs(), CalCoreMesh()}) {
    const std::string text = Saved(mesh, ".xmf");
    const std::string binary = Saved(mesh, ".cmf");
    // Compared as a whole: a mismatch would print megabytes.
    EXPECT_TRUE(Saved(*LoadMesh(text), ".xmf") == text);
    EXPECT_TRUE(Saved(*LoadMesh(binary), ".cmf") == binary);
    EXPECT_TRUE(Saved(*LoadMesh(binary), ".xmf") == text);
    EXPECT_TRUE(Saved(*LoadMesh(text), ".cmf") == binary);
  }
  for (const CalCoreAnimation& animation : {SampleAnimation(), CalCoreAnimation()}) {
    const std::string text = Saved(animation, ".xaf");
    const std::string binary = Saved(animation, ".caf");
    EXPECT_EQ(Saved(*LoadAnimation(text), ".xaf"), text);
    EXPECT_EQ(Saved(*LoadAnimation(binary), ".caf"), binary);
    EXPECT_EQ(Saved(*LoadAnimation(text), ".caf"), binary);
  }
}

// XML can't hold every byte, so here the form makes a difference.
TEST(RoundTrip, NamesOnlyLoseWhatXmlCannotHold) {
  const auto back = LoadSkeleton(Saved(OddlyNamedSkeleton(), ".xsf"));
  const auto& bones = back->coreBones;
  EXPECT_EQ(bones[0]->name, "a\"b'c&<>");
  EXPECT_EQ(bones[1]->name, " tab\tline\nreturn\r ");
  EXPECT_EQ(bones[2]->name, "caf\xC3\xA9 \xC2\x80");
  EXPECT_EQ(bones[4]->name, "??");
  EXPECT_EQ(bones[5]->name, "a?b");
  EXPECT_EQ(LoadSkeleton(Saved(OddlyNamedSkeleton(), ".csf"))->coreBones[5]->name,
            std::string("a\0b", 3));
}

}  // namespace
