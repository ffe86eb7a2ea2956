// The questions to a node that its scene's evaluator answers.
#include "fbx/anim/fbx_anim_evaluator.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

namespace {

FbxAnimEvaluator& EvaluatorOf(const FbxNode& node) {
  // Nodes without a scene have no animation, and share one evaluator.
  static FbxAnimEvaluator unattached(nullptr);
  const FbxScene* scene = node.GetScene();
  return scene == nullptr ? unattached : scene->GetAnimationEvaluator();
}

}  // namespace

FbxAMatrix FbxNode::EvaluateGlobalTransform(FbxTime time, EPivotSet /*set*/, bool /*applyTarget*/,
                                            bool forceEval) const {
  return EvaluatorOf(*this).GetNodeEvalState(*this, time, forceEval).global;
}

FbxAMatrix FbxNode::EvaluateLocalTransform(FbxTime time, EPivotSet /*set*/, bool /*applyTarget*/,
                                           bool forceEval) const {
  return EvaluatorOf(*this).GetNodeEvalStateWithLocal(*this, time, forceEval).local;
}

FbxVector4 FbxNode::EvaluateLocalTranslation(FbxTime time, EPivotSet /*set*/, bool /*applyTarget*/,
                                             bool forceEval) const {
  return EvaluatorOf(*this).GetNodeEvalState(*this, time, forceEval).translation;
}

FbxVector4 FbxNode::EvaluateLocalRotation(FbxTime time, EPivotSet /*set*/, bool /*applyTarget*/,
                                          bool forceEval) const {
  return EvaluatorOf(*this).GetNodeEvalState(*this, time, forceEval).rotation;
}

FbxVector4 FbxNode::EvaluateLocalScaling(FbxTime time, EPivotSet /*set*/, bool /*applyTarget*/,
                                         bool forceEval) const {
  return EvaluatorOf(*this).GetNodeEvalState(*this, time, forceEval).scaling;
}
