#include "integrals/integral_panels.hpp"

#include <algorithm>
#include <numeric>

#include "molecule/cartesian.hpp"

namespace zentrix::INTEGRALS_2E {

namespace {

/// Rectangles begin at cache lines and are whole vectors wide.
constexpr int padded(int n) { return (n + 7) / 8 * 8; }
/// Rectangles that a core should keep at hand while they are filled and multiplied.
constexpr long panel_bytes = 512 * 1024;

}  // namespace

ERI_PANELS::ERI_PANELS(const MOLECULE_T& functions, const SHELL_PAIRS_T& data, const KERNEL_CHOICE_T& kernels,
                       const ERI_STORE_T* store, double threshold)
    : functions_(functions),
      data_(data),
      kernels_(kernels),
      store_(store),
      threshold_(threshold),
      boys_(kernels::boys_service()),
      position_(data.shells.size()),
      starts_{0} {
  std::vector<std::size_t> order(data.shells.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t s, std::size_t t) { return data.shells[s].l < data.shells[t].l; });
  for (const std::size_t shell : order) {
    const int l = data.shells[shell].l;
    position_[shell] = starts_.back();
    starts_.push_back(starts_.back() + n_cartesian(l));
    for (int above = l + 1; above <= LMAX + 1; ++above) level_first_[static_cast<std::size_t>(above)] = starts_.back();
  }
  for (const BRA_T& pair : bra_order(data)) {
    const PAIR_LIST_T& list = data.lists[static_cast<std::size_t>(pair.list)];
    const SHELL_PAIR_T& shells = list.pairs[static_cast<std::size_t>(pair.index)];
    bras_.push_back({pair, position_[static_cast<std::size_t>(shells.shell_i)], list.na(),
                     position_[static_cast<std::size_t>(shells.shell_j)], list.nb()});
  }
  if (store_ == nullptr) return;
  for (const PAIR_LIST_T& list : data.lists) first_segment_.emplace_back(list.pairs.size(), store_->segments().size());
  for (std::size_t n = store_->segments().size(); n-- > 0;) {
    const BRA_T& pair = store_->segments()[n].bra;
    first_segment_[static_cast<std::size_t>(pair.list)][static_cast<std::size_t>(pair.index)] = n;
  }
}

ERI_PANELS::WORK_T::WORK_T(const ERI_PANELS& panels)
    : quartets_(panels.data_.max_l, panels.data_.max_primitives, panels.kernels_.lanes) {}

MATRIX ERI_PANELS::coefficients(const MATRIX& orbitals) const {
  MATRIX result(n_components(), orbitals.cols());
  for (std::size_t s = 0; s < functions_.shells.size(); ++s) {
    const SHELL_T& shell = functions_.shells[s];
    result.middleRows(position_[s], n_cartesian(shell.l)).noalias() =
        shell_functions(shell.l, functions_.spherical).transpose() * orbitals.middleRows(shell.first, shell.nfunc);
  }
  return result;
}

void ERI_PANELS::find_kets(const PANEL_BRA_T& bra, std::vector<SPAN_T>& spans) const {
  spans.clear();
  if (store_ != nullptr) {
    const std::vector<STORE_SEGMENT_T>& all = store_->segments();
    std::size_t n = first_segment_[static_cast<std::size_t>(bra.pair.list)][static_cast<std::size_t>(bra.pair.index)];
    for (; n < all.size() && all[n].bra.list == bra.pair.list && all[n].bra.index == bra.pair.index; ++n)
      spans.push_back({all[n], nullptr});
    return;
  }
  for (int ket_list = 0; ket_list <= bra.pair.list; ++ket_list) {
    const int kets = surviving_kets(data_, bra.pair, ket_list, threshold_);
    if (kets > 0) spans.push_back({{bra.pair, ket_list, kets, 0}, nullptr});
  }
}

void ERI_PANELS::bra(const PANEL_BRA_T& bra, WORK_T& work, const std::function<void(const ERI_PANEL_T&)>& consume) const {
  find_kets(bra, work.spans_);
  const auto same_class = [&](const SPAN_T& x, const SPAN_T& y) {
    const PAIR_LIST_T &p = data_.lists[static_cast<std::size_t>(x.segment.ket_list)],
                      &q = data_.lists[static_cast<std::size_t>(y.segment.ket_list)];
    return p.la == q.la && p.lb == q.lb;
  };
  const std::span<SPAN_T> spans = work.spans_;
  for (std::size_t first = 0, last = 0; first < spans.size(); first = last) {
    while (last < spans.size() && same_class(spans[first], spans[last])) ++last;
    ket_class(bra, spans.subspan(first, last - first), work, consume);
  }
}

ERI_PANEL_T ERI_PANELS::shape_of(const PAIR_LIST_T& kets) const {
  const auto lc = static_cast<std::size_t>(kets.la), ld = static_cast<std::size_t>(kets.lb);
  ERI_PANEL_T panel;
  panel.first_c = level_first_[lc];
  panel.n_c = level_first_[lc + 1] - panel.first_c;
  panel.first_d = level_first_[ld];
  panel.n_d = level_first_[ld + 1] - panel.first_d;
  panel.square = lc == ld;
  panel.row_stride = padded(panel.n_d);
  panel.ab_stride = panel.row_stride * padded(panel.n_c);
  return panel;
}

void ERI_PANELS::ket_class(const PANEL_BRA_T& bra, std::span<SPAN_T> spans, WORK_T& work,
                           const std::function<void(const ERI_PANEL_T&)>& consume) const {
  provide_integrals(spans, work);
  ERI_PANEL_T panel = shape_of(data_.lists[static_cast<std::size_t>(spans[0].segment.ket_list)]);
  const int all = bra.n_a * bra.n_b;
  const int step = std::clamp(static_cast<int>(panel_bytes / (8 * panel.ab_stride)), 1, all);
  const auto doubles = static_cast<std::size_t>(step * panel.ab_stride);
  if (work.panel_.size() < doubles) work.panel_ = ALIGNED_DOUBLES(doubles);
  panel.values = work.panel_.data();
  for (panel.first_ab = 0; panel.first_ab < all; panel.first_ab += step) {
    panel.n_ab = std::min(step, all - panel.first_ab);
    std::fill_n(work.panel_.data(), panel.n_ab * panel.ab_stride, 0.0);
    for (const SPAN_T& span : spans) spread(span, panel, work.panel_.data());
    if (panel.square)
      for (int n = 0; n < panel.n_ab; ++n)
        kernels_.spread->mirror(work.panel_.data() + n * panel.ab_stride, padded(panel.n_c), panel.row_stride);
    consume(panel);
  }
}

/// Where the integrals of some kets lie: in the store, or in the buffer after they were computed.
void ERI_PANELS::provide_integrals(std::span<SPAN_T> spans, WORK_T& work) const {
  if (store_ != nullptr) {
    for (SPAN_T& span : spans) span.values = store_->values() + span.segment.offset;
    return;
  }
  std::size_t doubles = 0;
  for (const SPAN_T& span : spans) doubles += segment_doubles(data_, span.segment, kernels_.lanes);
  if (work.integrals_.size() < doubles) work.integrals_ = ALIGNED_DOUBLES(doubles);
  double* out = work.integrals_.data();
  for (SPAN_T& span : spans) {
    compute_segment(data_, kernels_, span.segment, PRIMITIVE_SAFETY * threshold_, boys_, work.quartets_, out);
    span.values = out;
    out += segment_doubles(data_, span.segment, kernels_.lanes);
  }
}

void ERI_PANELS::spread(const SPAN_T& span, const ERI_PANEL_T& panel, double* out) const {
  const STORE_SEGMENT_T& segment = span.segment;
  const PAIR_LIST_T& kets = data_.lists[static_cast<std::size_t>(segment.ket_list)];
  const PAIR_LIST_T& bras = data_.lists[static_cast<std::size_t>(segment.bra.list)];
  const auto corner = [&](int k) {
    const SHELL_PAIR_T& ket = kets.pairs[static_cast<std::size_t>(k)];
    return (position_[static_cast<std::size_t>(ket.shell_i)] - panel.first_c) * panel.row_stride +
           position_[static_cast<std::size_t>(ket.shell_j)] - panel.first_d;
  };
  const long n_cd = kets.block_size(), block = bras.block_size() * n_cd;
  if (!in_lanes(data_, segment)) {
    for (int k = 0; k < segment.kets; ++k) {
      const double* from = span.values + k * block + panel.first_ab * n_cd;
      for (int ab = 0; ab < panel.n_ab; ++ab)
        for (int c = 0; c < kets.na(); ++c, from += kets.nb())
          std::copy(from, from + kets.nb(), out + ab * panel.ab_stride + corner(k) + c * panel.row_stride);
    }
    return;
  }
  const auto kernel = kernels_.spread->spread[kernels::pair_class(kets.la, kets.lb)];
  kernels::SPREAD_T target;
  target.panel = out;
  target.ab_stride = panel.ab_stride;
  target.row_stride = panel.row_stride;
  const double* from = span.values + panel.first_ab * n_cd * kernels_.lanes;
  for (int k = 0; k < segment.kets; k += kernels_.lanes, from += block * kernels_.lanes) {
    target.count = std::min(kernels_.lanes, segment.kets - k);
    for (int lane = 0; lane < target.count; ++lane) target.corner[lane] = corner(k + lane);
    kernel(target, panel.n_ab, from);
  }
}

}  // namespace zentrix::INTEGRALS_2E
