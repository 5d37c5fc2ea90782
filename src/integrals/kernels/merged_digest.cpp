#include "integrals/kernels/digest.hpp"
#include "integrals/kernels/merged_front.hpp"

namespace zentrix::kernels::ZX_ISA {

namespace {

/// Reads the integrals of a row of a merged ket class by ket transfer. The second shell is s or p at most, so that there are
/// no intermediates.
template <int KC, int KD>
struct MERGED_ROW {
  using KET = COMBINATIONS<KC, KD>;
  static constexpr int STRIDE = row_stride(KC, KD);
  const vec* row;
  const vec* separation;

  ZX_INLINE MERGED_ROW(const vec* f, const vec* cd) : row(f), separation(cd) {}

  template <int D>
  ZX_INLINE vec integral(int c) const {
    constexpr int second = KD == SP_SHELL && D > 0 ? 1 : 0;
    constexpr int d = D - first_function(KD, second);
    if constexpr (KC == SP_SHELL) {
      return c == 0 ? of_combination<second, d>(0) : of_combination<shells_in(KD) + second, d>(c - 1);
    } else {
      return of_combination<second, d>(c);
    }
  }

 private:
  template <int N, int D>
  ZX_INLINE vec of_combination(int c) const {
    using TRANSFER = HORIZONTAL<KET::la(N), KET::lb(N)>;
    static_assert(KET::lb(N) <= 1);
    return TRANSFER::template last<D>(
        [&](int f) __attribute__((always_inline)) { return row[KET::offset(N) + f]; }, nullptr, separation, c);
  }
};

template <int CLASS = 0>
void fill(QUARTET_KERNELS_T& kernels) {
  constexpr KINDS_T kinds = merged_kinds(CLASS);
  if constexpr (kinds.first == SP_SHELL || kinds.second == SP_SHELL)
    kernels.merged_digest[CLASS] = BACK_OF_CLASS<kinds.first, kinds.second, MERGED_ROW, true, false>::run;
  else
    kernels.merged_digest[CLASS] = kernels.digest_rows[pair_class(kinds.first, kinds.second)];
  if constexpr (CLASS + 1 < MERGED_PAIR_CLASSES) fill<CLASS + 1>(kernels);
}

}  // namespace

void fill_merged_backs(QUARTET_KERNELS_T& kernels) { fill(kernels); }

}  // namespace zentrix::kernels::ZX_ISA
