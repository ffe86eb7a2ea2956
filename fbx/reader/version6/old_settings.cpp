#include "fbx/reader/version6/old_settings.h"

#include <array>
#include <cmath>
#include <string_view>

#include "fbx/io/fbx_io.h"
#include "fbx/io/stored_value.h"
#include "fbx/scene/fbx_global_settings.h"

namespace {

// The rates of the time modes as files write them, by mode. Two modes have none.
constexpr std::array<std::string_view, 18> kRates = {
    "",           "120", "100", "60",   "50",     "48", "30", "",   "29.97 drop",
    "29.97 full", "25",  "24",  "1000", "23.976", "",   "96", "72", "59.94"};

template <typename T>
void SetIfSilent(const FbxGlobalSettings& settings, const char* name, const T& value) {
  FbxProperty property = settings.FindProperty(name);
  if (!property.Modified()) property.Set(value);
}

void SetFrameRate(const FbxGlobalSettings& settings, std::string_view text) {
  if (text.empty() || settings.FindProperty("TimeMode").Modified()) return;
  for (size_t mode = 0; mode < kRates.size(); ++mode) {
    if (kRates[mode] == text) return SetIfSilent(settings, "TimeMode", static_cast<int>(mode));
  }
  const double rate = ParseReal(text);
  if (!std::isfinite(rate) || rate <= 0.0) return;
  SetIfSilent(settings, "TimeMode", static_cast<int>(FbxTime::eCustom));
  SetIfSilent(settings, "CustomFrameRate", rate);
}

}  // namespace

void ReadOldSettings(FbxIO& io, FbxGlobalSettings& settings) {
  const auto enter = [&io](const char* name) {
    return io.FieldReadBegin(name) && io.FieldReadBlockBegin();
  };
  if (!enter("Version5")) return;
  if (enter("AmbientRenderSettings")) {
    if (io.FieldReadBegin("AmbientLightColor")) {
      FbxDouble3 color{};
      io.FieldReadDn(color.data(), static_cast<int>(color.size()));
      SetIfSilent(settings, "AmbientColor", color);
    }
    io.FieldReadBlockEnd();
  }
  if (enter("Settings")) {
    SetFrameRate(settings, io.FieldReadC("FrameRate"));
    io.FieldReadBlockEnd();
  }
  io.FieldReadBlockEnd();
}
