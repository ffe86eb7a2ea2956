// What the JSON of a glTF file says about bones, meshes, materials and animations. Names are those
// of the file: the loader's own names are cleaned for its track syntax.

/** Whether a channel moves the weights of morph targets. */
const movesMorphs = (channel) => channel.target?.path === 'weights';

function parentsOf(nodes) {
  const parents = new Array(nodes.length).fill(-1);
  nodes.forEach((node, index) => {
    for (const child of node.children ?? []) parents[child] = index;
  });
  return parents;
}

function bonesOf(json, nodes, parents) {
  const skin = json.skins?.[0]?.joints ?? [];
  // Vertices without bones hang on the node that turns Z up to Y up. It comes last and is no bone.
  const turnsAxes = json.asset?.extras?.upAxis === 'z' && skin.at(-1) === 0;
  const joints = turnsAxes ? skin.slice(0, -1) : skin;
  const boneOfNode = new Map(joints.map((node, bone) => [node, bone]));
  const bones = joints.map((node, index) => {
    let parent = parents[node];
    while (parent >= 0 && !boneOfNode.has(parent)) parent = parents[parent];
    const name = nodes[node]?.name ?? `bone ${index}`;
    return { index, node, name, parent: parent < 0 ? -1 : boneOfNode.get(parent), light: '' };
  });
  const lights = json.extensions?.KHR_lights_punctual?.lights ?? [];
  nodes.forEach((node, index) => {
    const light = lights[node.extensions?.KHR_lights_punctual?.light];
    if (!light) return;
    let carrier = index;
    while (carrier >= 0 && !boneOfNode.has(carrier)) carrier = parents[carrier];
    const bone = bones[boneOfNode.get(carrier)] ?? bones.find((one) => one.name === node.name);
    if (bone) bone.light = light.type;
  });
  return bones;
}

function submeshOf(json, mesh, meshIndex, primitive, index) {
  const accessors = json.accessors ?? [];
  const material = json.materials?.[primitive.material] ?? {};
  const attributes = primitive.attributes ?? {};
  const vertices = accessors[attributes.POSITION]?.count ?? 0;
  const corners = accessors[primitive.indices]?.count ?? vertices;
  let skinSets = 0;
  while (`JOINTS_${skinSets}` in attributes) skinSets++;
  return {
    mesh: meshIndex,
    primitive: index,
    number: primitive.extras?.submesh ?? index,
    material: primitive.material ?? -1,
    materialName: primitive.extras?.material ?? material.name ?? 'no material',
    materialId: primitive.extras?.materialId ?? material.extras?.id ?? null,
    materialFile: material.extras?.file ?? '',
    missing: material.extras?.missing ?? [],
    vertices,
    faces: Math.floor(corners / 3),
    morphs: mesh.extras?.targetNames ?? (primitive.targets ?? []).map((_, n) => `morph ${n}`),
    skinSets,
    hasColors: 'COLOR_0' in attributes,
  };
}

/**
 * The parts of a model, in the order of the file. A bone's parent is an index into the bones, or
 * -1; `light` names the kind of light that it carries. Meshes are those that a node shows; a mesh
 * shown twice counts twice. An animation's `start` is the time of its file, in seconds, that is
 * shown as 0.
 */
export function contentsOf(json) {
  const nodes = json.nodes ?? [];
  const bones = bonesOf(json, nodes, parentsOf(nodes));
  const meshes = [];
  const submeshes = [];
  nodes.forEach((node, nodeIndex) => {
    const mesh = json.meshes?.[node.mesh];
    if (!mesh) return;
    const of = { index: meshes.length, node: nodeIndex, name: node.name ?? mesh.name ?? 'mesh' };
    meshes.push({ ...of, submeshes: [] });
    (mesh.primitives ?? []).forEach((primitive, index) => {
      const submesh = submeshOf(json, mesh, of.index, primitive, index);
      meshes[of.index].submeshes.push(submeshes.length);
      submeshes.push({ index: submeshes.length, node: nodeIndex, ...submesh });
    });
  });
  const animations = (json.animations ?? []).map((animation, index) => {
    const channels = animation.channels ?? [];
    const onlyMorphs = channels.length > 0 && channels.every(movesMorphs);
    return {
      index,
      name: animation.name ?? `animation ${index}`,
      kind: animation.extras?.kind ?? (onlyMorphs ? 'morph' : 'skeletal'),
      start: animation.extras?.start ?? 0,
    };
  });
  const morphs = [...new Set(submeshes.flatMap((submesh) => submesh.morphs))];
  return { bones, meshes, submeshes, animations, morphs };
}
