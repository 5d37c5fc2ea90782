#include "integrals/reference_eri.hpp"

#include <cmath>

#include "constants/limits.hpp"
#include "constants/units.hpp"
#include "integrals/hermite.hpp"
#include "integrals/hermite_coulomb.hpp"
#include "molecule/cartesian.hpp"
#include "molecule/shell_validation.hpp"

// (ab|cd) = 2 pi^(5/2) / (p q sqrt(p + q)) sum_t E_t^ab sum_u (-1)^u E_u^cd R_(t+u)(pq/(p+q), P - Q)
// (McMurchie, Davidson, J. Comput. Phys. 26 (1978) 218).

namespace zentrix::INTEGRALS_2E {
namespace {

/// Product of two primitives: exponent, centre and Hermite expansion of every direction.
struct PRODUCT_T {
  double p = 0.0;
  std::array<double, 3> center = {};
  HERMITE_EXPANSION_T e[3];
};

/// Scratch of one thread, kept between calls so that nothing is allocated per quartet.
struct SCRATCH_T {
  PRODUCT_T bra;
  PRODUCT_T ket;
  HERMITE_COULOMB_T coulomb;
  std::vector<double> r;
  std::vector<double> half;  ///< sum over the ket's Hermite functions, per bra Hermite function
};

SCRATCH_T& scratch() {
  static thread_local SCRATCH_T own;
  return own;
}

void make_product(const CENTERED_SHELL_T& a, std::size_t ia, const CENTERED_SHELL_T& b, std::size_t ib, PRODUCT_T& product) {
  const double alpha = a.shell.alpha[ia];
  const double beta = b.shell.alpha[ib];
  product.p = alpha + beta;
  double distance2 = 0.0;
  for (std::size_t k = 0; k < 3; ++k) {
    product.center[k] = (alpha * a.center[k] + beta * b.center[k]) / product.p;
    distance2 += (a.center[k] - b.center[k]) * (a.center[k] - b.center[k]);
  }
  const double weight = a.shell.coeff[ia] * b.shell.coeff[ib] * std::exp(-alpha * beta / product.p * distance2);
  for (std::size_t k = 0; k < 3; ++k) {
    product.e[k].fill(a.shell.l, b.shell.l, product.p, product.center[k] - a.center[k], product.center[k] - b.center[k],
                      k == 0 ? weight : 1.0);
  }
}

/// half[t] = sum_u (-1)^u E_u^cd R_(t+u) for one pair of ket components.
void apply_ket(const PRODUCT_T& ket, const POWERS_T& c, const POWERS_T& d, int bra_order, int total, const double* r,
               double* half) {
  for (int t = 0; t <= bra_order; ++t) {
    for (int u = 0; t + u <= bra_order; ++u) {
      for (int v = 0; t + u + v <= bra_order; ++v) {
        double sum = 0.0;
        for (int tk = 0; tk <= c.x + d.x; ++tk) {
          for (int uk = 0; uk <= c.y + d.y; ++uk) {
            const double exy = ket.e[0].e[c.x][d.x][tk] * ket.e[1].e[c.y][d.y][uk] * ((tk + uk) % 2 == 0 ? 1.0 : -1.0);
            const double* row = r + hermite_row(total, t + tk, u + uk) + v;
            for (int vk = 0; vk <= c.z + d.z; ++vk) {
              sum += (vk % 2 == 0 ? exy : -exy) * ket.e[2].e[c.z][d.z][vk] * row[vk];
            }
          }
        }
        *half++ = sum;
      }
    }
  }
}

double apply_bra(const PRODUCT_T& bra, const POWERS_T& a, const POWERS_T& b, int order, const double* half) {
  double sum = 0.0;
  for (int t = 0; t <= a.x + b.x; ++t) {
    for (int u = 0; u <= a.y + b.y; ++u) {
      const double exy = bra.e[0].e[a.x][b.x][t] * bra.e[1].e[a.y][b.y][u];
      const double* row = half + hermite_row(order, t, u);
      for (int v = 0; v <= a.z + b.z; ++v) sum += exy * bra.e[2].e[a.z][b.z][v] * row[v];
    }
  }
  return sum;
}

using QUARTET_T = std::array<const CENTERED_SHELL_T*, 4>;

/// Adds the contribution of the two products in scratch() to the block.
void add_products(const QUARTET_T& q, double* block) {
  SCRATCH_T& work = scratch();
  const int bra_order = q[0]->shell.l + q[1]->shell.l;
  const int total = bra_order + q[2]->shell.l + q[3]->shell.l;
  const double p = work.bra.p;
  const double s = work.ket.p;
  work.r.assign(static_cast<std::size_t>(n_hermite(total)), 0.0);
  work.half.resize(static_cast<std::size_t>(n_hermite(bra_order)));
  work.coulomb.add(total, p * s / (p + s), work.bra.center[0] - work.ket.center[0], work.bra.center[1] - work.ket.center[1],
                   work.bra.center[2] - work.ket.center[2], 2.0 * std::pow(PI, 2.5) / (p * s * std::sqrt(p + s)),
                   work.r.data());
  const std::array<int, 4> n = {n_cartesian(q[0]->shell.l), n_cartesian(q[1]->shell.l), n_cartesian(q[2]->shell.l),
                                n_cartesian(q[3]->shell.l)};
  for (int c = 0; c < n[2]; ++c) {
    for (int d = 0; d < n[3]; ++d) {
      apply_ket(work.ket, cartesian_powers(q[2]->shell.l, c), cartesian_powers(q[3]->shell.l, d), bra_order, total,
                work.r.data(), work.half.data());
      for (int a = 0; a < n[0]; ++a) {
        for (int b = 0; b < n[1]; ++b) {
          block[((a * n[1] + b) * n[2] + c) * n[3] + d] += apply_bra(
              work.bra, cartesian_powers(q[0]->shell.l, a), cartesian_powers(q[1]->shell.l, b), bra_order, work.half.data());
        }
      }
    }
  }
}

std::size_t block_size(const QUARTET_T& q) {
  std::size_t size = 1;
  for (const CENTERED_SHELL_T* shell : q) size *= static_cast<std::size_t>(n_cartesian(shell->shell.l));
  return size;
}

/// Sum over all primitives, without validation; `block` is overwritten.
void contract(const QUARTET_T& q, std::vector<double>& block) {
  SCRATCH_T& work = scratch();
  block.assign(block_size(q), 0.0);
  for (std::size_t ia = 0; ia < q[0]->shell.alpha.size(); ++ia) {
    for (std::size_t ib = 0; ib < q[1]->shell.alpha.size(); ++ib) {
      make_product(*q[0], ia, *q[1], ib, work.bra);
      for (std::size_t ic = 0; ic < q[2]->shell.alpha.size(); ++ic) {
        for (std::size_t id = 0; id < q[3]->shell.alpha.size(); ++id) {
          make_product(*q[2], ic, *q[3], id, work.ket);
          add_products(q, block.data());
        }
      }
    }
  }
}

void validate(const char* routine, const QUARTET_T& q) {
  for (const CENTERED_SHELL_T* shell : q) validate_shell(routine, shell->shell);
}

/// The shell that d/dA_x turns a shell into: l + 1 with weights 2 alpha, or l - 1 (to be multiplied by the power).
CENTERED_SHELL_T shifted(const CENTERED_SHELL_T& from, int step) {
  CENTERED_SHELL_T result = from;
  result.shell.l += step;
  if (step > 0) {
    for (std::size_t i = 0; i < result.shell.alpha.size(); ++i) result.shell.coeff[i] *= 2.0 * result.shell.alpha[i];
  }
  return result;
}

/// Index of a component with one power of direction k more (step 1) or less (-1).
int shifted_index(const POWERS_T& from, int k, int step) {
  const int y = from.y + (k == 1 ? step : 0);
  const int z = from.z + (k == 2 ? step : 0);
  return cartesian_index(y, z);
}

/// Derivatives with respect to centre number `center`: three blocks written from `target` on.
void differentiate(const QUARTET_T& q, std::size_t center, std::size_t size, double* target) {
  const int l = q[center]->shell.l;
  std::vector<double> raised;
  std::vector<double> lowered;
  const CENTERED_SHELL_T up = shifted(*q[center], 1);
  QUARTET_T work = q;
  work[center] = &up;
  contract(work, raised);
  const CENTERED_SHELL_T down = shifted(*q[center], -1);
  if (l > 0) {
    work[center] = &down;
    contract(work, lowered);
  }
  // A block is outer x components of the differentiated shell x inner.
  std::size_t inner = 1;
  for (std::size_t k = center + 1; k < 4; ++k) inner *= static_cast<std::size_t>(n_cartesian(q[k]->shell.l));
  const auto n = static_cast<std::size_t>(n_cartesian(l));
  const auto n_up = static_cast<std::size_t>(n_cartesian(l + 1));
  const auto n_down = static_cast<std::size_t>(l > 0 ? n_cartesian(l - 1) : 0);
  const std::size_t outer = size / (n * inner);
  for (int k = 0; k < 3; ++k) {
    for (std::size_t o = 0; o < outer; ++o) {
      for (std::size_t i = 0; i < n; ++i) {
        const POWERS_T powers = cartesian_powers(l, static_cast<int>(i));
        const int power = k == 0 ? powers.x : k == 1 ? powers.y : powers.z;
        const double* high = raised.data() + (o * n_up + static_cast<std::size_t>(shifted_index(powers, k, 1))) * inner;
        double* out = target + static_cast<std::size_t>(k) * size + (o * n + i) * inner;
        for (std::size_t m = 0; m < inner; ++m) out[m] = high[m];
        if (power == 0) continue;
        const double* low = lowered.data() + (o * n_down + static_cast<std::size_t>(shifted_index(powers, k, -1))) * inner;
        for (std::size_t m = 0; m < inner; ++m) out[m] -= power * low[m];
      }
    }
  }
}

}  // namespace

void compute_eri_contracted(const CENTERED_SHELL_T& a, const CENTERED_SHELL_T& b, const CENTERED_SHELL_T& c,
                            const CENTERED_SHELL_T& d, std::vector<double>& block) {
  const QUARTET_T q = {&a, &b, &c, &d};
  validate("compute_eri_contracted", q);
  contract(q, block);
}

void compute_eri_primitive(const CENTERED_SHELL_T& a, int pa, const CENTERED_SHELL_T& b, int pb, const CENTERED_SHELL_T& c,
                           int pc, const CENTERED_SHELL_T& d, int pd, std::vector<double>& block) {
  const QUARTET_T q = {&a, &b, &c, &d};
  validate("compute_eri_primitive", q);
  block.assign(block_size(q), 0.0);
  make_product(a, static_cast<std::size_t>(pa), b, static_cast<std::size_t>(pb), scratch().bra);
  make_product(c, static_cast<std::size_t>(pc), d, static_cast<std::size_t>(pd), scratch().ket);
  add_products(q, block.data());
}

void compute_deri_contracted(const CENTERED_SHELL_T& a, const CENTERED_SHELL_T& b, const CENTERED_SHELL_T& c,
                             const CENTERED_SHELL_T& d, std::vector<double>& blocks) {
  const QUARTET_T q = {&a, &b, &c, &d};
  for (const CENTERED_SHELL_T* shell : q) validate_gradient_shell("compute_deri_contracted", shell->shell);
  const std::size_t size = block_size(q);
  blocks.assign(12 * size, 0.0);
  for (std::size_t center = 0; center < 4; ++center) differentiate(q, center, size, blocks.data() + 3 * center * size);
}

}  // namespace zentrix::INTEGRALS_2E
