#include "tests/support/fbx6_writer.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <functional>
#include <map>
#include <set>
#include <tuple>
#include <type_traits>

namespace {

struct Connection {
  std::string tag;
  int64_t source = 0;
  std::string sourceProperty;
  int64_t destination = 0;
  std::string property;
};

const FbxRecord* Find(const FbxRecords& records, std::string_view name) {
  const auto found = std::ranges::find(records, name, &FbxRecord::name);
  return found == records.end() ? nullptr : &*found;
}

FbxRecord* Find(FbxRecords& records, std::string_view name) {
  return const_cast<FbxRecord*>(Find(std::as_const(records), name));
}

std::string Text(const FbxValue& value) { return std::get<std::string>(value); }
int64_t Id(const FbxValue& value) {
  return std::visit(
      [](const auto& held) -> int64_t {
        if constexpr (std::is_arithmetic_v<std::decay_t<decltype(held)>>) {
          return static_cast<int64_t>(held);
        }
        return 0;
      },
      value);
}

std::string WithoutClass(const std::string& name) {
  const size_t colons = name.find("::");
  return colons == std::string::npos ? name : name.substr(colons + 2);
}

// Arrays as plain values.
FbxRecord Plain(const FbxRecord& record) {
  FbxRecord plain(record.name);
  plain.block = record.block;
  for (const FbxValue& value : record.values) {
    std::visit(
        [&plain](const auto& held) {
          using Held = std::decay_t<decltype(held)>;
          if constexpr (std::is_same_v<Held, std::vector<double>> ||
                        std::is_same_v<Held, std::vector<int32_t>> ||
                        std::is_same_v<Held, std::vector<int64_t>>) {
            for (const auto& element : held) plain.values.emplace_back(element);
          } else if constexpr (std::is_same_v<Held, std::vector<float>>) {
            for (const float element : held) plain.values.emplace_back(double{element});
          } else {
            plain.values.emplace_back(held);
          }
        },
        value);
  }
  for (const FbxRecord& child : record.children) plain.children.push_back(Plain(child));
  return plain;
}

template <typename T>
std::vector<T> Array(const FbxRecords& fields, std::string_view name) {
  const FbxRecord* field = Find(fields, name);
  return field == nullptr || field->values.empty() ? std::vector<T>()
                                                   : std::get<std::vector<T>>(field->values[0]);
}

// Name of the texture elements for a property of materials, "" for other properties.
std::string TextureElement(const std::string& property) {
  static const std::map<std::string, std::string> kNames = {
      {"DiffuseColor", "LayerElementTexture"},
      {"DiffuseFactor", "LayerElementDiffuseFactorTextures"},
      {"EmissiveColor", "LayerElementEmissiveTextures"},
      {"AmbientColor", "LayerElementAmbientTextures"},
      {"SpecularColor", "LayerElementSpecularTextures"},
      {"SpecularFactor", "LayerElementSpecularFactorTextures"},
      {"ShininessExponent", "LayerElementShininessTextures"},
      {"NormalMap", "LayerElementNormalMapTextures"},
      {"Bump", "LayerElementBumpTextures"},
      {"TransparentColor", "LayerElementTransparentTextures"},
      {"TransparencyFactor", "LayerElementTransparencyFactorTextures"},
      {"ReflectionColor", "LayerElementReflectionTextures"},
  };
  const auto found = kNames.find(property);
  return found == kNames.end() ? "" : found->second;
}

class Writer {
 public:
  explicit Writer(const FbxRecords& document) : document_(document) {
    if (const FbxRecord* objects = Find(document, "Objects")) {
      for (const FbxRecord& object : objects->children) AddObject(object);
    }
    if (const FbxRecord* connections = Find(document, "Connections")) {
      for (const FbxRecord& record : connections->children) AddConnection(record);
    }
    if (const FbxRecord* definitions = Find(document, "Definitions")) {
      for (const FbxRecord& type : definitions->children) {
        for (const FbxRecord& entry : type.children) {
          if (entry.name != "PropertyTemplate" || entry.children.empty()) continue;
          templates_.emplace(Text(entry.values[0]), &entry.children[0].children);
        }
      }
    }
  }

  FbxRecords Write() {
    FbxRecords out;
    for (const char* name : {"FBXHeaderExtension", "FileId", "CreationTime", "Creator"}) {
      if (const FbxRecord* record = Find(document_, name)) out.push_back(Plain(*record));
    }
    AssignTextures();
    FbxRecord objects("Objects");
    objects.block = true;
    for (const auto& [id, record] : order_) WriteObject(id, *record, objects);
    if (const FbxRecord* settings = Find(document_, "GlobalSettings")) {
      const FbxRecord* properties = Find(settings->children, "Properties70");
      objects.Add(
          {"GlobalSettings",
           {},
           {{"Version", {1000}}, Properties60(properties ? &properties->children : nullptr)}});
    }
    out.push_back(std::move(objects));
    out.push_back(Connections());
    out.push_back(Takes());
    return out;
  }

 private:
  using Properties = const FbxRecords*;

  void AddObject(const FbxRecord& object) {
    if (object.values.size() < 3) return;
    const int64_t id = Id(object.values[0]);
    if (!objects_.emplace(id, &object).second) return;
    order_.emplace_back(id, &object);
    std::string name = Text(object.values[1]);
    if (object.name != "Model" && object.name != "Material" && !used_.insert(name).second) {
      name += " " + std::to_string(id);
    }
    used_.insert(name);
    names_[id] = name;
  }

  void AddConnection(const FbxRecord& record) {
    Connection c;
    c.tag = Text(record.values[0]);
    size_t at = 1;
    c.source = Id(record.values[at++]);
    if (c.tag[0] == 'P') c.sourceProperty = Text(record.values[at++]);
    c.destination = Id(record.values[at++]);
    if (c.tag[1] == 'P') c.property = Text(record.values[at++]);
    connections_.push_back(std::move(c));
  }

  std::string Type(int64_t id) const {
    const auto found = objects_.find(id);
    return found == objects_.end() ? "" : found->second->name;
  }
  std::string Kind(int64_t id) const {
    const auto found = objects_.find(id);
    return found == objects_.end() ? "" : Text(found->second->values[2]);
  }
  const FbxRecords& Fields(int64_t id) const { return objects_.at(id)->children; }

  // Sources of that type, in connection order.
  std::vector<int64_t> Sources(int64_t destination, std::string_view type) const {
    std::vector<int64_t> sources;
    for (const Connection& c : connections_) {
      if (c.tag == "OO" && c.destination == destination && Type(c.source) == type) {
        sources.push_back(c.source);
      }
    }
    return sources;
  }
  // The first destination of that type, 0 if there is none.
  int64_t Destination(int64_t source, std::string_view type) const {
    for (const Connection& c : connections_) {
      if (c.source == source && Type(c.destination) == type) return c.destination;
    }
    return 0;
  }

  // The attribute of a model, 0 without one.
  int64_t Attribute(int64_t model) const {
    for (const Connection& c : connections_) {
      const std::string type = Type(c.source);
      const bool isAttribute =
          type == "NodeAttribute" || (type == "Geometry" && Kind(c.source) == "Mesh");
      if (c.tag == "OO" && c.destination == model && isAttribute) return c.source;
    }
    return 0;
  }

  static void Merge(FbxRecords& into, Properties properties) {
    if (properties == nullptr) return;
    for (const FbxRecord& property : *properties) {
      if (property.name != "P") continue;
      FbxRecord written("Property", property.values);
      if (Text(written.values[1]).empty()) written.values[1] = written.values[2];
      written.values.erase(written.values.begin() + 2);
      const auto same = std::ranges::find_if(
          into, [&](const FbxRecord& other) { return other.values[0] == written.values[0]; });
      if (same == into.end()) {
        into.push_back(std::move(written));
      } else {
        *same = std::move(written);
      }
    }
  }

  static FbxRecord Properties60(Properties properties) {
    FbxRecord record("Properties60");
    record.block = true;
    Merge(record.children, properties);
    return record;
  }

  // The properties of an object, its class's template first.
  void MergeObject(FbxRecords& into, int64_t id, const std::string& className) const {
    const auto found = templates_.find(className);
    if (found != templates_.end()) Merge(into, found->second);
    const FbxRecord* own = Find(Fields(id), "Properties70");
    if (own != nullptr) Merge(into, &own->children);
  }

  std::string ClassOf(int64_t id) const {
    const std::string type = Type(id);
    const std::string kind = Kind(id);
    if (type == "Model") return "FbxNode";
    if (type == "NodeAttribute") {
      return kind == "Null" || kind == "Light" || kind == "Camera" ? "Fbx" + kind : "FbxSkeleton";
    }
    if (type == "Geometry") return "Fbx" + kind;
    if (type == "Texture") return "FbxFileTexture";
    if (type == "Video") return "FbxVideo";
    if (type != "Material") return "";
    const FbxRecord* shading = Find(Fields(id), "ShadingModel");
    std::string model = shading == nullptr ? "phong" : Text(shading->values[0]);
    std::ranges::transform(model, model.begin(), [](unsigned char c) { return std::tolower(c); });
    return model == "lambert" ? "FbxSurfaceLambert" : "FbxSurfacePhong";
  }

  static void AddFields(FbxRecord& to, const FbxRecords& fields) {
    for (const FbxRecord& field : fields) {
      if (field.name != "Properties70" && Find(to.children, field.name) == nullptr) {
        for (const FbxRecord& same : fields) {
          if (same.name == field.name) to.Add(Plain(same));
        }
      }
    }
  }

  void WriteObject(int64_t id, const FbxRecord& object, FbxRecord& objects) {
    const std::string& type = object.name;
    const bool isElsewhere = type == "NodeAttribute" || type == "Geometry" ||
                             type.starts_with("Animation") || Kind(id).starts_with("BlendShape");
    if (isElsewhere) return;
    const int64_t attribute = type == "Model" ? Attribute(id) : 0;
    const std::string kind = type != "Model" ? Kind(id) : attribute == 0 ? "" : Kind(attribute);
    FbxRecord& record = objects.Add({type, {names_.at(id), kind}});
    record.block = true;
    FbxRecord properties("Properties60");
    properties.block = true;
    MergeObject(properties.children, id, ClassOf(id));
    if (attribute != 0) MergeObject(properties.children, attribute, ClassOf(attribute));
    record.Add(std::move(properties));
    if (type == "Pose") {
      for (const FbxRecord& field : object.children) {
        FbxRecord& written = record.Add(Plain(field));
        if (FbxRecord* node = Find(written.children, "Node")) {
          node->values = {NameOf(Id(node->values[0]))};
        }
      }
      return;
    }
    AddFields(record, object.children);
    if (attribute == 0) return;
    record.Add({"NodeAttributeName", {names_.at(attribute)}});
    AddFields(record, Fields(attribute));
    AddShapes(record, attribute);
    AddTextureElements(record, id);
  }

  std::string NameOf(int64_t id) const {
    if (id == 0) return "Model::Scene";
    const auto found = names_.find(id);
    return found == names_.end() ? "Model::gone" + std::to_string(id) : found->second;
  }

  void AddShapes(FbxRecord& record, int64_t geometry) const {
    for (const int64_t blendShape : Sources(geometry, "Deformer")) {
      if (Kind(blendShape) != "BlendShape") continue;
      for (const int64_t channel : Sources(blendShape, "Deformer")) {
        FbxRecord& written =
            record.Add({"Shape", {WithoutClass(Text(objects_.at(channel)->values[1]))}});
        written.block = true;
        for (const int64_t shape : Sources(channel, "Geometry")) AddFields(written, Fields(shape));
      }
    }
  }

  // The material of each polygon, as a number among those of the model.
  std::vector<int32_t> PolygonMaterials(int64_t geometry) const {
    const auto corners = Array<int32_t>(Fields(geometry), "PolygonVertexIndex");
    const auto polygons = static_cast<size_t>(
        std::ranges::count_if(corners, [](int32_t corner) { return corner < 0; }));
    std::vector<int32_t> materials(polygons, 0);
    const FbxRecord* element = Find(Fields(geometry), "LayerElementMaterial");
    if (element == nullptr) return materials;
    const auto numbers = Array<int32_t>(element->children, "Materials");
    const FbxRecord* mapping = Find(element->children, "MappingInformationType");
    const bool byPolygon = mapping != nullptr && Text(mapping->values[0]) == "ByPolygon";
    for (size_t p = 0; p < polygons && !numbers.empty(); ++p) {
      materials[p] = byPolygon ? p < numbers.size() ? numbers[p] : -1 : numbers[0];
    }
    return materials;
  }

  // Decides which textures layer elements can give to their materials: the first of a property, of
  // a material that some polygon has.
  void AssignTextures() {
    std::set<std::pair<int64_t, std::string>> taken;
    for (const Connection& c : connections_) {
      const bool isTexture = Type(c.source) == "Texture" || Type(c.source) == "LayeredTexture";
      if (c.tag != "OP" || !isTexture || Type(c.destination) != "Material") continue;
      if (TextureElement(c.property).empty()) continue;
      if (!taken.emplace(c.destination, c.property).second) continue;
      for (const auto& [id, object] : order_) {
        if (object->name != "Model") continue;
        const int64_t mesh = Attribute(id);
        if (Type(mesh) != "Geometry") continue;
        const std::vector<int64_t> materials = Sources(id, "Material");
        const std::vector<int32_t> used = PolygonMaterials(mesh);
        for (const int32_t number : std::set<int32_t>(used.begin(), used.end())) {
          if (number < 0 || static_cast<size_t>(number) >= materials.size()) continue;
          if (materials[static_cast<size_t>(number)] != c.destination) continue;
          std::vector<int64_t>& textures = textures_[id];
          auto at = std::ranges::find(textures, c.source);
          if (at == textures.end()) at = textures.insert(at, c.source);
          elements_[id][c.property][number] = static_cast<int32_t>(at - textures.begin());
          assigned_.emplace(c.source, c.destination, c.property);
        }
      }
    }
  }

  void AddTextureElements(FbxRecord& record, int64_t model) {
    const auto found = elements_.find(model);
    if (found == elements_.end()) return;
    FbxRecord* layer = Find(record.children, "Layer");
    if (layer == nullptr) layer = &record.Add({"Layer", {0}});
    FbxRecord entries = *layer;
    const std::vector<int32_t> materials = PolygonMaterials(Attribute(model));
    for (const auto& [property, byMaterial] : found->second) {
      std::vector<int32_t> ids;
      for (const int32_t material : materials) {
        const auto texture = byMaterial.find(material);
        ids.push_back(texture == byMaterial.end() ? -1 : texture->second);
      }
      const bool isSame = std::ranges::adjacent_find(ids, std::not_equal_to()) == ids.end();
      if (isSame) ids.resize(1);
      record.Add(Plain({TextureElement(property),
                        {0},
                        {{"Version", {101}},
                         {"MappingInformationType", {isSame ? "AllSame" : "ByPolygon"}},
                         {"ReferenceInformationType", {"IndexToDirect"}},
                         {"TextureId", {ids}}}}));
      entries.Add(
          {"LayerElement", {}, {{"Type", {TextureElement(property)}}, {"TypedIndex", {0}}}});
    }
    *Find(record.children, "Layer") = entries;
  }

  FbxRecord Connections() const {
    FbxRecord out("Connections");
    out.block = true;
    const auto isInline = [this](int64_t id) {
      const std::string type = Type(id);
      return type == "NodeAttribute" || type == "Geometry" || type.starts_with("Animation") ||
             Kind(id).starts_with("BlendShape");
    };
    for (const Connection& c : connections_) {
      if (assigned_.contains({c.source, c.destination, c.property})) continue;
      if (Kind(c.source) == "Skin" && Type(c.destination) == "Geometry") {
        out.Add({"Connect", {"OO", NameOf(c.source), NameOf(Destination(c.destination, "Model"))}});
        continue;
      }
      if (isInline(c.source) || isInline(c.destination)) continue;
      FbxRecord& record = out.Add({"Connect", {c.tag, NameOf(c.source)}});
      if (c.tag[0] == 'P') record.values.emplace_back(c.sourceProperty);
      record.values.emplace_back(NameOf(c.destination));
      if (c.tag[1] == 'P') record.values.emplace_back(c.property);
    }
    for (const auto& [model, textures] : textures_) {
      for (const int64_t texture : textures) {
        out.Add({"Connect", {"OO", NameOf(texture), NameOf(model)}});
      }
    }
    return out;
  }

  // ---- Takes

  FbxRecord Takes() const {
    FbxRecord takes("Takes", {}, {{"Current", {""}}});
    for (const auto& [id, object] : order_) {
      if (object->name == "AnimationStack") takes.Add(Take(id));
    }
    return takes;
  }

  FbxRecord Take(int64_t stack) const {
    const auto time = [&](const char* name) {
      FbxRecords properties;
      MergeObject(properties, stack, "FbxAnimStack");
      for (const FbxRecord& property : properties) {
        if (Text(property.values[0]) == name) return FbxValue(Id(property.values[3]));
      }
      return FbxValue(int64_t{0});
    };
    FbxRecord take("Take", {WithoutClass(Text(objects_.at(stack)->values[1]))},
                   {{"FileName", {"take.tak"}},
                    {"LocalTime", {time("LocalStart"), time("LocalStop")}},
                    {"ReferenceTime", {time("ReferenceStart"), time("ReferenceStop")}}});
    const std::vector<int64_t> layers = Sources(stack, "AnimationLayer");
    if (layers.empty()) return take;
    for (const int64_t curves : Sources(layers[0], "AnimationCurveNode")) AddCurves(take, curves);
    return take;
  }

  // The block of that name below `parent`, made if it isn't there.
  static FbxRecord& Block(FbxRecord& parent, const char* field, const std::string& name) {
    for (FbxRecord& child : parent.children) {
      if (child.name == field && !child.values.empty() && child.values[0] == FbxValue(name)) {
        return child;
      }
    }
    return parent.Add({field, {name}});
  }

  void AddCurves(FbxRecord& take, int64_t curves) const {
    static const std::map<std::string, std::string> kParts = {
        {"Lcl Translation", "T"}, {"Lcl Rotation", "R"}, {"Lcl Scaling", "S"}};
    for (const Connection& c : connections_) {
      if (c.source != curves || c.tag != "OP") continue;
      if (const auto part = kParts.find(c.property); part != kParts.end()) {
        FbxRecord& model = Block(take, "Model", NameOf(c.destination));
        FbxRecord& block = Block(Block(model, "Channel", "Transform"), "Channel", part->second);
        block.block = true;
        for (const char* axis : {"X", "Y", "Z"}) AddCurve(block, curves, axis, axis);
      } else if (c.property == "DeformPercent") {
        const int64_t blendShape = Destination(c.destination, "Deformer");
        const int64_t model = Destination(Destination(blendShape, "Geometry"), "Model");
        AddCurve(Block(take, "Model", NameOf(model)), curves, "DeformPercent",
                 WithoutClass(Text(objects_.at(c.destination)->values[1])));
      }
    }
  }

  void AddCurve(FbxRecord& to, int64_t curves, const std::string& channel,
                const std::string& name) const {
    FbxRecord record("Channel", {name});
    record.block = true;
    FbxRecords properties;
    MergeObject(properties, curves, "FbxAnimCurveNode");
    for (const FbxRecord& property : properties) {
      if (Text(property.values[0]) == "d|" + channel) record.Add({"Default", {property.values[3]}});
    }
    for (const Connection& c : connections_) {
      if (c.tag != "OP" || c.destination != curves || c.property != "d|" + channel) continue;
      const FbxRecords& fields = Fields(c.source);
      FbxRecord keys = Keys(fields);
      record.Add({"KeyVer", {4005}});
      record.Add({"KeyCount", {static_cast<int32_t>(Array<int64_t>(fields, "KeyTime").size())}});
      record.Add(std::move(keys));
      for (const char* end : {"Pre-Extrapolation", "Post-Extrapolation"}) {
        if (const FbxRecord* extrapolation = Find(fields, end)) record.Add(*extrapolation);
      }
      break;
    }
    to.Add(std::move(record));
  }

  static FbxRecord Keys(const FbxRecords& fields) {
    const auto times = Array<int64_t>(fields, "KeyTime");
    const auto values = Array<float>(fields, "KeyValueFloat");
    const auto flags = Array<int32_t>(fields, "KeyAttrFlags");
    const auto data = Array<float>(fields, "KeyAttrDataFloat");
    const auto counts = Array<int32_t>(fields, "KeyAttrRefCount");
    FbxRecord record("Key");
    size_t attribute = 0;
    int32_t left = counts.empty() ? 0 : counts[0];
    for (size_t i = 0; i < times.size(); ++i) {
      while (left == 0 && attribute + 1 < counts.size()) left = counts[++attribute];
      --left;
      record.values.emplace_back(times[i]);
      record.values.emplace_back(double{i < values.size() ? values[i] : 0.0F});
      AddKind(record.values, static_cast<uint32_t>(flags.at(attribute)), &data[attribute * 4]);
    }
    return record;
  }

  static void AddKind(FbxValues& to, uint32_t flags, const float* words) {
    const auto letters = [&to](std::string_view text) {
      for (const char letter : text) to.emplace_back(letter);
    };
    const auto number = [&to](double value) { to.emplace_back(value); };
    switch (flags & 0xE) {
      case 2:
        return letters((flags & 0x100) != 0 ? "Cn" : "Cs");
      case 4:
        return letters("L");
      default:
        break;
    }
    switch (flags & 0xF00) {
      case 0x100:
        return letters("Uan");
      case 0x200:
        letters("Ut");
        for (int i = 0; i < 3; ++i) number(words[i]);
        return letters("n");
      default:
        letters((flags & 0x800) != 0 ? "Ub" : "Us");
        number(words[0]);
        number(words[1]);
    }
    const bool isRight = (flags & 0x1000000) != 0;
    const bool isLeft = (flags & 0x2000000) != 0;
    letters(isRight && isLeft ? "a" : isRight ? "r" : isLeft ? "l" : "n");
    const auto weights = std::bit_cast<uint32_t>(words[2]);
    const auto weight = [](uint32_t half) { return static_cast<int16_t>(half) / 9999.0; };
    if (isRight) number(weight(weights & 0xFFFF));
    if (isLeft) number(weight(weights >> 16));
  }

  const FbxRecords& document_;
  std::map<int64_t, const FbxRecord*> objects_;
  std::vector<std::pair<int64_t, const FbxRecord*>> order_;
  std::map<int64_t, std::string> names_;
  std::set<std::string> used_;
  std::vector<Connection> connections_;
  std::map<std::string, Properties> templates_;
  // By model: its textures, and for each property the texture of each of its materials, as numbers.
  std::map<int64_t, std::vector<int64_t>> textures_;
  std::map<int64_t, std::map<std::string, std::map<int32_t, int32_t>>> elements_;
  std::set<std::tuple<int64_t, int64_t, std::string>> assigned_;
};

}  // namespace

FbxRecords AsVersion6(const FbxRecords& document) { return Writer(document).Write(); }
