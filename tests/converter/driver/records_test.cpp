#include "converter/driver/records.h"

#include <gtest/gtest.h>

#include "converter/driver/conversion_arguments.h"
#include "tests/support/printed.h"

namespace {

TEST(Records, ALabelAValueAndABlankOrANewline) {
  EXPECT_EQ(Printed([] { AddOutput("MESH", "Body", false); }), "MESH: Body ");
  EXPECT_EQ(Printed([] { AddOutput("MESH", "Body", true); }), "MESH: Body\n");
  EXPECT_EQ(Printed([] { AddOutput("", "text", false); }), "text ");
  EXPECT_EQ(Printed([] { AddOutput("", true); }), "\n");
  EXPECT_EQ(Printed([] { AddOutput("START", INT64_MIN, false); }), "START: -9223372036854775808 ");
  EXPECT_EQ(Printed([] { AddError("no %s\n"); }), "ERROR: no %s\n\n");
  EXPECT_EQ(Printed([] { AddWarning("odd"); }), "WARNING: odd\n");
}

TEST(Records, AnAnimationShowsItsReferenceSpanOnlyIfItDiffers) {
  // The durations are no part of that test.
  EXPECT_EQ(Printed([] { AddAnimOutput("Walk", "FRAMES30", "SMPTE", 0, 30, 30, 0, 30, 9, false); }),
            "ANIM: Walk MODE: FRAMES30 PROTOCOL: SMPTE START: 0 END: 30 DURATION: 30\n");
  EXPECT_EQ(Printed([] { AddAnimOutput("Talk", "PAL", "SMPTE", 1, 30, 29, 0, 30, 30, true); }),
            "MORPH: Talk MODE: PAL PROTOCOL: SMPTE START: 1 END: 30 DURATION: 29 "
            "REFERENCE_START: 0 REFERENCE_END: 30 REFERENCE_DURATION: 30\n");
}

TEST(Records, EncodedNames) {
  EXPECT_EQ(urlencode("a b"), "a%20b");
  EXPECT_EQ(urlencode("a.b-c_d~e"), "a.b-c_d~e");
  EXPECT_EQ(urlencode("\t/%"), "% 9%2F%25");
  EXPECT_EQ(urlencode("\xC3\xA9"), "%FFFFFFC3%FFFFFFA9");
  EXPECT_EQ(urlencode(std::string_view("\0\x7f", 2)), "% 0%7F");
  EXPECT_EQ(encodeName(true, ""), "unnamed");
  EXPECT_EQ(encodeName(false, ""), "");
  EXPECT_EQ(encodeName(false, "a b"), "a b");
}

TEST(Records, DumpOfACommand) {
  ConversionArguments args;
  args.exportObjectNames = {"Body", "Head"};  // not listed by the older form of command
  args.scaleFactor = 0.123456789F;
  EXPECT_NE(args.toString().find("\texportObjectName = ALL OBJECTS\t"), std::string::npos);
  EXPECT_NE(args.toString().find("\tscaleFactor:0.123457\t"), std::string::npos);
  args.commandVersion = 2;
  args.exportObjectName = "Body";
  args.scaleFactor = 1e-10F;
  args.type = static_cast<ObjectType>(MESH_OBJECT | NODE_OBJECT);
  EXPECT_NE(args.toString().find(
                "\texportObjectNames = \t0:Body\t1:Head\texportObjectName = Body\tshowLabels"),
            std::string::npos);
  EXPECT_NE(args.toString().find("\tscaleFactor:1e-10\t"), std::string::npos);
  EXPECT_NE(args.toString().find("\ttype =OUT OF RANGE\t"), std::string::npos);
}

}  // namespace
