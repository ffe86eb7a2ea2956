// Animation curves and takes.
#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "fbx/anim/fbx_animation.h"
#include "fbx/io/fbx_io.h"
#include "fbx/reader/read_records.h"
#include "fbx/scene/fbx_scene.h"

namespace {

// Version of a curve's record in which text files hold attribute data as numbers; in all others
// they hold the bit patterns.
constexpr int32_t kVersionWithFloatText = 4007;

std::vector<float> ReadValues(FbxIO& io) {
  std::vector<float> values;
  if (io.FieldReadArray("KeyValueFloat", values)) return values;
  std::vector<double> doubles;
  io.FieldReadArray("KeyValueDouble", doubles);
  values.reserve(doubles.size());
  for (const double value : doubles) values.push_back(static_cast<float>(value));
  return values;
}

// The four words of each attribute, as bit patterns.
std::vector<uint32_t> ReadAttributeData(FbxIO& io) {
  std::vector<uint32_t> words;
  if (!io.IsBinary() && io.FieldReadI("KeyVer") != kVersionWithFloatText) {
    io.FieldReadArray("KeyAttrDataFloat", words);
    return words;
  }
  std::vector<float> floats;
  io.FieldReadArray("KeyAttrDataFloat", floats);
  words.reserve(floats.size());
  for (const float value : floats) words.push_back(std::bit_cast<uint32_t>(value));
  return words;
}

std::shared_ptr<const KFCurveAttributes> ReadAttributes(FbxIO& io) {
  std::vector<uint32_t> flags;
  io.FieldReadArray("KeyAttrFlags", flags);
  const std::vector<uint32_t> words = ReadAttributeData(io);
  std::vector<KFCurveKeyAttr> attributes(flags.size());
  for (size_t i = 0; i < flags.size(); ++i) {
    attributes[i].flags = flags[i];
    for (size_t k = 0; k < attributes[i].words.size() && i * 4 + k < words.size(); ++k) {
      attributes[i].words[k] = words[i * 4 + k];
    }
  }
  std::vector<uint32_t> counts;
  io.FieldReadArray("KeyAttrRefCount", counts);
  return std::make_shared<const KFCurveAttributes>(std::move(attributes), counts);
}

KFCurve::Extrapolation ReadExtrapolation(FbxIO& io, const char* field) {
  KFCurve::Extrapolation extrapolation;
  if (io.FieldReadBlockBegin(field)) {
    extrapolation.mode = KFCurve::ExtrapolationOfLetter(io.FieldReadCH("Type"));
    extrapolation.count = io.FieldReadI("Repetition", -1);
    io.FieldReadBlockEnd();
  }
  return extrapolation;
}

}  // namespace

std::shared_ptr<const KFCurveAttributes> FbxAttributeReader::Read(FbxIO& io) {
  bool isKnown = last_ != nullptr;
  for (size_t i = 0; i < bytes_.size(); ++i) {
    constexpr std::array kFields = {"KeyAttrFlags", "KeyAttrDataFloat", "KeyAttrRefCount"};
    const std::string_view bytes = io.FieldGetStoredValue(kFields[i]);
    isKnown = isKnown && !bytes.empty() && bytes == bytes_[i];
    if (!isKnown) bytes_[i] = bytes;
  }
  if (!isKnown) last_ = ReadAttributes(io);
  return last_;
}

void ReadCurve(FbxIO& io, FbxAnimCurve& curve, FbxAttributeReader& attributes) {
  curve.curve.SetDefaultValue(static_cast<float>(io.FieldReadD("Default")));
  curve.curve.SetKeys(io.FieldReadSharedArray("KeyTime"), ReadValues(io));
  curve.curve.SetAttributes(attributes.Read(io));
  ReadExtrapolations(io, curve.curve);
}

void ReadExtrapolations(FbxIO& io, KFCurve& curve) {
  curve.SetPreExtrapolation(ReadExtrapolation(io, "Pre-Extrapolation"));
  curve.SetPostExtrapolation(ReadExtrapolation(io, "Post-Extrapolation"));
}

FbxTakeInfo ReadTakeInfo(FbxIO& io, std::string name) {
  return {std::move(name), io.FieldReadTS("LocalTime"), io.FieldReadTS("ReferenceTime")};
}

void ReadTakes(FbxIO& io, FbxDocument& document) {
  if (!io.FieldReadBlockBegin("Takes")) return;
  const int32_t count = io.FieldGetInstanceCount("Take");
  for (int32_t i = 0; i < count; ++i) {
    io.FieldReadBegin("Take", i);
    std::string name(io.FieldReadC());
    if (!io.FieldReadBlockBegin()) continue;
    document.SetTakeInfo(ReadTakeInfo(io, std::move(name)));
    io.FieldReadBlockEnd();
  }
  io.FieldReadBlockEnd();
}
