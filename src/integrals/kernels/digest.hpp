#pragma once

#include "integrals/kernels/horizontal.hpp"
#include "integrals/kernels/lane_runs.hpp"
#include "integrals/kernels/quartet_kernels.hpp"

// Back of a quartet class: ket transfer of row after row (ab|f], digestion with the density, or storage.
//
// Symmetry: with every quartet scaled by 1/2 for each of i = j, k = l, bra = ket, the four updates
//   K_ac += (ab|cd) D_bd, K_bc += (ab|cd) D_ad, K_ad += (ab|cd) D_bc, K_bd += (ab|cd) D_ac
// make half of the exchange matrix, J_ab += (ab|cd) D_cd and J_cd += (ab|cd) D_ab a quarter of the Coulomb matrix of a
// symmetric density; the driver completes them with their transposes.

namespace zentrix::kernels::ZX_ISA {

/// to[0 .. n) += the first n < LANES elements of v, in accesses of 4, 2 and 1 doubles. A whole vector would be simpler, but
/// the next lane's run often begins inside it, and reading what is still being written stalls the processor.
ZX_INLINE void add_first(double* to, vec v, int n) {
  using pair __attribute__((vector_size(16), aligned(8))) = double;
#if defined(__AVX512F__)
  using quad __attribute__((vector_size(32), aligned(8))) = double;
  if (n & 4) {
    *reinterpret_cast<quad*>(to) += __builtin_shufflevector(v, v, 0, 1, 2, 3);
    v = __builtin_shufflevector(v, v, 4, 5, 6, 7, 0, 1, 2, 3);
    to += 4;
  }
#endif
  if (n & 2) {
    *reinterpret_cast<pair*>(to) += __builtin_shufflevector(v, v, 0, 1);
    v[0] = v[2];
    to += 2;
  }
  if (n & 1) *to += v[0];
}

/// The way back: adds to the runs of the first `count` lanes, one after the other (lanes may share an address).
ZX_INLINE void add_runs(double* const* to, int count, int n, vec* from) {
  int at = 0;
  for (; at + LANES <= n; at += LANES) {
    transpose(from + at);
    for (int lane = 0; lane < count; ++lane) store(to[lane] + at, load(to[lane] + at) + from[at + lane]);
  }
  if (at == n) return;
  transpose(from + at);
  for (int lane = 0; lane < count; ++lane) add_first(to[lane] + at, from[at + lane], n - at);
}

/// Reads the integrals of a row from (ab|f] by ket transfer.
template <int LC, int LD>
struct TRANSFERRED_ROW {
  using KET = HORIZONTAL<LC, LD>;
  static constexpr int STRIDE = row_stride(LC, LD);
  const vec* row;
  const vec* separation;
  vec temporary[KET::TEMPORARIES];

  ZX_INLINE TRANSFERRED_ROW(const vec* f, const vec* cd) : row(f), separation(cd) {
    KET::intermediates(
        [&](int e) __attribute__((always_inline)) { return row[e]; }, temporary, separation);
  }
  template <int D>
  ZX_INLINE vec integral(int c) const {
    return KET::template last<D>(
        [&](int e) __attribute__((always_inline)) { return row[e]; }, temporary, separation, c);
  }
};

/// Reads the integrals of a stored row.
template <int LC, int LD>
struct STORED_ROW {
  static constexpr int STRIDE = component_count(LC) * component_count(LD);
  const vec* row;
  ZX_INLINE STORED_ROW(const vec* block, const vec*) : row(block) {}
  template <int D>
  ZX_INLINE vec integral(int c) const {
    return row[c * component_count(LD) + D];
  }
};

template <int LC, int LD, template <int, int> class ROW, bool EXCHANGE, bool COULOMB>
struct BACK_OF_CLASS {
  static constexpr int NC = function_count(LC), ND = function_count(LD);
  /// Components d handled together: their densities and sums stay in registers.
  static constexpr int D_BLOCK = ND <= 6 ? ND : 5;
  static constexpr bool UNROLL_C = highest_l(LC) <= 2;

  /// Lane-transposed density blocks and sums of the kets, [c][a.., b..] and [d][a.., b..].
  struct PANELS_T {
    vec *dc, *dd, *kc, *kd;  // exchange
    vec *dcd, *jcd;          // Coulomb, [c][d]
  };

  template <int FIRST_D>
  static ZX_INLINE void exchange_block(const ROW<LC, LD>& row, const PANELS_T& panels, int nab, int a, int b) {
    constexpr int n = ND - FIRST_D < D_BLOCK ? ND - FIRST_D : D_BLOCK;
    vec da[n], db[n], ka[n], kb[n];
    for (int d = 0; d < n; ++d) {
      da[d] = panels.dd[(FIRST_D + d) * nab + a];
      db[d] = panels.dd[(FIRST_D + d) * nab + b];
      ka[d] = panels.kd[(FIRST_D + d) * nab + a];
      kb[d] = panels.kd[(FIRST_D + d) * nab + b];
    }
    loop<0, NC, UNROLL_C>([&](int c) __attribute__((always_inline)) {
      const vec dac = panels.dc[c * nab + a], dbc = panels.dc[c * nab + b];
      vec kac = panels.kc[c * nab + a], kbc = panels.kc[c * nab + b];
      unroll<0, n>([&](auto di) __attribute__((always_inline)) {
        constexpr int d = decltype(di)::value;
        const vec v = row.template integral<FIRST_D + d>(c);
        kac += v * db[d];
        kbc += v * da[d];
        ka[d] += v * dbc;
        kb[d] += v * dac;
      });
      panels.kc[c * nab + a] = kac;
      panels.kc[c * nab + b] = kbc;
    });
    for (int d = 0; d < n; ++d) {
      panels.kd[(FIRST_D + d) * nab + a] = ka[d];
      panels.kd[(FIRST_D + d) * nab + b] = kb[d];
    }
    if constexpr (FIRST_D + n < ND) exchange_block<FIRST_D + n>(row, panels, nab, a, b);
  }

  static ZX_INLINE void coulomb_row(const ROW<LC, LD>& row, const PANELS_T& panels, double density, double* target) {
    vec total = load(target);
    const vec dab = broadcast(density);
    loop<0, NC, UNROLL_C>([&](int c) __attribute__((always_inline)) {
      unroll<0, ND>([&](auto di) __attribute__((always_inline)) {
        constexpr int d = decltype(di)::value;
        const vec v = row.template integral<d>(c);
        total += v * panels.dcd[c * ND + d];
        panels.jcd[c * ND + d] += v * dab;
      });
    });
    store(target, total);
  }

  static void run(const BATCH_T& batch, const DIGEST_T& target, double* scratch, const double* rows_in) {
    const int na = target.na, nb = target.nb, nab = na + nb;
    const vec* rows = reinterpret_cast<const vec*>(rows_in);
    vec* free = reinterpret_cast<vec*>(scratch);
    const auto take = [&](int n) {
      vec* taken = free;
      free += whole_blocks(n);
      return taken;
    };

    vec separation[3];
    [[maybe_unused]] const double *from_c[LANES], *from_d[LANES], *from_cd[LANES];
    [[maybe_unused]] double *to_c[LANES], *to_d[LANES], *to_cd[LANES];
    for (int lane = 0; lane < LANES; ++lane) {
      const SHELL_PAIR_T& ket = *batch.kets[lane];
      for (int i = 0; i < 3; ++i) separation[i][lane] = ket.separation[i];
      if constexpr (EXCHANGE) {
        const long c = static_cast<long>(ket.first_i) * nab, d = static_cast<long>(ket.first_j) * nab;
        from_c[lane] = target.dp + c;
        from_d[lane] = target.dp + d;
        to_c[lane] = target.kp + c;
        to_d[lane] = target.kp + d;
      }
      if constexpr (COULOMB) {
        from_cd[lane] = target.pair_density + ket.block;
        to_cd[lane] = target.pair_coulomb + ket.block;
      }
    }
    PANELS_T panels{};
    if constexpr (EXCHANGE) {
      panels.dc = take(NC * nab);
      panels.kc = take(NC * nab);
      panels.dd = take(ND * nab);
      panels.kd = take(ND * nab);
      load_runs(from_c, NC * nab, panels.dc);
      load_runs(from_d, ND * nab, panels.dd);
      for (int n = 0; n < whole_blocks(NC * nab); ++n) panels.kc[n] = vec{};
      for (int n = 0; n < whole_blocks(ND * nab); ++n) panels.kd[n] = vec{};
    }
    if constexpr (COULOMB) {
      panels.dcd = take(NC * ND);
      panels.jcd = take(NC * ND);
      load_runs(from_cd, NC * ND, panels.dcd);
      for (int n = 0; n < whole_blocks(NC * ND); ++n) panels.jcd[n] = vec{};
    }
    for (int a = 0; a < na; ++a)
      for (int b = 0; b < nb; ++b, rows += ROW<LC, LD>::STRIDE) {
        const ROW<LC, LD> row(rows, separation);
        if constexpr (EXCHANGE) exchange_block<0>(row, panels, nab, a, na + b);
        if constexpr (COULOMB)
          coulomb_row(row, panels, target.bra_density[a * nb + b], target.bra_coulomb + (a * nb + b) * LANES);
      }
    if constexpr (EXCHANGE) {
      add_runs(to_c, batch.count, NC * nab, panels.kc);
      add_runs(to_d, batch.count, ND * nab, panels.kd);
    }
    if constexpr (COULOMB) add_runs(to_cd, batch.count, NC * ND, panels.jcd);
  }
};

/// Writes the integrals of all rows as a block [ab][cd] of vectors.
template <int LC, int LD>
struct STORE_OF_CLASS {
  static void run(const BATCH_T& batch, int n_rows, const double* rows_in, double* block_out) {
    constexpr int nd = component_count(LD), n = component_count(LC) * nd;
    vec separation[3];
    for (int lane = 0; lane < LANES; ++lane)
      for (int i = 0; i < 3; ++i) separation[i][lane] = batch.kets[lane]->separation[i];
    const vec* rows = reinterpret_cast<const vec*>(rows_in);
    for (int r = 0; r < n_rows; ++r, rows += row_stride(LC, LD), block_out += n * LANES) {
      const TRANSFERRED_ROW<LC, LD> row(rows, separation);
      loop<0, component_count(LC), (LC <= 2)>([&](int c) __attribute__((always_inline)) {
        unroll<0, nd>([&](auto di) __attribute__((always_inline)) {
          constexpr int d = decltype(di)::value;
          store(block_out + (c * nd + d) * LANES, row.template integral<d>(c));
        });
      });
    }
  }
};

}  // namespace zentrix::kernels::ZX_ISA
