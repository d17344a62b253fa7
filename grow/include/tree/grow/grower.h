#ifndef TREE_GROW_GROWER_H_
#define TREE_GROW_GROWER_H_

/// @file
/// The growing algorithms. `MakeGrower` gives one for any kind of settings that is supported; it
/// grows, prunes and validates trees through the interface that all algorithms share
/// (`TreeAlgorithm`), and hands out the tree for routing and printing.
///
///     CoreSettingsImp const core = MakeCoreSettings(data, roles);
///     CCartSettingsImp settings(core);
///     std::unique_ptr<Grower> const grower = MakeGrower(data, roles, settings);
///     if (grower->Grow() && grower->Prune() && grower->Validate()) {
///       std::cout << *grower->GetStatistics();
///     } else {
///       std::cerr << grower->GetFailureMessage() << '\n';
///     }
///
/// The same data, settings and seed give the same tree, bit for bit, for every number of threads,
/// and for every order of the cases unless some are drawn, as folds and test samples are. Threads:
/// a grower is used by one thread at a time.

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "tree/export.h"
#include "tree/grow/data_set.h"
#include "tree/grow/input_error.h"
#include "tree/results.h"
#include "tree/settings.h"

namespace tree::grow {

/// What a grower needs to know beyond the settings of its algorithm.
struct GrowOptions {
  /// Number of threads that work; 0 for as many as the machine can run at a time.
  int numThreads = 0;
  /// The share of the cases that a split-sample validation draws for its test sample, in (0, 1).
  /// Not used where a column of the data says which sample each case belongs to.
  double testShare = 0.3;
  /// Ordered predictors with at most so many different values are held as codes of them, which is
  /// faster where they are few; the tree does not depend on it. From 0 to 65535.
  int maxCodedValues = 256;
  /// CHAID divides each continuous predictor with more values into at most so many intervals that
  /// hold about equally many training cases each; they end at values of cases. Ordinal predictors
  /// keep their values, as long as there are no more than 65535. From 2 to 65535.
  int numIntervals = 10;
  /// Hears of the progress while the data is read, and of that of all operations until the grower
  /// is given another listener; null for nobody. **Borrowed**.
  ProgressListener* listener = nullptr;
};

/// A growing algorithm on a data set.
///
/// What validation draws, it draws case by case: one of frequency 3 is three cases, which may end
/// in different samples or folds, so drawing takes time and memory for all of them. Where some
/// frequency is no whole number, each row is drawn as a whole, with a remark.
///
/// Cross-validation measures how trees do that are grown and pruned by the settings, not the tree
/// at hand: after `Prune`, `Validate` gives the risk at the complexity that was chosen; after
/// `Grow`, and after changes by `GrowNode`, `ApplySplit`, `PruneNode` or `SetTree`, that of trees
/// that are grown out.
///
/// Of k classes, each node holds k counts; costs take time and memory by k squared, and so may
/// nominal predictors. Above 1000 classes there is a remark.
class TREE_API Grower : public TreeAlgorithm {
 public:
  ~Grower() override;

  /// Number of cases that count in the sample, repeated ones as often as their frequency says;
  /// rounded, but not to 0.
  virtual std::size_t GetNumCases(DataSample sample) const noexcept = 0;
  /// How many cases of the data set count in neither sample. **Borrowed**.
  virtual LeftOutCases const& GetLeftOut() const noexcept = 0;
  /// What the user should know about the data, as sentences: predictors that are not used and why,
  /// once the first operation has looked at them. **Borrowed** until the next operation.
  virtual std::vector<std::string> const& GetRemarks() const noexcept = 0;
  /// The number of folds of a cross-validation: that of the settings, or of the cases if that is
  /// less.
  virtual int GetNumFolds() const noexcept = 0;
};

/// A grower for these settings, without a tree. `data`: **borrowed** for the grower's life, and not
/// to be changed. `settings`: **copied**; made from `MakeCoreSettings` of the same data and roles,
/// with `CCartSettingsImp`, `CChaidSettingsImp` or `QuestSettingsImp` for a nominal or ordinal
/// target and `RCartSettingsImp` or `RChaidSettingsImp` for a continuous one. Throws `InputError`
/// for what `CaseSelection` refuses, for settings that do not fit the data, and for options out of
/// range. Reads the target and the weights, which is linear in the cases; null when the listener of
/// the options ends that. The first operation reads the predictors.
TREE_API std::unique_ptr<Grower> MakeGrower(DataSet const& data, CaseRoles const& roles,
                                            AlgSettings const& settings,
                                            GrowOptions const& options = {});

/// Writes the values that the predictors have in one case of the data set to `values`, in order of
/// the predictors: what `NodeImp::DropObservationThroughTree` routes. `values`: an array of one
/// double per predictor. Requires valid indexes.
TREE_API void CopyCase(DataSet const& data, std::vector<int> const& predictors, std::size_t row,
                       double* values);

}  // namespace tree::grow

#endif  // TREE_GROW_GROWER_H_
