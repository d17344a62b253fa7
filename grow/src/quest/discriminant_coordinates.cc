#include "quest/discriminant_coordinates.h"

#include <cmath>

#include <Eigen/Dense>

namespace tree::grow {

std::vector<double> DiscriminantCoordinates(std::span<double const> weights,
                                            std::size_t numClasses) {
  auto const rows = static_cast<Eigen::Index>(weights.size() / numClasses);
  auto const columns = static_cast<Eigen::Index>(numClasses);
  using Table = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
  Table shares = Eigen::Map<Table const>(weights.data(), rows, columns);
  shares /= shares.sum();
  Eigen::VectorXd const ofCategories = shares.rowwise().sum();
  Eigen::VectorXd const ofClasses = shares.colwise().sum().transpose();

  // With a case as the indicator vector of its category, the variance between classes over the
  // whole variance is greatest for u / sqrt(share of the category), where u is the first left
  // singular vector of the table's standardised differences from independence.
  Table differences = shares - ofCategories * ofClasses.transpose();
  for (Eigen::Index row = 0; row < rows; ++row) {
    for (Eigen::Index column = 0; column < columns; ++column) {
      double const expected = ofCategories(row) * ofClasses(column);
      differences(row, column) =
          expected > 0.0 ? differences(row, column) / std::sqrt(expected) : 0.0;
    }
  }
  Eigen::VectorXd direction;
  double largest = 0.0;
  if (rows <= columns) {
    Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> const solver(differences *
                                                                differences.transpose());
    direction = solver.eigenvectors().col(rows - 1);
    largest = solver.eigenvalues()(rows - 1);
  } else {
    Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> const solver(differences.transpose() *
                                                                differences);
    direction = differences * solver.eigenvectors().col(columns - 1);
    largest = solver.eigenvalues()(columns - 1);
  }
  constexpr double kRounding = 1e-14;
  if (!(largest > kRounding)) return {};
  Eigen::VectorXd scores = direction.cwiseQuotient(ofCategories.cwiseSqrt());
  // Variance 1, and the sign that was promised.
  scores /= std::sqrt(scores.cwiseAbs2().dot(ofCategories));
  Eigen::Index farthest = 0;
  scores.cwiseAbs().maxCoeff(&farthest);
  if (scores(farthest) < 0.0) scores = -scores;
  return {scores.data(), scores.data() + rows};
}

}  // namespace tree::grow
