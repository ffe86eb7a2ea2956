#include "tests/support/scene_builder.h"

#include <set>

namespace {

const std::vector<double> kIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

FbxRecord Properties70(FbxRecords properties) {
  return {"Properties70", {}, std::move(properties)};
}

FbxRecord Element(const std::string& type, const std::string& name, const std::string& mapping,
                  const std::string& reference, FbxRecord data) {
  return {type,
          {0},
          {{"Version", {101}},
           {"Name", {name}},
           {"MappingInformationType", {mapping}},
           {"ReferenceInformationType", {reference}},
           std::move(data)}};
}

FbxRecord Indexed(const std::string& type, const std::string& name, const std::string& mapping,
                  const std::string& reference, const std::string& field,
                  std::vector<double> values, const std::string& indexField,
                  std::vector<int32_t> index) {
  FbxRecord element = Element(type, name, mapping, reference, {field, {std::move(values)}});
  if (!index.empty()) element.Add({indexField, {std::move(index)}});
  return element;
}

std::vector<int64_t> ToTicks(const SceneBuilder::Frames& frames) {
  std::vector<int64_t> times;
  for (const double frame : frames) times.push_back(SceneBuilder::Ticks(frame));
  return times;
}

}  // namespace

FbxRecord Normals(const std::string& mapping, const std::string& reference,
                  std::vector<double> values, std::vector<int32_t> index) {
  return Indexed("LayerElementNormal", "", mapping, reference, "Normals", std::move(values),
                 "NormalsIndex", std::move(index));
}

FbxRecord UVs(const std::string& name, const std::string& mapping, const std::string& reference,
              std::vector<double> values, std::vector<int32_t> index) {
  return Indexed("LayerElementUV", name, mapping, reference, "UV", std::move(values), "UVIndex",
                 std::move(index));
}

FbxRecord Colors(const std::string& mapping, const std::string& reference,
                 std::vector<double> values, std::vector<int32_t> index) {
  return Indexed("LayerElementColor", "", mapping, reference, "Colors", std::move(values),
                 "ColorIndex", std::move(index));
}

FbxRecord Materials(std::vector<int32_t> index) {
  const char* mapping = index.size() == 1 ? "AllSame" : "ByPolygon";
  return Element("LayerElementMaterial", "", mapping, "IndexToDirect",
                 {"Materials", {std::move(index)}});
}

FbxRecord P(std::string name, std::string type, std::string subType, std::string flags,
            FbxValues values) {
  static const std::set<std::string> kLong = {"KTime", "LongLong", "ULongLong"};
  static const std::set<std::string> kWhole = {
      "int",   "Integer", "enum", "Enum", "bool", "Bool", "Visibility Inheritance",
      "Short", "UInteger"};
  FbxRecord record("P", {std::move(name), type, std::move(subType), std::move(flags)});
  for (FbxValue& value : values) {
    const int32_t* whole = std::get_if<int32_t>(&value);
    if (whole != nullptr && kLong.contains(type)) {
      value = int64_t{*whole};
    } else if (whole != nullptr && !kWhole.contains(type)) {
      value = static_cast<double>(*whole);
    }
    record.values.push_back(std::move(value));
  }
  return record;
}

FbxRecord P(const std::string& name, const FbxValues& values) {
  if (name.starts_with("Lcl ") || name == "Visibility") return P(name, name, "", "A", values);
  if (values.size() == 1) return P(name, "double", "Number", "A", values);
  if (name.ends_with("Color")) return P(name, "Color", "", "A", values);
  return P(name, "Vector3D", "Vector", "A", values);
}

SceneBuilder& SceneBuilder::SetGlobal(FbxRecord property) {
  for (FbxRecord& existing : globals_) {
    if (existing.values.front() == property.values.front()) {
      existing = std::move(property);
      return *this;
    }
  }
  globals_.push_back(std::move(property));
  return *this;
}

SceneBuilder& SceneBuilder::SetYUp() {
  SetGlobal(P("UpAxis", "int", "Integer", "", {1}));
  SetGlobal(P("FrontAxis", "int", "Integer", "", {2}));
  return SetGlobal(P("FrontAxisSign", "int", "Integer", "", {1}));
}

SceneBuilder& SceneBuilder::SetTimeMode(int mode, double customFrameRate) {
  SetGlobal(P("TimeMode", "enum", "", "", {mode}));
  return SetGlobal(P("CustomFrameRate", "double", "Number", "", {customFrameRate}));
}

SceneBuilder& SceneBuilder::AddTemplate(const std::string& objectType, const std::string& className,
                                        FbxRecords properties) {
  templates_[objectType].push_back(
      {"PropertyTemplate", {className}, {Properties70(std::move(properties))}});
  return *this;
}

int64_t SceneBuilder::Node(const std::string& name, int64_t parent, FbxRecords properties,
                           const std::string& type) {
  const int64_t node = AddModel(name, type, std::move(properties));
  Connect(node, parent);
  return node;
}

int64_t SceneBuilder::Bone(const std::string& name, int64_t parent, FbxRecords properties) {
  const int64_t bone = Node(name, parent, std::move(properties), "LimbNode");
  Connect(AddNodeAttribute(name, "LimbNode"), bone);
  return bone;
}

SceneBuilder::MeshIds SceneBuilder::Mesh(const std::string& name,
                                         const std::vector<std::string>& channels, int64_t parent) {
  MeshIds ids = Mesh(name, {0, 0, 0, 1, 0, 0, 0, 1, 0}, {{0, 1, 2}}, {}, parent);
  if (channels.empty()) return ids;
  const int64_t shape = BlendShape(ids.mesh);
  for (const std::string& channel : channels) ids.channels.push_back(Channel(shape, channel));
  return ids;
}

SceneBuilder::MeshIds SceneBuilder::Mesh(const std::string& name, std::vector<double> points,
                                         const std::vector<std::vector<int32_t>>& polygons,
                                         FbxRecords elements, int64_t parent,
                                         FbxRecords properties) {
  std::vector<int32_t> indices;
  for (const std::vector<int32_t>& polygon : polygons) {
    indices.insert(indices.end(), polygon.begin(), polygon.end());
    if (!polygon.empty()) indices.back() = ~indices.back();
  }
  std::map<std::string, int32_t> counts;
  FbxRecords layers;
  for (FbxRecord& element : elements) {
    const int32_t number = counts[element.name]++;
    element.values = {number};
    if (layers.size() <= static_cast<size_t>(number)) layers.push_back({"Layer", {number}});
    layers[static_cast<size_t>(number)].Add(
        {"LayerElement", {}, {{"Type", {element.name}}, {"TypedIndex", {number}}}});
  }
  FbxRecords records = {{"Vertices", {std::move(points)}},
                        {"PolygonVertexIndex", {std::move(indices)}}};
  records.insert(records.end(), elements.begin(), elements.end());
  records.insert(records.end(), layers.begin(), layers.end());
  MeshIds ids;
  ids.mesh = AddObject("Geometry", "Geometry", name, "Mesh", {}, std::move(records));
  ids.node = Node(name, parent, std::move(properties), "Mesh");
  Connect(ids.mesh, ids.node);
  return ids;
}

int64_t SceneBuilder::Material(int64_t node, const std::string& name, FbxRecords properties) {
  const int64_t material = AddMaterial(name, std::move(properties));
  Connect(material, node);
  return material;
}

int64_t SceneBuilder::Texture(int64_t material, const std::string& channel,
                              const std::string& path) {
  const int64_t texture = AddTexture(path, path);
  ConnectProperty(texture, material, channel);
  return texture;
}

int64_t SceneBuilder::Skin(int64_t mesh) {
  const int64_t skin = AddObject("Deformer", "Deformer", "", "Skin");
  Connect(skin, mesh);
  return skin;
}

int64_t SceneBuilder::Cluster(int64_t skin, int64_t bone, std::vector<int32_t> points,
                              std::vector<double> weights, const std::string& mode) {
  const int64_t cluster = AddObject("Deformer", "SubDeformer", "", "Cluster", {},
                                    {{"Indexes", {std::move(points)}},
                                     {"Weights", {std::move(weights)}},
                                     {"Transform", {kIdentity}},
                                     {"TransformLink", {kIdentity}},
                                     {"Mode", {mode}}});
  Connect(cluster, skin);
  if (bone != 0) Connect(bone, cluster);
  return cluster;
}

int64_t SceneBuilder::BlendShape(int64_t mesh) {
  const int64_t blendShape = AddObject("Deformer", "Deformer", "", "BlendShape");
  Connect(blendShape, mesh);
  return blendShape;
}

int64_t SceneBuilder::Channel(int64_t blendShape, const std::string& name) {
  const int64_t channel = AddObject("Deformer", "SubDeformer", name, "BlendShapeChannel");
  Connect(channel, blendShape);
  return channel;
}

int64_t SceneBuilder::Target(int64_t channel, std::vector<int32_t> points,
                             std::vector<double> offsets, std::vector<double> normals) {
  FbxRecords records = {{"Indexes", {std::move(points)}}, {"Vertices", {std::move(offsets)}}};
  if (!normals.empty()) records.push_back({"Normals", {std::move(normals)}});
  const int64_t shape =
      AddObject("Geometry", "Geometry", "target", "Shape", {}, std::move(records));
  Connect(shape, channel);
  return shape;
}

SceneBuilder::Clip SceneBuilder::AddClip(const std::string& name, double start, double stop,
                                         double referenceStop) {
  const auto time = [](const char* property, double frame) {
    return P(property, "KTime", "Time", "", {Ticks(frame)});
  };
  Clip clip{};
  clip.stack =
      AddObject("AnimationStack", "AnimStack", name, "",
                {time("LocalStart", start), time("LocalStop", stop), time("ReferenceStart", start),
                 time("ReferenceStop", referenceStop < 0 ? stop : referenceStop)});
  clip.layer = AddLayer(clip);
  return clip;
}

int64_t SceneBuilder::AddLayer(const Clip& clip, FbxRecords properties) {
  const int64_t layer =
      AddObject("AnimationLayer", "AnimLayer", "BaseLayer", "", std::move(properties));
  Connect(layer, clip.stack);
  return layer;
}

int64_t SceneBuilder::Key(int64_t layer, int64_t node, const std::string& channel,
                          const Frames& frames, Values values) {
  return KeyTicks(layer, node, channel, ToTicks(frames), std::move(values));
}

int64_t SceneBuilder::KeyTicks(int64_t layer, int64_t node, const std::string& channel,
                               std::vector<int64_t> times, Values values) {
  static const std::map<char, std::string> kProperties = {
      {'T', "Lcl Translation"}, {'R', "Lcl Rotation"}, {'S', "Lcl Scaling"}};
  int64_t& curves = curveNodes_[{layer, node, channel[0]}];
  if (curves == 0) {
    const double rest = channel[0] == 'S' ? 1.0 : 0.0;
    curves = CurveNode(layer, node, kProperties.at(channel[0]), {"X", "Y", "Z"}, rest);
  }
  const int64_t curve = AddAnimationCurve(std::move(times), std::move(values));
  ConnectProperty(curve, curves, "d|" + channel.substr(1));
  return curves;
}

void SceneBuilder::KeyMorph(int64_t layer, int64_t channel, const Frames& frames, Values values) {
  Drive(layer, channel, "DeformPercent", {"DeformPercent"}, frames, std::move(values));
}

int64_t SceneBuilder::Drive(int64_t layer, int64_t object, const std::string& property,
                            const std::vector<std::string>& channels, const Frames& frames,
                            Values values) {
  const int64_t curves = CurveNode(layer, object, property, channels, 0.0);
  const int64_t curve = AddAnimationCurve(ToTicks(frames), std::move(values));
  for (const std::string& channel : channels) ConnectProperty(curve, curves, "d|" + channel);
  return curves;
}

int64_t SceneBuilder::CurveNode(int64_t layer, int64_t object, const std::string& property,
                                const std::vector<std::string>& channels, double rest) {
  FbxRecords defaults;
  for (const std::string& channel : channels) {
    defaults.push_back(P("d|" + channel, "Number", "", "A", {rest}));
  }
  const int64_t curves = AddAnimationCurveNode(property, std::move(defaults));
  Connect(curves, layer);
  ConnectProperty(curves, object, property);
  return curves;
}

int64_t SceneBuilder::AddObject(const std::string& type, const std::string& className,
                                const std::string& name, const std::string& subclass,
                                FbxRecords properties, FbxRecords records) {
  const int64_t id = nextId_++;
  FbxRecord object(type, {id, className + "::" + name, subclass});
  object.block = true;
  object.Add({"Version", {100}});
  if (!properties.empty()) object.Add(Properties70(std::move(properties)));
  for (FbxRecord& record : records) object.Add(std::move(record));
  objectIndex_[id] = objects_.size();
  objects_.push_back(std::move(object));
  return id;
}

int64_t SceneBuilder::AddModel(const std::string& name, const std::string& type,
                               FbxRecords properties) {
  return AddObject("Model", "Model", name, type, std::move(properties));
}

int64_t SceneBuilder::AddNodeAttribute(const std::string& name, const std::string& type,
                                       FbxRecords properties) {
  return AddObject("NodeAttribute", "NodeAttribute", name, type, std::move(properties));
}

int64_t SceneBuilder::AddMaterial(const std::string& name, FbxRecords properties) {
  return AddObject("Material", "Material", name, "", std::move(properties),
                   {{"ShadingModel", {"phong"}}});
}

int64_t SceneBuilder::AddTexture(const std::string& name, const std::string& path) {
  return AddObject("Texture", "Texture", name, "", {},
                   {{"FileName", {path}}, {"RelativeFilename", {path}}});
}

int64_t SceneBuilder::AddAnimationCurveNode(const std::string& name, FbxRecords properties) {
  return AddObject("AnimationCurveNode", "AnimCurveNode", name, "", std::move(properties));
}

int64_t SceneBuilder::AddAnimationCurve(std::vector<int64_t> times, std::vector<float> values,
                                        int32_t flags) {
  const int32_t count = static_cast<int32_t>(times.size());
  return AddObject("AnimationCurve", "AnimCurve", "", "", {},
                   {{"Default", {0.0}},
                    {"KeyVer", {4009}},
                    {"KeyTime", {std::move(times)}},
                    {"KeyValueFloat", {std::move(values)}},
                    {"KeyAttrFlags", {std::vector<int32_t>{flags}}},
                    {"KeyAttrDataFloat", {std::vector<float>(4, 0.0F)}},
                    {"KeyAttrRefCount", {std::vector<int32_t>{count}}}});
}

FbxRecord& SceneBuilder::Object(int64_t id) { return objects_.at(objectIndex_.at(id)); }

void SceneBuilder::Connect(int64_t child, int64_t parent) {
  connections_.push_back({"C", {"OO", child, parent}});
}

void SceneBuilder::ConnectProperty(int64_t child, int64_t parent, const std::string& property) {
  connections_.push_back({"C", {"OP", child, parent, property}});
}

FbxRecord SceneBuilder::Definitions() const {
  std::vector<std::string> types = {"GlobalSettings"};  // in the order of first use
  std::map<std::string, int32_t> counts = {{"GlobalSettings", 1}};
  for (const FbxRecord& object : objects_) {
    if (++counts[object.name] == 1) types.push_back(object.name);
  }
  for (const auto& [type, entries] : templates_) {
    if (counts.try_emplace(type, 0).second) types.push_back(type);
  }

  FbxRecord definitions(
      "Definitions", {},
      {{"Version", {100}}, {"Count", {static_cast<int32_t>(objects_.size()) + 1}}});
  for (const std::string& type : types) {
    FbxRecord& record = definitions.Add({"ObjectType", {type}, {{"Count", {counts[type]}}}});
    const auto found = templates_.find(type);
    if (found == templates_.end()) continue;
    for (const FbxRecord& entry : found->second) record.Add(entry);
  }
  return definitions;
}

FbxRecords SceneBuilder::Document(int version) const {
  FbxRecord objects("Objects", {}, objects_);
  FbxRecord connections("Connections", {}, connections_);
  objects.block = connections.block = true;
  const FbxRecord timeStamp("CreationTimeStamp", {}, {{"Version", {1000}}, {"Year", {2024}}});
  return {
      {"FBXHeaderExtension",
       {},
       {{"FBXHeaderVersion", {1003}}, {"FBXVersion", {version}}, timeStamp}},
      {"FileId", {FbxRaw{"0123456789abcdef"}}},
      {"CreationTime", {"2024-02-29 12:34:56:789"}},
      {"GlobalSettings", {}, {{"Version", {1000}}, Properties70(globals_)}},
      {"Documents",
       {},
       {{"Count", {1}}, {"Document", {int64_t{900000}, "", "Scene"}, {{"RootNode", {kRoot}}}}}},
      Definitions(),
      std::move(objects),
      std::move(connections),
  };
}

std::string SceneBuilder::Write(const FbxFormat& format) const {
  return WriteFbx(Document(format.version), format);
}
