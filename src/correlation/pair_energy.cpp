#include "correlation/pair_energy.hpp"

namespace zentrix::CORRELATION {

PAIR_ORBITALS_T pair_orbitals(const INTEGRALS_2E::ERI_PANELS& panels, const SCF::SCF_RESULT_T& scf, const MATRIX& overlap,
                              const MP2_DIMENSIONS_T& sizes) {
  PAIR_ORBITALS_T result;
  MATRIX occupied(sizes.n_basis, 0);
  for (int s = 0; s < sizes.channels; ++s) {
    const auto spin = static_cast<std::size_t>(s);
    const SCF::SPIN_CHANNEL_T& channel = scf.channels[spin];
    const int n_virtual = sizes.virtuals[spin];
    result.virtual_coefficients[spin] = panels.coefficients(channel.orbitals.rightCols(n_virtual));
    result.virtual_energies[spin] = channel.energies.tail(n_virtual);
    if (!sizes.takes_part(s)) continue;
    const int n = sizes.correlated(s);
    const MATRIX own = channel.orbitals.middleCols(sizes.frozen, n);
    MATRIX overlaps;
    if (sizes.channels == 2) {
      const std::size_t other = 1 - spin;
      overlaps = scf.channels[other].orbitals.rightCols(sizes.virtuals[other]).transpose() * overlap * own;
    }
    for (int k = 0; k < n; ++k)
      result.occupied.push_back(
          {s, channel.energies(sizes.frozen + k), sizes.channels == 2 ? VECTOR(overlaps.col(k)) : VECTOR()});
    occupied.conservativeResize(Eigen::NoChange, occupied.cols() + n);
    occupied.rightCols(n) = own;
  }
  result.occupied_coefficients = panels.coefficients(occupied);
  return result;
}

PAIR_ENERGY_T pair_energy(const PAIR_ORBITALS_T& orbitals, int i, int j, PAIR_WORK_T& work) {
  const CORRELATED_ORBITAL_T &first = orbitals.occupied[static_cast<std::size_t>(i)],
                             &second = orbitals.occupied[static_cast<std::size_t>(j)];
  const auto s = static_cast<std::size_t>(first.spin), t = static_cast<std::size_t>(second.spin);
  const VECTOR &e_a = orbitals.virtual_energies[s], &e_b = orbitals.virtual_energies[t];
  work.half.noalias() = work.k * orbitals.virtual_coefficients[t];
  work.mo.noalias() = orbitals.virtual_coefficients[s].transpose() * work.half;  // (ia|jb)
  PAIR_ENERGY_T pair;
  const double occupied = first.energy + second.energy;
  for (Eigen::Index b = 0; b < e_b.size(); ++b) {
    const auto column = work.mo.col(b);
    work.amplitudes = column.array() / (occupied - e_b(b) - e_a.array());
    pair.direct += work.amplitudes.dot(column);
    if (s == t) {
      pair.exchange += work.amplitudes.dot(work.mo.row(b));
    } else {
      pair.spin_overlap += work.amplitudes.dot(second.overlaps) * first.overlaps(b);
    }
  }
  return pair;
}

}  // namespace zentrix::CORRELATION
