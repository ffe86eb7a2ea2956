// A loaded model: the objects of the scene together with what the file says about them.

import { Box3, LoadingManager, Skeleton, Vector3 } from 'three';
import { GLTFLoader } from 'three/addons/loaders/GLTFLoader.js';
import { contentsOf } from './contents.js';
import { evenOutSkinSets } from './skin_sets.js';

/** The mesh of every (node, primitive), as the loader has made them. */
function meshesByPlace(gltf) {
  const meshes = new Map();
  gltf.scene.traverse((object) => {
    if (!object.isMesh) return;
    const { associations } = gltf.parser;
    const { nodes, primitives = 0 } = associations.get(object) ?? {};
    // The primitives of a mesh are children of the node when there are several.
    const node = nodes ?? associations.get(object.parent)?.nodes;
    meshes.set(`${node}/${primitives}`, object);
  });
  return meshes;
}

/** Loads pictures and counts those that can't be read. */
function countingManager() {
  const manager = new LoadingManager();
  manager.broken = 0;
  manager.onError = () => manager.broken++;
  return manager;
}

export class Model {
  /**
   * @param {ArrayBuffer} bytes a .glb file
   * @returns {Promise<Model>} rejects with an Error in the loader's words when the file is damaged
   */
  static async load(bytes) {
    const manager = countingManager();
    const gltf = await new GLTFLoader(manager).parseAsync(bytes, '');
    const { parser } = gltf;
    const skeleton = parser.json.skins?.length ? await parser.getDependency('skin', 0) : null;
    return new Model(gltf, skeleton, manager.broken);
  }

  constructor(gltf, skeleton, brokenPictures) {
    this.scene = gltf.scene;
    this.contents = contentsOf(gltf.parser.json);
    this.brokenPictures = brokenPictures;
    this.skeleton = skeleton ?? new Skeleton([]);
    const meshes = meshesByPlace(gltf);
    /** Submeshes with their object; those that are no triangles have none. */
    this.submeshes = this.contents.submeshes.map((submesh) => ({
      ...submesh,
      object: meshes.get(`${submesh.node}/${submesh.primitive}`) ?? null,
    }));
    this.clips = this.contents.animations.map((animation, index) => ({
      ...animation,
      clip: gltf.animations[index],
    }));
    this.lights = [];
    this.scene.traverse((object) => {
      if (object.isLight) this.lights.push(object);
      // The bounds of a skinned mesh are those of its rest pose: an arm that swings out would
      // vanish.
      if (object.isMesh) object.frustumCulled = false;
    });
    const skinned = this.submeshes.flatMap(({ object }) => (object?.isSkinnedMesh ? [object] : []));
    /** Whether materials have to be made by withMoreBones. */
    this.hasMoreBones = evenOutSkinSets(skinned.map((mesh) => mesh.geometry));
    this.scene.updateMatrixWorld(true);
    this.restBox = this.boxOf(this.submeshes);
    if (this.restBox.isEmpty()) {
      const point = new Vector3();
      for (const bone of this.skeleton.bones) {
        this.restBox.expandByPoint(point.setFromMatrixPosition(bone.matrixWorld));
      }
    }
  }

  /** Width, depth and height as the model stands in the scene, Y up; null for nothing at all. */
  get size() {
    if (this.restBox.isEmpty()) return null;
    const { x, y, z } = this.restBox.getSize(new Vector3());
    return [x, z, y];
  }

  /** The world's box around submeshes in their present pose. It visits every vertex. */
  boxOf(submeshes) {
    const box = new Box3();
    for (const { object } of submeshes) {
      if (!object) continue;
      if (object.isSkinnedMesh) {
        object.computeBoundingBox();
        box.union(object.boundingBox.clone().applyMatrix4(object.matrixWorld));
      } else {
        object.geometry.computeBoundingBox();
        box.union(object.geometry.boundingBox.clone().applyMatrix4(object.matrixWorld));
      }
    }
    return box;
  }

  /** The world's box around a bone and its children as they stand now, with some room. */
  boxOfBone(bone) {
    const point = new Vector3();
    const box = new Box3();
    const around = [
      bone,
      ...this.contents.bones.filter((one) => one.parent === bone).map((one) => one.index),
    ];
    for (const one of around)
      box.expandByPoint(point.setFromMatrixPosition(this.skeleton.bones[one].matrixWorld));
    const room = this.restBox.isEmpty() ? 1 : this.restBox.getSize(point).length() * 0.06;
    return box.expandByScalar(room);
  }

  /** How many vertices a bone pulls at, by submesh index; submeshes without any are left out. */
  reachOf(bone) {
    const reach = new Map();
    for (const { index, object } of this.submeshes) {
      if (!object?.isSkinnedMesh) continue;
      const at = object.skeleton.bones.indexOf(this.skeleton.bones[bone]);
      const {
        skinIndex,
        skinWeight,
        joints_1: joints,
        weights_1: weights,
      } = object.geometry.attributes;
      const pulls = (bones, pull, vertex, n) =>
        bones?.getComponent(vertex, n) === at && pull.getComponent(vertex, n) > 0;
      let touched = 0;
      for (let vertex = 0; vertex < skinIndex.count; vertex++) {
        for (let n = 0; n < 4; n++) {
          if (!pulls(skinIndex, skinWeight, vertex, n) && !pulls(joints, weights, vertex, n))
            continue;
          touched++;
          break;
        }
      }
      if (touched) reach.set(index, touched);
    }
    return reach;
  }

  /** Frees what the graphics card holds of the model. */
  dispose() {
    this.scene.traverse((object) => {
      object.geometry?.dispose();
      for (const material of [object.material ?? []].flat()) {
        for (const value of Object.values(material)) {
          if (value?.isTexture) value.dispose();
        }
        material.dispose();
      }
    });
    this.skeleton.dispose();
    this.scene.removeFromParent();
  }
}
