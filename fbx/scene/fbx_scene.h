// A loaded scene with its settings. Every object of a file is a source of the scene, in the order
// of reading, and so scene.GetSrcObject<T>(i) lists all objects of a class.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "fbx/core/fbx_object.h"
#include "fbx/core/fbx_time.h"
#include "fbx/math/fbx_matrix.h"

class FbxAnimEvaluator;
class FbxAnimStack;
class FbxNode;
class FbxScene;

// Which way the axes of a scene point, and the conversion of a scene from one system to another.
class FbxAxisSystem {
 public:
  // An axis, 0 X, 1 Y, 2 Z, with its sign, 1 or -1.
  struct Axis {
    int axis = 0;
    int sign = 1;
    friend constexpr bool operator==(const Axis& a, const Axis& b) = default;
  };
  enum EPreDefinedAxisSystem {
    eMayaZUp = 0,
    eMayaYUp,
    eMax,
    eMotionBuilder,
    eOpenGL,
    eDirectX,
    eLightwave,
  };
  static const FbxAxisSystem MayaZUp;
  static const FbxAxisSystem MayaYUp;
  static const FbxAxisSystem Max;
  static const FbxAxisSystem Motionbuilder;
  static const FbxAxisSystem OpenGL;
  static const FbxAxisSystem DirectX;
  static const FbxAxisSystem Lightwave;

  // Y up, +Z front, +X right.
  constexpr FbxAxisSystem() = default;
  constexpr FbxAxisSystem(Axis up, Axis front, Axis right)
      : up_(up), front_(front), right_(right) {}
  explicit FbxAxisSystem(EPreDefinedAxisSystem system);

  Axis GetUp() const { return up_; }
  Axis GetFront() const { return front_; }
  Axis GetRight() const { return right_; }
  // True when up, front and right name three different axes with a sign each.
  bool IsValid() const;
  friend constexpr bool operator==(const FbxAxisSystem& a, const FbxAxisSystem& b) = default;

  // The matrix that takes `from`'s right, up and front axes to this system's: Y up, Z front, X
  // right to Z up, -Y front, X right takes (x, y, z) to (x, -z, y).
  FbxAMatrix GetConversionMatrix(const FbxAxisSystem& from) const;

  // Takes the scene from its own system to this one: afterwards every node's global transform, with
  // and without animation, and every bind pose matrix is the conversion matrix times what it was.
  // Top-level nodes carry the change, everything below keeps its local data, and vertices aren't
  // touched. From a system of the other handedness top-level nodes get a negative scaling, and so
  // do nodes below that don't inherit it. A top-level node with animated rotation and a rotation
  // space for limits only loses those limits. Without effect when either system isn't valid.
  void ConvertScene(FbxScene* scene) const;

 private:
  Axis up_{1, 1};
  Axis front_{2, 1};
  Axis right_{0, 1};
};

// The settings of a whole scene, all of them properties.
class FbxGlobalSettings : public FbxObject {
  FBX_OBJECT(FbxGlobalSettings)

  // Y up, Z front, X right where the file says nothing.
  FbxAxisSystem GetAxisSystem() const;
  void SetAxisSystem(const FbxAxisSystem& system);
  // Centimetres in one unit.
  double GetSystemUnit() const;
  FbxTime::EMode GetTimeMode() const;
  FbxTime::EProtocol GetTimeProtocol() const;
  // Frames a second for the custom mode; 0 or below when the file has none.
  double GetCustomFrameRate() const;
  FbxColor GetAmbientColor() const;
  void SetAmbientColor(const FbxColor& color);
};

class FbxCollection : public FbxObject {
  FBX_OBJECT(FbxCollection)
};

// What a take of the file's list says; the animation itself is in objects.
struct FbxTakeInfo {
  std::string name;
  FbxTimeSpan localTime;
  FbxTimeSpan referenceTime;
};

class FbxDocument : public FbxCollection {
  FBX_OBJECT(FbxDocument)
  void SetTakeInfo(const FbxTakeInfo& info);
  // Null for an unknown name.
  const FbxTakeInfo* GetTakeInfo(const char* name) const;

 private:
  std::unordered_map<std::string, FbxTakeInfo> takes_;
};

class FbxScene : public FbxDocument {
  FBX_OBJECT(FbxScene)

  // The node "RootNode", which exists from creation.
  FbxNode* GetRootNode() const { return rootNode_; }
  FbxGlobalSettings& GetGlobalSettings() const { return *globalSettings_; }

  // The stack whose animation evaluations show; null for none. Setting it makes the evaluator
  // forget what it has computed.
  void SetCurrentAnimationStack(FbxAnimStack* stack);
  FbxAnimStack* GetCurrentAnimationStack() const;
  // Made on first use.
  FbxAnimEvaluator& GetAnimationEvaluator() const;
  // Changes whenever animation that was connected may have gone, or another stack is current.
  uint64_t GetAnimationRevision() const { return animationRevision_; }

  // Gives skeleton children that are marked for it, and whose parent is no skeleton, inherit type 1
  // instead of 2. No reader marks any node.
  void FixInheritType(FbxNode* node);

 protected:
  void Construct() override;
  void ConnectNotify(FbxObject& source, bool connected) override;

 private:
  FbxNode* rootNode_ = nullptr;
  FbxGlobalSettings* globalSettings_ = nullptr;
  FbxObject* currentStack_ = nullptr;
  uint64_t animationRevision_ = 0;
  // A shared pointer, since it can be destroyed where the class isn't known.
  mutable std::shared_ptr<FbxAnimEvaluator> evaluator_;
};

class FbxDocumentInfo : public FbxObject {
  FBX_OBJECT(FbxDocumentInfo)
};
