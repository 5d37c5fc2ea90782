#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <utility>

#include "integrals/shell_pairs.hpp"

namespace zentrix::INTEGRALS_2E {

namespace {

using kernels::SP_SHELL;

/// Highest angular momentum of molecules whose shells are merged; buffers of merged classes fit those of two such shells.
constexpr int MERGED_LMAX = 2;
constexpr int MOST_COMBINATIONS = 4;

/// A shell of the merged molecule: one or two of the plain ones.
struct BLOCK_T {
  int kind = 0;
  int first_shell = 0;
  int shells() const { return kernels::shells_in(kind); }
};

bool mergeable(const SHELL_PAIRS_T& plain, int s) {
  if (s + 1 >= plain.n_shells()) return false;
  const SHELL_T& a = plain.shells[static_cast<std::size_t>(s)];
  const SHELL_T& b = plain.shells[static_cast<std::size_t>(s) + 1];
  return a.l == 0 && b.l == 1 && a.atom == b.atom && a.alpha == b.alpha;
}

std::vector<BLOCK_T> blocks_of(const SHELL_PAIRS_T& plain) {
  std::vector<BLOCK_T> blocks;
  for (int s = 0; s < plain.n_shells(); s += blocks.back().shells())
    blocks.push_back({mergeable(plain, s) ? SP_SHELL : plain.shells[static_cast<std::size_t>(s)].l, s});
  return blocks;
}

/// Primitive pairs of two blocks without their coefficients in the prefactors, which become the weights.
class MERGED_PRIMITIVES_T {
 public:
  MERGED_PRIMITIVES_T(const SHELL_PAIRS_T& plain, const BLOCK_T& a, const BLOCK_T& b) {
    const auto shell = [&](const BLOCK_T& block, int n) -> const SHELL_T& {
      return plain.shells[static_cast<std::size_t>(block.first_shell + n)];
    };
    const auto& centers = plain.centers;
    const auto& center_a = centers[static_cast<std::size_t>(a.first_shell)];
    const auto& center_b = centers[static_cast<std::size_t>(b.first_shell)];
    for (int m = 0; m < shell(a, 0).nprim; ++m)
      for (int n = 0; n < shell(b, 0).nprim; ++n) {
        ENTRY_T entry;
        for (int i = 0; i < a.shells(); ++i)
          for (int j = 0; j < b.shells(); ++j)
            entry.weights[static_cast<std::size_t>(i * b.shells() + j)] =
                shell(a, i).coeff[static_cast<std::size_t>(m)] * shell(b, j).coeff[static_cast<std::size_t>(n)];
        set_primitive(shell(a, 0).alpha[static_cast<std::size_t>(m)], center_a,
                      shell(b, 0).alpha[static_cast<std::size_t>(n)], center_b, entry);
        entries_.push_back(entry);
      }
    std::sort(entries_.begin(), entries_.end(), [](const ENTRY_T& x, const ENTRY_T& y) {
      if (x.primitive.prefactor != y.primitive.prefactor) return x.primitive.prefactor > y.primitive.prefactor;
      return x.primitive.exponent > y.primitive.exponent;
    });
  }
  int count() const { return static_cast<int>(entries_.size()); }
  void append_to(SHELL_PAIRS_T& data) const {
    for (const ENTRY_T& entry : entries_) {
      data.primitives.push_back(entry.primitive);
      data.weights.insert(data.weights.end(), entry.weights.begin(), entry.weights.end());
    }
  }

 private:
  struct ENTRY_T {
    PRIMITIVE_PAIR_T primitive;
    std::array<double, MOST_COMBINATIONS> weights = {};
  };

  /// The prefactor carries the largest weight, so that it tells the size of the primitive; the weights are relative to it.
  static void set_primitive(double x, const std::array<double, 3>& a, double y, const std::array<double, 3>& b,
                            ENTRY_T& entry) {
    const double constant = std::sqrt(2.0) * std::pow(std::numbers::pi, 1.25);
    const double p = x + y;
    double r2 = 0.0;
    for (std::size_t i = 0; i < 3; ++i) {
      r2 += (a[i] - b[i]) * (a[i] - b[i]);
      entry.primitive.from_first[i] = y / p * (b[i] - a[i]);
      entry.primitive.center[i] = a[i] + entry.primitive.from_first[i];
    }
    double largest = 0.0;
    for (const double w : entry.weights) largest = std::max(largest, std::abs(w));
    for (double& w : entry.weights) w = largest > 0.0 ? w / largest : 0.0;
    entry.primitive.exponent = p;
    entry.primitive.prefactor = largest * std::exp(-x * y / p * r2) * constant / p;
  }

  std::vector<ENTRY_T> entries_;
};

class MERGER_T {
 public:
  explicit MERGER_T(const SHELL_PAIRS_T& plain) : plain_(plain), blocks_(blocks_of(plain)) {}

  SHELL_PAIRS_T run() {
    const bool any = std::any_of(blocks_.begin(), blocks_.end(), [](const BLOCK_T& b) { return b.kind == SP_SHELL; });
    const bool high =
        std::any_of(plain_.shells.begin(), plain_.shells.end(), [](const SHELL_T& shell) { return shell.l > MERGED_LMAX; });
    if (!any || high) return {};
    describe_blocks();
    for (const PAIR_LIST_T& list : plain_.lists)
      for (const SHELL_PAIR_T& pair : list.pairs) plain_pairs_[{pair.shell_i, pair.shell_j}] = &pair;
    for (int u = 0; u < static_cast<int>(blocks_.size()); ++u)
      for (int v = 0; v <= u; ++v) add_pair(u, v);
    merged_.weights.resize(merged_.weights.size() + MOST_COMBINATIONS);  // kernels read two primitives at once
    for (std::size_t n = 0; n < pairs_.size(); ++n) {
      if (first_[n] < 0) continue;
      pairs_[n].primitives = merged_.primitives.data() + first_[n];
      pairs_[n].weights = merged_.weights.data() + MOST_COMBINATIONS * first_[n];
    }
    fill_lists(merged_, pairs_);
    return std::move(merged_);
  }

 private:
  void describe_blocks() {
    for (const BLOCK_T& block : blocks_) {
      const auto s = static_cast<std::size_t>(block.first_shell);
      merged_.shells.push_back(plain_.shells[s]);
      merged_.shells.back().l = block.kind;
      merged_.centers.push_back(plain_.centers[s]);
      merged_.first.push_back(plain_.first[s]);
    }
    merged_.first.push_back(plain_.first.back());
    merged_.max_primitives = plain_.max_primitives;
    merged_.max_l = MERGED_LMAX;
  }

  void add_pair(int u, int v) {
    if (!kernels::ordered_kinds(blocks_[static_cast<std::size_t>(u)].kind, blocks_[static_cast<std::size_t>(v)].kind))
      std::swap(u, v);
    const BLOCK_T& a = blocks_[static_cast<std::size_t>(u)];
    const BLOCK_T& b = blocks_[static_cast<std::size_t>(v)];
    SHELL_PAIR_T pair;
    if (a.kind != SP_SHELL && b.kind != SP_SHELL) {
      const auto found = plain_pairs_.find({a.first_shell, b.first_shell});
      if (found == plain_pairs_.end()) return;
      pair = *found->second;
      first_.push_back(-1);
    } else {
      pair.bound = plain_.schwarz.block(a.first_shell, b.first_shell, a.shells(), b.shells()).maxCoeff();
      if (pair.bound == 0.0) return;  // far apart
      const MERGED_PRIMITIVES_T primitives(plain_, a, b);
      first_.push_back(static_cast<long>(merged_.primitives.size()));
      primitives.append_to(merged_);
      pair.n_primitives = primitives.count();
      pair.first_i = plain_.first[static_cast<std::size_t>(a.first_shell)];
      pair.first_j = plain_.first[static_cast<std::size_t>(b.first_shell)];
      for (std::size_t k = 0; k < 3; ++k)
        pair.separation[k] = plain_.centers[static_cast<std::size_t>(a.first_shell)][k] -
                             plain_.centers[static_cast<std::size_t>(b.first_shell)][k];
      pair.symmetry = u == v ? 0.5 : 1.0;
    }
    pair.shell_i = u;
    pair.shell_j = v;
    pairs_.push_back(pair);
  }

  const SHELL_PAIRS_T& plain_;
  std::vector<BLOCK_T> blocks_;
  std::map<std::pair<int, int>, const SHELL_PAIR_T*> plain_pairs_;
  SHELL_PAIRS_T merged_;
  std::vector<SHELL_PAIR_T> pairs_;
  std::vector<long> first_;  // of the pair's own primitives; -1 where the plain pair's serve
};

}  // namespace

SHELL_PAIRS_T merge_shells(const SHELL_PAIRS_T& plain) { return MERGER_T(plain).run(); }

}  // namespace zentrix::INTEGRALS_2E
