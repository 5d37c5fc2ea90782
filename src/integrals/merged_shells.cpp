#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "integrals/shell_pairs.hpp"

namespace zentrix::INTEGRALS_2E {

namespace {

using kernels::SP_SHELL;

/// Highest angular momentum of molecules whose s and p shells are merged: there are kernels up to here.
constexpr int SP_LMAX = 2;
/// Doubles that weights of a primitive take with SP_SHELLs.
constexpr int SP_COMBINATIONS = 4;
/// Most contractions in one block; more are cut into several.
constexpr int MOST_CONTRACTIONS = 4;

/// A shell of the merged molecule: some of the plain ones.
struct BLOCK_T {
  int kind = 0;
  int first_shell = 0;
  int shells = 1;
};

enum class MERGING { sp, contractions };

bool same_primitives(const SHELL_T& a, const SHELL_T& b) { return a.atom == b.atom && a.alpha == b.alpha; }

/// The block that begins with shell s.
BLOCK_T block_at(const std::vector<SHELL_T>& shells, std::size_t s, MERGING merging) {
  BLOCK_T block{shells[s].l, static_cast<int>(s), 1};
  const auto next_is = [&](std::size_t n, int l) {
    return n < shells.size() && shells[n].l == l && same_primitives(shells[s], shells[n]);
  };
  if (merging == MERGING::sp && shells[s].l == 0 && next_is(s + 1, 1)) return {SP_SHELL, block.first_shell, 2};
  if (merging == MERGING::contractions && shells[s].nprim > 1)
    while (block.shells < MOST_CONTRACTIONS && next_is(s + static_cast<std::size_t>(block.shells), block.kind))
      ++block.shells;
  return block;
}

/// All shells in blocks; empty when none is merged.
std::vector<BLOCK_T> blocks_of(const std::vector<SHELL_T>& shells, MERGING merging) {
  std::vector<BLOCK_T> blocks;
  for (std::size_t s = 0; s < shells.size(); s += static_cast<std::size_t>(blocks.back().shells))
    blocks.push_back(block_at(shells, s, merging));
  return blocks.size() < shells.size() ? blocks : std::vector<BLOCK_T>{};
}

/// Primitive pairs of two blocks without their coefficients in the prefactors, which become the weights.
class MERGED_PRIMITIVES_T {
 public:
  /// `stride`: doubles of the weights of a primitive.
  MERGED_PRIMITIVES_T(const SHELL_PAIRS_T& plain, const BLOCK_T& a, const BLOCK_T& b, int stride)
      : stride_(static_cast<std::size_t>(stride)) {
    const auto shell = [&](const BLOCK_T& block, int n) -> const SHELL_T& {
      return plain.shells[static_cast<std::size_t>(block.first_shell + n)];
    };
    const auto& center_a = plain.centers[static_cast<std::size_t>(a.first_shell)];
    const auto& center_b = plain.centers[static_cast<std::size_t>(b.first_shell)];
    for (int m = 0; m < shell(a, 0).nprim; ++m)
      for (int n = 0; n < shell(b, 0).nprim; ++n) {
        ENTRY_T entry;
        for (int i = 0; i < a.shells; ++i)
          for (int j = 0; j < b.shells; ++j)
            entry.weights[static_cast<std::size_t>(i * b.shells + j)] =
                shell(a, i).coeff[static_cast<std::size_t>(m)] * shell(b, j).coeff[static_cast<std::size_t>(n)];
        const double largest = take_largest(entry);
        entry.primitive = primitive_pair(shell(a, 0).alpha[static_cast<std::size_t>(m)], center_a,
                                         shell(b, 0).alpha[static_cast<std::size_t>(n)], center_b, largest);
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
      data.weights.insert(data.weights.end(), entry.weights.begin(),
                          entry.weights.begin() + static_cast<std::ptrdiff_t>(stride_));
    }
  }

 private:
  struct ENTRY_T {
    PRIMITIVE_PAIR_T primitive;
    std::array<double, MOST_CONTRACTIONS* MOST_CONTRACTIONS> weights = {};
  };

  /// Makes the weights relative to the largest of them, which the prefactor carries so that it tells the size.
  static double take_largest(ENTRY_T& entry) {
    double largest = 0.0;
    for (const double w : entry.weights) largest = std::max(largest, std::abs(w));
    for (double& w : entry.weights) w = largest > 0.0 ? w / largest : 0.0;
    return largest;
  }

  std::size_t stride_;
  std::vector<ENTRY_T> entries_;
};

class MERGER_T {
 public:
  MERGER_T(const SHELL_PAIRS_T& plain, std::vector<BLOCK_T> blocks, MERGING merging)
      : plain_(plain), blocks_(std::move(blocks)), merging_(merging) {}

  SHELL_PAIRS_T run() {
    describe_blocks();
    for (const PAIR_LIST_T& list : plain_.lists)
      for (const SHELL_PAIR_T& pair : list.pairs) plain_pairs_[{pair.shell_i, pair.shell_j}] = &pair;
    for (int u = 0; u < static_cast<int>(blocks_.size()); ++u)
      for (int v = 0; v <= u; ++v) add_pair(u, v);
    // Kernels read the weights of a vector of primitives at once, in all lanes as many as the longest pair has.
    const auto spare = static_cast<std::size_t>(plain_.max_primitives * MOST_CONTRACTIONS * MOST_CONTRACTIONS);
    merged_.weights.resize(merged_.weights.size() + spare + kernels::MAX_LANES);
    for (std::size_t n = 0; n < pairs_.size(); ++n) {
      if (starts_[n].primitive < 0) continue;
      pairs_[n].primitives = merged_.primitives.data() + starts_[n].primitive;
      pairs_[n].weights = merged_.weights.data() + starts_[n].weight;
      if (pairs_[n].n_contractions > 1) pairs_[n].members = merged_.members.data() + starts_[n].member;
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
    merged_.has_sp_shells = merging_ == MERGING::sp;
    merged_.max_l = merging_ == MERGING::sp ? SP_LMAX : plain_.max_l;
  }

  void add_pair(int u, int v) {
    if (!kernels::ordered_kinds(blocks_[static_cast<std::size_t>(u)].kind, blocks_[static_cast<std::size_t>(v)].kind))
      std::swap(u, v);
    const BLOCK_T& a = blocks_[static_cast<std::size_t>(u)];
    const BLOCK_T& b = blocks_[static_cast<std::size_t>(v)];
    SHELL_PAIR_T pair;
    if (a.shells == 1 && b.shells == 1) {
      const auto found = plain_pairs_.find({a.first_shell, b.first_shell});
      if (found == plain_pairs_.end()) return;
      pair = *found->second;
      starts_.push_back({});
    } else {
      pair.bound = plain_.schwarz.block(a.first_shell, b.first_shell, a.shells, b.shells).maxCoeff();
      if (pair.bound == 0.0) return;  // far apart
      describe_merged(pair, a, b);
      pair.symmetry = u == v ? 0.5 : 1.0;
    }
    pair.shell_i = u;
    pair.shell_j = v;
    pairs_.push_back(pair);
  }

  void describe_merged(SHELL_PAIR_T& pair, const BLOCK_T& a, const BLOCK_T& b) {
    if (merging_ == MERGING::contractions) pair.n_contractions = a.shells * b.shells;
    starts_.push_back({static_cast<long>(merged_.primitives.size()), static_cast<long>(merged_.weights.size()),
                       static_cast<long>(merged_.members.size())});
    const int stride = merging_ == MERGING::sp ? SP_COMBINATIONS : pair.n_contractions;
    const MERGED_PRIMITIVES_T primitives(plain_, a, b, stride);
    primitives.append_to(merged_);
    pair.n_primitives = primitives.count();
    pair.first_i = plain_.first[static_cast<std::size_t>(a.first_shell)];
    pair.first_j = plain_.first[static_cast<std::size_t>(b.first_shell)];
    for (std::size_t k = 0; k < 3; ++k)
      pair.separation[k] = plain_.centers[static_cast<std::size_t>(a.first_shell)][k] -
                           plain_.centers[static_cast<std::size_t>(b.first_shell)][k];
    pair.primitives = merged_.primitives.data() + starts_.back().primitive;
    pair.growth = growth(kernels::highest_l(a.kind), kernels::highest_l(b.kind), pair);
    pair.primitives = nullptr;  // of arrays that still grow
    if (merging_ == MERGING::sp) return;
    for (int i = 0; i < a.shells; ++i)
      for (int j = 0; j < b.shells; ++j) {
        merged_.members.push_back(pair);
        merged_.members.back().n_contractions = 1;
        merged_.members.back().first_i = plain_.first[static_cast<std::size_t>(a.first_shell + i)];
        merged_.members.back().first_j = plain_.first[static_cast<std::size_t>(b.first_shell + j)];
      }
  }

  /// Where the own primitives, weights and members of a merged pair begin; -1 where the plain pair's serve.
  struct STARTS_T {
    long primitive = -1, weight = -1, member = -1;
  };

  const SHELL_PAIRS_T& plain_;
  std::vector<BLOCK_T> blocks_;
  MERGING merging_;
  std::map<std::pair<int, int>, const SHELL_PAIR_T*> plain_pairs_;
  SHELL_PAIRS_T merged_;
  std::vector<SHELL_PAIR_T> pairs_;
  std::vector<STARTS_T> starts_;
};

}  // namespace

SHELL_PAIRS_T merge_shells(const SHELL_PAIRS_T& plain) {
  int highest = 0;
  for (const SHELL_T& shell : plain.shells) highest = std::max(highest, shell.l);
  for (const auto& [merging, limit] :
       {std::pair{MERGING::sp, SP_LMAX}, std::pair{MERGING::contractions, kernels::KERNEL_LMAX}}) {
    if (highest > limit) continue;
    if (auto blocks = blocks_of(plain.shells, merging); !blocks.empty())
      return MERGER_T(plain, std::move(blocks), merging).run();
  }
  return {};
}

}  // namespace zentrix::INTEGRALS_2E
