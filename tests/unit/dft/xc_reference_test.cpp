#include <gtest/gtest.h>

#include "support/reference.hpp"
#include "xc_samples.hpp"

// Every component against libxc (tests/reference/make_xc_references.py): a wrong constant, factor or spin dependence shows
// here.

using namespace zentrix;
using namespace zentrix::DFT;
using namespace zentrix::DFT::samples;
using ARRAYS = std::vector<std::vector<double>>;

namespace {

std::vector<double> joined(const ARRAYS& arrays, int count) {
  std::vector<double> all;
  for (int v = 0; v < count; ++v)
    all.insert(all.end(), arrays[static_cast<std::size_t>(v)].begin(), arrays[static_cast<std::size_t>(v)].end());
  return all;
}

/// Compares everything that the entry of a component holds; tolerance[p] is relative. Second derivatives are listed of every
/// stride-th point.
void compare(const RESULT_T& ours, const nlohmann::json& entry, int stride, const std::vector<double>& tolerance) {
  const ARRAYS first = entry.at("first"), second = entry.at("second");
  const int variables = static_cast<int>(first.size());
  for (int p = 0; p < ours.n; ++p) {
    const double energy = entry.at("energy")[p], allowed = tolerance[p];
    EXPECT_NEAR(ours.energy[p], energy, allowed * std::abs(energy)) << p;
    for (int v = 0; v < variables; ++v) {
      EXPECT_NEAR(ours.d(v, p), first[v][p], allowed * std::abs(first[v][p])) << v << ' ' << p;
      for (int w = 0; w <= v && !ours.second.empty() && p % stride == 0; ++w) {
        const auto at = [&](int x, int y) { return second[x * (x + 1) / 2 + y][p / stride]; };
        const double scale = std::max(std::abs(at(v, w)), std::sqrt(std::abs(at(v, v) * at(w, w))));
        EXPECT_NEAR(ours.dd(v, w, p), at(v, w), 3.0 * allowed * scale) << v << ' ' << w << ' ' << p;
      }
    }
  }
}

}  // namespace

// Energies and first derivatives to 1e-10 of themselves, second derivatives to 3e-10 of the larger of themselves and
// sqrt(|H_vv H_ww|), because mixed ones may vanish. At large reduced gradients the local and the gradient part of PBE and
// PW91 correlation cancel, to six digits here; where more than 4.3 digits are lost the tolerance grows in proportion.
TEST(XC_REFERENCE, EVERY_COMPONENT_AGREES_WITH_LIBXC) {
  const nlohmann::json document = TESTS::reference("xc");
  const int stride = document.at("stride_of_second");
  for (kernels::ISA isa : available_isas()) {
    const ISA_GUARD guard(isa);
    for (const std::string word : {"closed", "open"}) {
      const nlohmann::json& block = document.at(word);
      const auto values = block.at("values").get<ARRAYS>();
      const auto entry_of = [&](XC_COMPONENT id) { return block.at("components").at(std::to_string(static_cast<int>(id))); };
      const std::vector<double> local = entry_of(XC_COMPONENT::vwn5_c).at("energy");
      for (XC_COMPONENT id : COMPONENTS) {
        const nlohmann::json entry = entry_of(id);
        const std::vector<double> energy = entry.at("energy");
        const XC_EVALUATOR_T xc(single(id), word == "closed" ? 1 : 2);
        ASSERT_EQ(static_cast<int>(entry.at("first").size()), xc.variables());
        std::vector<double> tolerance;
        for (std::size_t p = 0; p < energy.size(); ++p)
          tolerance.push_back(1e-10 * std::max(1.0, std::abs(local[p] / energy[p]) / 2e4));
        for (const bool second : {true, false}) {
          SCOPED_TRACE(word + ' ' + std::to_string(static_cast<int>(id)) + ' ' + kernels::isa_name(isa));
          compare(evaluate(xc, joined(values, xc.variables()), second), entry, stride, tolerance);
        }
      }
    }
  }
}

// One spin only. The tolerance is that of the reference, which has a little of the other spin.
TEST(XC_REFERENCE, FULLY_POLARISED_ENERGIES_AGREE) {
  const nlohmann::json document = TESTS::reference("xc");
  const nlohmann::json& block = document.at("polarised");
  const auto values = block.at("values").get<ARRAYS>();
  for (XC_COMPONENT id : COMPONENTS) {
    const auto energy = block.at("components").at(std::to_string(static_cast<int>(id))).get<std::vector<double>>();
    const XC_EVALUATOR_T xc(single(id), 2);
    const RESULT_T ours = evaluate(xc, joined(values, xc.variables()));
    for (std::size_t p = 0; p < energy.size(); ++p) {
      if (id == XC_COMPONENT::lyp_c)
        EXPECT_EQ(ours.energy[p], 0.0);  // no correlation between equal spins
      else
        EXPECT_NEAR(ours.energy[p] / energy[p], 1.0, 1e-7) << static_cast<int>(id) << " point " << p;
    }
  }
}
