#ifndef TREE_MISCLASSIFICATION_H_
#define TREE_MISCLASSIFICATION_H_

/// @file
/// The misclassification model of classification trees: prior probabilities of the target's classes
/// (`Priors`), the costs of taking one class for another (`Cost`), and scores of the categories of
/// an ordinal target (`Scores`). Each is an interface with one implementation; settings own one of
/// each and hand it out. Classes are indexed from 0.
/// Threads: concurrent const operations on an unchanged object are safe.

#include <memory>
#include <vector>

#include "tree/containers.h"
#include "tree/export.h"

namespace tree {

/// How misclassification costs came about.
enum CostType : int {
  CostTypeDefault = 0,  ///< 0 on the diagonal, 1 elsewhere
  CostTypeCustom = 1,   ///< at least one cell was set
};

/// A square matrix of misclassification costs between classes, both indexed from 0, in any one
/// unit. Priors sum its columns, so the column is the class whose prior a cost raises.
class TREE_API Cost {
 public:
  /// An interface holds no data: nothing is copied.
  ///@{
  Cost();
  Cost(Cost const& other);
  ///@}

  virtual ~Cost();
  /// A deep copy. **New**: the caller deletes it.
  virtual Cost* Clone() const = 0;
  /// Number of classes that have costs: the rows, and the columns, of the matrix.
  virtual int GetNumClasses() const = 0;
  /// The cost in cell (row, column); -1.0, which no valid cost can be, outside the matrix. A matrix
  /// is as large as it has been made: new costs have no cells, and setting cell (0, 1) makes 2 x 2
  /// of them, so size it to the classes of the target before weighing anything by it.
  virtual double Get(int row, int column) const = 0;
  /// The same as `Get`.
  virtual double GetAt(int row, int column) const;
  /// Whether every cost off the diagonal is 1, with an absolute tolerance of 1e-12. An empty matrix
  /// is default.
  virtual bool IsDefault() const = 0;
  /// How the costs came about.
  virtual CostType GetType() const = 0;
  /// Goes back to the default matrix of the same size, and returns true. Refuses every type but
  /// `CostTypeDefault`, and that too when it is the present type.
  virtual bool Set(CostType type) = 0;
  /// Sets a cell, makes the costs custom, and returns true; the matrix grows as needed, by the
  /// default pattern. Refuses a negative index, a cost that is negative or NaN, one other than 0 on
  /// the diagonal, and growth that cannot be allocated.
  virtual bool Set(int row, int column, double cost) = 0;
  /// The same as `Set`.
  virtual bool SetAt(int row, int column, double cost);

 protected:
  /// For derived classes; copies nothing.
  Cost& operator=(Cost const& other) = default;
};

/// Misclassification costs. A cell on the diagonal only ever holds 0.
class TREE_API CostImp : public Cost {
 public:
  /// Selects one of the two matrices.
  enum CostMatrix : int {
    CostMatrixMain = 0,       ///< the costs that every other operation means
    CostMatrixSecondary = 1,  ///< filled by `SetDefault` alone
  };

  /// Both matrices empty, type default.
  CostImp();
  /// Copies both matrices and the type.
  ///@{
  CostImp(CostImp const& other);
  CostImp& operator=(CostImp const& other);
  ///@}

  ~CostImp() override;
  Cost* Clone() const override;
  int GetNumClasses() const override;
  double Get(int row, int column) const override;
  bool IsDefault() const override;
  CostType GetType() const override;
  bool Set(CostType type) override;
  bool Set(int row, int column, double cost) override;

  /// Sets a cell and returns true, with the growth and the refusals of `Set`, but leaves the type
  /// alone.
  bool SetImp(int row, int column, double cost);
  /// Makes the selected matrix the default one for `count` classes; a negative count leaves it as
  /// it is. Selecting the main one makes the type default, whatever the count.
  void SetDefault(CostMatrix matrix, int count);
  /// As `IsDefault`. Deliberate: the secondary matrix, once it has a row, is default without a look
  /// at its cells.
  bool IsDefaultMatrix(CostMatrix matrix) const;
  /// The selected matrix; the main one instead of a secondary one without rows. **Borrowed** until
  /// the costs change.
  TMatrix<double> const& GetMatrix(CostMatrix matrix) const;
  /// Sets the number of classes, keeping the costs between those that stay and adding new ones by
  /// the default pattern. The type stays. Ignores 0 and negative numbers.
  void Resize(int count);

 private:
  TMatrix<double> main_;
  TMatrix<double> secondary_;
  CostType type_ = CostTypeDefault;
};

/// How prior probabilities are obtained; what the first two stand for is the growing algorithm's
/// convention.
enum PriorType : int {
  PriorTypeDefault = 0,    ///< type of new priors
  PriorTypeAlternate = 1,  ///< the other type that can be chosen
  PriorTypeCustom = 2,     ///< set by setting a single prior, and in no other way
};

/// Prior probabilities of the classes, indexed from 0, with a version altered by misclassification
/// costs, which `PriorsImp::ComputeAltered` computes.
class TREE_API Priors {
 public:
  virtual ~Priors();
  /// A deep copy. **New**: the caller deletes it.
  virtual Priors* Clone() const = 0;
  /// How the priors are obtained.
  virtual PriorType GetType() const = 0;
  /// Whether altered priors are wanted.
  virtual bool HasAlteredValues() const = 0;
  /// Number of classes that have priors.
  virtual int GetNumClasses() const = 0;
  /// The prior of a class; 0.0 for an index out of range.
  virtual double Get(int index) const = 0;
  /// The altered prior of a class, or its prior as long as none have been computed; 0.0 for an
  /// index out of range.
  virtual double GetAltered(int index) const = 0;
  /// Says whether altered priors are wanted; computes nothing.
  virtual void AlterValues(bool flag) = 0;
  /// Sets one prior, makes the priors custom, and returns true; new ones below it are 0, and
  /// nothing is normed. Refuses a negative index, a value that is negative or NaN, and growth that
  /// cannot be allocated.
  virtual bool Set(int index, double value) = 0;
  /// Changes the type, drops all values, and returns true. Refuses `PriorTypeCustom` and the
  /// present type.
  virtual bool Set(PriorType type) = 0;
};

/// Prior probabilities in up to four vectors: the specified ones, which always exist, the altered
/// ones, and two for the growing algorithm's own use. A vector that does not exist is stood in for
/// by the next lower one.
class TREE_API PriorsImp : public Priors {
 public:
  /// Selects one of the four vectors.
  enum PriorVector : int {
    PriorVectorSpecified = 0,       ///< the priors as they were set
    PriorVectorAltered = 1,         ///< made by `ComputeAltered`
    PriorVectorAuxiliary = 2,       ///< altered in place along with the specified one
    PriorVectorAuxiliaryFixed = 3,  ///< never altered
  };

  /// No values, type default, altered priors not wanted.
  PriorsImp();
  /// Copies as `Init` does.
  ///@{
  PriorsImp(PriorsImp const& other);
  PriorsImp& operator=(PriorsImp const& other);
  ///@}

  ~PriorsImp() override;
  Priors* Clone() const override;
  PriorType GetType() const override;
  bool HasAlteredValues() const override;
  int GetNumClasses() const override;
  double Get(int index) const override;
  double GetAltered(int index) const override;
  void AlterValues(bool flag) override;
  bool Set(int index, double value) override;
  bool Set(PriorType type) override;

  /// Takes over type and flag of `other`, and copies of all its vectors.
  void Init(PriorsImp const& other);
  /// The highest vector up to `vector` that exists.
  PriorVector FindValidId(PriorVector vector) const;
  /// The vector; null when it does not exist or `vector` is none of the four. With `fallBack`, the
  /// one that stands in for it. **Borrowed** until it is replaced, or dropped by a change of type.
  ///@{
  TArray<double>* GetVector(PriorVector vector, bool fallBack);
  TArray<double> const* GetVector(PriorVector vector, bool fallBack) const;
  ///@}
  /// The value in the vector, or in the one that stands in for it; 0.0 for an index out of range.
  double Get(int index, PriorVector vector) const;
  /// The values of the vector, or of the one that stands in for it, by class index; null when it
  /// holds none. **Borrowed** until it changes.
  double const* GetValues(PriorVector vector) const;
  /// Hands over an array (**taken** in every case; null removes an auxiliary vector; an array that
  /// this object holds already stays where it is). The auxiliary vector is replaced. Deliberate: an
  /// altered or an auxiliary fixed vector that exists stays, and the array is deleted; so it is for
  /// the specified vector, which always exists.
  void SetVector(PriorVector vector, TArray<double>* values);
  /// Sets one value of a vector, which comes into being where needed, and returns true. Refuses a
  /// negative index, a value that is negative or NaN, and growth that cannot be allocated.
  bool Set(int index, double value, PriorVector vector);
  /// Sets the number of specified priors and returns true; new ones are 0, the other vectors stay.
  /// Refuses the present number, a negative one, and growth that cannot be allocated.
  bool Resize(int count);
  /// Computes the altered priors, and alters the auxiliary vector if it exists; does nothing, which
  /// is fine, if they are not wanted. Deliberate: altered priors are computed once per definition
  /// of the priors, so a second call leaves them as they are; the auxiliary vector is altered by
  /// every call that finds costs. False when no costs weigh in. `costs`: for as many classes as
  /// there are priors; a cell that it lacks weighs -1. Source: Breiman, Friedman, Olshen and Stone
  /// 1984, section 4.4, altered priors.
  bool ComputeAltered(Cost const& costs);
  /// Hands to `destination` (`SetVector`) the vector p of `source`, weighted by the costs and
  /// normed to sum 1, and returns true: a[j] is proportional to p[j] times the sum of column j.
  /// Refuses a total that is not positive, as that of a vector that does not exist. Costs the
  /// square of the number of classes.
  bool AlterPriorVector(PriorVector destination, PriorVector source, Cost const& costs);

 private:
  using OptionalVector = std::unique_ptr<TArray<double>>;

  bool Holds(TArray<double> const* values) const;

  TArray<double> specified_;
  OptionalVector altered_;
  OptionalVector auxiliary_;
  OptionalVector auxiliaryFixed_;
  bool alterFlag_ = false;
  PriorType type_ = PriorTypeDefault;
};

/// How category scores came about.
enum ScoreType : int {
  ScoreTypeDefault = 0,  ///< the score of category i is i
  ScoreTypeCustom = 1,   ///< at least one score was set
};

/// One score per category of an ordinal target, indexed from 0.
class TREE_API Scores {
 public:
  /// An interface holds no data: nothing is copied.
  ///@{
  Scores();
  Scores(Scores const& other);
  ///@}

  virtual ~Scores();
  /// A deep copy. **New**: the caller deletes it.
  virtual Scores* Clone() const = 0;
  /// Number of categories that have scores.
  virtual int GetNumClasses() const = 0;
  /// How the scores came about.
  virtual ScoreType GetType() const = 0;
  /// The score of a category; `systemMissingValue()` for an index out of range.
  virtual double Get(int index) const = 0;
  /// Gives every category its default score and returns true. Refuses every type but
  /// `ScoreTypeDefault`, which may be repeated.
  virtual bool Set(ScoreType type) = 0;
  /// Sets one score, any value, makes the scores custom, and returns true; missing ones below it
  /// become 0. Refuses a negative index.
  virtual bool Set(int index, double score) = 0;

 protected:
  /// For derived classes; copies nothing.
  Scores& operator=(Scores const& other) = default;
};

/// Category scores.
class TREE_API ScoresImp : public Scores {
 public:
  /// No scores, type default.
  ScoresImp();
  /// Copies the scores and the type.
  ///@{
  ScoresImp(ScoresImp const& other);
  ScoresImp& operator=(ScoresImp const& other);
  ///@}

  ~ScoresImp() override;
  Scores* Clone() const override;
  int GetNumClasses() const override;
  ScoreType GetType() const override;
  double Get(int index) const override;
  bool Set(ScoreType type) override;
  bool Set(int index, double score) override;

  /// Gives every category its index as its score, and makes the type default.
  void SetDefault();
  /// Sets the number of scores. Deliberate: new ones are 0, not their default value, which only
  /// `SetDefault` writes. Requires `count` >= 0.
  void Resize(int count);

 private:
  std::vector<double> scores_;
  ScoreType type_ = ScoreTypeDefault;
};

}  // namespace tree

#endif  // TREE_MISCLASSIFICATION_H_
