// Evaluates nodes at a time. The evaluator keeps a state for each node that it was asked for. A
// state is good for one generation, so that going to another time forgets everything at once and at
// no cost, and a node is computed once for a time however many children ask for it. Which curves
// drive which node is found once for a stack: a clip of B bones and K times costs B x K. Parents
// are walked in a loop, since a file decides how deep its tree is.
// Matrices are made anew only where something moves: a node whose values and parent are what they
// were at the last time keeps its own.
//
// A caller that changes a property between two evaluations of one time passes `forceEval`; one that
// connects animation objects calls Reset. When objects of the scene go, or its current stack
// changes, the evaluator notices by the scene's revision.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "fbx/core/fbx_time.h"
#include "fbx/math/fbx_matrix.h"
#include "fbx/scene/fbx_node.h"

class FbxAnimLayer;
class FbxNode;
class FbxProperty;
class FbxScene;
class KFCurve;

// The curves of one layer that drive one of a node's three animated properties.
struct FbxNodeEvalDriver {
  enum EProperty : uint8_t { eTranslation, eRotation, eScaling };

  struct Channel {
    const KFCurve* curve = nullptr;
    double value = 0.0;     // where there is no curve
    bool hasValue = false;  // without one the property's value holds
    int last = 0;           // the curve's search hint
  };

  size_t layer = 0;
  EProperty property = eTranslation;
  // The layer has further curve nodes of the property; these channels are of the one that counts,
  // the first in the property's order.
  bool isOneOfSeveral = false;
  std::array<Channel, 3> channels;
};

struct FbxNodeEvalState {
  // Values after layers and limits.
  FbxVector4 translation;
  FbxVector4 rotation;  // degrees
  FbxVector4 scaling{1.0, 1.0, 1.0};
  FbxAMatrix global;
  FbxAMatrix local;  // computed by GetNodeEvalStateWithLocal alone

 private:
  friend class FbxAnimEvaluator;

  const FbxNode* node_ = nullptr;
  uint64_t generation_ = 0;  // the evaluator's when this was computed
  // What the node's properties say without animation, and the revision of those properties.
  std::array<FbxVector4, 3> restValues_;
  EFbxInheritType inheritType_ = eInheritRrSs;
  uint64_t restRevision_ = UINT64_MAX;
  // What the matrices were made of besides the values, and how often they were made.
  uint64_t epoch_ = 0;
  uint64_t transformRevision_ = 0;
  FbxNodeEvalState* parent_ = nullptr;
  uint64_t parentVersion_ = 0;
  uint64_t version_ = 0;
  bool hasLocal_ = false;
  FbxAMatrix globalWithoutScaling_;  // without the node's own scaling
  // The global matrix taken apart, once a child asks: a rotation by the matrix's angles, and the
  // scaling with shear that is left.
  bool hasParts_ = false;
  FbxAMatrix globalRotation_;
  FbxAMatrix globalScaling_;
  uint64_t driversGeneration_ = 0;
  std::vector<FbxNodeEvalDriver> drivers_;  // in layer order
};

// What the evaluator as a whole knows about the time it is at.
struct FbxAnimEvalState {
  struct Layer {
    const FbxAnimLayer* layer = nullptr;
    const KFCurve* weightCurve = nullptr;
    double weight = 1.0;
    int blendMode = 0;
    bool muted = false;
  };

  FbxTime time = FbxTime::Infinite();
  uint64_t generation = 0;
  std::vector<Layer> layers;
  uint64_t layersGeneration = 0;  // when the weights were last read
};

class FbxAnimEvaluator {
 public:
  // For the nodes of `scene`, whose current stack it shows; null for nodes without a scene, which
  // have no animation.
  explicit FbxAnimEvaluator(const FbxScene* scene);
  FbxAnimEvaluator(const FbxAnimEvaluator&) = delete;
  FbxAnimEvaluator& operator=(const FbxAnimEvaluator&) = delete;

  // The node's state at a time. The reference is good until the next call.
  const FbxNodeEvalState& GetNodeEvalState(const FbxNode& node, FbxTime time,
                                           bool forceEval = false);
  // The same, with the local matrix.
  const FbxNodeEvalState& GetNodeEvalStateWithLocal(const FbxNode& node, FbxTime time,
                                                    bool forceEval = false);
  // Forgets what was computed, and which curves drive which node.
  void Reset();
  // Tells that the scene's global transforms are from now on `conversion` times what they were.
  void ConvertFileAxes(const FbxAMatrix& conversion);

 private:
  // The node's state at a time.
  FbxNodeEvalState& Update(const FbxNode& node, FbxTime time, bool forceEval);
  void GoTo(FbxTime time);
  void FindDrivers();
  void ReadLayers();
  void FindDriversOfLayer(const FbxAnimLayer& layer, size_t index);
  // Lets the driver, of a curve node of the layer, drive the property, unless another one does.
  void AddDriver(const FbxAnimLayer& layer, const FbxProperty& property,
                 const FbxNodeEvalDriver& driver);
  FbxNodeEvalState& StateOf(const FbxNode& node);
  // The state of the node's parent; null if it has none.
  FbxNodeEvalState* ParentOf(const FbxNodeEvalState& state);
  FbxNodeEvalState& Compute(const FbxNode& node);
  // A rotation by the angles of the node's global matrix.
  FbxAMatrix PureRotation(const FbxNode& node, const FbxAMatrix& global) const;
  // True if the values, or how they are inherited, differ from what they were.
  bool ComputeTRSLocal(FbxNodeEvalState& state);
  // From the state of the node's parent.
  void ComputeGlobalTransform(FbxNodeEvalState& state);

  const FbxScene* scene_;
  uint64_t sceneRevision_ = 0;                             // when the scene was last looked at
  std::vector<std::unique_ptr<FbxNodeEvalState>> states_;  // by the nodes' slots
  uint64_t lastGeneration_ = 0;
  uint64_t epoch_ = 0;  // changes when everything is to be computed anew
  FbxAnimEvalState state_;
  FbxAMatrix fromFileAxes_;  // from the axes of the file to the scene's
  FbxAMatrix toFileAxes_;    // and back
  uint64_t driversGeneration_ = 0;
  std::vector<FbxNodeEvalState*> chain_;  // the way up to a computed ancestor
};
