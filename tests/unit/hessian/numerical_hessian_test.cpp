#include "hessian/numerical_hessian.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "hessian/vibrations.hpp"
#include "integrals/boys.hpp"
#include "support/surfaces.hpp"

using namespace zentrix;
using namespace zentrix::HESSIAN;

namespace {

/// E = 1/2 x A x + sum x^3 / 6 about the starting positions, and a note of how it was asked.
class POLYNOMIAL_SURFACE_T : public GRADIENTS::ENERGY_SURFACE_T {
 public:
  POLYNOMIAL_SURFACE_T() : molecule_(TESTS::bare_molecule("H 0 0 0.1\nH 0.2 0 0.9\n")), a_(MATRIX::Random(6, 6)) {
    a_ = (a_ + a_.transpose()).eval();
  }
  const MOLECULE_T& molecule() const override { return molecule_; }
  GRADIENTS::SURFACE_POINT_T energy(const VECTOR& positions) override { return energy_and_gradient(positions); }
  GRADIENTS::SURFACE_POINT_T energy_and_gradient(const VECTOR& positions) override {
    const VECTOR x = positions - GRADIENTS::positions_of(molecule_);
    ++evaluations;
    precise = precise && BOYS::precise_mode();
    if (start_held) ++held_evaluations;
    const VECTOR square = x.cwiseProduct(x);
    return {-1.5 + 0.5 * x.dot(a_ * x), a_ * x + 0.5 * square, evaluations != 4};
  }
  void hold_start() override { start_held = true; }

  const MATRIX& second_derivatives() const { return a_; }
  int evaluations = 0;
  int held_evaluations = 0;
  bool precise = true;
  bool start_held = false;

 private:
  MOLECULE_T molecule_;
  MATRIX a_;
};

/// Largest deviation of the vibrational frequencies from a case of vibrations.json, cm^-1, and of the zero-point energy.
struct DEVIATION_T {
  double frequency = 0.0;
  double zero_point = 0.0;
};
DEVIATION_T deviation_from(const nlohmann::json& entry, const std::string& grid) {
  TESTS::SURFACE_CASE_T test = TESTS::surface_case(entry);
  test.input.grid = grid;
  test.input = settings_for_differences(test.input);
  GRADIENTS::SCF_SURFACE_T surface = test.surface();
  HESSIAN_OBSERVER_T silent;
  const NUMERICAL_HESSIAN_T hessian = numerical_hessian(surface, silent);
  EXPECT_EQ(hessian.unconverged, 0);
  EXPECT_LT((hessian.hessian - hessian.hessian.transpose()).norm(), 1e-14);
  VIBRATIONS::VIBRATIONS_T found;
  std::ostringstream report;
  EXPECT_EQ(VIBRATIONS::analyse_vibrations(test.molecule, hessian.hessian, nullptr, found, report), 0);
  DEVIATION_T deviation;
  const nlohmann::json& expected = entry["frequencies"];
  const Eigen::Index first = found.frequencies.size() - static_cast<Eigen::Index>(expected.size());
  for (std::size_t m = 0; m < expected.size(); ++m) {
    const double difference = found.frequencies(first + static_cast<Eigen::Index>(m)) - expected[m].get<double>();
    deviation.frequency = std::max(deviation.frequency, std::abs(difference));
  }
  deviation.zero_point = std::abs(found.zero_point_energy() - entry["thermo"]["ZPE"].get<double>());
  return deviation;
}

}  // namespace

TEST(NumericalHessian, OfAPolynomialIsExact) {
  POLYNOMIAL_SURFACE_T surface;
  std::ostringstream report;
  HESSIAN_PRINTER_T printer(report);
  const NUMERICAL_HESSIAN_T result = numerical_hessian(surface, printer);
  // Central differences do not see the cubic terms.
  EXPECT_LT((result.hessian - surface.second_derivatives()).cwiseAbs().maxCoeff(), 1e-12);
  EXPECT_EQ(result.energy, -1.5);
  EXPECT_EQ(result.gradient.norm(), 0.0);
  EXPECT_EQ(surface.evaluations, 1 + 2 * 6);
  EXPECT_EQ(surface.held_evaluations, 2 * 6) << "displaced geometries start from the reference";
  EXPECT_TRUE(surface.precise);
  EXPECT_FALSE(BOYS::precise_mode());
  EXPECT_EQ(result.unconverged, 1);
  EXPECT_EQ(report.str().find("   Computing numerical Hessian (gradient FD)...\n   Hessian dimension:      6\n"
                              "   Gradient evaluations:   12\n   Displacement (bohr):    0.005\n"
                              "   Running reference SCF...\n   Reference energy: "),
            0U);
  EXPECT_NE(report.str().find("     coord 1/6 done ("), std::string::npos);
  EXPECT_NE(report.str().find(" s total)\n     Numerical Hessian complete.\n"), std::string::npos);
  print_unconverged(result, report);
  EXPECT_NE(report.str().find("   *** WARNING: 1 of the 13 SCF runs did not converge"), std::string::npos);
}

TEST(NumericalHessian, FrequenciesAgreeWithAnalyticHessiansOfAnIndependentProgram) {
  const nlohmann::json cases = TESTS::reference("vibrations");
  struct CASE_T {
    std::string molecule, method;
    double tolerance;  ///< cm^-1
  };
  // The other cases of the file: bench/check_frequencies.py.
  const std::vector<CASE_T> tests = {{"water", "HF", 1.0}, {"oxygen", "B3LYP", 2.0}};
  std::size_t done = 0;
  for (const auto& entry : cases) {
    for (const CASE_T& test : tests) {
      if (entry["molecule"] != test.molecule || entry["method"] != test.method) continue;
      SCOPED_TRACE(test.molecule + " " + test.method);
      const DEVIATION_T deviation = deviation_from(entry, "FINE");
      EXPECT_LT(deviation.frequency, test.tolerance);
      EXPECT_LT(deviation.zero_point, test.method == "HF" ? 1e-6 : 1e-5);
      ++done;
    }
  }
  EXPECT_EQ(done, tests.size());
}
