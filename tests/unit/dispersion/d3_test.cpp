#include "dispersion/d3.hpp"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "constants/elements.hpp"
#include "constants/units.hpp"
#include "report/stop.hpp"

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

const nlohmann::json& references() {
  static const nlohmann::json cases = nlohmann::json::parse(std::ifstream("tests/reference/d3.json"));
  return cases;
}

const nlohmann::json& reference(const std::string& molecule) {
  for (const auto& entry : references())
    if (entry["molecule"] == molecule) return entry;
  throw std::runtime_error(molecule);
}

/// Data for elements 1 and 2 as a file would give them.
D3_DATA_T small_data(const std::string& atomic, const std::string& reference_lines) {
  D3_DATA_T data;
  std::ostringstream report;
  std::istringstream atomic_file(atomic);
  std::istringstream reference_file(reference_lines);
  EXPECT_EQ(read_d3_atomic(atomic_file, data, report), 0) << report.str();
  EXPECT_EQ(read_d3_reference(reference_file, data, report), 0) << report.str();
  return data;
}

}  // namespace

TEST(D3, EnergiesAndGradientsOfAnIndependentProgram) {
  for (const auto& entry : references()) {
    SCOPED_TRACE(entry["molecule"].get<std::string>());
    const ATOMS_T atoms = atoms_of(entry["atoms"]);
    const D3_T d3(parameters_of(entry["functional"]), published_data(), atoms.z);
    VECTOR gradient;
    EXPECT_NEAR(d3.energy_and_gradient(atoms.positions, gradient), entry["energy"].get<double>(), 1e-10);
    EXPECT_NEAR(d3.energy(atoms.positions), entry["energy"].get<double>(), 1e-10);
    const std::vector<double> expected = entry["gradient"];
    ASSERT_EQ(static_cast<std::size_t>(gradient.size()), expected.size());
    double worst = 0.0;
    for (std::size_t k = 0; k < expected.size(); ++k)
      worst = std::max(worst, std::abs(gradient(static_cast<Eigen::Index>(k)) - expected[k]));
    EXPECT_LT(worst, 1e-10);
  }
}

TEST(D3, DerivativesAreThoseOfTheEnergy) {
  // Bonds at the edge of the counting function, where coordination numbers change most.
  const ATOMS_T atoms = atoms_of(
      nlohmann::json::parse(R"([["C",0,0,0],["O",1.6,0.1,0],["H",-0.5,1.4,0.2],["Fe",0.3,-1.9,1.1],["Cl",2.4,2.0,0.8]])"));
  const D3_T d3(parameters_of("PBE"), published_data(), atoms.z);
  VECTOR gradient;
  (void)d3.energy_and_gradient(atoms.positions, gradient);
  constexpr double h = 1e-3;
  for (Eigen::Index k = 0; k < gradient.size(); ++k) {
    const auto at = [&](double shift) {
      VECTOR there = atoms.positions;
      there(k) += shift;
      return d3.energy(there);
    };
    const double difference = (8.0 * (at(h) - at(-h)) - (at(2 * h) - at(-2 * h))) / (12.0 * h);
    EXPECT_NEAR(gradient(k), difference, 1e-11) << k;
  }
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

TEST(D3, TranslationRotationThreadsAndInstructionSets) {
  const nlohmann::json& entry = reference("five complexes in a row");
  const ATOMS_T atoms = atoms_of(entry["atoms"]);
  const D3_T d3(parameters_of("B3LYP"), published_data(), atoms.z);
  VECTOR gradient;
  const double energy = d3.energy_and_gradient(atoms.positions, gradient);
  Eigen::Map<const Eigen::Matrix3Xd> forces(gradient.data(), 3, gradient.size() / 3);
  EXPECT_LT(forces.rowwise().sum().cwiseAbs().maxCoeff(), 1e-14);
  const Eigen::Matrix3d turn = Eigen::AngleAxisd(0.8, Eigen::Vector3d(1, 2, -1).normalized()).toRotationMatrix();
  VECTOR turned = atoms.positions;
  Eigen::Map<Eigen::Matrix3Xd> places(turned.data(), 3, turned.size() / 3);
  places = (turn * places).eval().colwise() + Eigen::Vector3d(3.0, -1.0, 7.0);
  VECTOR turned_gradient;
  EXPECT_NEAR(d3.energy_and_gradient(turned, turned_gradient), energy, 1e-13);
  Eigen::Map<const Eigen::Matrix3Xd> turned_forces(turned_gradient.data(), 3, turned_gradient.size() / 3);
  EXPECT_LT((turned_forces - turn * forces).cwiseAbs().maxCoeff(), 1e-13);

  const int threads = omp_get_max_threads();
  omp_set_num_threads(1);
  VECTOR serial;
  EXPECT_EQ(d3.energy_and_gradient(atoms.positions, serial), energy);
  EXPECT_EQ(serial, gradient);
  omp_set_num_threads(threads);
  for (const char* isa : {"baseline", "avx2"}) {
    setenv("ZENTRIX_ISA", isa, 1);
    const D3_T other(parameters_of("B3LYP"), published_data(), atoms.z);
    unsetenv("ZENTRIX_ISA");
    VECTOR other_gradient;
    EXPECT_NEAR(other.energy_and_gradient(atoms.positions, other_gradient), energy, 1e-13) << isa;
    EXPECT_LT((other_gradient - gradient).cwiseAbs().maxCoeff(), 1e-14) << isa;
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
  const nlohmann::json& entry = reference("water");
  ATOMS_T atoms = atoms_of(entry["atoms"]);
  atoms.z.insert(atoms.z.end(), {0, 110});
  atoms.positions.conservativeResize(15);
  atoms.positions.tail(6) << 2.0, 0.0, 0.0, 0.0, 0.0, 3.0;
  EXPECT_NEAR(D3_T(parameters_of("B3LYP"), published_data(), atoms.z).energy(atoms.positions), entry["energy"].get<double>(),
              1e-12);
  // Far outside all reference coordination numbers no weight is left: C6 is 0, not a quotient of nothings.
  const D3_DATA_T far = small_data("1 1.0 2.0\n", "1 1 9.0 9.0 5.0\n");
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
  struct CASE_T {
    std::string atomic, reference, message;
    bool stops = true;
  };
  const std::string hydrogen = "# comment\n! comment\n\n1 0.8 2.0\n";
  const std::string slots = "1 1 0 0 1\n1 1 1 0 1\n1 1 2 0 1\n1 1 3 0 1\n1 1 4 0 1\n1 1 5 0 1\n1 1 6.0000005 6 1\n";
  const std::vector<CASE_T> cases = {
      {"", "", " *** ERROR: D3 atomic data file is empty\n"},
      {"0 1 1\n104 1 1\n# only what does not count\n", "", " *** ERROR: D3 atomic data file is empty\n"},
      {"1 0.8 2.0\n2 x 3\n", "", " *** ERROR: malformed D3 atomic line: 2 x 3\n"},
      {"1 0.8\n", "", " *** ERROR: malformed D3 atomic line: 1 0.8\n"},
      {"1.5 0.8 2.0\n", "", " *** ERROR: malformed D3 atomic line: 1.5 0.8 2.0\n"},
      {"1 nan 2.0\n", "", " *** ERROR: malformed D3 atomic line: 1 nan 2.0\n"},
      {hydrogen, "", " *** WARNING: D3 reference database is empty (0 entries).\n", false},
      {hydrogen, "104 1 0 0 5\n1 0 0 0 5\n", " *** WARNING: D3 reference database is empty (0 entries).\n", false},
      {hydrogen, "1 1 0 0\n", " *** ERROR: malformed D3 data line: 1 1 0 0\n"},
      {hydrogen, "1 H 0 0 5\n", " *** ERROR: malformed D3 data line: 1 H 0 0 5\n"},
      {hydrogen, slots, "", false},
      {hydrogen, slots + "1 1 0 7 1\n", " *** ERROR: too many reference CN points for Z=1\n     MAX_REF = 7\n"},
  };
  for (const CASE_T& entry : cases) {
    SCOPED_TRACE(entry.atomic + "---\n" + entry.reference);
    D3_DATA_T data;
    std::ostringstream report;
    std::istringstream atomic(entry.atomic);
    std::istringstream reference_file(entry.reference);
    int error = read_d3_atomic(atomic, data, report);
    if (error == 0) error = read_d3_reference(reference_file, data, report);
    EXPECT_EQ(error != 0, entry.stops);
    EXPECT_EQ(report.str(), entry.message);
  }
}

TEST(D3Data, OrderAndMissingFiles) {
  D3_DATA_T data;
  std::ostringstream report;
  EXPECT_NE(load_d3_atomic("nowhere/d3_atomic.dat", data, report), 0);
  EXPECT_NE(load_d3_atomic("basis_data", data, report), 0);
  EXPECT_NE(load_d3_reference("nowhere/d3_c6ref.dat", data, report), 0);
  std::istringstream lines("1 1 0 0 1\n");
  EXPECT_NE(read_d3_reference(lines, data, report), 0);
  EXPECT_EQ(report.str(),
            " *** ERROR: cannot open D3 atomic data file: nowhere/d3_atomic.dat\n"
            " *** ERROR: cannot open D3 atomic data file: basis_data\n"
            " *** ERROR: cannot open D3 reference C6 database: nowhere/d3_c6ref.dat\n"
            " *** ERROR: call load_d3_atomic before load_d3_reference\n");
  try {
    const D3_T never(parameters_of("HF"), data, {1, 1});
    FAIL() << "made without reference data";
  } catch (const run_stopped& stop) {
    EXPECT_STREQ(stop.what(), " *** ERROR: D3 reference database not loaded");
  }
}

TEST(D3Data, TheCommittedFilesHoldEveryElement) {
  const D3_DATA_T& data = published_data();
  int references_in_all = 0;
  for (int z = 1; z <= D3_MAX_Z; ++z) {
    const D3_ELEMENT_T& element = data.element(z);
    EXPECT_GT(element.radius, 0.5) << z;
    EXPECT_GT(element.q, 1.0) << z;
    EXPECT_GE(element.n_references, 1) << z;
    references_in_all += element.n_references;
    for (int i = 0; i < element.n_references; ++i) EXPECT_GT(data.reference_c6(z, 1, i, 0), 0.1) << z;
  }
  EXPECT_EQ(references_in_all, 338);
  EXPECT_EQ(data.n_entries(), 338U * 339U / 2U);
  EXPECT_EQ(data.reference_c6(8, 6, 0, 1), data.reference_c6(6, 8, 1, 0));
}
