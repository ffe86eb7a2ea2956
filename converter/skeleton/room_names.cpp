#include "converter/skeleton/room_names.h"

#include <algorithm>
#include <regex>
#include <utility>

#include "converter/base/names.h"
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

// Up to two numbers of a name, as text.
using Numbers = std::pair<std::string_view, std::string_view>;

Numbers TwoNumbers(std::string_view name) {
  static const std::regex kPattern("[^0-9]*([0-9]*)([^0-9]*)([0-9]*)");
  const NameMatch match = Search(name, kPattern);
  return {Group(match, 1), Group(match, 3)};
}

// The word after the first number, with one character between them.
std::string_view WordAfterNumber(std::string_view name) {
  static const std::regex kPattern("[^0-9]*[0-9]*.([^\\._0-9]*)[\\._0-9]*");
  return Group(Search(name, kPattern), 1);
}

// What stands behind the word "seat" in a name, up to the end of the line.
std::string_view SuffixOfSeat(std::string_view name) {
  static const std::regex kPattern("(seat)(.*)", std::regex::icase);
  return Group(Search(name, kPattern), 2);
}

// Nodes that seats choose from, one after the other. What is taken is gone, and each test takes the
// first that passes of those that are left.
class Candidates {
 public:
  explicit Candidates(const std::vector<FbxNode*>& nodes) {
    for (FbxNode* node : nodes) {
      const std::string_view name = MatchedPart(node->Name());
      candidates_.push_back({node, name, TwoNumbers(name)});
    }
  }

  // These return null if no node is left that passes.
  FbxNode* TakeHolding(std::string_view text) {
    // The longer the text, the longer the way to a difference in names of one letter.
    return TakeFirst(1 + text.size() * text.size() / 16, [&](const Candidate& c) {
      return c.name.find(text) != std::string_view::npos;
    });
  }
  FbxNode* TakeNumbered(const Numbers& numbers) {
    return TakeFirst(1, [&](const Candidate& c) { return c.numbers == numbers; });
  }
  FbxNode* TakeNumbered(std::string_view first) {
    return TakeFirst(1, [&](const Candidate& c) { return c.numbers.first == first; });
  }

 private:
  struct Candidate {
    FbxNode* node;  // null once it is taken
    std::string_view name;
    Numbers numbers;
  };

  template <typename Test>
  FbxNode* TakeFirst(size_t cost, Test&& test) {
    for (Candidate& candidate : candidates_) {
      if (candidate.node == nullptr) continue;
      if (steps_ < cost) return nullptr;
      steps_ -= cost;
      if (test(candidate)) return std::exchange(candidate.node, nullptr);
    }
    return nullptr;
  }

  std::vector<Candidate> candidates_;
  // Every seat may ask every candidate: with 15,000 of each that takes 6 s. Where there are so many
  // more that the steps run out, in about 10 s, the last seats go without.
  size_t steps_ = 700'000'000;
};

// The places of one seat; null where there is none.
struct PoseNodeGroup {
  FbxNode* pitcher = nullptr;
  FbxNode* catcher = nullptr;
  FbxNode* seat = nullptr;
  FbxNode* handle = nullptr;
};

// Builds the group of one seat, taking its members off the candidates.
PoseNodeGroup GroupOfSeat(FbxNode* seat, Candidates& pitchers, Candidates& catchers,
                          Candidates& handles) {
  PoseNodeGroup group;
  group.seat = seat;
  const std::string_view name = MatchedPart(seat->Name());
  const std::string_view suffix = SuffixOfSeat(name);
  group.catcher = catchers.TakeHolding(suffix);
  group.pitcher = pitchers.TakeHolding(suffix);
  const Numbers numbers = TwoNumbers(name);
  if (group.pitcher == nullptr) group.pitcher = pitchers.TakeNumbered(numbers.first);
  if (group.catcher == nullptr) group.catcher = catchers.TakeNumbered(numbers.first);
  group.handle = handles.TakeNumbered(numbers);
  if (group.handle == nullptr) group.handle = handles.TakeNumbered(numbers.first);
  return group;
}

}  // namespace

NodeNameVisitor::NodeNameVisitor(std::vector<std::string> patterns, bool stopOnMatch,
                                 bool caseSensitive, bool searchWithinName)
    : patterns_(std::move(patterns)),
      stopOnMatch_(stopOnMatch),
      searchWithinName_(searchWithinName) {
  const auto flags =
      std::regex::ECMAScript | (caseSensitive ? std::regex::flag_type() : std::regex::icase);
  for (const std::string& pattern : patterns_) expressions_.emplace_back(pattern, flags);
}

bool NodeNameVisitor::VisitNode(FbxNode* node) {
  const std::string_view name = MatchedPart(node->Name());
  bool hit = false;
  for (size_t i = 0; i < patterns_.size(); ++i) {
    const bool matches = searchWithinName_
                             ? std::regex_search(name.begin(), name.end(), expressions_[i])
                             : std::regex_match(name.begin(), name.end(), expressions_[i]);
    if (!matches) continue;
    matches_[patterns_[i]].push_back(node);
    hit = true;
  }
  return hit && stopOnMatch_;
}

const std::vector<FbxNode*>& NodeNameVisitor::Matches(const std::string& pattern) const {
  static const std::vector<FbxNode*> kNone;
  const auto found = matches_.find(pattern);
  return found == matches_.end() ? kNone : found->second;
}

const std::vector<std::string>& RoomPatterns() {
  static const std::vector<std::string> kPatterns = {
      kFloorPattern, kCeilingPattern,
      kWallPattern,  "camera",
      "seat",        "pitcher",
      "catcher",     "handle",
      "light",       "((room).*(skeleton))|((skeleton).*(room))",
  };
  return kPatterns;
}

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
  Candidates pitchers(visitor.Matches("pitcher"));
  Candidates catchers(visitor.Matches("catcher"));
  Candidates handles(visitor.Matches("handle"));
  for (FbxNode* seat : visitor.Matches("seat")) {
    const PoseNodeGroup group = GroupOfSeat(seat, pitchers, catchers, handles);
    const std::string number = std::to_string(counter++);
    const std::string text = number + "." + std::string(WordAfterNumber(MatchedPart(seat->Name())));
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
