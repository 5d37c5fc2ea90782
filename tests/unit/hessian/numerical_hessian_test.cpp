#include "hessian/numerical_hessian.hpp"

#include <gtest/gtest.h>

#include <algorithm>
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

}  // namespace

TEST(NumericalHessian, OfAPolynomialIsExact) {
  POLYNOMIAL_SURFACE_T surface;
  HESSIAN_OBSERVER_T silent;
  const NUMERICAL_HESSIAN_T result = numerical_hessian(surface, silent);
  // Central differences do not see the cubic terms.
  EXPECT_LT((result.hessian - surface.second_derivatives()).cwiseAbs().maxCoeff(), 1e-12);
  EXPECT_EQ(result.energy, -1.5);
  EXPECT_EQ(result.gradient.norm(), 0.0);
  EXPECT_EQ(surface.evaluations, 1 + 2 * 6);
  EXPECT_EQ(surface.held_evaluations, 2 * 6) << "displaced geometries start from the reference";
  EXPECT_TRUE(surface.precise);
  EXPECT_FALSE(BOYS::precise_mode());
  EXPECT_EQ(result.unconverged, 1);
}

// Of water, Hartree-Fock: tests/reports; of the others: bench/check_frequencies.py.
TEST(NumericalHessian, FrequenciesAgreeWithAnAnalyticHessianOfAnIndependentProgram) {
  const nlohmann::json cases = TESTS::reference("vibrations");
  const auto oxygen = std::find_if(cases.begin(), cases.end(), [](const nlohmann::json& entry) {
    return entry["molecule"] == "oxygen" && entry["method"] == "B3LYP";
  });
  ASSERT_NE(oxygen, cases.end());
  TESTS::SURFACE_CASE_T test = TESTS::surface_case(*oxygen);
  test.input.grid = "FINE";
  test.input = settings_for_differences(test.input);
  GRADIENTS::SCF_SURFACE_T surface = test.surface();
  HESSIAN_OBSERVER_T silent;
  const NUMERICAL_HESSIAN_T hessian = numerical_hessian(surface, silent);
  EXPECT_EQ(hessian.unconverged, 0);
  EXPECT_LT((hessian.hessian - hessian.hessian.transpose()).norm(), 1e-14);
  VIBRATIONS::VIBRATIONS_T found;
  std::ostringstream report;
  EXPECT_EQ(VIBRATIONS::analyse_vibrations(test.molecule, hessian.hessian, nullptr, found, report), 0);
  EXPECT_NEAR(found.frequencies(5), (*oxygen)["frequencies"][0].get<double>(), 2.0);  // cm^-1
  EXPECT_NEAR(found.zero_point_energy(), (*oxygen)["thermo"]["ZPE"].get<double>(), 1e-5);
}
