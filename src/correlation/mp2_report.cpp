#include "correlation/mp2_report.hpp"

#include <fmt/ostream.h>

#include "report/layout.hpp"

namespace zentrix::CORRELATION {
namespace {

double megabytes(std::int64_t bytes) { return static_cast<double>(bytes) / (1024.0 * 1024.0); }

}  // namespace

void MP2_PRINTER_T::orbitals_counted(const MP2_DIMENSIONS_T& sizes) {
  if (sizes.ecp_electrons > 0) {
    fmt::print(report_, "   ECP active: {} core electrons replaced by pseudopotential\n", sizes.ecp_electrons);
  } else {
    fmt::print(report_, "   All valence electrons are correlated\n");
  }
  if (sizes.channels == 1) {
    fmt::print(report_, "   Basis functions: {}  Occupied: {}  Virtual: {}\n", sizes.n_basis, sizes.occupied[0],
               sizes.virtuals[0]);
    fmt::print(report_, "   Frozen core: {}  Correlated: {}\n", sizes.frozen, sizes.correlated(0));
    return;
  }
  fmt::print(report_, "   Basis functions:       {}\n", sizes.n_basis);
  fmt::print(report_, "   Alpha occupied/virtual: {} / {}\n", sizes.occupied[0], sizes.virtuals[0]);
  fmt::print(report_, "   Beta  occupied/virtual: {} / {}\n", sizes.occupied[1], sizes.virtuals[1]);
  fmt::print(report_, "   Frozen core (a/b):     {} / {}\n", sizes.frozen, sizes.frozen);
  fmt::print(report_, "   Correlated occ (a/b):  {} / {}\n", sizes.correlated(0), sizes.correlated(1));
}

void MP2_PRINTER_T::sizes_planned(const MP2_DIMENSIONS_T& sizes) {
  fmt::print(report_, "   Half-transformed integrals: {:.1f} MB", megabytes(sizes.half_transformed));
  if (sizes.batches > 1) fmt::print(report_, "  (largest of {} batches of occupied orbitals)", sizes.batches);
  fmt::print(report_, "\n   MO integrals (ia|jb):       {:.1f} MB  (pair by pair)\n", megabytes(sizes.pair_integrals));
}

void MP2_PRINTER_T::batches_planned(const MP2_DIMENSIONS_T& sizes) {
  if (sizes.stored) {
    fmt::print(report_, "   Computing and storing AO ERIs...\n");
  } else {
    fmt::print(report_, "   Computing AO ERIs as they are needed (more than the memory limit)...\n");
  }
}

void MP2_PRINTER_T::half_transformation(const MP2_DIMENSIONS_T& sizes, int batch) {
  if (sizes.batches > 1) fmt::print(report_, "   Batch {} of {}\n", batch + 1, sizes.batches);
  if (sizes.channels == 1 && batch == 0) fmt::print(report_, "   Ket half-transformation...\n");
}

void MP2_PRINTER_T::pair_energies(const MP2_DIMENSIONS_T& sizes, int batch) {
  if (sizes.channels != 1 || batch != 0) return;
  fmt::print(report_, "   Bra half-transformation...\n   Evaluating MP2 energy...\n");
}

/// All spin channels come out of one transformation; their lines keep the order of channel after channel.
void MP2_PRINTER_T::finished(const MP2_DIMENSIONS_T& sizes, const MP2_RESULT_T& result) {
  if (sizes.channels == 1) return;
  if (sizes.correlated(0) < 2) {
    fmt::print(report_, "   Alpha-alpha: skipped (< 2 corr. alpha occ)\n");
  } else if (!sizes.takes_part(0)) {
    fmt::print(report_, "   Alpha-alpha: skipped (0 alpha vir)\n");
  } else {
    fmt::print(report_, "   Alpha-alpha channel...\n     E(aa) = {:20.10f}\n", result.same_spin[0]);
  }
  if (!sizes.takes_part(1)) {
    fmt::print(report_, "   Beta channels: skipped (0 corr. occ or vir)\n");
    return;
  }
  fmt::print(report_, "   Beta ket half-transformation...\n");
  if (sizes.correlated(1) < 2) {
    fmt::print(report_, "   Beta-beta: skipped (< 2 corr. beta occ)\n");
  } else {
    fmt::print(report_, "   Beta-beta channel...\n     E(bb) = {:20.10f}\n", result.same_spin[1]);
  }
  if (sizes.takes_part(0)) {
    fmt::print(report_, "   Alpha-beta channel...\n     E(ab) = {:20.10f}\n", result.opposite_spin);
  } else {
    fmt::print(report_, "   Alpha-beta: skipped (0 alpha vir)\n");
  }
}

void print_frozen_core(int orbitals, std::ostream& report) {
  if (orbitals > 0) {
    fmt::print(report, "   Frozen core (auto): {} orbital(s).  Override with %frozen_core 0 to correlate all.\n", orbitals);
  } else {
    fmt::print(report, "   Frozen core (auto): 0 (no core electrons).\n");
  }
}

void note_unrestricted(const std::string& method, bool unrestricted, std::ostream& report) {
  if (method == "MP2" && unrestricted) fmt::print(report, "   NOTE: MP2 with unrestricted orbitals runs as UMP2.\n");
}

void print_heading(bool unrestricted, std::ostream& report) {
  fmt::print(report, "\n --- {} Correlation Energy ---\n", unrestricted ? "UMP2" : "MP2");
}

void print_energies(const MP2_RESULT_T& result, double scf_energy, std::ostream& report) {
  if (result.unrestricted) {
    fmt::print(report, "   UMP2 alpha-alpha:   {:20.10f}\n", result.same_spin[0]);
    fmt::print(report, "   UMP2 beta-beta:     {:20.10f}\n", result.same_spin[1]);
    fmt::print(report, "   UMP2 alpha-beta:    {:20.10f}\n", result.opposite_spin);
    fmt::print(report, "   UMP2 correlation:   {:20.10f}\n", result.energy());
    fmt::print(report, "   UHF energy:         {:20.10f}\n", scf_energy);
    fmt::print(report, "   UMP2 total energy:  {:20.10f}\n", scf_energy + result.energy());
    fmt::print(report, "   <S^2> (UMP2):       {:20.10f}\n", without_minus_zero(result.s_squared, 10));
    return;
  }
  fmt::print(report, "   MP2 opposite-spin:  {:20.10f}\n", result.opposite_spin);
  fmt::print(report, "   MP2 same-spin:      {:20.10f}\n", result.same_spin[0]);
  fmt::print(report, "   MP2 correlation:    {:20.10f}\n", result.energy());
  fmt::print(report, "   HF energy:          {:20.10f}\n", scf_energy);
  fmt::print(report, "   MP2 total energy:   {:20.10f}\n", scf_energy + result.energy());
}

void print_brief(const MP2_RESULT_T& result, double scf_energy, std::ostream& report) {
  fmt::print(report, "   MP2 correlation:    {:20.10f}\n", result.energy());
  fmt::print(report, "   MP2 total:          {:20.10f}\n", scf_energy + result.energy());
}

}  // namespace zentrix::CORRELATION
