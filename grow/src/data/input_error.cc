#include "tree/grow/input_error.h"

namespace tree::grow {

InputError::~InputError() = default;

CaseError::CaseError(std::string const& where, std::size_t row, std::string const& why)
    : InputError(where + ": case " + std::to_string(row) + ": " + why),
      where_(where),
      row_(row),
      why_(why) {}

CaseError::~CaseError() = default;

}  // namespace tree::grow
