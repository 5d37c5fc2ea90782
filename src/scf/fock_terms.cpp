#include <utility>

#include "molecule/molecule.hpp"
#include "report/timing.hpp"
#include "scf/scf.hpp"

// The terms of a Fock matrix. With g the occupation of an orbital (2 or 1) and D = sum_s D_s:
//   one-electron      F_s += H                          E += tr D H
//   Coulomb/exchange  F_s += J(D) - (a/g) K(D_s)        E += 1/2 sum_s tr D_s (J - (a/g) K_s)

namespace zentrix::SCF {
namespace {

double trace_of_product(const MATRIX& a, const MATRIX& b) { return a.cwiseProduct(b).sum(); }

class ONE_ELECTRON_TERM_T : public FOCK_TERM_T {
 public:
  explicit ONE_ELECTRON_TERM_T(const MATRIX& h_core) : h_core_(h_core) {}
  void add(const SPIN_MATRICES_T& densities, SPIN_MATRICES_T& fock, ENERGY_PARTS_T& energy) override {
    for (std::size_t s = 0; s < fock.size(); ++s) {
      fock[s] += h_core_;
      energy.electronic += trace_of_product(densities[s], h_core_);
    }
  }

 private:
  const MATRIX& h_core_;
};

class COULOMB_EXCHANGE_TERM_T : public FOCK_TERM_T {
 public:
  COULOMB_EXCHANGE_TERM_T(const INTEGRALS_2E::JK_BUILDER& jk, double exchange) : jk_(jk), exchange_(exchange) {}
  void add(const SPIN_MATRICES_T& densities, SPIN_MATRICES_T& fock, ENERGY_PARTS_T& energy) override {
    const STAGE_TIMER timer(STAGE::integrals_2e);
    MATRIX total = densities[0];
    for (std::size_t s = 1; s < densities.size(); ++s) total += densities[s];
    const std::span<const MATRIX> for_k = exchange_ == 0.0 ? std::span<const MATRIX>() : std::span<const MATRIX>(densities);
    const INTEGRALS_2E::JK_RESULT_T built = jk_.build(std::span<const MATRIX>(&total, 1), for_k);
    const double occupation = densities.size() == 1 ? 2.0 : 1.0;
    for (std::size_t s = 0; s < fock.size(); ++s) {
      MATRIX two_electron = built.j[0];
      if (!built.k.empty()) two_electron -= exchange_ / occupation * built.k[s];
      energy.electronic += 0.5 * trace_of_product(densities[s], two_electron);
      fock[s] += two_electron;
    }
  }

 private:
  const INTEGRALS_2E::JK_BUILDER& jk_;
  double exchange_;  ///< exact-exchange fraction a
};

}  // namespace

GEOMETRY_DATA_T::GEOMETRY_DATA_T(const MOLECULE_T& molecule_in, INTEGRALS_1E::ONE_ELECTRON_T one_electron_in)
    : molecule(molecule_in),
      one_electron(std::move(one_electron_in)),
      jk(molecule),
      nuclear_repulsion(zentrix::nuclear_repulsion(molecule)) {}

std::vector<std::unique_ptr<FOCK_TERM_T>> hartree_fock_terms(GEOMETRY_DATA_T& geometry) {
  std::vector<std::unique_ptr<FOCK_TERM_T>> terms;
  terms.push_back(std::make_unique<ONE_ELECTRON_TERM_T>(geometry.one_electron.h_core));
  terms.push_back(std::make_unique<COULOMB_EXCHANGE_TERM_T>(geometry.jk, 1.0));
  return terms;
}

}  // namespace zentrix::SCF
