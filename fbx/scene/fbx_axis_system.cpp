#include "fbx/scene/fbx_axis_system.h"

#include <array>

// Up, front, right.
constinit const FbxAxisSystem FbxAxisSystem::MayaZUp{{2, 1}, {1, -1}, {0, 1}};
constinit const FbxAxisSystem FbxAxisSystem::MayaYUp{{1, 1}, {2, 1}, {0, 1}};
constinit const FbxAxisSystem FbxAxisSystem::Max{{2, 1}, {1, -1}, {0, 1}};
constinit const FbxAxisSystem FbxAxisSystem::Motionbuilder{{1, 1}, {2, 1}, {0, 1}};
constinit const FbxAxisSystem FbxAxisSystem::OpenGL{{1, 1}, {2, 1}, {0, 1}};
constinit const FbxAxisSystem FbxAxisSystem::DirectX{{1, 1}, {2, 1}, {0, -1}};
constinit const FbxAxisSystem FbxAxisSystem::Lightwave{{1, 1}, {2, 1}, {0, -1}};

FbxAxisSystem::FbxAxisSystem(EPreDefinedAxisSystem system) {
  static constexpr std::array<const FbxAxisSystem*, 7> kSystems = {
      &MayaZUp, &MayaYUp, &Max, &Motionbuilder, &OpenGL, &DirectX, &Lightwave};
  const size_t index = static_cast<size_t>(system);
  if (index < kSystems.size()) *this = *kSystems[index];
}

bool FbxAxisSystem::IsValid() const {
  std::array<bool, 3> named{};
  for (const Axis& axis : {up_, front_, right_}) {
    if (axis.axis < 0 || axis.axis > 2 || (axis.sign != 1 && axis.sign != -1)) return false;
    named[static_cast<size_t>(axis.axis)] = true;
  }
  return named[0] && named[1] && named[2];
}

FbxAMatrix FbxAxisSystem::GetConversionMatrix(const FbxAxisSystem& from) const {
  if (!IsValid() || !from.IsValid()) return {};
  FbxMatrix matrix;
  const auto take = [&matrix](Axis source, Axis target) {
    for (int column = 0; column < 3; ++column) matrix.At(source.axis, column) = 0.0;
    matrix.At(source.axis, target.axis) = source.sign * target.sign;
  };
  take(from.right_, right_);
  take(from.up_, up_);
  take(from.front_, front_);
  return FbxAMatrix(matrix);
}
