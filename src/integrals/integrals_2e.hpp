#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <span>
#include <vector>

#include "linalg/matrix.hpp"
#include "molecule/types.hpp"

// Front door of the two-electron engine: Coulomb and exchange matrices of any number of densities at one geometry.

namespace zentrix::INTEGRALS_2E {

/// Default neglect threshold: contributions to J and K whose rigorous bound lies below it are skipped. They add up, to some
/// forty thresholds in an element of K and as many in one of J (docs/performance.md), and are to stay below 1e-10 hartree in
/// every element of a Fock matrix.
inline constexpr double JK_THRESHOLD = 5e-13;
/// Quartets with Q_ij Q_kl below this are neither counted nor stored; the plain product, as no density is known yet. The
/// same goal as above.
inline constexpr double STORE_THRESHOLD = 5e-13;
/// Densities with a larger element (nearly dependent basis sets) would multiply what the store lacks beyond that goal: their
/// matrices are built directly, whose screening weighs the density.
inline constexpr double LARGEST_STORED_DENSITY = 30.0;

/// Whether that many integrals fit into limit_mb x 2^20 bytes; exactly full still fits.
constexpr bool store_fits(std::int64_t integrals, int limit_mb) {
  return 8 * integrals <= static_cast<std::int64_t>(limit_mb) * 1024 * 1024;
}

/// The conventional/direct decision, with what the report says about it.
struct JK_MODE_T {
  bool conventional = false;
  std::int64_t quartets = 0;   ///< canonical shell quartets that survive Q_ij Q_kl screening
  std::int64_t integrals = 0;  ///< their bare Cartesian integrals
  int limit_mb = 0;
  int threads = 1;
  double megabytes() const { return 8.0 * static_cast<double>(integrals) / (1024.0 * 1024.0); }
};

/// Coulomb and exchange matrices, one per density asked for.
struct JK_RESULT_T {
  std::vector<MATRIX> j;
  std::vector<MATRIX> k;
};

class ERI_PANELS;  // integrals/integral_panels.hpp

/// Two-electron engine of one geometry: shell-pair data and Schwarz bounds, made once in the constructor; direct builds at
/// any time; the integral store after `fill_store`. Holds its own copies of what it needs of the molecule.
class JK_BUILDER {
 public:
  /// Stops the run when a shell is not sound.
  explicit JK_BUILDER(const MOLECULE_T& molecule);
  ~JK_BUILDER();
  JK_BUILDER(JK_BUILDER&&) noexcept;
  JK_BUILDER& operator=(JK_BUILDER&&) noexcept;

  /// Counts the surviving quartets and compares 8 x integrals with limit_mb x 2^20 bytes (equal still means conventional).
  [[nodiscard]] JK_MODE_T decide_mode(int limit_mb) const;

  /// Computes and keeps all surviving integrals; from then on `build` contracts the store.
  void fill_store();
  /// Gives the memory of the store back; from then on builds are direct again.
  void drop_store();
  [[nodiscard]] bool has_store() const;
  /// Bytes the store really occupies (padding included).
  [[nodiscard]] std::int64_t store_bytes() const;

  /// J_ab = sum (ab|cd) D_cd for every density of `for_j` and K_ac = sum (ab|cd) D_bd for every density of `for_k`.
  /// Densities are symmetric, n_basis x n_basis, in the run's functions (Cartesian or spherical), and so are the results.
  /// A closed shell passes one density to both; an unrestricted state passes P_alpha + P_beta for J and the two spin
  /// densities for K; an empty list skips the work of that matrix.
  [[nodiscard]] JK_RESULT_T build(std::span<const MATRIX> for_j, std::span<const MATRIX> for_k,
                                  double threshold = JK_THRESHOLD) const;

  /// Schwarz bound of every shell pair, Q_ij = sqrt(max (ij|ij)) over normalised functions; symmetric nshell x nshell.
  [[nodiscard]] const MATRIX& schwarz() const;

  /// The integrals themselves, for transformations to orbitals whose largest coefficient is given: read from the store when
  /// it is filled, computed otherwise, and computed to a lower threshold when the coefficients are large. Refers to this
  /// object.
  [[nodiscard]] ERI_PANELS integral_panels(double largest_coefficient) const;

 private:
  struct IMPLEMENTATION;
  std::unique_ptr<IMPLEMENTATION> implementation_;
};

/// Prints the decision in the words of the report.
void print_mode(const JK_MODE_T& mode, std::ostream& report);

}  // namespace zentrix::INTEGRALS_2E
