#include "dispersion/d3.hpp"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <omp.h>

#include <sstream>
#include <string>
#include <vector>

#include "constants/elements.hpp"
#include "constants/units.hpp"
#include "report/stop.hpp"
#include "support/instruction_sets.hpp"
#include "support/reference.hpp"

using namespace zentrix;
using namespace zentrix::DISPERSION;

namespace {

const D3_DATA_T& published_data() {
  static const D3_DATA_T data = [] {
    D3_DATA_T loaded;
    std::ostringstream report;
    if (load_d3_atomic("basis_data/d3_atomic.dat", loaded, report) != 0 ||
        load_d3_reference("basis_data/d3_c6ref.dat", loaded, report) != 0 || !report.str().empty()) {
      throw std::runtime_error(report.str());
    }
    return loaded;
  }();
  return data;
}

D3_PARAMETERS_T parameters_of(const std::string& functional) {
  D3_PARAMETERS_T parameters;
  std::ostringstream report;
  if (select_d3("D3BJ", functional, parameters, report) != 0) throw std::runtime_error(report.str());
  return parameters;
}

struct ATOMS_T {
  std::vector<int> z;
  VECTOR positions;  ///< bohr
};

/// Lines [["O", x, y, z], ...] in angstrom.
ATOMS_T atoms_of(const nlohmann::json& lines) {
  ATOMS_T atoms;
  atoms.positions.resize(3 * static_cast<Eigen::Index>(lines.size()));
  Eigen::Index at = 0;
  for (const auto& line : lines) {
    atoms.z.push_back(atomic_number(line[0].get<std::string>()));
    for (std::size_t k = 1; k <= 3; ++k) atoms.positions(at++) = line[k].get<double>() * BOHR_PER_ANGSTROM;
  }
  return atoms;
}

/// Reads data as the two files would give them; the status of the reader that failed.
int read_data(const std::string& atomic, const std::string& reference_lines, D3_DATA_T& data, std::ostream& report) {
  std::istringstream atomic_file(atomic), reference_file(reference_lines);
  const int error = read_d3_atomic(atomic_file, data, report);
  return error != 0 ? error : read_d3_reference(reference_file, data, report);
}

}  // namespace

TEST(D3, EnergiesAndGradientsOfAnIndependentProgramInEveryInstructionSet) {
  const nlohmann::json cases = TESTS::reference("d3");
  for (const auto& entry : cases) {
    const ATOMS_T atoms = atoms_of(entry["atoms"]);
    const std::vector<double> expected = entry["gradient"];
    for (kernels::ISA isa : TESTS::available_isas()) {
      SCOPED_TRACE(entry["molecule"].get<std::string>() + ' ' + kernels::isa_name(isa));
      const TESTS::ISA_GUARD guard(isa);
      const D3_T d3(parameters_of(entry["functional"]), published_data(), atoms.z);
      VECTOR gradient, serial;
      const double energy = d3.energy_and_gradient(atoms.positions, gradient);
      EXPECT_NEAR(energy, entry["energy"].get<double>(), 1e-10);
      EXPECT_EQ(d3.energy(atoms.positions), energy);
      ASSERT_EQ(static_cast<std::size_t>(gradient.size()), expected.size());
      EXPECT_LT((gradient - VECTOR::Map(expected.data(), gradient.size())).cwiseAbs().maxCoeff(), 1e-10);
      const int threads = omp_get_max_threads();
      omp_set_num_threads(1);
      EXPECT_EQ(d3.energy_and_gradient(atoms.positions, serial), energy) << "another number of threads";
      EXPECT_EQ(serial, gradient);
      omp_set_num_threads(threads);
    }
  }
}

TEST(D3, HessianIsThatOfTheEnergy) {
  // Bonds at the edge of the counting function, where coordination numbers change most.
  const ATOMS_T atoms = atoms_of(
      nlohmann::json::parse(R"([["C",0,0,0],["O",1.6,0.1,0],["H",-0.5,1.4,0.2],["Fe",0.3,-1.9,1.1],["Cl",2.4,2.0,0.8]])"));
  const D3_T d3(parameters_of("PBE"), published_data(), atoms.z);
  const MATRIX hessian = d3.hessian(atoms.positions);
  EXPECT_LT((hessian - hessian.transpose()).cwiseAbs().maxCoeff(), 1e-16);
  for (const auto& [i, j] : {std::pair{0, 0}, {3, 9}, {1, 14}, {10, 10}}) {
    const auto at = [&](double first, double second) {
      VECTOR there = atoms.positions;
      there(i) += first;
      there(j) += second;
      return d3.energy(there);
    };
    const double step = 1e-3;
    const double mixed = (at(step, step) - at(step, -step) - at(-step, step) + at(-step, -step)) / (4.0 * step * step);
    EXPECT_NEAR(hessian(i, j), mixed, 1e-6 + 1e-4 * std::abs(mixed)) << i << ' ' << j;
  }
}

TEST(D3, AtomsThatTakeNoPart) {
  const D3_PARAMETERS_T hf = parameters_of("HF");
  VECTOR gradient;
  // One atom, and atoms in one place: nothing to sum.
  EXPECT_EQ(D3_T(hf, published_data(), {8}).energy_and_gradient(VECTOR::Ones(3), gradient), 0.0);
  EXPECT_EQ(gradient, VECTOR::Zero(3));
  const D3_T pair(hf, published_data(), {6, 8});
  EXPECT_EQ(pair.energy_and_gradient(VECTOR::Ones(6), gradient), 0.0);
  EXPECT_EQ(gradient, VECTOR::Zero(6));
  EXPECT_EQ(pair.coordination_numbers(VECTOR::Ones(6)), VECTOR::Zero(2));
  // Ghosts (0), elements beyond the table and elements without data neither have nor cause dispersion.
  const D3_T water(hf, published_data(), {8, 1, 1}), with_others(hf, published_data(), {8, 1, 1, 0, 110});
  VECTOR atoms(15);
  atoms << 0.0, 0.0, 0.2, 0.0, 1.4, -0.9, 0.0, -1.4, -0.9, 2.0, 0.0, 0.0, 0.0, 0.0, 3.0;
  EXPECT_NEAR(with_others.energy(atoms), water.energy(atoms.head(9)), 1e-15);
  // Far outside all reference coordination numbers no weight is left: C6 is 0, not a quotient of nothings.
  D3_DATA_T far;
  std::ostringstream report;
  ASSERT_EQ(read_data("1 1.0 2.0\n", "1 1 9.0 9.0 5.0\n", far, report), 0) << report.str();
  VECTOR positions(6);
  positions << 0, 0, 0, 0, 0, 5;
  EXPECT_EQ(D3_T(hf, far, {1, 1}).energy_and_gradient(positions, gradient), 0.0);
  EXPECT_EQ(gradient, VECTOR::Zero(6));
}

TEST(D3, ParametersByWordAndFunctional) {
  const auto answer = [](const char* word, const char* functional) {
    D3_PARAMETERS_T found;
    std::ostringstream report;
    const int error = select_d3(word, functional, found, report);
    EXPECT_EQ(error == 0, report.str().empty());
    return error != 0 || found.model.empty()
               ? report.str()
               : fmt::format("{} {} {} {} {}", found.model, found.s6, found.s8, found.a1, found.a2);
  };
  for (const char* off : {"", "  ", "none", "NONE"}) EXPECT_EQ(answer(off, "R2SCAN"), "");
  for (const char* on : {"d3", "D3BJ", "d3-bj", "D3(BJ)"}) EXPECT_EQ(answer(on, "HF"), "D3(BJ) 1 0.9171 0.3385 2.883");
  for (const char* zero : {"D3ZERO", "d3-zero", "D3(0)", "D3(ZERO)"}) {
    EXPECT_EQ(answer(zero, "HF"),
              " *** ERROR: D3(zero) damping is not yet implemented.\n     Use D3BJ (default, recommended) instead.\n");
  }
  EXPECT_EQ(answer("D5", "HF"), " *** ERROR: unknown dispersion model: D5\n     Supported: D3BJ, NONE\n");
  EXPECT_EQ(answer("D3", "BPW91 "), "D3(BJ) 1 3.2822 0.3946 4.8516");
  EXPECT_EQ(answer("D3", "b3lyp3"), "D3(BJ) 1 1.9889 0.3981 4.4211");
  for (const char* without : {"R2SCAN", "LDA", "MP2", "PBE00"}) {
    EXPECT_EQ(answer("D3", without), std::string(" *** ERROR: no D3(BJ) parameters for ") + without +
                                         "\n     Built-in: HF, BLYP, BP86, BPW91, B3LYP, PBE, PBE0, TPSS\n");
  }
}

TEST(D3Data, DamagedFiles) {
  const std::string hydrogen = "# comment\n! comment\n\n1 0.8 2.0\n";
  const std::string slots = "1 1 0 0 1\n1 1 1 0 1\n1 1 2 0 1\n1 1 3 0 1\n1 1 4 0 1\n1 1 5 0 1\n1 1 6.0000005 6 1\n";
  const std::vector<std::tuple<std::string, std::string, std::string>> cases = {
      {"", "", " *** ERROR: D3 atomic data file is empty\n"},
      {"0 1 1\n104 1 1\n# only what does not count\n", "", " *** ERROR: D3 atomic data file is empty\n"},
      {"1 0.8 2.0\n2 x 3\n", "", " *** ERROR: malformed D3 atomic line: 2 x 3\n"},
      {"1 0.8\n", "", " *** ERROR: malformed D3 atomic line: 1 0.8\n"},
      {"1.5 0.8 2.0\n", "", " *** ERROR: malformed D3 atomic line: 1.5 0.8 2.0\n"},
      {"1 nan 2.0\n", "", " *** ERROR: malformed D3 atomic line: 1 nan 2.0\n"},
      {hydrogen, "", " *** WARNING: D3 reference database is empty (0 entries).\n"},
      {hydrogen, "104 1 0 0 5\n1 0 0 0 5\n", " *** WARNING: D3 reference database is empty (0 entries).\n"},
      {hydrogen, "1 1 0 0\n", " *** ERROR: malformed D3 data line: 1 1 0 0\n"},
      {hydrogen, "1 H 0 0 5\n", " *** ERROR: malformed D3 data line: 1 H 0 0 5\n"},
      {hydrogen, slots, ""},
      {hydrogen, slots + "1 1 0 7 1\n", " *** ERROR: too many reference CN points for Z=1\n     MAX_REF = 7\n"},
  };
  for (const auto& [atomic, reference, message] : cases) {
    SCOPED_TRACE(atomic + "---\n" + reference);
    D3_DATA_T data;
    std::ostringstream report;
    EXPECT_EQ(read_data(atomic, reference, data, report) != 0, message.starts_with(" *** ERROR"));
    EXPECT_EQ(report.str(), message);
  }
}

TEST(D3Data, OrderAndMissingFiles) {
  D3_DATA_T data;
  std::ostringstream report;
  EXPECT_NE(load_d3_atomic("basis_data", data, report), 0);
  EXPECT_NE(load_d3_reference("nowhere/d3_c6ref.dat", data, report), 0);
  std::istringstream lines("1 1 0 0 1\n");
  EXPECT_NE(read_d3_reference(lines, data, report), 0);
  EXPECT_EQ(report.str(),
            " *** ERROR: cannot open D3 atomic data file: basis_data\n"
            " *** ERROR: cannot open D3 reference C6 database: nowhere/d3_c6ref.dat\n"
            " *** ERROR: call load_d3_atomic before load_d3_reference\n");
  EXPECT_THROW(D3_T(parameters_of("HF"), data, {1, 1}), run_stopped);
}

TEST(D3Data, TheCommittedFilesHoldEveryElement) {
  const D3_DATA_T& data = published_data();
  for (int z = 1; z <= D3_MAX_Z; ++z) {
    EXPECT_GT(data.element(z).radius, 0.5) << z;
    EXPECT_GT(data.element(z).q, 1.0) << z;
    EXPECT_GE(data.element(z).n_references, 1) << z;
    for (int i = 0; i < data.element(z).n_references; ++i) EXPECT_GT(data.reference_c6(z, 1, i, 0), 0.1) << z;
  }
  EXPECT_EQ(data.n_entries(), 338U * 339U / 2U);  // 338 reference systems in all
}
