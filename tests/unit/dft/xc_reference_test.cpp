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

/// Largest deviation, in units of what is allowed.
struct WORST_T {
  double deviation = 0.0;
  std::string where;
  void note(double ours, double reference, double allowed, const std::string& what) {
    const double ratio = ours == reference ? 0.0 : std::abs(ours - reference) / allowed;
    if (ratio <= deviation) return;
    deviation = ratio;
    where = what + ": off by " + std::to_string(ratio) + " times the tolerance";
  }
};

/// Results of one component at the points of one block of the file.
struct REFERENCE_T {
  std::vector<double> energy;
  ARRAYS first, second;
  int stride;  ///< second derivatives are listed of every stride-th point

  REFERENCE_T(const nlohmann::json& block, XC_COMPONENT id, int every) : stride(every) {
    const nlohmann::json& entry = block.at("components").at(std::to_string(static_cast<int>(id)));
    energy = entry.at("energy").get<std::vector<double>>();
    first = entry.at("first").get<ARRAYS>();
    second = entry.at("second").get<ARRAYS>();
  }
  double d(int v, int p) const { return first[static_cast<std::size_t>(v)][static_cast<std::size_t>(p)]; }
  double dd(int v, int w, int p) const {
    return second[static_cast<std::size_t>(v * (v + 1) / 2 + w)][static_cast<std::size_t>(p / stride)];
  }
};

/// Compares everything that there is; tolerance[p] is relative.
WORST_T compare(const RESULT_T& ours, const REFERENCE_T& reference, int variables, const std::vector<double>& tolerance) {
  WORST_T worst;
  for (int p = 0; p < ours.n; ++p) {
    const std::size_t i = static_cast<std::size_t>(p);
    const std::string point = " of point " + std::to_string(p);
    worst.note(ours.energy[i], reference.energy[i], tolerance[i] * std::abs(reference.energy[i]), "energy" + point);
    for (int v = 0; v < variables; ++v)
      worst.note(ours.d(v, p), reference.d(v, p), tolerance[i] * std::abs(reference.d(v, p)),
                 "derivative " + std::to_string(v) + point);
    if (ours.second.empty() || p % reference.stride != 0) continue;
    for (int v = 0; v < variables; ++v)
      for (int w = 0; w <= v; ++w) {
        const double scale = std::sqrt(std::abs(reference.dd(v, v, p) * reference.dd(w, w, p)));
        worst.note(ours.dd(v, w, p), reference.dd(v, w, p),
                   3.0 * tolerance[i] * std::max(std::abs(reference.dd(v, w, p)), scale),
                   "derivative " + std::to_string(v) + ' ' + std::to_string(w) + point);
      }
  }
  return worst;
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
      const REFERENCE_T local(block, XC_COMPONENT::vwn5_c, stride);
      for (XC_COMPONENT id : COMPONENTS) {
        const REFERENCE_T reference(block, id, stride);
        const XC_EVALUATOR_T xc(single(id), word == "closed" ? 1 : 2);
        ASSERT_EQ(static_cast<int>(reference.first.size()), xc.variables());
        std::vector<double> tolerance;
        for (std::size_t p = 0; p < reference.energy.size(); ++p)
          tolerance.push_back(1e-10 * std::max(1.0, std::abs(local.energy[p] / reference.energy[p]) / 2e4));
        for (const bool second : {true, false}) {
          const RESULT_T ours = evaluate(xc, joined(values, xc.variables()), second);
          const WORST_T worst = compare(ours, reference, xc.variables(), tolerance);
          EXPECT_LT(worst.deviation, 1.0) << word << ' ' << static_cast<int>(id) << ' ' << kernels::isa_name(isa) << ' '
                                          << (second ? "with" : "without") << " second derivatives: " << worst.where;
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
