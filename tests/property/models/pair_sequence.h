#ifndef TREE_TESTS_PROPERTY_MODELS_PAIR_SEQUENCE_H_
#define TREE_TESTS_PROPERTY_MODELS_PAIR_SEQUENCE_H_

#include <cstddef>
#include <memory>
#include <vector>

#include "property/models/agree.h"
#include "property/models/choices.h"

namespace tree::testing {

/// What a copy of `model` holds: the same, unless the model says otherwise by `Copy()`.
template <class Model>
Model CopyOf(Model const& model) {
  if constexpr (requires { model.Copy(); }) {
    return model.Copy();
  } else {
    return model;
  }
}

/// Whether two objects with these models are equal: by `Equals()` of the model, if it has one.
template <class Model>
bool AreEqual(Model const& a, Model const& b) {
  if constexpr (requires { a.Equals(b); }) {
    return a.Equals(b);
  } else {
    return a == b;
  }
}

/// Two objects of a class, changed, assigned to each other or themselves, copied, cloned and, where
/// the class can, compared in turn. After each step both must be as their models. `Change` and
/// `Check` are overloaded for the class and its model.
template <class Imp, class Model>
void RunPair(Choices& choices) {
  std::vector<std::unique_ptr<Imp>> objects;
  objects.push_back(std::make_unique<Imp>());
  objects.push_back(std::make_unique<Imp>());
  std::vector<Model> models(2);
  while (choices.Any()) {
    auto const which = static_cast<std::size_t>(choices.Below(2));
    auto const from = static_cast<std::size_t>(choices.Below(2));
    int const operation = choices.Below(12);
    if (operation == 1) {
      *objects[which] = *objects[from];
      if (which != from) models[which] = CopyOf(models[from]);
    } else if (operation == 2) {
      objects[which] = std::make_unique<Imp>(*objects[from]);
      models[which] = CopyOf(models[from]);
    } else if (operation == 3) {
      if constexpr (requires { objects[from]->Clone(); }) {
        objects[which].reset(&dynamic_cast<Imp&>(*objects[from]->Clone()));
        models[which] = CopyOf(models[from]);
      }
    } else {
      Change(*objects[which], models[which], choices);
    }
    for (std::size_t each : {0U, 1U}) {
      Check(*objects[each], models[each]);
      if constexpr (requires { *objects[0] == *objects[each]; }) {
        Agree("operator==", *objects[0] == *objects[each], AreEqual(models[0], models[each]));
      }
    }
  }
}

}  // namespace tree::testing

#endif  // TREE_TESTS_PROPERTY_MODELS_PAIR_SEQUENCE_H_
