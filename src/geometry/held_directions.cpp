#include "geometry/held_directions.hpp"

#include <Eigen/SVD>

namespace zentrix::OPTIMIZER {

SPLIT_T split_directions(const COORDINATE_SYSTEM_T& system, const COORDINATE_POINT_T& here) {
  constexpr double dependent = 1e-6;  // share of a held coordinate that the other held ones leave it
  const std::vector<HELD_T> held = system.held();
  const Eigen::Index rank = here.frame.u.cols();
  SPLIT_T parts;
  parts.correction = VECTOR::Zero(rank);
  parts.free = MATRIX::Identity(rank, rank);
  if (held.empty()) return parts;
  MATRIX directions(rank, static_cast<Eigen::Index>(held.size()));
  VECTOR target = here.values;
  for (std::size_t n = 0; n < held.size(); ++n) {
    directions.col(static_cast<Eigen::Index>(n)) = here.frame.u.row(held[n].index).transpose();
    target(held[n].index) = held[n].target;
  }
  const VECTOR differences = system.difference(target, here.values);
  VECTOR wanted(directions.cols());
  for (std::size_t n = 0; n < held.size(); ++n) wanted(static_cast<Eigen::Index>(n)) = differences(held[n].index);
  parts.error = wanted.lpNorm<Eigen::Infinity>();
  Eigen::JacobiSVD<MATRIX> svd(directions, Eigen::ComputeFullU | Eigen::ComputeThinV);
  svd.setThreshold(dependent);
  const Eigen::Index n_held = svd.rank();
  const VECTOR along =
      (svd.matrixV().leftCols(n_held).transpose() * wanted).cwiseQuotient(svd.singularValues().head(n_held));
  parts.correction = svd.matrixU().leftCols(n_held) * along;
  parts.free = svd.matrixU().rightCols(rank - n_held);
  return parts;
}

VECTOR free_gradient(const COORDINATE_POINT_T& here, const SPLIT_T& parts) {
  if (parts.free.cols() == 0) return VECTOR::Zero(here.gradient.size());
  const MATRIX free = here.frame.u * parts.free;
  return free * (free.transpose() * here.gradient);
}

}  // namespace zentrix::OPTIMIZER
