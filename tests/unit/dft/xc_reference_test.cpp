#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

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

struct WORST_T {
  double deviation = 0.0;
  std::string where;
  void note(double ours, double reference, double scale, const std::string& what) {
    const double relative = std::abs(ours - reference) / scale;
    if (relative <= deviation) return;
    deviation = relative;
    where = what + ": " + std::to_string(ours) + " for " + std::to_string(reference);
  }
};

nlohmann::json references() {
  std::ifstream file(ZENTRIX_SOURCE_DIR "/tests/reference/xc.json");
  return nlohmann::json::parse(file);
}

}  // namespace

// Energies and first derivatives to 1e-10 of themselves. Second derivatives are compared with sqrt(|H_vv H_ww|), because the
// mixed ones may vanish, and to 5e-10: at reduced gradients above 10 the local and the gradient part of PBE and PW91
// correlation cancel to three digits.
TEST(XC_REFERENCE, EVERY_COMPONENT_AGREES_WITH_LIBXC) {
  const nlohmann::json document = references();
  const int stride = document.at("stride_of_second");
  for (kernels::ISA isa : available_isas()) {
    const ISA_GUARD_T guard(isa);
    for (const std::string word : {"closed", "open"}) {
      const auto values = document.at(word).at("values").get<ARRAYS>();
      for (XC_COMPONENT id : COMPONENTS) {
        const nlohmann::json& reference = document.at(word).at("components").at(std::to_string(static_cast<int>(id)));
        const auto energy = reference.at("energy").get<std::vector<double>>();
        const auto first = reference.at("first").get<ARRAYS>(), second = reference.at("second").get<ARRAYS>();
        const XC_EVALUATOR_T xc(single(id), word == "closed" ? 1 : 2);
        const RESULT_T ours = evaluate(xc, joined(values, xc.variables()));
        ASSERT_EQ(static_cast<int>(first.size()), xc.variables());
        WORST_T low_order, high_order;
        for (int p = 0; p < ours.n; ++p) {
          const std::size_t i = static_cast<std::size_t>(p);
          low_order.note(ours.energy[i], energy[i], std::abs(energy[i]), "energy of point " + std::to_string(p));
          for (int v = 0; v < xc.variables(); ++v) {
            const double exact = first[static_cast<std::size_t>(v)][i];
            if (exact == 0.0)
              EXPECT_EQ(ours.d(v, p), 0.0);
            else
              low_order.note(ours.d(v, p), exact, std::abs(exact),
                             "derivative " + std::to_string(v) + " of point " + std::to_string(p));
          }
        }
        for (int p = 0; p < ours.n; p += stride) {
          auto exact = [&](int pair) {
            return second[static_cast<std::size_t>(pair)][static_cast<std::size_t>(p / stride)];
          };
          for (int v = 0; v < xc.variables(); ++v)
            for (int w = 0; w <= v; ++w) {
              const double h = exact(v * (v + 1) / 2 + w);
              const double scale = std::sqrt(std::abs(exact(v * (v + 3) / 2) * exact(w * (w + 3) / 2)));
              if (std::max(std::abs(h), scale) == 0.0)
                EXPECT_EQ(ours.dd(v, w, p), 0.0);
              else
                high_order.note(
                    ours.dd(v, w, p), h, std::max(std::abs(h), scale),
                    "derivative " + std::to_string(v) + ' ' + std::to_string(w) + " of point " + std::to_string(p));
            }
        }
        const std::string run = word + ' ' + std::to_string(static_cast<int>(id)) + ' ' + kernels::isa_name(isa) + ' ';
        EXPECT_LT(low_order.deviation, 1e-10) << run << low_order.where;
        EXPECT_LT(high_order.deviation, 5e-10) << run << high_order.where;
      }
    }
  }
}

// One spin only. The tolerance is that of the reference, which has a little of the other spin.
TEST(XC_REFERENCE, FULLY_POLARISED_ENERGIES_AGREE) {
  const nlohmann::json document = references();
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
