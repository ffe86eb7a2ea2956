// The XML files to the letter.
#include <bit>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

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

}  // namespace
