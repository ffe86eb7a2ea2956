#include "converter/base/records.h"

#include <gmock/gmock.h>

#include "converter/base/conversion_arguments.h"
#include "tests/support/printed.h"

namespace {

using testing::HasSubstr;

TEST(Records, LabelsValuesAndErrors) {
  EXPECT_EQ(Printed([] { AddOutput("MESH", "Body", false); }), "MESH: Body ");
  EXPECT_EQ(Printed([] { AddOutput("", "text", false); }), "text ");
  EXPECT_EQ(Printed([] { AddOutput("", true); }), "\n");
  EXPECT_EQ(Printed([] { AddOutput("START", INT64_MIN, false); }), "START: -9223372036854775808 ");
  EXPECT_EQ(Printed([] { AddError("no %s\n"); }), "ERROR: no %s\n\n");
}

TEST(Records, EncodedNames) {
  EXPECT_EQ(urlencode("a.b-c_d~e"), "a.b-c_d~e");
  EXPECT_EQ(urlencode("\t/%"), "% 9%2F%25");
  EXPECT_EQ(urlencode("\xC3\xA9"), "%FFFFFFC3%FFFFFFA9");
  EXPECT_EQ(urlencode(std::string_view("\0\x7f", 2)), "% 0%7F");
  EXPECT_EQ(encodeName(true, ""), "unnamed");
  EXPECT_EQ(encodeName(false, ""), "");
}

TEST(Records, DumpOfACommand) {
  ConversionArguments args;
  args.exportObjectNames = {"Body", "Head"};  // not listed by the older form of command
  args.scaleFactor = 0.123456789F;
  EXPECT_THAT(args.toString(), HasSubstr("\texportObjectName = ALL OBJECTS\t"));
  EXPECT_THAT(args.toString(), HasSubstr("\tscaleFactor:0.123457\t"));
  args.commandVersion = 2;
  args.exportObjectName = "Body";
  args.scaleFactor = 1e-10F;
  args.type = static_cast<ObjectType>(MESH_OBJECT | NODE_OBJECT);
  EXPECT_THAT(
      args.toString(),
      HasSubstr("\texportObjectNames = \t0:Body\t1:Head\texportObjectName = Body\tshowLabels"));
  EXPECT_THAT(args.toString(), HasSubstr("\tscaleFactor:1e-10\t"));
  EXPECT_THAT(args.toString(), HasSubstr("\ttype =OUT OF RANGE\t"));
}

}  // namespace
