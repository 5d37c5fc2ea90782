#pragma once

#include <Eigen/Dense>

namespace zentrix {

/// Dense matrix, column-major, indexed by basis function (or orbital as column).
using MATRIX = Eigen::MatrixXd;
using VECTOR = Eigen::VectorXd;

}  // namespace zentrix
