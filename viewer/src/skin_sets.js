// More than four bones a vertex. The renderer bends a vertex by four; the second set of the file
// joins in here, so that a face that hangs on eight bones bends as it does on the platform.

import { BufferAttribute, ShaderChunk } from 'three';

/** Sets of four bones that are drawn. */
export const MAX_SKIN_SETS = 2;

/**
 * Gives all geometries a second set when one has it: materials are shared, and their shader either
 * reads a second set or doesn't.
 * @returns {boolean} whether materials have to be made by withMoreBones
 */
export function evenOutSkinSets(geometries) {
  if (!geometries.some((geometry) => geometry.attributes.joints_1)) return false;
  for (const geometry of geometries) {
    if (geometry.attributes.joints_1) continue;
    const zeros = () =>
      new BufferAttribute(new Uint8Array(geometry.attributes.position.count * 4), 4);
    geometry.setAttribute('joints_1', zeros());
    geometry.setAttribute('weights_1', zeros());
  }
  return true;
}

/** Makes a material read the second set. */
export function withMoreBones(material) {
  material.defines = { ...material.defines, MORE_BONES: '' };
  return material;
}

/**
 * The weight with which a vertex hangs on the bone `picked`, as a function of GLSL, and the weights
 * themselves. The loader brings the first set to a sum of one, whatever the file holds: what the
 * second set takes is taken from the first here.
 */
const WEIGHTS = `
  #ifdef USE_SKINNING
    #ifdef MORE_BONES
      attribute vec4 joints_1;
      attribute vec4 weights_1;
      vec4 firstWeights() { return skinWeight * (1.0 - dot(weights_1, vec4(1.0))); }
    #else
      vec4 firstWeights() { return skinWeight; }
    #endif
    float weightOfBone(float picked) {
      float weight = dot(firstWeights(), vec4(equal(skinIndex, vec4(picked))));
      #ifdef MORE_BONES
        weight += dot(weights_1, vec4(equal(joints_1, vec4(picked))));
      #endif
      return weight;
    }
    mat4 sumOfBones(vec4 joints, vec4 weights) {
      return weights.x * getBoneMatrix(joints.x) + weights.y * getBoneMatrix(joints.y)
        + weights.z * getBoneMatrix(joints.z) + weights.w * getBoneMatrix(joints.w);
    }
  #endif
`;

// The renderer's own pieces of shaders, with one matrix for all bones of a vertex.
const SKIN_BASE = `
  #ifdef USE_SKINNING
    mat4 boneMatrix = sumOfBones(skinIndex, firstWeights());
    #ifdef MORE_BONES
      boneMatrix += sumOfBones(joints_1, weights_1);
    #endif
  #endif
`;
const SKIN_POSITION = `
  #ifdef USE_SKINNING
    transformed = (bindMatrixInverse * (boneMatrix * (bindMatrix * vec4(transformed, 1.0)))).xyz;
  #endif
`;
const SKIN_NORMAL = `
  #ifdef USE_SKINNING
    mat3 skinMatrix = mat3(bindMatrixInverse * boneMatrix * bindMatrix);
    objectNormal = skinMatrix * objectNormal;
    #ifdef USE_TANGENT
      objectTangent = skinMatrix * objectTangent;
    #endif
  #endif
`;

/** Teaches the renderer the above; to be called once, before anything is drawn. */
export function teachSkinSets() {
  ShaderChunk.skinning_pars_vertex += WEIGHTS;
  ShaderChunk.skinbase_vertex = SKIN_BASE;
  ShaderChunk.skinning_vertex = SKIN_POSITION;
  ShaderChunk.skinnormal_vertex = SKIN_NORMAL;
}
