#include "tree/assertions.h"
#include "tree/results.h"
#include "tree/support.h"

namespace tree {

GainsIntf::~GainsIntf() = default;

Gains::Gains() = default;

Gains::Gains(Gains const& other)
    : table_(other.table_ == nullptr ? nullptr : other.table_->Clone()) {}

Gains& Gains::operator=(Gains const& other) {
  if (this == &other) return *this;
  table_.reset(other.table_ == nullptr ? nullptr : other.table_->Clone());
  return *this;
}

Gains& Gains::operator=(GainsIntf const& table) {
  internal::Require(&table != table_.get(),
                    "Gains::operator=", "the table assigned is the one that is held");
  table_.reset();
  table_.reset(table.Clone());
  return *this;
}

Gains::~Gains() = default;

int Gains::GetNumRows() const { return table_ == nullptr ? 0 : table_->GetNumRows(); }

bool Gains::HasColumn(int column) const { return table_ != nullptr && table_->HasColumn(column); }

int Gains::GetNumNodes(int row) const { return table_ == nullptr ? 0 : table_->GetNumNodes(row); }

Node const* Gains::GetNode(int row, int position) const {
  return table_ == nullptr ? nullptr : table_->GetNode(row, position);
}

double Gains::GetValue(int row, int column) const {
  return table_ == nullptr ? systemMissingValue() : table_->GetValue(row, column);
}

}  // namespace tree
