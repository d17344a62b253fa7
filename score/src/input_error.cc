#include "tree/score/input_error.h"

namespace tree::score {

InputError::~InputError() = default;

}  // namespace tree::score
