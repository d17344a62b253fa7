#include "cart/category_order.h"

#include <Eigen/Eigenvalues>
#include <numeric>

namespace tree::grow {

std::vector<double> PrincipalScores(std::vector<double> const& weights, std::size_t numClasses) {
  using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
  auto const columns = static_cast<Eigen::Index>(numClasses);
  auto const rows = static_cast<Eigen::Index>(weights.size() / numClasses);
  Eigen::Map<RowMajor const> const table(weights.data(), rows, columns);
  Eigen::VectorXd const sums = table.rowwise().sum();
  RowMajor shares = table;
  for (Eigen::Index row = 0; row < rows; ++row) {
    if (sums[row] > 0.0) shares.row(row) /= sums[row];
  }
  Eigen::RowVectorXd const mean = table.colwise().sum() / sums.sum();
  RowMajor const deviations = shares.rowwise() - mean;
  Eigen::MatrixXd const covariance = deviations.transpose() * sums.asDiagonal() * deviations;
  Eigen::VectorXd component =
      Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd>(covariance).eigenvectors().rightCols<1>();
  // A component has no sign of its own; its largest element gives it one.
  Eigen::Index largest = 0;
  component.cwiseAbs().maxCoeff(&largest);
  if (component[largest] < 0.0) component = -component;
  Eigen::VectorXd const scores = shares * component;
  return {scores.data(), scores.data() + scores.size()};
}

std::vector<std::vector<double>> SuperclassShares(std::vector<double> const& weights,
                                                  std::size_t numClasses) {
  std::size_t const numCategories = weights.size() / numClasses;
  std::vector<std::vector<double>> shares(numClasses - 1, std::vector<double>(numCategories));
  for (std::size_t category = 0; category < numCategories; ++category) {
    double const* const ofCategory = weights.data() + category * numClasses;
    double const sum = std::accumulate(ofCategory, ofCategory + numClasses, 0.0);
    double below = 0.0;
    for (std::size_t j = 0; j + 1 < numClasses && sum > 0.0; ++j) {
      below += ofCategory[j];
      shares[j][category] = below / sum;
    }
  }
  return shares;
}

}  // namespace tree::grow
