// The XML files to the letter.
#include <bit>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cal3d/io/number_text.h"
#include "cal3d/io/xml_writer.h"
#include "tests/cal3d/sample_models.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

TEST(TextSaver, WritesTheShortestNumbers) {
  using Limits = std::numeric_limits<float>;
  std::string texts;
  for (const float value : {0.0F, -0.0F, 3.0F, 0.1F, 1e-5F, -0.5F, -99999.0F, 100000.0F, 100001.0F,
                            16777216.0F, Limits::max(), -Limits::min(), Limits::denorm_min(),
                            Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN()}) {
    char text[kLongestNumber];
    texts.append(text, WriteNumber(text, value)) += ' ';
  }
  EXPECT_EQ(texts,
            "0 -0 3 0.1 1e-05 -0.5 -99999 1e+05 100001 16777216 3.4028235e+38 -1.1754944e-38 1e-45 "
            "0 0 0 ");
  // Fractions have a writer of their own, for the same texts as the standard library's.
  for (uint32_t bits = 0x3A800000; bits < 0x47D00000; bits += 499) {
    for (const uint32_t nearby : {bits, bits & 0xFF800000, (bits & 0xFF800000) - 1}) {
      const auto value = std::bit_cast<float>(nearby | (bits % 2 == 0 ? 0 : 0x80000000));
      char text[kLongestNumber];
      char expected[kLongestNumber];
      const std::string_view got(text, WriteNumber(text, value));
      const std::string_view wanted(expected,
                                    std::to_chars(expected, expected + kLongestNumber, value).ptr);
      ASSERT_EQ(got, wanted);
    }
  }
}

TEST(TextSaver, EscapesWhatXmlCannotHold) {
  const auto attribute = [](std::string_view text) {
    return EscapeXml(text, XmlPlace::kAttribute);
  };
  EXPECT_EQ(attribute("a<b>&\"c'"), "a&lt;b&gt;&amp;&quot;c'");
  EXPECT_EQ(attribute("\t\n\r\x01\x1F\x7F"), "&#9;&#10;&#13;??\x7F");
  EXPECT_EQ(attribute(std::string_view("\0x", 2)), "?x");
  EXPECT_EQ(EscapeXml("\t\n\r\"", XmlPlace::kText), "\t\n&#13;&quot;");
  // UTF-8 stays; anything else is Latin-1, byte by byte.
  EXPECT_EQ(attribute("\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"),
            "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80");
  EXPECT_EQ(attribute("caf\xE9"), "caf\xC3\xA9");
  EXPECT_EQ(attribute("\xC3"), "\xC3\x83");
  EXPECT_EQ(attribute("\xC0\xAF"), "\xC3\x80\xC2\xAF");              // overlong '/'
  EXPECT_EQ(attribute("\xED\xA0\x80"), "\xC3\xAD\xC2\xA0\xC2\x80");  // a surrogate
  EXPECT_EQ(attribute("\xF4\x90\x80\x80"), "\xC3\xB4\xC2\x90\xC2\x80\xC2\x80");
  EXPECT_EQ(attribute("\xEF\xBF\xBF"), "?");
}

// What the loaders take and refuse in the XML form.

// One bone, with the root's and the bone's attributes and more children as given.
std::string OneBone(const std::string& root, const std::string& bone, const std::string& more) {
  return "<SKELETON " + root + "><BONE " + bone +
         "><TRANSLATION>1 2 3</TRANSLATION><ROTATION>0 0 0 1</ROTATION>"
         "<LOCALTRANSLATION>4 5 6</LOCALTRANSLATION><LOCALROTATION>0 0 1 0</LOCALROTATION>"
         "<PARENTID>-1</PARENTID>" +
         more + "</BONE></SKELETON>";
}

const char kRoot[] = "MAGIC=\"XSF\" VERSION=\"919\"";

TEST(TextLoader, TakesWhatOtherWritersWrite) {
  const std::vector<std::string> accepted = {
      OneBone(kRoot, "NAME='b'", ""),
      "\xEF\xBB\xBF \r\n" + OneBone(kRoot, "NAME='b'", ""),
      "<?xml version='1.0'?><!DOCTYPE x [<!ELEMENT y>]><!-- c -->" + OneBone(kRoot, "NAME='b'", ""),
      "<HEADER MAGIC='XSF' VERSION='699'/>" + OneBone("NUMBONES='1'", "NAME='b'", ""),
      OneBone("Version=' +700 ' EXTRA='1' Magic='XSF'", "id='0' Name='b'", "<OTHER>x<Y/></OTHER>"),
      OneBone(kRoot, "LIGHTTYPE='2' NAME='b'", "<translation>\n +1\t2e0\r\n3. </translation>"),
      OneBone(kRoot, "NAME='b'", "<LOCALTRANSLATION><![CDATA[4 5 6]]></LOCALTRANSLATION>"),
  };
  for (const std::string& text : accepted) {
    ASSERT_EQ(SkeletonError(text), "accepted") << text;
    const auto skeleton = LoadSkeleton(text);
    ASSERT_EQ(skeleton->coreBones.size(), 1u);
    const CalCoreBone& bone = *skeleton->coreBones[0];
    EXPECT_EQ(bone.name, "b");
    EXPECT_EQ(bone.relativeTranslation, (CalVector{1, 2, 3})) << text;
    EXPECT_EQ(bone.boneSpaceTranslation, (CalVector{4, 5, 6}));
    EXPECT_EQ(bone.boneSpaceRotation, (CalQuaternion{0, 0, 1, 0}));
    EXPECT_EQ(skeleton->sceneAmbientColor, CalVector());
  }
}

TEST(TextLoader, MissingPartsTakeTheirDefaults) {
  const auto mesh = LoadMesh(
      "<MESH MAGIC='XMF' VERSION='700'><SUBMESH NUMLODSTEPS='7'><FACE VERTEXID='1 0 1'/>"
      "<VERTEX><POS>1 1e-60 3</POS><NORM>0 0 1</NORM></VERTEX>"
      "<VERTEX><POS>1 2 3</POS><NORM>0 0 1</NORM><COLOR>2 0.5 -1</COLOR>"
      "<TEXCOORD>0.5 0.25</TEXCOORD><TEXCOORD>9 9</TEXCOORD></VERTEX>"
      "<MORPH><BLENDVERTEX VERTEXID='1'><POSITION>1 2 5</POSITION><NORMAL>1 0 0</NORMAL>"
      "</BLENDVERTEX></MORPH></SUBMESH></MESH>");
  ASSERT_EQ(mesh->submeshes.size(), 1u);
  const CalCoreSubmesh& submesh = *mesh->submeshes[0];
  EXPECT_EQ(submesh.coreMaterialThreadId, 0);
  EXPECT_EQ(submesh.vertices()[0].position, (CalVector4{1, 0, 3, 1}));  // 1e-60 is below any float
  EXPECT_EQ(submesh.vertexColors(), (std::vector<uint32_t>{0xFFFFFFFF, 0xFFFF8000}));
  ASSERT_TRUE(submesh.hasTextureCoordinates());
  EXPECT_EQ(submesh.textureCoordinates()[0].v, 0);
  EXPECT_EQ(submesh.textureCoordinates()[1].v, 0.25F);
  ASSERT_EQ(submesh.morphTargets().size(), 1u);
  EXPECT_EQ(submesh.morphTargets()[0]->vertexOffsets()[0].position, (CalVector4{0, 0, 2, 0}));
  EXPECT_EQ(submesh.faces().size(), 1u);
}

TEST(TextLoader, RefusesBrokenFiles) {
  const std::string deep(1 << 20, '<');
  std::string nested;
  for (int i = 0; i < 300000; ++i) nested += "<a>";
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", "begins neither"},
      {std::string("CMF\0\x97\x03\0\0", 8), "begins neither"},
      {"<", "broken at byte"},
      {"<!-- nothing -->", "broken at byte"},
      {OneBone(kRoot, "NAME='b'", "").substr(0, 150), "broken at byte"},
      {deep, "broken at byte"},
      {nested, "broken at byte"},
      {OneBone(kRoot, "NAME='b'", "") + std::string(1, '\0'), "NUL byte"},
      {OneBone("MAGIC='XMF' VERSION='919'", "NAME='b'", ""), "magic is \"XMF\""},
      {OneBone("VERSION='919'", "NAME='b'", ""), "MAGIC is missing"},
      {OneBone("MAGIC='XSF'", "NAME='b'", ""), "VERSION is missing"},
      {OneBone("MAGIC='XSF' VERSION='698'", "NAME='b'", ""), "version 698 is outside"},
      {OneBone("MAGIC='XSF' VERSION='920'", "NAME='b'", ""), "version 920 is outside"},
      {OneBone("MAGIC='XSF' VERSION='9x'", "NAME='b'", ""), "\"9x\" is no number"},
      {"<HEADER MAGIC='XSF' VERSION='919'/>", "no element follows"},
      {"<MESH MAGIC='XSF' VERSION='919'/>", "root element should be SKELETON"},
      {OneBone(kRoot, "", ""), "NAME is missing"},
      {OneBone(kRoot, "NAME='b' ID='1'", ""), "ID is 1"},
      {OneBone(kRoot, "NAME='b' NUMCHILDS='-1'", ""), "NUMCHILDS is -1"},
      {OneBone(kRoot, "NAME='b'", "<CHILDID>0</CHILDID>"), "lists the child 0"},
      {OneBone(kRoot, "NAME='b'", "<PARENTID>-2</PARENTID>"), "has the parent -2"},
      {OneBone(kRoot, "NAME='b'", "<PARENTID>4294967295</PARENTID>"), "is no number"},
  };
  for (const auto& [text, message] : cases) {
    EXPECT_THAT(SkeletonError(text), HasSubstr(message)) << text.substr(0, 300);
  }
  // Nesting is no fault in itself.
  std::string closed = nested;
  for (int i = 0; i < 300000; ++i) closed += "</a>";
  EXPECT_EQ(SkeletonError(OneBone(kRoot, "NAME='b'", closed)), "accepted");
  for (const char* number : {"1 2", "1 2 3 4", "", "1,2,3", "1 2 x", "1 2 3x", "1 2 nan", "1 2 inf",
                             "1 2 1e39", "1 2 +-3", "1 2 +", "0x1 2 3", "1..2 2 3"}) {
    const std::string element = "<ROTATION>" + std::string(number) + " 0</ROTATION>";
    EXPECT_THAT(SkeletonError(OneBone(kRoot, "NAME='b'", element)), HasSubstr("isn't 4 numbers"))
        << element;
  }
}

TEST(TextLoader, RefusesLyingFiles) {
  const std::string mesh = Saved(SampleMesh(), ".xmf");
  const std::vector<std::tuple<std::string, std::string, std::string>> meshes = {
      {"NUMSUBMESH=\"3\"", "NUMSUBMESH=\"2\"", "NUMSUBMESH is 2, but should be 3"},
      {"NUMVERTICES=\"3\"", "NUMVERTICES=\"2147483647\"", "NUMVERTICES is 2147483647"},
      {"NUMFACES=\"1\"", "NUMFACES=\"0\"", "NUMFACES is 0"},
      {"NUMSPRINGS=\"0\"", "NUMSPRINGS=\"1\"", "NUMSPRINGS is 1"},
      {"NUMTEXCOORDS=\"1\"", "NUMTEXCOORDS=\"2\"", "NUMTEXCOORDS is 2"},
      {"NUMTEXCOORDS=\"1\"", "NUMTEXCOORDS=\"-1\"", "NUMTEXCOORDS is negative"},
      {"NUMMORPHS=\"1\"", "NUMMORPHS=\"2\"", "NUMMORPHS is 2"},
      {"MATERIAL=\"4\"", "MATERIAL=\"a\"", "no number"},
      {"NUMINFLUENCES=\"2\"", "NUMINFLUENCES=\"3\"", "NUMINFLUENCES is 3"},
      {"VERTEX ID=\"1\"", "VERTEX ID=\"2\"", "ID is 2, but should be 1"},
      {"<POS>0 0 0</POS>", "", "POS is missing"},
      {"<NORM>0 1 0</NORM>", "", "NORM is missing"},
      {"<INFLUENCE ID=\"1\"", "<INFLUENCE ID=\"-1\"", "bone id -1 is out of range"},
      {"<INFLUENCE ID=\"1\"", "<INFLUENCE", "ID is missing"},
      {">0.25</INFLUENCE>", "></INFLUENCE>", "\"\" is no number"},
      {"NUMBLENDVERTS=\"1\"", "NUMBLENDVERTS=\"0\"", "NUMBLENDVERTS is 0"},
      {"VERTEXID=\"2\"", "VERTEXID=\"3\"", "<BLENDVERTEX> at byte"},
      {"VERTEXID=\"2\"", "VERTEXID=\"-1\"", "vertex id -1 is out of range"},
      {"VERTEXID=\"2\"", "", "VERTEXID is missing"},
      {"<POSITION>3 4 96.5</POSITION>", "", "POSITION is missing"},
      {"<NORMAL>0 0 1</NORMAL>", "", "NORMAL is missing"},
      {"VERTEXID=\"0 1 2\"", "VERTEXID=\"0 1 3\"", "vertex id 3 is out of range"},
      {"VERTEXID=\"0 1 2\"", "VERTEXID=\"0 1\"", "isn't 3 numbers"},
      {"VERTEXID=\"0 1 2\"", "", "VERTEXID is missing"},
  };
  for (const auto& [from, to, message] : meshes) {
    EXPECT_THAT(MeshError(Replaced(mesh, from, to)), HasSubstr(message)) << from;
  }
  const std::string animation = Saved(SampleAnimation(), ".xaf");
  const std::vector<std::tuple<std::string, std::string, std::string>> animations = {
      {"XAF", "XPF", "magic is \"XPF\""},
      {"NUMTRACKS=\"2\"", "NUMTRACKS=\"1\"", "NUMTRACKS is 1"},
      {"NUMKEYFRAMES=\"2\"", "NUMKEYFRAMES=\"3\"", "NUMKEYFRAMES is 3"},
      {"BONEID=\"3\"", "BONEID=\"-3\"", "bone id -3"},
      {"BONEID=\"3\"", "", "BONEID is missing"},
      {"TIME=\"0.5\"", "", "TIME is missing"},
      {"<TRANSLATION>1 2 3</TRANSLATION>", "", "TRANSLATION is missing"},
      {"<ROTATION>0 0 0 1</ROTATION>", "", "ROTATION is missing"},
      {"DURATION=\"0.5\"", "DURATION=\"nan\"", "no number"},
  };
  for (const auto& [from, to, message] : animations) {
    EXPECT_THAT(AnimationError(Replaced(animation, from, to)), HasSubstr(message)) << from;
  }
  const std::string morphs = Saved(SampleMorphAnimation(), ".xpf");
  for (const auto& [from, to, message] :
       std::vector<std::tuple<std::string, std::string, std::string>>{
           {"XPF", "XAF", "magic is \"XAF\""},
           {"NUMTRACKS=\"2\"", "NUMTRACKS=\"1\"", "NUMTRACKS is 1"},
           {"NUMKEYFRAMES=\"2\"", "NUMKEYFRAMES=\"3\"", "NUMKEYFRAMES is 3"},
           {"MORPHNAME=\"\"", "", "MORPHNAME is missing"},
           {"TIME=\"0.25\"", "", "TIME is missing"},
           {"<WEIGHT>0.5</WEIGHT>", "", "WEIGHT is missing"},
           {">0.5<", ">half<", "\"half\" is no number"}}) {
    EXPECT_THAT(MorphAnimationError(Replaced(morphs, from, to)), HasSubstr(message)) << from;
  }
  const std::string material = Saved(SampleMaterial(), ".xrf");
  EXPECT_THAT(MaterialError(Replaced(material, "NUMMAPS=\"3\"", "NUMMAPS=\"4\"")),
              HasSubstr("NUMMAPS is 4"));
  EXPECT_THAT(MaterialError(morphs), HasSubstr("root element should be MATERIAL"));
  const std::string skeleton = Saved(SampleSkeleton(), ".xsf");
  EXPECT_THAT(SkeletonError(Replaced(skeleton, "NUMBONES=\"3\"", "NUMBONES=\"4\"")),
              HasSubstr("NUMBONES is 4"));
  EXPECT_THAT(SkeletonError(Replaced(skeleton, "<PARENTID>0<", "<PARENTID>2<")),
              HasSubstr("lists the child 1"));
  // Above 65535 a face can't name a vertex that is there.
  std::string large = "<MESH MAGIC='XMF' VERSION='919'><SUBMESH><FACE VERTEXID='0 0 65536'/>";
  for (int i = 0; i < 65537; ++i) large += "<VERTEX><POS>0 0 0</POS><NORM>0 0 0</NORM></VERTEX>";
  large += "</SUBMESH></MESH>";
  EXPECT_THAT(MeshError(large), HasSubstr("above 65535"));
  EXPECT_EQ(MeshError(Replaced(large, "65536'", "65535'")), "accepted");
}

}  // namespace
