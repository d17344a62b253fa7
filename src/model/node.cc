#include <algorithm>
#include <cstddef>

#include "tree/assertions.h"
#include "tree/nodes.h"

namespace tree {

namespace {

std::size_t Slot(DataSample sample) { return sample == TrainingSample ? 0 : 1; }

template <class T>
T* At(std::vector<std::unique_ptr<T>> const& owned, unsigned int position, char const* operation) {
  internal::RequireIndex(position, owned.size(), operation);
  return owned[position].get();
}

// Replaces every entry by null and gives up what the old ones pointed to.
template <class T>
void ResetToNull(std::vector<std::unique_ptr<T>>& owned, std::size_t count) {
  std::vector<std::unique_ptr<T>> fresh(count);
  // Deliberate: the old objects belong to the caller again.
  for (std::unique_ptr<T>& entry : owned) static_cast<void>(entry.release());
  owned.swap(fresh);
}

void ReplaceRule(std::vector<std::unique_ptr<SplitRuleImp>>& rules, unsigned int position,
                 SplitRuleImp* rule, char const* operation) {
  // Storing the rule that is already there must not delete it.
  if (At(rules, position, operation) != rule) rules[position].reset(rule);
}

SplitRule* NewHandle(std::vector<std::unique_ptr<SplitRuleImp>> const& rules,
                     unsigned int position) {
  bool const found = position < rules.size() && rules[position] != nullptr;
  return found ? new SplitRule(*rules[position]) : nullptr;
}

// Clones of the first `count` rules, or of all that there are.
std::vector<std::unique_ptr<SplitRuleImp>> CloneRules(
    std::vector<std::unique_ptr<SplitRuleImp>> const& rules, int count) {
  auto const wanted = static_cast<std::size_t>(std::max(count, 0));
  std::vector<std::unique_ptr<SplitRuleImp>> clones(std::min(wanted, rules.size()));
  std::transform(rules.begin(), rules.begin() + static_cast<std::ptrdiff_t>(clones.size()),
                 clones.begin(), [](auto const& rule) {
                   return std::unique_ptr<SplitRuleImp>(rule == nullptr ? nullptr : rule->Clone());
                 });
  return clones;
}

// Reads the summaries as any reader does: a derived node may answer from elsewhere, or not at all,
// and then what `to` holds stays.
void CopyPredictors(NodeImp const& from, NodeImp& to) {
  int const count = std::max(from.GetNumPredictors(), 0);
  to.SetNumPredictors(static_cast<unsigned int>(count));
  for (int index = 0; index < count; ++index) {
    double minimum = -1.0;
    double maximum = -1.0;
    if (from.GetPredictorRange(index, &minimum, &maximum)) {
      to.SetPredictorRange(index, minimum, maximum);
    }
    int numValues = -1;
    if (from.GetNumPredictorValues(index, &numValues)) {
      to.SetNumPredictorValues(index, numValues);
      std::vector<double> values(static_cast<std::size_t>(std::max(numValues, 0)));
      if (from.GetPredictorValues(index, values.data(), numValues)) {
        to.SetPredictorValues(index, values.data(), numValues);
      }
    }
    bool hasMissingValues = false;
    if (from.GetPredictorMissingValueFlag(index, &hasMissingValues)) {
      to.SetPredictorMissingValueFlag(index, hasMissingValues);
    }
  }
}

// Takes `info` as an object of the library's own class; anything else is deleted.
template <class Imp, class Info>
std::unique_ptr<Imp> TakeAs(Info* info) {
  std::unique_ptr<Info> taken(info);
  auto* const imp = dynamic_cast<Imp*>(info);
  if (imp != nullptr) static_cast<void>(taken.release());
  return std::unique_ptr<Imp>(imp);
}

template <class T>
bool EqualObjects(T const* a, T const* b) {
  return a == nullptr || b == nullptr ? a == b : *a == *b;
}

template <class T>
bool EqualLists(std::vector<std::unique_ptr<T>> const& a,
                std::vector<std::unique_ptr<T>> const& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](auto const& x, auto const& y) { return EqualObjects(x.get(), y.get()); });
}

// Statistics that the first node lacks are not compared.
template <class T>
bool EqualWhereHeld(std::array<std::unique_ptr<T>, 2> const& a,
                    std::array<std::unique_ptr<T>, 2> const& b) {
  return std::equal(a.begin(), a.end(), b.begin(), [](auto const& x, auto const& y) {
    return x == nullptr || EqualObjects(x.get(), y.get());
  });
}

}  // namespace

Node::~Node() = default;

NodeImp::NodeImp() = default;

NodeImp::NodeImp(NodeImp const& other) : Node(other) { CopySubtree(other); }

NodeImp& NodeImp::operator=(NodeImp const& other) {
  if (this == &other) return *this;
  NodeImp copy;
  copy.predictors_ = predictors_;
  copy.CopySubtree(other);
  Clean();
  children_.swap(copy.children_);
  for (std::unique_ptr<NodeImp> const& child : children_) {
    if (child != nullptr) child->parent_ = this;
  }
  competitors_.swap(copy.competitors_);
  surrogates_.swap(copy.surrogates_);
  id_ = copy.id_;
  isClassification_ = copy.isClassification_;
  regInfo_.swap(copy.regInfo_);
  clsInfo_.swap(copy.clsInfo_);
  predictors_.swap(copy.predictors_);
  return *this;
}

NodeImp::~NodeImp() { Clean(); }

Node const* NodeImp::GetParent() const { return parent_; }

int NodeImp::GetNumChildren() const { return static_cast<int>(children_.size()); }

Node const* NodeImp::GetChild(unsigned int position) const {
  return position < children_.size() ? children_[position].get() : nullptr;
}

int NodeImp::GetNumCompetitors() const { return static_cast<int>(competitors_.size()); }

SplitRule* NodeImp::GetCompetitor(unsigned int position) const {
  return NewHandle(competitors_, position);
}

int NodeImp::GetNumSurrogates() const { return static_cast<int>(surrogates_.size()); }

SplitRule* NodeImp::GetSurrogate(unsigned int position) const {
  return NewHandle(surrogates_, position);
}

unsigned int NodeImp::GetId() const { return id_; }

double NodeImp::GetAssignment() const {
  constexpr char kOperation[] = "NodeImp::GetAssignment";
  constexpr char kNeedsStatistics[] = "the node has no statistics of the training sample";
  if (IsClassificationNode()) {
    internal::Require(clsInfo_[0] != nullptr, kOperation, kNeedsStatistics);
    return static_cast<double>(clsInfo_[0]->GetPrediction());
  }
  internal::Require(regInfo_[0] != nullptr, kOperation, kNeedsStatistics);
  return regInfo_[0]->GetPrediction();
}

double NodeImp::GetNodeSize(DataSample sample) const {
  if (IsClassificationNode()) {
    ClsInfoImp const* const info = GetClsInfoImp(sample);
    return info == nullptr ? 0.0 : info->GetCount();
  }
  RegInfoImp const* const info = GetRegInfoImp(sample);
  return info == nullptr ? 0.0 : info->GetCount();
}

double NodeImp::GetUnweightedNodeSize(DataSample sample) const {
  if (IsClassificationNode()) {
    ClsInfoImp const* const info = GetClsInfoImp(sample);
    return info == nullptr ? 0.0 : info->GetUnweightedCount();
  }
  RegInfoImp const* const info = GetRegInfoImp(sample);
  return info == nullptr ? 0.0 : info->GetUnweightedCount();
}

double NodeImp::GetPercentageNodeSize(DataSample sample) const {
  // Deliberate: the two kinds of tree follow two rules, a stored size and a share of the root.
  if (IsClassificationNode()) {
    ClsInfoImp const* const info = GetClsInfoImp(sample);
    return info == nullptr ? 0.0 : info->GetPercentSize();
  }
  Node const* root = this;
  while (root->GetParent() != nullptr) root = root->GetParent();
  double const rootSize = root->GetNodeSize(sample);
  return rootSize > 0.0 ? GetNodeSize(sample) / rootSize : rootSize;
}

int NodeImp::GetNumPredictors() const { return static_cast<int>(predictors_.size()); }

bool NodeImp::GetPredictorRange(int index, double* minimum, double* maximum) const {
  return index >= 0 && index < GetNumPredictors() &&
         predictors_[static_cast<std::size_t>(index)].GetValueRange(minimum, maximum);
}

bool NodeImp::GetNumPredictorValues(int index, int* count) const {
  return index >= 0 && index < GetNumPredictors() &&
         predictors_[static_cast<std::size_t>(index)].GetNumValues(count);
}

bool NodeImp::GetPredictorValues(int index, double* values, int count) const {
  return index >= 0 && index < GetNumPredictors() &&
         predictors_[static_cast<std::size_t>(index)].GetValues(values, count);
}

bool NodeImp::GetPredictorMissingValueFlag(int index, bool* flag) const {
  if (index < 0 || index >= GetNumPredictors()) return false;
  *flag = predictors_[static_cast<std::size_t>(index)].HasMissingValues();
  return true;
}

ClsInfo const* NodeImp::GetClsInfo(DataSample sample) const { return GetClsInfoImp(sample); }

RegInfo const* NodeImp::GetRegInfo(DataSample sample) const { return GetRegInfoImp(sample); }

bool NodeImp::RemoveChildren(bool /*ignored*/) {
  DeleteSubtrees();
  surrogates_.clear();
  return true;
}

bool NodeImp::IsClassificationNode() const { return isClassification_; }

void NodeImp::SetId(unsigned int id) { id_ = id; }

void NodeImp::SetClassificationNode(bool flag) { isClassification_ = flag; }

ClsInfoImp* NodeImp::GetClsInfoImp(DataSample sample) const { return clsInfo_[Slot(sample)].get(); }

RegInfoImp* NodeImp::GetRegInfoImp(DataSample sample) const { return regInfo_[Slot(sample)].get(); }

void NodeImp::SetClsInfo(ClsInfo* info, DataSample sample) {
  // Storing the object that is already there must not delete it.
  std::unique_ptr<ClsInfoImp>& held = clsInfo_[Slot(sample)];
  if (info == nullptr || info != held.get()) held = TakeAs<ClsInfoImp>(info);
  for (std::unique_ptr<RegInfoImp>& other : regInfo_) other.reset();
  isClassification_ = true;
}

void NodeImp::SetRegInfo(RegInfo* info, DataSample sample) {
  std::unique_ptr<RegInfoImp>& held = regInfo_[Slot(sample)];
  if (info == nullptr || info != held.get()) held = TakeAs<RegInfoImp>(info);
  for (std::unique_ptr<ClsInfoImp>& other : clsInfo_) other.reset();
  isClassification_ = false;
}

void NodeImp::SetNumChildren(int count) {
  ResetToNull(children_, static_cast<std::size_t>(std::max(count, 0)));
}

void NodeImp::SetNumCompetitors(unsigned int count) { ResetToNull(competitors_, count); }

void NodeImp::SetNumSurrogates(unsigned int count) { ResetToNull(surrogates_, count); }

void NodeImp::SetChild(unsigned int position, Node* child) {
  auto* const node = dynamic_cast<NodeImp*>(child);
  internal::Require(node != nullptr || child == nullptr, "NodeImp::SetChild",
                    "the child is not a NodeImp");
  internal::RequireIndex(position, children_.size(), "NodeImp::SetChild");
  // Deliberate: the entry's old object lives on, in the hands of the caller.
  static_cast<void>(children_[position].release());
  children_[position].reset(node);
  if (node != nullptr) node->parent_ = this;
}

void NodeImp::SetCompetitor(unsigned int position, SplitRuleImp* rule) {
  ReplaceRule(competitors_, position, rule, "NodeImp::SetCompetitor");
}

void NodeImp::SetSurrogate(unsigned int position, SplitRuleImp* rule) {
  ReplaceRule(surrogates_, position, rule, "NodeImp::SetSurrogate");
}

NodeImp* NodeImp::GetChildImp(unsigned int position) const {
  return At(children_, position, "NodeImp::GetChildImp");
}

SplitRuleImp* NodeImp::GetCompetitorImp(unsigned int position) const {
  return At(competitors_, position, "NodeImp::GetCompetitorImp");
}

SplitRuleImp* NodeImp::GetSurrogateImp(unsigned int position) const {
  return At(surrogates_, position, "NodeImp::GetSurrogateImp");
}

void NodeImp::SetNumPredictors(unsigned int count) { predictors_.resize(count); }

void NodeImp::SetPredictorRange(int index, double minimum, double maximum) {
  internal::RequireIndex(index, predictors_.size(), "NodeImp::SetPredictorRange");
  predictors_[static_cast<std::size_t>(index)].SetValueRange(minimum, maximum);
}

void NodeImp::SetNumPredictorValues(int index, int count) {
  internal::RequireIndex(index, predictors_.size(), "NodeImp::SetNumPredictorValues");
  predictors_[static_cast<std::size_t>(index)].SetNumValues(count);
}

void NodeImp::SetPredictorValues(int index, double const* values, int count) {
  internal::RequireIndex(index, predictors_.size(), "NodeImp::SetPredictorValues");
  predictors_[static_cast<std::size_t>(index)].SetValues(values, count);
}

void NodeImp::SetPredictorMissingValueFlag(int index, bool flag) {
  internal::RequireIndex(index, predictors_.size(), "NodeImp::SetPredictorMissingValueFlag");
  predictors_[static_cast<std::size_t>(index)].SetHasMissingValues(flag);
}

void NodeImp::RemoveChild(int position) {
  if (position >= 0 && position < GetNumChildren()) children_.erase(children_.begin() + position);
}

void NodeImp::ReorderSiblings(std::vector<int> const& order) {
  Children reordered(children_.size());
  if (!competitors_.empty() && competitors_.front() != nullptr) {
    competitors_.front()->ReorderMappings(order);
  }
  for (std::unique_ptr<SplitRuleImp> const& surrogate : surrogates_) {
    if (surrogate != nullptr) surrogate->ReorderMappings(order);
  }
  for (std::size_t old = 0; old < children_.size(); ++old) {
    internal::RequireIndex(static_cast<long long>(old), order.size(), "NodeImp::ReorderSiblings");
    internal::RequireIndex(order[old], reordered.size(), "NodeImp::ReorderSiblings");
    auto const position = static_cast<std::size_t>(order[old]);
    internal::Require(reordered[position] == nullptr, "NodeImp::ReorderSiblings",
                      "two children are sent to one position");
    reordered[position] = std::move(children_[old]);
  }
  children_.swap(reordered);
}

void NodeImp::Clean() {
  // Virtual on purpose; from the destructor, this class's own operation is the one that is meant.
  RemoveChildren(false);  // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall)
  for (std::unique_ptr<ClsInfoImp>& info : clsInfo_) info.reset();
  for (std::unique_ptr<RegInfoImp>& info : regInfo_) info.reset();
  competitors_.clear();
}

NodeImp* NodeImp::Clone() const { return new NodeImp(*this); }

bool NodeImp::operator==(NodeImp const& other) const {
  if (!EqualLists(children_, other.children_)) return false;
  if (auto const* const parent = dynamic_cast<NodeImp const*>(GetParent())) {
    if (!EqualObjects(parent, dynamic_cast<NodeImp const*>(other.GetParent()))) return false;
  }
  return EqualLists(competitors_, other.competitors_) &&
         EqualLists(surrogates_, other.surrogates_) && id_ == other.id_ &&
         isClassification_ == other.isClassification_ && EqualWhereHeld(regInfo_, other.regInfo_) &&
         EqualWhereHeld(clsInfo_, other.clsInfo_) && predictors_ == other.predictors_;
}

// Copies in prefix order. A copied node's children so far tell which child of its source comes
// next, so only the way back up the source needs a memory.
void NodeImp::CopySubtree(NodeImp const& other) {
  CopyAllButChildren(other);
  NodeImp* copy = this;
  std::vector<NodeImp const*> path{&other};
  while (!path.empty()) {
    Children const& source = path.back()->children_;
    std::size_t const next = copy->children_.size();
    if (next == source.size()) {
      path.pop_back();
      copy = copy->parent_;
    } else if (source[next] == nullptr) {
      copy->children_.emplace_back();
    } else {
      auto child = std::make_unique<NodeImp>();
      child->CopyAllButChildren(*source[next]);
      child->parent_ = copy;
      path.push_back(source[next].get());
      copy->children_.push_back(std::move(child));
      copy = copy->children_.back().get();
    }
  }
}

void NodeImp::CopyAllButChildren(NodeImp const& other) {
  children_.reserve(other.children_.size());
  competitors_ = CloneRules(other.competitors_, other.GetNumCompetitors());
  surrogates_ = CloneRules(other.surrogates_, other.GetNumSurrogates());
  id_ = other.id_;
  CopyPredictors(other, *this);
  isClassification_ = other.isClassification_;
  for (DataSample const sample : {TrainingSample, TestSample}) {
    std::size_t const slot = Slot(sample);
    if (isClassification_) {
      if (other.clsInfo_[slot] != nullptr) clsInfo_[slot].reset(other.clsInfo_[slot]->Clone());
    } else if (other.regInfo_[slot] != nullptr) {
      regInfo_[slot] = std::make_unique<RegInfoImp>(*other.regInfo_[slot]);
    }
  }
}

// Deletes the deepest nodes first, finding the way by the nodes themselves: neither the depth of
// the tree nor a lack of memory can stop a deletion. Later children go before earlier ones: what
// was allocated last is freed first, which allocators like best.
void NodeImp::DeleteSubtrees() {
  NodeImp* node = this;
  for (;;) {
    Children& children = node->children_;
    if (children.empty()) {
      if (node == this) return;
      node = node->parent_;
      node->children_.pop_back();
    } else if (children.back() == nullptr) {
      children.pop_back();
    } else {
      NodeImp* const child = children.back().get();
      child->parent_ = node;  // a node stored in two trees in turn may name the other one
      node = child;
    }
  }
}

}  // namespace tree
