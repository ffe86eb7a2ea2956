#include "converter/skeleton/skeleton_roots.h"

#include <algorithm>
#include <string>
#include <utility>

#include "converter/base/complaint.h"
#include "converter/base/records.h"
#include "converter/scene/node_paths.h"
#include "fbx/scene/fbx_node.h"

namespace {

// Calls `visit` for the parts of the text between "/", until it returns false.
template <typename Visit>
void ForEachComponent(std::string_view text, Visit&& visit) {
  for (;;) {
    const size_t end = text.find('/');
    if (!visit(text.substr(0, end)) || end == std::string_view::npos) return;
    text.remove_prefix(end + 1);
  }
}

}  // namespace

BoneNameMap::BoneNameMap(NodeSpan nodes) {
  for (size_t i = 0; i < nodes.size(); ++i) {
    Bone& bone = bones_[static_cast<size_t>(Enter(nodes[i]))];
    if (bone.id < 0) ++count_;
    bone.id = static_cast<int>(i);
  }
  RankPaths();
}

// The entry of the nearest node above that has one, or of `node` itself, with the nodes from `node`
// up to it in `chain`.
int BoneNameMap::Climb(const FbxNode* node, std::vector<const FbxNode*>& chain) const {
  for (; node != nullptr; node = node->GetParent()) {
    const auto known = entryOfNode_.find(node);
    if (known != entryOfNode_.end()) return known->second;
    chain.push_back(node);
  }
  return kTop;
}

// The entry of the node's path; those above it are entered too.
int BoneNameMap::Enter(const FbxNode* node) {
  std::vector<const FbxNode*> chain;
  int entry = Climb(node, chain);
  for (size_t i = chain.size(); i-- > 0;) {
    ForEachComponent(chain[i]->Name(), [&](std::string_view name) {
      const auto [at, isNew] = entries_.try_emplace({entry, name}, static_cast<int>(bones_.size()));
      if (isNew) bones_.emplace_back();
      entry = at->second;
      return true;
    });
    entryOfNode_.emplace(chain[i], entry);
  }
  return entry;
}

const Bone* BoneNameMap::Find(const FbxNode* node) const {
  std::vector<const FbxNode*> chain;
  int entry = Climb(node, chain);
  for (size_t i = chain.size(); i-- > 0 && entry != kNone;) {
    entry = FindBelow(entry, chain[i]->Name());
  }
  return BoneOf(entry);
}

const Bone* BoneNameMap::Find(std::string_view path) const { return BoneOf(FindBelow(kTop, path)); }

int BoneNameMap::FindBelow(int entry, std::string_view path) const {
  ForEachComponent(path, [&](std::string_view name) {
    const auto found = entries_.find({entry, name});
    entry = found == entries_.end() ? kNone : found->second;
    return entry != kNone;
  });
  return entry;
}

const Bone* BoneNameMap::BoneOf(int entry) const {
  if (entry == kNone || bones_[static_cast<size_t>(entry)].id < 0) return nullptr;
  return &bones_[static_cast<size_t>(entry)];
}

// In the order of whole paths what is below a component does not follow it at once: "a b" stands
// between "a" and "a/x". So a component and what is below it are sorted apart, the latter by the
// component with its "/".
void BoneNameMap::RankPaths() {
  std::vector<std::vector<const std::pair<const Component, int>*>> below(bones_.size());
  for (const auto& entry : entries_) {
    below[static_cast<size_t>(entry.first.above)].push_back(&entry);
  }
  struct Step {
    std::string text;
    int entry;
    bool isBelow;
  };
  std::vector<Step> pending;  // the first one last
  const auto open = [&](int above) {
    const auto first = static_cast<ptrdiff_t>(pending.size());
    for (const auto* component : below[static_cast<size_t>(above)]) {
      const int entry = component->second;
      std::string name(component->first.name);
      const bool hasMore = !below[static_cast<size_t>(entry)].empty();
      if (hasMore) pending.push_back({name + '/', entry, true});
      pending.push_back({std::move(name), entry, false});
    }
    std::sort(pending.begin() + first, pending.end(),
              [](const Step& a, const Step& b) { return a.text > b.text; });
  };
  open(kTop);
  int next = 0;
  while (!pending.empty()) {
    const Step step = std::move(pending.back());
    pending.pop_back();
    if (step.isBelow) {
      open(step.entry);
    } else if (Bone& bone = bones_[static_cast<size_t>(step.entry)]; bone.id >= 0) {
      bone.rank = next++;
    }
  }
}

std::vector<FbxNode*> BuildRootList(FbxWrapper* wrapper, const ConversionArguments& args) {
  std::vector<FbxNode*> roots;
  for (const NodeSpan& skeleton : wrapper->BuildSkeletonList(args.treatAsRoom)) {
    roots.push_back(skeleton.front());
  }
  return roots;
}

NodeSpan BuildSkeleton(FbxWrapper* wrapper, const FbxNode* root, const ConversionArguments& args) {
  for (const NodeSpan& skeleton : wrapper->BuildSkeletonList(args.treatAsRoom)) {
    if (skeleton.front() == root) return skeleton;
  }
  return {};
}

BoneNameMap BuildBoneNameMap(NodeSpan nodes) { return BoneNameMap(nodes); }

SkeletonRoot GetSkeletonRoot(FbxWrapper* wrapper, const ConversionArguments& args) {
  const std::string& wanted = args.skeletonRootPath;
  if (FbxNode* node = wrapper->GetNodeByPath(wanted)) return {node, wanted};
  if (wanted != "find") return {nullptr, wanted};
  const std::vector<FbxNode*> roots = BuildRootList(wrapper, args);
  if (roots.size() > 1) {
    AddError("You must choose a skeleton root:\n");
    std::vector<std::string> paths;
    for (const FbxNode* root : roots) paths.push_back(BuildRootNodeName(root, nullptr));
    Complain("--root=find finds several skeletons: " + QuotedList(paths));
    return {nullptr, wanted};
  }
  if (roots.empty()) {
    AddWarning("No skeleton roots found in FBX, using RootNode");
    Complain("--root=find finds no skeleton and takes the scene's root");
    return {wrapper->GetNodeByPath(kRootNodeName), std::string(kRootNodeName)};
  }
  const std::string path = BuildRootNodeName(roots.front(), nullptr);
  AddWarning("Using node " + path + " as skeleton root");
  FbxNode* node = wrapper->GetNodeByPath(path);
  if (node == nullptr) PrintFormatted("Node %s not found in FBX\n", path.c_str());
  return {node, path};
}

CommandSkeleton GetCommandSkeleton(FbxWrapper* wrapper, const ConversionArguments& args) {
  CommandSkeleton skeleton{args.skeletonRootPath, std::string(kRootNodeName), {}};
  if (args.skeletonRootPath.empty()) return skeleton;
  SkeletonRoot root = GetSkeletonRoot(wrapper, args);
  skeleton.rootPath = std::move(root.path);
  if (root.node == nullptr) return skeleton;
  skeleton.nodes = BuildSkeleton(wrapper, root.node, args);
  if (!skeleton.nodes.empty()) skeleton.name = BuildRootNodeName(root.node, nullptr);
  return skeleton;
}
