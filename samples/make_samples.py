#!/usr/bin/env python3
"""Writes the sample scenes avatar.fbx, room.fbx and oddities.fbx, and their textures, beside this
file.

The scenes are ASCII FBX 7.4: Y up, Z to the front, X to the character's left, centimetres. The
output depends on nothing but this text, so a change here shows as a readable change of the scenes.
"""

import math
import pathlib
import struct
import zlib

TICKS_PER_SECOND = 46186158000


# ---- Matrices: row vectors as in the files: row 3 is the translation, multiply(a, b) applies a first

def identity():
    return [[float(i == j) for j in range(4)] for i in range(4)]


def multiply(a, b):
    return [[sum(a[i][k] * b[k][j] for k in range(4)) for j in range(4)] for i in range(4)]


def local_matrix(translation, rotation):
    """Translation and Euler angles in degrees, X applied first."""
    result = identity()
    for axis, degrees in enumerate(rotation):
        c, s = math.cos(math.radians(degrees)), math.sin(math.radians(degrees))
        turn = identity()
        i, j = (axis + 1) % 3, (axis + 2) % 3
        turn[i][i], turn[i][j], turn[j][i], turn[j][j] = c, s, -s, c
        result = multiply(result, turn)
    result[3][:3] = translation
    return result


def rigid_inverse(m):
    """Inverse of a rotation and a translation."""
    result = identity()
    for i in range(3):
        for j in range(3):
            result[i][j] = m[j][i]
    for j in range(3):
        result[3][j] = -sum(m[3][k] * m[j][k] for k in range(3))
    return result


def transform_point(point, m):
    return [sum(point[k] * m[k][j] for k in range(3)) + m[3][j] for j in range(3)]


# ---- Text of the format

def number(value):
    text = f"{value:.9f}".rstrip("0").rstrip(".") if isinstance(value, float) else str(value)
    return "0" if text == "-0" else text


def wrapped(numbers, indent, width=100):
    """A value list; a line that ends in a comma goes on in the next one."""
    lines, line = [], ""
    for i, value in enumerate(numbers):
        item = number(value) + ("," if i + 1 < len(numbers) else "")
        if line and len(line) + len(item) > width:
            lines.append(line)
            line = ""
        line += item
    lines.append(line)
    return ("\n" + indent).join(lines)


def array(name, numbers):
    numbers = list(numbers)
    return f"{name}: *{len(numbers)} {{\n\ta: {wrapped(numbers, chr(9))}\n}}"


def block(head, *children):
    """A record with a block of child records, indented by one tab."""
    text = "\n".join(child for child in children if child)
    body = "".join(f"\t{line}\n" for line in text.split("\n")) if text else ""
    return f"{head} {{\n{body}}}"


def prop(name, kind, subkind, flags, *values):
    parts = [f'"{v}"' if isinstance(v, str) else number(v) for v in values]
    return f'P: "{name}", "{kind}", "{subkind}", "{flags}"' + "".join(
        f', {part}' if part.startswith('"') else f",{part}" for part in parts)


def properties(*props):
    return block("Properties70: ", *props)


def matrix_values(m):
    return [m[i][j] for i in range(4) for j in range(4)]


class Scene:
    """Object records and connections in the order of the calls, with ids that count up."""

    def __init__(self):
        self.objects = []      # (type, text)
        self.connections = []  # text
        self.takes = []        # (name, seconds)
        self.next_id = 1000

    def add(self, kind, name, subclass, *children):
        """Adds an object named "Class::Name" and gives its id."""
        self.next_id += 1
        self.objects.append((kind, block(f'{kind}: {self.next_id}, "{name}", "{subclass}"',
                                         *children)))
        return self.next_id

    def connect(self, source, destination, destination_property=None):
        if destination_property is None:
            self.connections.append(f'C: "OO",{source},{destination}')
        else:
            self.connections.append(f'C: "OP",{source},{destination}, "{destination_property}"')

    def add_model(self, name, subclass, parent, translation=(0, 0, 0), rotation=(0, 0, 0)):
        model = self.add(
            "Model", f"Model::{name}", subclass,
            "Version: 232",
            properties(
                prop("InheritType", "enum", "", "", 1),
                prop("DefaultAttributeIndex", "int", "Integer", "", 0),
                prop("Lcl Translation", "Lcl Translation", "", "A", *map(float, translation)),
                prop("Lcl Rotation", "Lcl Rotation", "", "A", *map(float, rotation)),
                prop("Lcl Scaling", "Lcl Scaling", "", "A", 1, 1, 1)),
            "Shading: Y", 'Culling: "CullingOff"')
        self.connect(model, parent)
        return model

    def add_attribute(self, name, subclass, flags, node, *props):
        attribute = self.add("NodeAttribute", f"NodeAttribute::{name}", subclass,
                             properties(*props) if props else "",
                             f'TypeFlags: "{flags}"')
        self.connect(attribute, node)

    def add_phong(self, name, diffuse, node, textures=None, opacity=None):
        """`textures` is a map from channel to file."""
        material = self.add(
            "Material", f"Material::{name}", "",
            "Version: 102", 'ShadingModel: "phong"', "MultiLayer: 0",
            properties(
                prop("ShadingModel", "KString", "", "", "phong"),
                prop("DiffuseColor", "Color", "", "A", *diffuse),
                prop("SpecularColor", "Color", "", "A", 0.1, 0.1, 0.1),
                prop("ShininessExponent", "Number", "", "A", 10.0),
                *([] if opacity is None else [prop("Opacity", "double", "Number", "", opacity)])))
        self.connect(material, node)
        for channel, file in (textures or {}).items():
            self.add_texture(name + channel.removesuffix("Color"), file, material, channel)

    def add_texture(self, name, file, material, channel):
        texture = self.add(
            "Texture", f"Texture::{name}", "",
            'Type: "TextureVideoClip"', "Version: 202", f'TextureName: "Texture::{name}"',
            properties(prop("UVSet", "KString", "", "", "map1"),
                       prop("UseMaterial", "bool", "", "", 1)),
            f'Media: "Video::{name}"', f'FileName: "{file}"', f'RelativeFilename: "{file}"',
            "ModelUVTranslation: 0,0", "ModelUVScaling: 1,1",
            'Texture_Alpha_Source: "None"', "Cropping: 0,0,0,0")
        self.connect(texture, material, channel)
        video = self.add(
            "Video", f"Video::{name}", "Clip",
            'Type: "Clip"', properties(prop("Path", "KString", "XRefUrl", "", file)),
            "UseMipMap: 0", f'Filename: "{file}"', f'RelativeFilename: "{file}"')
        self.connect(video, texture)

    def add_mesh(self, name, mesh, node):
        geometry = self.add(
            "Geometry", f"Geometry::{name}", "Mesh",
            array("Vertices", (c for p in mesh.points for c in p)),
            array("PolygonVertexIndex",
                  (~v if i + 1 == len(polygon) else v
                   for polygon in mesh.polygons for i, v in enumerate(polygon))),
            "GeometryVersion: 124",
            block("LayerElementNormal: 0", "Version: 101", 'Name: ""',
                  'MappingInformationType: "ByPolygonVertex"',
                  'ReferenceInformationType: "Direct"',
                  array("Normals", (c for n in mesh.normals for c in n))),
            block("LayerElementUV: 0", "Version: 101", 'Name: "map1"',
                  'MappingInformationType: "ByPolygonVertex"',
                  'ReferenceInformationType: "IndexToDirect"',
                  array("UV", (c for uv in mesh.uvs for c in uv)),
                  array("UVIndex", mesh.uv_indices)),
            block("LayerElementMaterial: 0", "Version: 101", 'Name: ""',
                  'MappingInformationType: "ByPolygon"',
                  'ReferenceInformationType: "IndexToDirect"',
                  array("Materials", mesh.materials)),
            block("Layer: 0", "Version: 100",
                  *(block("LayerElement: ", f'Type: "{kind}"', "TypedIndex: 0")
                    for kind in ("LayerElementNormal", "LayerElementMaterial", "LayerElementUV"))))
        self.connect(geometry, node)
        return geometry

    def add_morphs(self, name, geometry, channels):
        """`channels` is a map from name to shapes, each a map from point to its offset. Gives the
        ids by name."""
        deformer = self.add("Deformer", f"Deformer::{name}", "BlendShape", "Version: 100")
        self.connect(deformer, geometry)
        ids = {}
        for channel, shapes in channels.items():
            ids[channel] = self.add(
                "Deformer", f"SubDeformer::{channel}", "BlendShapeChannel", "Version: 100",
                properties(prop("DeformPercent", "Number", "", "A", 0)), "DeformPercent: 0",
                array("FullWeights", [100 * (i + 1) // len(shapes) for i in range(len(shapes))]))
            made = [self.add(
                "Geometry", f"Geometry::{channel}", "Shape", "Version: 100",
                array("Indexes", offsets),
                array("Vertices", (float(c) for d in offsets.values() for c in d)),
                array("Normals", (0 for d in offsets.values() for _ in d)))
                for offsets in shapes]
            self.connect(ids[channel], deformer)
            for shape in made:
                self.connect(shape, ids[channel])
        return ids

    def add_stack(self, name, seconds, reference=None):
        """Adds an animation stack with one layer and gives the layer's id."""
        stop = ticks(seconds)
        stack = self.add("AnimationStack", f"AnimStack::{name}", "", properties(
            prop("LocalStart", "KTime", "Time", "", 0),
            prop("LocalStop", "KTime", "Time", "", stop),
            prop("ReferenceStart", "KTime", "Time", "", 0),
            prop("ReferenceStop", "KTime", "Time", "", ticks(reference or seconds))))
        layer = self.add("AnimationLayer", "AnimLayer::BaseLayer", "",
                         properties(prop("Weight", "Number", "", "A", 100)))
        self.connect(layer, stack)
        self.takes.append((name, seconds))
        return layer

    def animate(self, layer, target, target_property, short_name, defaults, curves):
        """Curves for channels of one property: a map from channel name to (keys, interpolation)."""
        curve_node = self.add(
            "AnimationCurveNode", f"AnimCurveNode::{short_name}", "",
            properties(*(prop(f"d|{channel}", "Number", "", "A", float(value))
                         for channel, value in defaults.items())))
        self.connect(curve_node, layer)
        self.connect(curve_node, target, target_property)
        for channel, (keys, interpolation) in curves.items():
            curve = self.add("AnimationCurve", "AnimCurve::", "",
                             *curve_fields(keys, interpolation, defaults[channel]))
            self.connect(curve, curve_node, f"d|{channel}")

    def write(self, path):
        kinds = {}
        for kind, _ in self.objects:
            kinds[kind] = kinds.get(kind, 0) + 1
        definitions = [block("ObjectType: \"GlobalSettings\"", "Count: 1")]
        for kind, count in kinds.items():
            definitions.append(block(f'ObjectType: "{kind}"', f"Count: {count}",
                                     TEMPLATES.get(kind, "")))
        longest = ticks(max((seconds for _, seconds in self.takes), default=1.0))
        sections = [
            block("FBXHeaderExtension: ", "FBXHeaderVersion: 1003", "FBXVersion: 7400",
                  block("CreationTimeStamp: ", "Version: 1000", "Year: 2024", "Month: 1", "Day: 1",
                        "Hour: 0", "Minute: 0", "Second: 0", "Millisecond: 0"),
                  'Creator: "make_samples.py"'),
            block("GlobalSettings: ", "Version: 1000", properties(
                prop("UpAxis", "int", "Integer", "", 1),
                prop("UpAxisSign", "int", "Integer", "", 1),
                prop("FrontAxis", "int", "Integer", "", 2),
                prop("FrontAxisSign", "int", "Integer", "", 1),
                prop("CoordAxis", "int", "Integer", "", 0),
                prop("CoordAxisSign", "int", "Integer", "", 1),
                prop("OriginalUpAxis", "int", "Integer", "", 1),
                prop("OriginalUpAxisSign", "int", "Integer", "", 1),
                prop("UnitScaleFactor", "double", "Number", "", 1),
                prop("OriginalUnitScaleFactor", "double", "Number", "", 1),
                prop("AmbientColor", "ColorRGB", "Color", "", 0, 0, 0),
                prop("DefaultCamera", "KString", "", "", "Producer Perspective"),
                prop("TimeMode", "enum", "", "", 6), prop("TimeProtocol", "enum", "", "", 2),
                prop("TimeSpanStart", "KTime", "Time", "", 0),
                prop("TimeSpanStop", "KTime", "Time", "", longest),
                prop("CustomFrameRate", "double", "Number", "", -1))),
            "; Documents Description\n;" + "-" * 66 + "\n\n" +
            block("Documents: ", "Count: 1",
                  block('Document: 999, "", "Scene"',
                        properties(prop("SourceObject", "object", "", ""),
                                   prop("ActiveAnimStackName", "KString", "", "",
                                        self.takes[0][0] if self.takes else "")),
                        "RootNode: 0")),
            block("References: "),
            "; Object definitions\n;" + "-" * 66 + "\n\n" +
            block("Definitions: ", "Version: 100", f"Count: {len(self.objects) + 1}", *definitions),
            "; Object properties\n;" + "-" * 66 + "\n\n" +
            block("Objects: ", *(text for _, text in self.objects)),
            "; Object connections\n;" + "-" * 66 + "\n\n" +
            block("Connections: ", *self.connections),
            "; Takes section\n;" + "-" * 66 + "\n\n" +
            block("Takes: ", f'Current: "{self.takes[0][0] if self.takes else ""}"',
                  *(block(f'Take: "{name}"', f'FileName: "{name}.tak"',
                          f"LocalTime: 0,{ticks(seconds)}", f"ReferenceTime: 0,{ticks(seconds)}")
                    for name, seconds in self.takes)),
        ]
        text = "; FBX 7.4.0 project file\n;" + "-" * 66 + "\n\n" + "\n\n".join(sections) + "\n"
        path.write_text(text, encoding="utf-8", newline="\n")


# What objects of a class hold unless they say otherwise.
TEMPLATES = {
    "Model": block('PropertyTemplate: "FbxNode"', properties(
        prop("RotationOrder", "enum", "", "", 0),
        prop("InheritType", "enum", "", "", 0),
        prop("LookAtProperty", "object", "", ""),
        prop("GeometricTranslation", "Vector3D", "Vector", "", 0, 0, 0),
        prop("Lcl Translation", "Lcl Translation", "", "A", 0, 0, 0),
        prop("Lcl Rotation", "Lcl Rotation", "", "A", 0, 0, 0),
        prop("Lcl Scaling", "Lcl Scaling", "", "A", 1, 1, 1),
        prop("Visibility", "Visibility", "", "A", 1))),
    "Material": block('PropertyTemplate: "FbxSurfacePhong"', properties(
        prop("ShadingModel", "KString", "", "", "Phong"),
        prop("DiffuseColor", "Color", "", "A", 0.8, 0.8, 0.8),
        prop("DiffuseFactor", "Number", "", "A", 1),
        prop("TransparencyFactor", "Number", "", "A", 0))),
    "Texture": block('PropertyTemplate: "FbxFileTexture"', properties(
        prop("UVSet", "KString", "", "", "default"),
        prop("UseMaterial", "bool", "", "", 0))),
    "AnimationLayer": block('PropertyTemplate: "FbxAnimLayer"', properties(
        prop("Weight", "Number", "", "A", 100),
        prop("BlendMode", "enum", "", "", 0))),
}


# ---- Curves

LINEAR, USER, CONSTANT = "linear", "user", "constant"

# Key attribute flags. The third data word holds both tangent weights as 9999ths, a third each.
FLAGS = {LINEAR: 0x4, USER: 0x408, CONSTANT: 0x2}
THIRD_WEIGHTS = 3333 | 3333 << 16


def ticks(seconds):
    return round(seconds * 30) * (TICKS_PER_SECOND // 30)


def float_bits(value):
    """The bits of a 32-bit float as a signed integer, the way that ASCII files carry them."""
    return struct.unpack("<i", struct.pack("<f", value))[0]


def curve_fields(keys, interpolation, default):
    """Keys are (seconds, value). User tangents run through a key parallel to its neighbours."""
    slopes = [0.0] * len(keys)
    for i in range(1, len(keys) - 1):
        (t0, v0), (t1, v1) = keys[i - 1], keys[i + 1]
        slopes[i] = (v1 - v0) / (t1 - t0)
    if interpolation == USER:
        data = [w for i in range(len(keys))
                for w in (float_bits(slopes[i]), float_bits(slopes[min(i + 1, len(keys) - 1)]),
                          THIRD_WEIGHTS, 0)]
        flags, counts = [FLAGS[USER]] * len(keys), [1] * len(keys)
    else:
        data = [0, 0, THIRD_WEIGHTS, 0]
        flags, counts = [FLAGS[interpolation]], [len(keys)]
    return (f"Default: {number(float(default))}", "KeyVer: 4008",
            array("KeyTime", (ticks(t) for t, _ in keys)),
            array("KeyValueFloat", (float(v) for _, v in keys)),
            array("KeyAttrFlags", flags), array("KeyAttrDataFloat", data),
            array("KeyAttrRefCount", counts))


# ---- Meshes

class Mesh:
    """Polygons with a normal and an indexed UV at every corner and a material for each polygon."""

    def __init__(self):
        self.points, self.polygons, self.materials = [], [], []
        self.normals, self.uvs, self.uv_indices = [], [], []

    def add_polygon(self, corners, normals, uvs, material):
        self.polygons.append(corners)
        self.normals += normals
        self.uv_indices += uvs
        self.materials.append(material)

    def add_tube(self, rings, sides, material_of, frame=None):
        """A closed tube along `frame`'s Y axis (or along -Y if the rings descend).

        A ring is (height, half width in X, half width in Z); `material_of(i)` is the material
        between rings i and i+1. Gives the index of the first point; they run ring by ring.
        """
        frame = frame or identity()
        turn = [row[:] for row in frame]
        turn[3][:3] = [0.0, 0.0, 0.0]
        first, first_uv = len(self.points), len(self.uvs)
        around = [2 * math.pi * (k + 0.5) / sides for k in range(sides)]
        radial = [transform_point([math.sin(a), 0.0, math.cos(a)], turn) for a in around]
        upward = rings[-1][0] > rings[0][0]
        for i, (height, half_x, half_z) in enumerate(rings):
            for a in around:
                self.points.append(transform_point(
                    [half_x * math.sin(a), height, half_z * math.cos(a)], frame))
            v = i / (len(rings) - 1)
            self.uvs += [[k / sides, v if upward else 1 - v] for k in range(sides + 1)]
        for i in range(len(rings) - 1):
            for k in range(sides):
                n = (k + 1) % sides
                corners = [(i, k, k), (i, n, k + 1), (i + 1, n, k + 1), (i + 1, k, k)]
                if not upward:
                    corners.reverse()
                self.add_polygon([first + r * sides + c for r, c, _ in corners],
                                 [radial[c] for _, c, _ in corners],
                                 [first_uv + r * (sides + 1) + u for r, _, u in corners],
                                 material_of(i))
        end = 1.0 if upward else -1.0
        for ring, outward in ((0, -end), (len(rings) - 1, end)):
            order = list(range(sides)) if outward > 0 else list(reversed(range(sides)))
            normal = transform_point([0.0, outward, 0.0], turn)
            self.add_polygon([first + ring * sides + c for c in order], [normal] * sides,
                             [first_uv + ring * (sides + 1) + c for c in order],
                             material_of(min(ring, len(rings) - 2)))
        return first


# ---- The avatar

# Name, parent, local translation, local rotation. The arms hang at an angle, as in an A pose.
BONES = [
    ("Hips", None, (0, 95, 0), (0, 0, 0)),
    ("Spine", "Hips", (0, 12, 0), (0, 0, 0)),
    ("Neck", "Spine", (0, 43, 0), (0, 0, 0)),
    ("Head", "Neck", (0, 8, 0), (0, 0, 0)),
    ("LeftArm", "Spine", (17, 36, 0), (0, 0, -45)),
    ("LeftForeArm", "LeftArm", (28, 0, 0), (0, -10, 0)),
    ("RightArm", "Spine", (-17, 36, 0), (0, 0, 45)),
    ("RightForeArm", "RightArm", (-28, 0, 0), (0, 10, 0)),
    ("LeftUpLeg", "Hips", (9, -4, 0), (0, 0, 0)),
    ("LeftLeg", "LeftUpLeg", (0, -42, 0), (0, 0, 0)),
    ("RightUpLeg", "Hips", (-9, -4, 0), (0, 0, 0)),
    ("RightLeg", "RightUpLeg", (0, -42, 0), (0, 0, 0)),
]
SKIN, SHIRT = 0, 1


def build_body(bone_global):
    """The body mesh, the weights as a list of {bone: weight} for each point, and the morphs."""
    mesh, weights = Mesh(), []

    def add(rings, sides, material_of, ring_weights, frame=None):
        first = mesh.add_tube(rings, sides, material_of, frame)
        for ring in ring_weights:
            weights.extend([ring] * sides)
        return first

    add([(86, 14, 9), (104, 12, 8), (128, 15, 9), (148, 17, 9)], 4, lambda i: SHIRT,
        [{"Hips": 1.0}, {"Hips": 0.5, "Spine": 0.5}, {"Spine": 1.0}, {"Spine": 1.0}])
    head = add([(146, 4, 4), (156, 6, 7), (164, 8, 10), (178, 7, 9)], 6, lambda i: SKIN,
               [{"Spine": 0.5, "Neck": 0.5}, {"Neck": 0.5, "Head": 0.5}, {"Head": 1.0},
                {"Head": 1.0}])
    for side, sign in (("Left", 1.0), ("Right", -1.0)):
        # An arm's tube lies along the bone's X axis: its frame turns Y onto it.
        frame = multiply(local_matrix((0, 0, 0), (0, 0, -90 * sign)), bone_global[side + "Arm"])
        add([(-2, 6, 6), (28, 4.5, 4.5), (56, 3, 3)], 4, lambda i: SHIRT if i == 0 else SKIN,
            [{"Spine": 0.25, side + "Arm": 0.75}, {side + "Arm": 0.5, side + "ForeArm": 0.5},
             {side + "ForeArm": 1.0}], frame)
        frame = local_matrix((9 * sign, 0, 0), (0, 0, 0))
        add([(90, 8, 8), (49, 6, 6), (4, 5, 5)], 4, lambda i: SKIN,
            [{"Hips": 0.25, side + "UpLeg": 0.75}, {side + "UpLeg": 0.5, side + "Leg": 0.5},
             {side + "Leg": 1.0}], frame)

    # The two points of a head ring that look forward are its first and its last.
    mouth, eyes = head + 1 * 6, head + 2 * 6
    morphs = [
        ("smile", {mouth: (1.5, 1.25, 0.5), mouth + 5: (-1.5, 1.25, 0.5)}),
        ("blink", {eyes: (0, -1.5, 0.25), eyes + 5: (0, -1.5, 0.25)}),
    ]
    return mesh, weights, morphs


def make_avatar(folder):
    scene = Scene()
    bones, bone_global = {}, {}
    body = scene.add_model("Body", "Mesh", 0)
    for name, parent, translation, rotation in BONES:
        bones[name] = scene.add_model(name, "LimbNode", bones.get(parent, 0), translation, rotation)
        scene.add_attribute(name, "LimbNode", "Skeleton", bones[name],
                            prop("Size", "double", "Number", "", 4))
        bone_global[name] = multiply(local_matrix(translation, rotation),
                                     bone_global.get(parent, identity()))

    mesh, weights, morphs = build_body(bone_global)
    scene.add_phong("Skin", (0.87, 0.68, 0.57), body,
                    {"DiffuseColor": "textures/skin.png"})
    scene.add_phong("Shirt", (0.2, 0.35, 0.7), body,
                    {"DiffuseColor": "textures/shirt.png"})
    geometry = scene.add_mesh("Body", mesh, body)

    skin = scene.add("Deformer", "Deformer::Skin", "Skin", "Version: 101", "Link_DeformAcuracy: 50")
    scene.connect(skin, geometry)
    for name, bone in bones.items():
        influenced = [(i, w[name]) for i, w in enumerate(weights) if name in w]
        # Transform is relative to the link: the mesh's global matrix, here the identity, as the
        # bone sees it at the bind.
        cluster = scene.add(
            "Deformer", f"SubDeformer::{name}", "Cluster", "Version: 100", 'UserData: "", ""',
            array("Indexes", (i for i, _ in influenced)),
            array("Weights", (w for _, w in influenced)),
            array("Transform", matrix_values(rigid_inverse(bone_global[name]))),
            array("TransformLink", matrix_values(bone_global[name])))
        scene.connect(cluster, skin)
        scene.connect(bone, cluster)

    channels = scene.add_morphs("Face", geometry, {name: [deltas] for name, deltas in morphs})

    pose_nodes = [(body, identity())] + [(bones[name], bone_global[name]) for name in bones]
    scene.add("Pose", "Pose::BIND_POSES", "BindPose", 'Type: "BindPose"', "Version: 100",
              f"NbPoseNodes: {len(pose_nodes)}",
              *(block("PoseNode: ", f"Node: {node}", array("Matrix", matrix_values(m)))
                for node, m in pose_nodes))

    animate_avatar(scene, bones, channels)
    scene.write(folder / "avatar.fbx")


def animate_avatar(scene, bones, channels):
    rest = {name: (translation, rotation) for name, _, translation, rotation in BONES}

    def rotate(layer, name, **curves):
        scene.animate(layer, bones[name], "Lcl Rotation", "R", dict(zip("XYZ", rest[name][1])),
                      curves)

    def morph(layer, name, keys, interpolation):
        scene.animate(layer, channels[name], "DeformPercent", "DeformPercent", {"DeformPercent": 0},
                      {"DeformPercent": (keys, interpolation)})

    wave = scene.add_stack("Wave", 2.0)
    rotate(wave, "RightArm", Z=([(0, 45), (0.5, -40), (1.5, -40), (2, 45)], USER))
    rotate(wave, "RightForeArm",
           Y=([(0, 10), (0.5, 10), (1, 10), (1.5, 10), (2, 10)], CONSTANT),
           Z=([(0, 0), (0.5, -70), (0.8, -20), (1.1, -70), (1.5, -20), (2, 0)], USER))
    rotate(wave, "Head", Y=([(0, 0), (1, -15), (2, 0)], LINEAR))
    morph(wave, "smile", [(0, 0), (0.5, 100), (1.5, 100), (2, 0)], LINEAR)

    walk = scene.add_stack("Walk", 1.0)
    scene.animate(walk, bones["Hips"], "Lcl Translation", "T", dict(zip("XYZ", rest["Hips"][0])), {
        "Y": ([(0, 94), (0.25, 96), (0.5, 94), (0.75, 96), (1, 94)], USER),
        "Z": ([(0, 0), (0.5, 60), (1, 120)], LINEAR)})
    for side, sign in (("Left", 1), ("Right", -1)):
        rotate(walk, side + "UpLeg", X=([(0, -25 * sign), (0.5, 25 * sign), (1, -25 * sign)], USER))
        rotate(walk, side + "Leg", X=([(0, 5), (0.5 + 0.25 * sign, 40), (1, 5)], USER))
        # About Y the arms lie mirrored, so one angle swings them opposite ways.
        rotate(walk, side + "Arm", Y=([(0, 20), (0.5, -20), (1, 20)], USER))
    morph(walk, "blink", [(0, 0), (0.4, 0), (0.5, 100), (0.6, 0)], LINEAR)


# ---- The room

def make_room(folder):
    scene = Scene()
    room = scene.add_model("skeleton.room", "Null", 0)
    scene.add_attribute("skeleton.room", "Null", "Null", room)

    def add_null(name, translation, rotation=(0, 0, 0)):
        node = scene.add_model(name, "Null", room, translation, rotation)
        scene.add_attribute(name, "Null", "Null", node, prop("Size", "double", "Number", "", 20))
        return node

    ground = scene.add_model("Ground", "Mesh", room)
    mesh = Mesh()
    mesh.add_tube([(-10, 350, 350), (0, 350, 350)], 4, lambda i: 0)
    scene.add_phong("Boards", (0.6, 0.45, 0.3), ground,
                    {"DiffuseColor": "textures/boards.png"})
    scene.add_mesh("Ground", mesh, ground)

    add_null("furniture_floor_01", (120, 0, 40))
    add_null("furniture_floor_02", (-120, 0, 40))
    add_null("wall_furniture_01", (0, 150, -240))
    add_null("ceiling_furniture_01", (0, 260, 0))

    add_null("seat01.Sit", (60, 45, -60), (0, -30, 0))
    add_null("catcher01", (60, 45, -40), (0, -30, 0))
    add_null("pitcher01", (60, 45, -20), (0, 150, 0))
    add_null("handle01", (60, 90, -60))
    add_null("seat02.Lounge", (-60, 35, -60), (0, 30, 0))
    add_null("catcher02", (-60, 35, -40), (0, 30, 0))
    add_null("handle02", (-60, 80, -60))

    camera = scene.add_model("camera01", "Camera", room, (400, 300, 400))
    scene.add_attribute("camera01", "Camera", "Camera", camera,
                        prop("FieldOfView", "FieldOfView", "", "A", 45.0),
                        prop("NearPlane", "double", "Number", "", 10),
                        prop("FarPlane", "double", "Number", "", 4000))
    scene.connect(add_null("camera01_target", (0, 100, 0)), camera, "LookAtProperty")

    # Lights by name alone, with their settings in the name; the last one is a light object.
    add_null("lightPoint_rgbffe0c0_bright0.8_radius400", (0, 220, 0))
    add_null("lightTarget.spot.cone45.shadow_on", (150, 240, 150), (-60, 45, 0))
    add_null("lightDirection_rgb8080ff", (0, 300, 200), (-45, 0, 0))
    add_null("lightAmbient_rgb303038", (0, 0, 0))
    add_null("omni01", (-150, 200, -150))
    window = scene.add_model("window", "Light", room, (0, 160, 240), (-30, 0, 0))
    scene.add_attribute("window", "Light", "Light", window,
                        prop("LightType", "enum", "", "", 1),
                        prop("Color", "Color", "", "A", 1.0, 0.9, 0.75),
                        prop("Intensity", "Number", "", "A", 120.0))
    scene.write(folder / "room.fbx")


# ---- Oddities: what real scenes hold beside all that is in order

def make_oddities(folder):
    scene = Scene()
    bones = {}
    for name, parent, translation in (("Puppet", None, (0, 100, 0)), ("Arm", "Puppet", (50, 0, 0)),
                                      ("Rope", None, (-200, 0, 0))):
        bones[name] = scene.add_model(name, "LimbNode", bones.get(parent, 0), translation)
        scene.add_attribute(name, "LimbNode", "Skeleton", bones[name],
                            prop("Size", "double", "Number", "", 4))

    def add_tube(name, parent, size, materials):
        node = scene.add_model(name, "Mesh", parent)
        mesh = Mesh()
        if size:
            mesh.add_tube([(0, size, size), (2 * size, size, size)], 3, lambda i: 0)
        for material, details in materials.items():
            scene.add_phong(material, (0.5, 0.5, 0.5), node, **details)
        return scene.add_mesh(name, mesh, node)

    add_tube("Ball", bones["Arm"], 60, {"Brick": {"textures": {
        "DiffuseColor": "textures/shirt.png", "Bump": "textures/bump.png",
        "NormalMap": "textures/normal.png"}}})
    face = add_tube("Ball", bones["Arm"], 80, {"Glass": {"opacity": 0.5}})
    add_tube("Big Hat", bones["Puppet"], 200, {"Gold[5]": {}})
    add_tube("Pebble", 0, 2, {"Brick": {"textures": {"DiffuseColor": "textures/boards.png"}}})
    add_tube("Nothing", bones["Rope"], 0, {})
    # A target on the way, which isn't exported.
    smile = scene.add_morphs("Face", face, {"smile": [{0: (0, 5, 0)}, {0: (0, 10, 0)}]})["smile"]

    for name, angle in (("Swing", 30), ("Puppet|Swing", 60)):
        layer = scene.add_stack(name, 1.0, reference=2.0 if name == "Swing" else None)
        scene.animate(layer, bones["Arm"], "Lcl Rotation", "R", {"X": 0, "Y": 0, "Z": 0},
                      {"Z": ([(0, 0), (0.5, angle), (1, 0)], LINEAR)})
    scene.animate(scene.add_stack("Grin", 1.0), smile, "DeformPercent", "DeformPercent",
                  {"DeformPercent": 0},
                  {"DeformPercent": ([(0, 0), (0.5, 100), (1, 0)], LINEAR)})
    scene.write(folder / "oddities.fbx")


# ---- Textures

def write_png(path, pixel, size=16):
    """An uncompressed RGB image of `size` squared; `pixel(x, y)` gives the three bytes."""
    rows = b"".join(b"\0" + bytes(c for x in range(size) for c in pixel(x, y)) for y in range(size))

    def chunk(kind, data):
        return (struct.pack(">I", len(data)) + kind + data +
                struct.pack(">I", zlib.crc32(kind + data)))

    path.write_bytes(b"\x89PNG\r\n\x1a\n" +
                     chunk(b"IHDR", struct.pack(">IIBBBBB", size, size, 8, 2, 0, 0, 0)) +
                     chunk(b"IDAT", zlib.compress(rows, 0)) + chunk(b"IEND", b""))


def make_textures(folder):
    folder.mkdir(exist_ok=True)
    write_png(folder / "skin.png", lambda x, y: (222 - y // 2, 174 - y // 2, 146))
    write_png(folder / "shirt.png", lambda x, y: (50, 90, 180) if y % 4 else (235, 235, 240))
    write_png(folder / "boards.png", lambda x, y: (92, 66, 42) if x % 8 == 0 else (154, 115, 76))


if __name__ == "__main__":
    here = pathlib.Path(__file__).resolve().parent
    make_textures(here / "textures")
    make_avatar(here)
    make_room(here)
    make_oddities(here)
