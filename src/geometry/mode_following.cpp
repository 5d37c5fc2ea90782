#include "geometry/mode_following.hpp"

namespace zentrix::OPTIMIZER {

FOLLOWED_MODE_T follow_mode(const VECTOR& eigenvalues, const MATRIX& vectors, const VECTOR& before,
                            double eigenvalue_before) {
  const Eigen::Index n_negative = (eigenvalues.array() < 0.0).count();
  const Eigen::Index n_candidates = eigenvalue_before < 0.0 && n_negative > 0 ? n_negative : eigenvalues.size();
  Eigen::Index best = 0;
  FOLLOWED_MODE_T followed;
  followed.overlap = (vectors.leftCols(n_candidates).transpose() * before).cwiseAbs().maxCoeff(&best);
  followed.mode = static_cast<int>(best) + 1;
  followed.eigenvalue = eigenvalues(best);
  return followed;
}

}  // namespace zentrix::OPTIMIZER
