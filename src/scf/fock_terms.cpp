#include <algorithm>
#include <utility>

#include "dft/xc_integrator.hpp"
#include "molecule/molecule.hpp"
#include "report/machine_memory.hpp"
#include "report/timing.hpp"
#include "scf/incremental_jk.hpp"
#include "scf/scf.hpp"

// The terms of a Fock matrix. With g the occupation of an orbital (2 or 1) and D = sum_s D_s:
//   one-electron      F_s += H                          E += tr D H
//   Coulomb/exchange  F_s += J(D) - (a/g) K(D_s)        E += 1/2 sum_s tr D_s (J - (a/g) K_s)
//   XC                F_s += dE_xc/dD_s                 E += E_xc

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
    const INTEGRALS_2E::JK_RESULT_T& built = jk_.build(densities, exchange_ != 0.0);
    const double occupation = densities.size() == 1 ? 2.0 : 1.0;
    for (std::size_t s = 0; s < fock.size(); ++s) {
      MATRIX two_electron = built.j[0];
      if (!built.k.empty()) two_electron -= exchange_ / occupation * built.k[s];
      energy.electronic += 0.5 * trace_of_product(densities[s], two_electron);
      fock[s] += two_electron;
    }
  }
  /// Only exchange: Coulomb matrices of Hermite densities are made anew sooner than the store is read.
  bool wants_stored_integrals() const override { return exchange_ != 0.0; }

 private:
  INCREMENTAL_JK_T jk_;
  double exchange_;  ///< exact-exchange fraction a
};

class XC_TERM_T : public FOCK_TERM_T {
 public:
  XC_TERM_T(const GEOMETRY_DATA_T& geometry, const DFT::FUNCTIONAL_T& functional, int memory_limit_mb)
      : geometry_(geometry),
        integrator_(geometry.molecule, geometry.grid, functional, geometry.molecule.unrestricted ? 2 : 1),
        memory_limit_(static_cast<std::int64_t>(memory_limit_mb) * 1024 * 1024) {}
  void add(const SPIN_MATRICES_T& densities, SPIN_MATRICES_T& fock, ENERGY_PARTS_T& energy) override {
    const STAGE_TIMER timer(STAGE::xc);
    if (!kept_) {
      // Values on the grid only save time: they are never to drive the machine into swapping.
      const auto half_of_machine = static_cast<std::int64_t>(0.5 * machine_memory());
      const std::int64_t left = std::min(memory_limit_, half_of_machine) - geometry_.jk.store_bytes();
      integrator_.keep_values(static_cast<std::size_t>(std::max<std::int64_t>(left, 0)));
      kept_ = true;
    }
    const DFT::XC_RESULT_T xc = integrator_.integrate(densities);
    for (std::size_t s = 0; s < fock.size(); ++s) fock[s] += xc.potentials[s];
    energy.electronic += xc.energy;
    energy.xc += xc.energy;
  }

 private:
  const GEOMETRY_DATA_T& geometry_;
  DFT::XC_INTEGRATOR_T integrator_;
  std::int64_t memory_limit_;
  bool kept_ = false;
};

}  // namespace

GEOMETRY_DATA_T::GEOMETRY_DATA_T(const MOLECULE_T& molecule_in, INTEGRALS_1E::ONE_ELECTRON_T one_electron_in)
    : molecule(molecule_in),
      one_electron(std::move(one_electron_in)),
      jk(molecule),
      nuclear_repulsion(zentrix::nuclear_repulsion(molecule)) {
  // An SCF asks for S and H_core alone.
  one_electron.t.resize(0, 0);
  one_electron.v.resize(0, 0);
}

std::vector<std::unique_ptr<FOCK_TERM_T>> energy_terms(GEOMETRY_DATA_T& geometry, const DFT::FUNCTIONAL_T& functional,
                                                       int memory_limit_mb) {
  std::vector<std::unique_ptr<FOCK_TERM_T>> terms;
  terms.push_back(std::make_unique<ONE_ELECTRON_TERM_T>(geometry.one_electron.h_core));
  terms.push_back(std::make_unique<COULOMB_EXCHANGE_TERM_T>(geometry.jk, functional.hf_exchange));
  if (!functional.is_hartree_fock()) terms.push_back(std::make_unique<XC_TERM_T>(geometry, functional, memory_limit_mb));
  return terms;
}

std::vector<std::unique_ptr<FOCK_TERM_T>> hartree_fock_terms(GEOMETRY_DATA_T& geometry) {
  DFT::FUNCTIONAL_T hartree_fock;
  hartree_fock.hf_exchange = 1.0;
  return energy_terms(geometry, hartree_fock, 0);
}

}  // namespace zentrix::SCF
