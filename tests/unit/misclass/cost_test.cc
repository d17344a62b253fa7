#include <gtest/gtest.h>

#include <memory>
#include <tuple>
#include <type_traits>
#include <vector>

#include "testing/virtual_slot.h"
#include "tree/misclassification.h"

namespace tree::testing {
namespace {

static_assert(CostTypeDefault == 0 && CostTypeCustom == 1);
static_assert(std::is_same_v<int, std::underlying_type_t<CostType>>);
static_assert(std::is_convertible_v<CostType, int>);  // unscoped

static_assert(std::is_abstract_v<Cost>);
static_assert(std::has_virtual_destructor_v<Cost>);
static_assert(sizeof(Cost) == sizeof(void*));  // no fields

using Cell = std::tuple<int, int, double>;

/// Notes what the operations that a subclass has to bring are asked for.
class AskedCost : public Cost {
 public:
  Cost* Clone() const override { return new AskedCost(*this); }
  int GetNumClasses() const override { return 0; }
  double Get(int row, int column) const override {
    reads.emplace_back(row, column, 0.0);
    return 10.0 * row + column;
  }
  bool IsDefault() const override { return false; }
  CostType GetType() const override { return CostTypeCustom; }
  bool Set(CostType /*type*/) override { return false; }
  bool Set(int row, int column, double cost) override {
    writes.emplace_back(row, column, cost);
    return answer;
  }

  mutable std::vector<Cell> reads;
  std::vector<Cell> writes;
  bool answer = true;
};

TEST(Cost, ReadsACellByAskingItsSubclass) {
  AskedCost const costs;

  EXPECT_EQ(costs.GetAt(4, 7), 47.0);
  EXPECT_EQ(costs.reads, (std::vector<Cell>{{4, 7, 0.0}}));
}

TEST(Cost, SetsACellByAskingItsSubclassAndPassesOnTheAnswer) {
  for (bool const answer : {true, false}) {
    SCOPED_TRACE(answer);
    AskedCost costs;
    costs.answer = answer;

    EXPECT_EQ(costs.SetAt(3, 5, 2.5), answer);
    EXPECT_EQ(costs.writes, (std::vector<Cell>{{3, 5, 2.5}}));
  }
}

TEST(Cost, ReadsAndSetsCellsThroughTheInterface) {
  CostImp held;
  Cost& costs = held;

  EXPECT_TRUE(costs.SetAt(0, 1, 4.0));
  EXPECT_FALSE(costs.SetAt(0, 0, 4.0));
  EXPECT_FALSE(costs.SetAt(-1, 0, 4.0));

  EXPECT_EQ(costs.GetAt(0, 1), 4.0);
  EXPECT_EQ(costs.GetAt(0, 0), 0.0);
  EXPECT_EQ(costs.GetAt(0, 2), -1.0);
  EXPECT_EQ(held.Get(0, 1), 4.0);
}

TEST(Cost, IsDeletedThroughTheInterface) {
  std::unique_ptr<Cost> const clone(AskedCost().Clone());

  EXPECT_NE(dynamic_cast<AskedCost*>(clone.get()), nullptr);
}

#if TREE_HAS_SLOTS
TEST(Cost, KeepsTheOrderOfItsVirtualOperations) {
  EXPECT_EQ(VirtualSlot(static_cast<Cost* (Cost::*)() const>(&Cost::Clone)), kFirstSlot + 0);
  EXPECT_EQ(VirtualSlot(static_cast<int (Cost::*)() const>(&Cost::GetNumClasses)), kFirstSlot + 1);
  EXPECT_EQ(VirtualSlot(static_cast<double (Cost::*)(int, int) const>(&Cost::Get)), kFirstSlot + 2);
  EXPECT_EQ(VirtualSlot(static_cast<double (Cost::*)(int, int) const>(&Cost::GetAt)),
            kFirstSlot + 3);
  EXPECT_EQ(VirtualSlot(static_cast<bool (Cost::*)() const>(&Cost::IsDefault)), kFirstSlot + 4);
  EXPECT_EQ(VirtualSlot(static_cast<CostType (Cost::*)() const>(&Cost::GetType)), kFirstSlot + 5);
  EXPECT_EQ(VirtualSlot(static_cast<bool (Cost::*)(CostType)>(&Cost::Set)), kFirstSlot + 6);
  EXPECT_EQ(VirtualSlot(static_cast<bool (Cost::*)(int, int, double)>(&Cost::Set)), kFirstSlot + 7);
  EXPECT_EQ(VirtualSlot(static_cast<bool (Cost::*)(int, int, double)>(&Cost::SetAt)),
            kFirstSlot + 8);
}
#endif

}  // namespace
}  // namespace tree::testing
