#include "converter/base/conversion_arguments.h"

#include <string_view>

#include "cal3d/io/number_text.h"

namespace {

const char* YesOrNo(bool flag) { return flag ? "YES" : "NO"; }

}  // namespace

const char* ModeTypeAsString::getStringForEnumValue(ModeType mode) {
  switch (mode) {
    case UNKNOWN_MODE:
      return "UNKNOWN_MODE";
    case EXPORTALL_MODE:
      return "EXPORTALL";
    case LIST_MODE:
      return "LIST";
    case EXPORT_MODE:
      return "EXPORT";
    case CAL3D_2_TEXT_MODE:
      return "CAL3D_2_TEXT";
    case COMPARE_MODE:
      return "COMPARE";
  }
  return "OUT OF RANGE";
}

const char* ObjectTypeAsString::getStringForEnumValue(ObjectType type) {
  if (type == UNKNOWN_OBJECT) return "UNKNOWN_OBJECT";
  if (type == ALL_OBJECT || type == LIST_ALL_OBJECT) return "ALL";
  for (const ObjectKind& kind : kObjectKinds) {
    if (kind.type == type) return kind.name;
  }
  return "OUT OF RANGE";
}

std::string ConversionArguments::toString() const {
  std::string text;
  const auto field = [&text](std::string_view label, std::string_view value) {
    text += '\t';
    text += label;
    text += value;
  };
  field("option:", option == HELP ? "HELP" : "NORMAL");
  field("mode =", ModeTypeAsString::getStringForEnumValue(mode));
  field("type =", ObjectTypeAsString::getStringForEnumValue(type));
  field("inputFilename:", inputFilename);
  field("outputFilename:", outputFilename);
  field("skeletonRootPath:", skeletonRootPath);
  const bool namesSelect = commandVersion == 2 && !exportObjectNames.empty();
  if (namesSelect) {
    field("exportObjectNames = ", "");
    for (size_t i = 0; i < exportObjectNames.size(); ++i) {
      field(std::to_string(i) + ":", exportObjectNames[i]);
    }
  }
  if (!exportObjectName.empty()) field("exportObjectName = ", exportObjectName);
  if (!namesSelect && exportObjectName.empty()) field("exportObjectName = ", "ALL OBJECTS");
  field("showLabels:", YesOrNo(showLabels));
  field("normalizeWeight:", YesOrNo(normalizeWeight));
  field("useEvaluatedLocal:", YesOrNo(useEvaluatedLocal));
  field("encodeNames:", YesOrNo(encodeNames));
  field("scaleFactor:", "");
  AppendNumber(text, scaleFactor);
  field("directoryForOutputFiles:", directoryForOutputFiles);
  text += '\n';
  return text;
}
