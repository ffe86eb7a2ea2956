#include "converter/skeleton/room_names.h"

#include <algorithm>
#include <utility>

#include "converter/driver/names.h"
#include "fbx/scene/fbx_node.h"

namespace {

constexpr const char* kFloorPattern = "((furniture).*(floor))|((floor).*(furniture))";
constexpr const char* kCeilingPattern = "((furniture).*(ceiling))|((ceiling).*(furniture))";
constexpr const char* kWallPattern = "((furniture).*(wall))|((wall).*(furniture))";

const std::string _floorStr = "Floor";
const std::string _ceilingStr = "Ceiling";
const std::string _wallStr = "Wall";
const std::string _catcherStr = "Catcher";
const std::string _seatStr = "Seat";
const std::string _handleStr = "Handle";

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
// What "." doesn't match in a pattern.
bool IsLineEnd(char c) { return c == '\n' || c == '\r'; }

// True if `first` stands in the name with `second` behind it on the same line.
bool HasInOrder(std::string_view name, std::string_view first, std::string_view second) {
  while (!name.empty()) {
    const auto end = std::find_if(name.begin(), name.end(), IsLineEnd);
    const std::string_view line = name.substr(0, static_cast<size_t>(end - name.begin()));
    const size_t at = line.find(first);
    if (at != std::string_view::npos &&
        line.find(second, at + first.size()) != std::string_view::npos) {
      return true;
    }
    name.remove_prefix(std::min(line.size() + 1, name.size()));
  }
  return false;
}

bool HasBoth(std::string_view name, std::string_view a, std::string_view b) {
  return HasInOrder(name, a, b) || HasInOrder(name, b, a);
}

bool IsRoomCamera(std::string_view name) {
  constexpr std::string_view kFront = "camera.01.01";
  constexpr std::string_view kBack = "root";
  return name.size() == kFront.size() + 1 + kBack.size() && name.starts_with(kFront) &&
         name.ends_with(kBack) && !IsLineEnd(name[kFront.size()]);
}

// The first and third part of "[^0-9]*([0-9]*)([^0-9]*)([0-9]*)": up to two numbers, as text.
std::pair<std::string_view, std::string_view> TwoNumbers(std::string_view name) {
  const auto takeWhile = [&name](auto&& belongs) {
    const auto end = std::find_if_not(name.begin(), name.end(), belongs);
    const std::string_view taken = name.substr(0, static_cast<size_t>(end - name.begin()));
    name.remove_prefix(taken.size());
    return taken;
  };
  const auto isOther = [](char c) { return !IsDigit(c); };
  takeWhile(isOther);
  const std::string_view first = takeWhile(IsDigit);
  takeWhile(isOther);
  return {first, takeWhile(IsDigit)};
}

// The group of "[^0-9]*[0-9]*.([^\._0-9]*)[\._0-9]*": the word after the first number, with one
// character between them. When no character is left for the "." the expression gives back what it
// has taken, a digit or a letter at a time.
std::string_view WordAfterNumber(std::string_view name) {
  const auto isWord = [](char c) { return c != '.' && c != '_' && !IsDigit(c); };
  size_t digits = 0;
  while (digits < name.size() && !IsDigit(name[digits])) ++digits;
  size_t dot = digits;
  while (dot < name.size() && IsDigit(name[dot])) ++dot;
  while (dot == name.size() || IsLineEnd(name[dot])) {
    if (dot == 0) return {};
    --dot;
  }
  size_t end = dot + 1;
  while (end < name.size() && isWord(name[end])) ++end;
  return name.substr(dot + 1, end - dot - 1);
}

// Takes the first candidate that passes the test off the list; null if none does.
template <typename Test>
FbxNode* TakeFirst(std::vector<FbxNode*>& candidates, Test&& test) {
  const auto found = std::find_if(candidates.begin(), candidates.end(), test);
  if (found == candidates.end()) return nullptr;
  FbxNode* node = *found;
  candidates.erase(found);
  return node;
}

// The places of one seat; null where there is none.
struct PoseNodeGroup {
  FbxNode* pitcher = nullptr;
  FbxNode* catcher = nullptr;
  FbxNode* seat = nullptr;
  FbxNode* handle = nullptr;
};

// Builds the group of one seat, taking its members off the candidates.
PoseNodeGroup GroupOfSeat(FbxNode* seat, std::vector<FbxNode*>& pitchers,
                          std::vector<FbxNode*>& catchers, std::vector<FbxNode*>& handles) {
  PoseNodeGroup group;
  const std::string& name = seat->Name();
  const size_t at = ToLower(name).find("seat");
  if (at == std::string::npos) return group;
  group.seat = seat;
  const size_t behind = at + 4;
  const auto lineEnd =
      std::find_if(name.begin() + static_cast<std::ptrdiff_t>(behind), name.end(), IsLineEnd);
  const std::string suffix(name.begin() + static_cast<std::ptrdiff_t>(behind), lineEnd);
  const auto holdsSuffix = [&](const FbxNode* node) {
    return node->Name().find(suffix) != std::string::npos;
  };
  group.catcher = TakeFirst(catchers, holdsSuffix);
  group.pitcher = TakeFirst(pitchers, holdsSuffix);

  const auto numbers = TwoNumbers(name);
  const auto sharesFirst = [&](const FbxNode* node) {
    return TwoNumbers(node->Name()).first == numbers.first;
  };
  if (group.pitcher == nullptr) group.pitcher = TakeFirst(pitchers, sharesFirst);
  if (group.catcher == nullptr) group.catcher = TakeFirst(catchers, sharesFirst);
  group.handle =
      TakeFirst(handles, [&](const FbxNode* node) { return TwoNumbers(node->Name()) == numbers; });
  if (group.handle == nullptr) group.handle = TakeFirst(handles, sharesFirst);
  return group;
}

}  // namespace

NodeNameVisitor::NodeNameVisitor(std::vector<NamePattern> patterns, bool stopOnMatch,
                                 bool caseSensitive)
    : patterns_(std::move(patterns)), stopOnMatch_(stopOnMatch), caseSensitive_(caseSensitive) {}

bool NodeNameVisitor::VisitNode(FbxNode* node) {
  const std::string name = caseSensitive_ ? node->Name() : ToLower(node->Name());
  bool hit = false;
  for (const NamePattern& pattern : patterns_) {
    if (!pattern.matches(name)) continue;
    matches_[pattern.text].push_back(node);
    hit = true;
  }
  return hit && stopOnMatch_;
}

const std::vector<FbxNode*>& NodeNameVisitor::Matches(const std::string& patternText) const {
  static const std::vector<FbxNode*> kNone;
  const auto found = matches_.find(patternText);
  return found == matches_.end() ? kNone : found->second;
}

const std::vector<NamePattern>& RoomPatterns() {
  static const std::vector<NamePattern> kPatterns = {
      {kFloorPattern, [](std::string_view n) { return HasBoth(n, "furniture", "floor"); }},
      {kCeilingPattern, [](std::string_view n) { return HasBoth(n, "furniture", "ceiling"); }},
      {kWallPattern, [](std::string_view n) { return HasBoth(n, "furniture", "wall"); }},
      {"camera", [](std::string_view n) { return n.find("camera") != n.npos; }},
      {"seat", [](std::string_view n) { return n.find("seat") != n.npos; }},
      {"pitcher", [](std::string_view n) { return n.find("pitcher") != n.npos; }},
      {"catcher", [](std::string_view n) { return n.find("catcher") != n.npos; }},
      {"handle", [](std::string_view n) { return n.find("handle") != n.npos; }},
      {"light", [](std::string_view n) { return n.find("light") != n.npos; }},
      {"((room).*(skeleton))|((skeleton).*(room))",
       [](std::string_view n) { return HasBoth(n, "room", "skeleton"); }},
  };
  return kPatterns;
}

const NamePattern kRoomCameraPattern = {"camera\\.01\\.01.root", &IsRoomCamera};

void RenameFurnitureNodes(const std::vector<FbxNode*>& nodes, std::string_view word, int& counter,
                          NodeNames& names) {
  for (FbxNode* node : nodes) {
    names[node] = std::string("furniture.").append(word).append(".") + std::to_string(counter++);
  }
}

void RenameCameraNodes(const std::vector<FbxNode*>& nodes, NodeNames& names) {
  const auto isTarget = [](const FbxNode* node) {
    return ToLower(node->Name()).find("target") != std::string::npos;
  };
  const auto target = std::find_if(nodes.begin(), nodes.end(), isTarget);
  if (target != nodes.end()) names[*target] = "camera.01.01.root.Target";
  const auto camera = std::find_if_not(nodes.begin(), nodes.end(), isTarget);
  if (camera != nodes.end()) names[*camera] = "camera.01.01.root";
}

void RenamePoseNodes(const NodeNameVisitor& visitor, int counter, NodeNames& names) {
  std::vector<FbxNode*> pitchers = visitor.Matches("pitcher");
  std::vector<FbxNode*> catchers = visitor.Matches("catcher");
  std::vector<FbxNode*> handles = visitor.Matches("handle");
  std::vector<PoseNodeGroup> groups;
  for (FbxNode* seat : visitor.Matches("seat")) {
    groups.push_back(GroupOfSeat(seat, pitchers, catchers, handles));
  }
  for (const PoseNodeGroup& group : groups) {
    if (group.seat == nullptr) continue;
    const std::string number = std::to_string(counter++);
    const std::string text = number + "." + std::string(WordAfterNumber(group.seat->Name()));
    // A pitcher is taken off the candidates but keeps its own name: the runtime knows the place by
    // its seat.
    if (group.catcher != nullptr) names[group.catcher] = _catcherStr + text;
    names[group.seat] = _seatStr + text;
    if (group.handle != nullptr) names[group.handle] = _handleStr + number;
  }
}

NodeNames RenameSpecialRoomNodes(const NodeNameVisitor& visitor) {
  NodeNames names;
  int counter = 1;
  RenameFurnitureNodes(visitor.Matches(kFloorPattern), _floorStr, counter, names);
  RenameFurnitureNodes(visitor.Matches(kCeilingPattern), _ceilingStr, counter, names);
  RenameFurnitureNodes(visitor.Matches(kWallPattern), _wallStr, counter, names);
  RenamePoseNodes(visitor, 1, names);
  RenameCameraNodes(visitor.Matches("camera"), names);
  return names;
}
