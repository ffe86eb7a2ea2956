#include "converter/skeleton/room_names.h"

#include <algorithm>
#include <utility>

#include "converter/base/names.h"
#include "converter/base/text.h"
#include "converter/skeleton/substring_index.h"
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

// Up to two numbers of a name, as text.
using Numbers = std::pair<std::string_view, std::string_view>;

// The first and third part of "[^0-9]*([0-9]*)([^0-9]*)([0-9]*)".
Numbers TwoNumbers(std::string_view name) {
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

// Nodes that seats choose from, one after the other. What is taken is gone, and each test takes the
// first that passes of those that are left.
class Candidates {
 public:
  // No text that is looked for in the names may be longer than `longestText`.
  Candidates(const std::vector<FbxNode*>& nodes, size_t longestText)
      : nodes_(nodes), isTaken_(nodes.size(), false), names_(NamesOf(nodes), longestText) {
    for (size_t i = nodes.size(); i-- > 0;) {
      const Numbers numbers = TwoNumbers(nodes[i]->Name());
      byFirstNumber_[numbers.first].push_back(i);
      byNumbers_[numbers].push_back(i);
    }
  }

  // These return null if no node is left that passes.
  FbxNode* TakeHolding(std::string_view text) {
    const int found = names_.FirstHolding(text);
    return found < 0 ? nullptr : Take(static_cast<size_t>(found));
  }
  FbxNode* TakeNumbered(const Numbers& numbers) { return TakeFrom(byNumbers_[numbers]); }
  FbxNode* TakeNumbered(std::string_view first) { return TakeFrom(byFirstNumber_[first]); }

 private:
  static std::vector<std::string_view> NamesOf(const std::vector<FbxNode*>& nodes) {
    std::vector<std::string_view> names;
    for (const FbxNode* node : nodes) names.emplace_back(node->Name());
    return names;
  }

  FbxNode* Take(size_t index) {
    isTaken_[index] = true;
    names_.Remove(static_cast<int>(index));
    return nodes_[index];
  }

  FbxNode* TakeFrom(std::vector<size_t>& indices) {
    while (!indices.empty()) {
      const size_t index = indices.back();
      indices.pop_back();
      if (!isTaken_[index]) return Take(index);
    }
    return nullptr;
  }

  const std::vector<FbxNode*>& nodes_;
  std::vector<bool> isTaken_;
  SubstringIndex names_;
  // The first node is the last of each list.
  std::map<std::string_view, std::vector<size_t>> byFirstNumber_;
  std::map<Numbers, std::vector<size_t>> byNumbers_;
};

// The places of one seat; null where there is none.
struct PoseNodeGroup {
  FbxNode* pitcher = nullptr;
  FbxNode* catcher = nullptr;
  FbxNode* seat = nullptr;
  FbxNode* handle = nullptr;
};

// What stands behind the word "seat" in a seat's name, up to the end of the line.
std::string_view SuffixOfSeat(const FbxNode& seat) {
  const std::string_view behind =
      std::string_view(seat.Name()).substr(ToLower(seat.Name()).find("seat") + 4);
  const auto lineEnd = std::find_if(behind.begin(), behind.end(), IsLineEnd);
  return behind.substr(0, static_cast<size_t>(lineEnd - behind.begin()));
}

// Builds the group of one seat, taking its members off the candidates.
PoseNodeGroup GroupOfSeat(FbxNode* seat, Candidates& pitchers, Candidates& catchers,
                          Candidates& handles) {
  PoseNodeGroup group;
  group.seat = seat;
  const std::string_view suffix = SuffixOfSeat(*seat);
  group.catcher = catchers.TakeHolding(suffix);
  group.pitcher = pitchers.TakeHolding(suffix);
  const Numbers numbers = TwoNumbers(seat->Name());
  if (group.pitcher == nullptr) group.pitcher = pitchers.TakeNumbered(numbers.first);
  if (group.catcher == nullptr) group.catcher = catchers.TakeNumbered(numbers.first);
  group.handle = handles.TakeNumbered(numbers);
  if (group.handle == nullptr) group.handle = handles.TakeNumbered(numbers.first);
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
  const std::vector<FbxNode*>& seats = visitor.Matches("seat");
  size_t longestSuffix = 0;
  for (const FbxNode* seat : seats) {
    longestSuffix = std::max(longestSuffix, SuffixOfSeat(*seat).size());
  }
  Candidates pitchers(visitor.Matches("pitcher"), longestSuffix);
  Candidates catchers(visitor.Matches("catcher"), longestSuffix);
  Candidates handles(visitor.Matches("handle"), 0);
  for (FbxNode* seat : seats) {
    const PoseNodeGroup group = GroupOfSeat(seat, pitchers, catchers, handles);
    const std::string number = std::to_string(counter++);
    const std::string text = number + "." + std::string(WordAfterNumber(seat->Name()));
    // A pitcher is taken off the candidates but keeps its own name: the runtime knows the place by
    // its seat.
    if (group.catcher != nullptr) names[group.catcher] = _catcherStr + text;
    names[seat] = _seatStr + text;
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
