#pragma once

#include <functional>
#include <span>
#include <vector>

#include "integrals/eri_store.hpp"
#include "linalg/matrix.hpp"
#include "molecule/types.hpp"

// Front door for work that wants the integrals themselves: one bra shell pair at a time, as dense rectangles that a matrix
// product can take. They come from the integral store where there is one and are computed otherwise.
//
// Components are numbered by angular momentum (all s, then all p, ...; inside a level in the order of the shells), so that
// the kets of one class (l_c, l_d) fill one rectangle.

namespace zentrix::INTEGRALS_2E {

/// Bra shell pair with the component ranges of its two shells; first_a >= first_b.
struct PANEL_BRA_T {
  BRA_T pair;
  int first_a = 0, n_a = 0;
  int first_b = 0, n_b = 0;
};

/// (ab|cd) of component pairs first_ab .. first_ab + n_ab - 1 of a bra (numbered a n_b + b) with all kets of one class:
/// c = first_c .. + n_c - 1, d = first_d .. + n_d - 1. Quartets below the neglect threshold are zero.
struct ERI_PANEL_T {
  int first_ab = 0, n_ab = 0;
  int first_c = 0, n_c = 0;
  int first_d = 0, n_d = 0;
  bool square = false;  ///< c and d run over the same range; the rectangle is symmetric
  long row_stride = 0;  ///< doubles between two c; d is contiguous
  long ab_stride = 0;
  const double* values = nullptr;
  /// The rectangle of the n-th component pair of the panel.
  const double* rectangle(int n) const { return values + n * ab_stride; }
};

/// Every unique integral once: with X the symmetric matrix of integrals over ordered component pairs (a, b), (c, d), the
/// panels of all bras, (a, b) and (b, a) both visited for one pair of shells, make a matrix L with X = L + L^T. In a panel
/// (c, d) and (d, c) both stand for the ket: a rectangle with l_c > l_d has to be used with its transpose.
class ERI_PANELS {
 public:
  /// `store` may be null. All references must outlive the object.
  ERI_PANELS(const MOLECULE_T& functions, const SHELL_PAIRS_T& data, const KERNEL_CHOICE_T& kernels,
             const ERI_STORE_T* store, double threshold);

  /// Kets of one list and their integrals.
  struct SPAN_T {
    STORE_SEGMENT_T segment;
    const double* values = nullptr;
  };

  /// Buffers of one thread.
  class WORK_T {
   public:
    explicit WORK_T(const ERI_PANELS& panels);

   private:
    friend class ERI_PANELS;
    QUARTET_WORK_T quartets_;
    std::vector<SPAN_T> spans_;  ///< all kets of one bra
    ALIGNED_DOUBLES integrals_;  ///< computed ones of one bra and ket class
    ALIGNED_DOUBLES panel_;
  };

  bool stored() const { return store_ != nullptr; }
  int n_components() const { return starts_.back(); }
  /// First component of every shell in the order of the numbering, and their number at the end.
  const std::vector<int>& shell_starts() const { return starts_; }
  /// All bras with any integral, expensive ones first.
  const std::vector<PANEL_BRA_T>& bras() const { return bras_; }
  /// Orbitals over the run's functions (columns) -> over the components of the panels.
  MATRIX coefficients(const MATRIX& orbitals) const;

  /// Hands all panels of a bra to `consume`, one after the other, in a fixed order. Threads may call it at the same time,
  /// each with its own buffers.
  void bra(const PANEL_BRA_T& bra, WORK_T& work, const std::function<void(const ERI_PANEL_T&)>& consume) const;

 private:
  void find_kets(const PANEL_BRA_T& bra, std::vector<SPAN_T>& spans) const;
  void provide_integrals(std::span<SPAN_T> spans, WORK_T& work) const;
  void ket_class(const PANEL_BRA_T& bra, std::span<SPAN_T> spans, WORK_T& work,
                 const std::function<void(const ERI_PANEL_T&)>& consume) const;
  void spread(const SPAN_T& span, const ERI_PANEL_T& panel, double* out) const;
  ERI_PANEL_T shape_of(const PAIR_LIST_T& kets) const;

  const MOLECULE_T& functions_;
  const SHELL_PAIRS_T& data_;
  KERNEL_CHOICE_T kernels_;
  const ERI_STORE_T* store_;
  double threshold_;
  kernels::BOYS_SERVICE_T boys_;
  std::vector<int> position_;  ///< first component of every shell in this numbering
  std::vector<int> starts_;
  std::array<int, LMAX + 2> level_first_ = {};  ///< first component of every angular momentum, and the end
  std::vector<PANEL_BRA_T> bras_;
  std::vector<std::vector<std::size_t>> first_segment_;  ///< of a stored bra, [list][index]
};

}  // namespace zentrix::INTEGRALS_2E
