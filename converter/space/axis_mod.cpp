#include "converter/space/axis_mod.h"

#include <cstdlib>
#include <string_view>

namespace {

constexpr std::string_view kLetters = "xyz";

// The selector of the axis that `text`, which isn't empty, names; 0 if it names none.
int SelectorOf(std::string_view text) {
  const size_t axis = kLetters.find(text.back());
  if (axis == std::string_view::npos) return 0;
  const int selector = static_cast<int>(axis) + 1;
  return text.front() == '-' ? -selector : selector;
}

// The third axis of a right-handed system, from two different ones.
int CrossOf(int a, int b) {
  const int sign = (a < 0) == (b < 0) ? 1 : -1;
  const int third = 6 - std::abs(a) - std::abs(b);
  const bool cyclic = std::abs(b) == std::abs(a) % 3 + 1;
  return cyclic ? sign * third : -sign * third;
}

template <typename Components>
void AxisModOnDoubles(const ConversionArguments& args, Components& components) {
  FloatQuad narrow{};
  for (size_t i = 0; i < 3; ++i) narrow[i] = static_cast<float>(components[i]);
  AxisMod(args, narrow);
  for (size_t i = 0; i < 3; ++i) components[i] = narrow[i];
}

}  // namespace

void AxisMod(const ConversionArguments& args, FloatQuad& value) {
  // The defaults, told early: this is called for every point and key.
  if (args.upAxis.empty() && args.frontAxis.empty() && args.coordinateSystem != "left") return;
  const int up = SelectorOf(args.upAxis.empty() ? "z" : std::string_view(args.upAxis));
  const int front = SelectorOf(args.frontAxis.empty() ? "-y" : std::string_view(args.frontAxis));
  if (up == 0 || front == 0 || std::abs(up) == std::abs(front)) return;
  const int side = CrossOf(-front, up);
  AxisAssign(value, args.coordinateSystem == "left" ? -side : side, -front, up);
}

void AxisAssign(FloatQuad& value, int a, int b, int c) {
  const FloatQuad old = value;
  const auto select = [&old](int selector) {
    const float component = old[static_cast<size_t>(std::abs(selector)) - 1];
    return selector < 0 ? -component : component;
  };
  value[0] = select(a);
  value[1] = select(b);
  value[2] = select(c);
}

void AxisModOnVector(const ConversionArguments& args, FbxVector4& vector) {
  AxisModOnDoubles(args, vector);
}

void AxisModOnQuat(const ConversionArguments& args, FbxQuaternion& quaternion) {
  AxisModOnDoubles(args, quaternion);
}
