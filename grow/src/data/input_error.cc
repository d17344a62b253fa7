#include "tree/grow/input_error.h"

namespace tree::grow {

InputError::~InputError() = default;

}  // namespace tree::grow
