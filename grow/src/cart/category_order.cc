#include "cart/category_order.h"

#include <Eigen/Eigenvalues>

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

}  // namespace tree::grow
