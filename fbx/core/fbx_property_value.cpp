// Conversions among the forms of property values.
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <span>

#include "fbx/core/fbx_property_page.h"

namespace {

// The components of a number or a vector of doubles; none for other values.
std::span<const double> Components(const FbxPropertyValue& value) {
  if (const auto* d = std::get_if<double>(&value)) return {d, 1};
  if (const auto* v2 = std::get_if<FbxDouble2>(&value)) return *v2;
  if (const auto* v3 = std::get_if<FbxDouble3>(&value)) return *v3;
  if (const auto* v4 = std::get_if<FbxDouble4>(&value)) return *v4;
  if (const auto* m = std::get_if<std::shared_ptr<const FbxDouble4x4>>(&value)) return **m;
  return {};
}

template <typename Number>
void AppendNumber(std::string& text, Number number) {
  std::array<char, 32> buffer;
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
  if (!text.empty()) text += ' ';
  text.append(buffer.data(), end);
}

std::string Print(const FbxPropertyValue& value) {
  std::string text;
  if (const auto* s = std::get_if<std::string>(&value)) return *s;
  if (const auto* i = std::get_if<int64_t>(&value)) AppendNumber(text, *i);
  if (const auto* u = std::get_if<uint64_t>(&value)) AppendNumber(text, *u);
  if (const auto* t = std::get_if<FbxTime>(&value)) AppendNumber(text, t->Get());
  if (const auto* d = std::get_if<std::shared_ptr<const FbxDistance>>(&value)) {
    AppendNumber(text, (*d)->value);
    text.append(" ").append((*d)->unit);
  }
  for (const double component : Components(value)) AppendNumber(text, component);
  return text;
}

// The conversion of C, with values out of range stopped at the ends of the range: a file may hold
// any number, and the plain cast would be undefined.
template <typename Target, typename Source>
Target Narrow(Source value) {
  using Limits = std::numeric_limits<Target>;
  if constexpr (std::is_same_v<Target, bool>) {
    return value != Source{};
  } else if constexpr (std::is_floating_point_v<Target>) {
    return static_cast<Target>(value);
  } else if constexpr (std::is_floating_point_v<Source>) {
    if (std::isnan(value)) return 0;
    if (value <= static_cast<Source>(Limits::min())) return Limits::min();
    if (value >= static_cast<Source>(Limits::max())) return Limits::max();
    return static_cast<Target>(value);
  } else {
    return static_cast<Target>(value);
  }
}

template <typename Target>
std::optional<Target> ToScalar(const FbxPropertyValue& value) {
  if (const auto* i = std::get_if<int64_t>(&value)) return Narrow<Target>(*i);
  if (const auto* u = std::get_if<uint64_t>(&value)) return Narrow<Target>(*u);
  if (const auto* d = std::get_if<double>(&value)) return Narrow<Target>(*d);
  if constexpr (std::is_same_v<Target, double>) {
    if (const auto* t = std::get_if<FbxTime>(&value)) return t->GetSecondDouble();
    if (const auto components = Components(value); !components.empty()) return components[0];
  }
  return {};
}

template <typename Target>
bool GetScalar(const FbxPropertyValue& value, void* out) {
  const std::optional<Target> scalar = ToScalar<Target>(value);
  if (scalar) *static_cast<Target*>(out) = *scalar;
  return scalar.has_value();
}

template <typename Vector>
bool GetVector(const FbxPropertyValue& value, void* out) {
  const std::span<const double> components = Components(value);
  Vector& target = *static_cast<Vector*>(out);
  const auto isThreeOrFour = [](size_t size) { return size == 3 || size == 4; };
  if (components.size() != target.size() &&
      !(isThreeOrFour(components.size()) && isThreeOrFour(target.size()))) {
    return false;
  }
  std::copy_n(components.begin(), std::min(components.size(), target.size()), target.begin());
  return true;
}

// The number of type Number at `in`, in the form that properties hold it in.
template <typename Number, typename Form>
FbxPropertyValue Held(const void* in) {
  return static_cast<Form>(*static_cast<const Number*>(in));
}

template <typename Target, typename Form>
FbxPropertyValue CoerceScalar(const FbxPropertyValue& value) {
  const std::optional<Target> scalar = ToScalar<Target>(value);
  return scalar ? FbxPropertyValue(static_cast<Form>(*scalar)) : FbxPropertyValue();
}

template <typename Vector>
FbxPropertyValue CoerceVector(const FbxPropertyValue& value) {
  Vector vector{};
  if (!GetVector<Vector>(value, &vector)) return {};
  if constexpr (std::is_same_v<Vector, FbxDouble4x4>) {
    return std::make_shared<const FbxDouble4x4>(vector);
  } else {
    return vector;
  }
}

}  // namespace

bool ConvertPropertyValue(const FbxPropertyValue& value, void* out, EFbxType type) {
  if (std::holds_alternative<std::monostate>(value)) return false;
  switch (type) {
    case eFbxChar:
      return GetScalar<int8_t>(value, out);
    case eFbxUChar:
      return GetScalar<uint8_t>(value, out);
    case eFbxShort:
      return GetScalar<int16_t>(value, out);
    case eFbxUShort:
      return GetScalar<uint16_t>(value, out);
    case eFbxUInt:
      return GetScalar<uint32_t>(value, out);
    case eFbxLongLong:
      return GetScalar<int64_t>(value, out);
    case eFbxULongLong:
      return GetScalar<uint64_t>(value, out);
    case eFbxBool:
      return GetScalar<bool>(value, out);
    case eFbxInt:
    case eFbxEnum:
      return GetScalar<int32_t>(value, out);
    case eFbxFloat:
    case eFbxHalfFloat:
      return GetScalar<float>(value, out);
    case eFbxDouble:
      return GetScalar<double>(value, out);
    case eFbxDouble2:
      return GetVector<FbxDouble2>(value, out);
    case eFbxDouble3:
      return GetVector<FbxDouble3>(value, out);
    case eFbxDouble4:
      return GetVector<FbxDouble4>(value, out);
    case eFbxDouble4x4:
      return GetVector<FbxDouble4x4>(value, out);
    case eFbxString:
      *static_cast<FbxString*>(out) = Print(value);
      return true;
    case eFbxTime:
      if (const auto* t = std::get_if<FbxTime>(&value)) {
        *static_cast<FbxTime*>(out) = *t;
        return true;
      }
      return false;
    case eFbxUndefined:
    case eFbxReference:
    case eFbxBlob:
    case eFbxDistance:
    case eFbxDateTime:
      break;
  }
  return false;
}

FbxPropertyValue ReadPropertyValue(const void* in, EFbxType type) {
  switch (type) {
    case eFbxChar:
      return Held<int8_t, int64_t>(in);
    case eFbxUChar:
      return Held<uint8_t, uint64_t>(in);
    case eFbxShort:
      return Held<int16_t, int64_t>(in);
    case eFbxUShort:
      return Held<uint16_t, uint64_t>(in);
    case eFbxUInt:
      return Held<uint32_t, uint64_t>(in);
    case eFbxLongLong:
      return Held<int64_t, int64_t>(in);
    case eFbxULongLong:
      return Held<uint64_t, uint64_t>(in);
    case eFbxBool:
      return Held<bool, int64_t>(in);
    case eFbxInt:
    case eFbxEnum:
      return Held<int32_t, int64_t>(in);
    case eFbxFloat:
      return Held<float, double>(in);
    case eFbxDouble:
      return Held<double, double>(in);
    case eFbxDouble2:
      return *static_cast<const FbxDouble2*>(in);
    case eFbxDouble3:
      return *static_cast<const FbxDouble3*>(in);
    case eFbxDouble4:
      return *static_cast<const FbxDouble4*>(in);
    case eFbxDouble4x4:
      return std::make_shared<const FbxDouble4x4>(*static_cast<const FbxDouble4x4*>(in));
    case eFbxString:
      return static_cast<const FbxString*>(in)->Text();
    case eFbxTime:
      return *static_cast<const FbxTime*>(in);
    case eFbxUndefined:
    case eFbxHalfFloat:
    case eFbxReference:
    case eFbxBlob:
    case eFbxDistance:
    case eFbxDateTime:
      break;
  }
  return {};
}

FbxPropertyValue CoercePropertyValue(const FbxPropertyValue& value, EFbxType type) {
  switch (type) {
    case eFbxChar:
      return CoerceScalar<int8_t, int64_t>(value);
    case eFbxUChar:
      return CoerceScalar<uint8_t, uint64_t>(value);
    case eFbxShort:
      return CoerceScalar<int16_t, int64_t>(value);
    case eFbxUShort:
      return CoerceScalar<uint16_t, uint64_t>(value);
    case eFbxUInt:
      return CoerceScalar<uint32_t, uint64_t>(value);
    case eFbxLongLong:
      return CoerceScalar<int64_t, int64_t>(value);
    case eFbxULongLong:
      return CoerceScalar<uint64_t, uint64_t>(value);
    case eFbxBool:
      return CoerceScalar<bool, int64_t>(value);
    case eFbxInt:
    case eFbxEnum:
      return CoerceScalar<int32_t, int64_t>(value);
    case eFbxFloat:
    case eFbxHalfFloat:
      return CoerceScalar<float, double>(value);
    case eFbxDouble:
      return CoerceScalar<double, double>(value);
    case eFbxDouble2:
      return CoerceVector<FbxDouble2>(value);
    case eFbxDouble3:
      return CoerceVector<FbxDouble3>(value);
    case eFbxDouble4:
      return CoerceVector<FbxDouble4>(value);
    case eFbxDouble4x4:
      return CoerceVector<FbxDouble4x4>(value);
    case eFbxString:
      return Print(value);
    case eFbxBlob:
    case eFbxDateTime:
      return std::holds_alternative<std::string>(value) ? value : FbxPropertyValue();
    case eFbxTime:
      return std::holds_alternative<FbxTime>(value) ? value : FbxPropertyValue();
    case eFbxDistance:
      return std::holds_alternative<std::shared_ptr<const FbxDistance>>(value) ? value
                                                                               : FbxPropertyValue();
    case eFbxUndefined:
    case eFbxReference:
      break;
  }
  return {};
}
