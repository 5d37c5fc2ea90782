// Times direct J and K builds of a molecule and density written by compare_jk.py, and writes the matrices back.
//
// usage: jk_from_file PATH REPEATS [THRESHOLD...]
//
// Prints medians in seconds: setup, j, k, and store figures when ZENTRIX_STORE is set. With thresholds, prints a row for
// each instead: times and largest errors of J and K against builds that neglect next to nothing. Times are elapsed ones, or
// with ZENTRIX_PROCESSOR_TIME set processor times (for one thread on a busy machine).

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <functional>
#include <iostream>
#include <vector>

#include "constants/limits.hpp"
#include "integrals/integrals_2e.hpp"

using namespace zentrix;

namespace {

MOLECULE_T read_molecule(const std::string& path) {
  std::ifstream in(path);
  MOLECULE_T m;
  std::size_t n = 0;
  in >> n;
  m.atoms.resize(n);
  for (ATOM_T& atom : m.atoms) in >> atom.position[0] >> atom.position[1] >> atom.position[2];
  in >> n >> m.spherical;
  m.shells.resize(n);
  for (SHELL_T& shell : m.shells) {
    in >> shell.atom >> shell.l >> shell.nprim;
    for (int k = 0; k < shell.nprim; ++k) {
      shell.alpha.emplace_back();
      shell.coeff.emplace_back();
      in >> shell.alpha.back() >> shell.coeff.back();
    }
    shell.first = m.n_basis;
    shell.nfunc = m.spherical ? n_spherical(shell.l) : n_cartesian(shell.l);
    m.n_basis += shell.nfunc;
    m.n_cartesian += n_cartesian(shell.l);
    m.n_spherical += n_spherical(shell.l);
  }
  if (!in) {
    std::cerr << "cannot read " << path << '\n';
    std::exit(1);
  }
  return m;
}

double seconds() {
  static const bool processor = std::getenv("ZENTRIX_PROCESSOR_TIME") != nullptr;
  if (processor) return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double median_seconds(int repeats, const std::function<void()>& work) {
  std::vector<double> times;
  for (int n = 0; n < repeats; ++n) {
    const double start = seconds();
    work();
    times.push_back(seconds() - start);
  }
  std::nth_element(times.begin(), times.begin() + repeats / 2, times.end());
  return times[static_cast<std::size_t>(repeats / 2)];
}

double largest_difference(const MATRIX& a, const MATRIX& b) { return (a - b).cwiseAbs().maxCoeff(); }

/// What a threshold costs and what it does to the matrices; last the same of the store, when ZENTRIX_STORE is set.
void compare_thresholds(INTEGRALS_2E::JK_BUILDER& builder, const std::vector<MATRIX>& density, int repeats, int count,
                        char** thresholds) {
  constexpr double next_to_nothing = 1e-16;
  const INTEGRALS_2E::JK_RESULT_T exact = builder.build(density, density, next_to_nothing);
  for (int n = 0; n < count; ++n) {
    const double threshold = std::atof(thresholds[n]);
    INTEGRALS_2E::JK_RESULT_T j, k;
    const double j_time = median_seconds(repeats, [&] { j = builder.build(density, {}, threshold); });
    const double k_time = median_seconds(repeats, [&] { k = builder.build({}, density, threshold); });
    std::cout << "threshold " << threshold << "  j " << j_time << "  error " << largest_difference(j.j[0], exact.j[0])
              << "  k " << k_time << "  error " << largest_difference(k.k[0], exact.k[0]) << std::endl;
  }
  if (std::getenv("ZENTRIX_STORE") == nullptr) return;
  builder.fill_store();
  const INTEGRALS_2E::JK_RESULT_T stored = builder.build(density, density);
  std::cout << "store of " << static_cast<double>(builder.store_bytes()) / (1024.0 * 1024.0) << " MB  error of j "
            << largest_difference(stored.j[0], exact.j[0]) << "  of k " << largest_difference(stored.k[0], exact.k[0])
            << std::endl;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::cerr << "usage: jk_from_file PATH REPEATS [THRESHOLD...]\n";
    return 1;
  }
  const std::string path = argv[1];
  const int repeats = std::max(1, std::atoi(argv[2]));
  const MOLECULE_T molecule = read_molecule(path);
  std::vector<MATRIX> density(1, MATRIX(molecule.n_basis, molecule.n_basis));
  const auto bytes = static_cast<std::streamsize>(sizeof(double)) * density[0].size();
  std::ifstream(path + ".density", std::ios::binary).read(reinterpret_cast<char*>(density[0].data()), bytes);

  if (argc > 3) {
    INTEGRALS_2E::JK_BUILDER builder(molecule);
    compare_thresholds(builder, density, repeats, argc - 3, argv + 3);
    return 0;
  }
  std::cout << "setup " << median_seconds(repeats, [&] { INTEGRALS_2E::JK_BUILDER builder(molecule); }) << '\n';
  INTEGRALS_2E::JK_BUILDER builder(molecule);
  INTEGRALS_2E::JK_RESULT_T j, k;
  std::cout << "j " << median_seconds(repeats, [&] { j = builder.build(density, {}); }) << '\n';
  std::cout << "k " << median_seconds(repeats, [&] { k = builder.build({}, density); }) << '\n';
  std::ofstream out(path + ".result", std::ios::binary);
  out.write(reinterpret_cast<const char*>(j.j[0].data()), bytes);
  out.write(reinterpret_cast<const char*>(k.k[0].data()), bytes);
  if (std::getenv("ZENTRIX_STORE") != nullptr) {
    std::cout << "fill " << median_seconds(1, [&] { builder.fill_store(); }) << '\n';
    std::cout << "stored_jk " << median_seconds(repeats, [&] { j = builder.build(density, density); }) << '\n';
    std::cout << "store_mb " << static_cast<double>(builder.store_bytes()) / (1024.0 * 1024.0) << '\n';
  }
  return 0;
}
