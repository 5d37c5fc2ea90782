#pragma once

#include <array>
#include <iosfwd>

#include "constants/limits.hpp"

// The Boys function F_n(T) = int_0^1 t^2n exp(-T t^2) dt, the ground floor of every Coulomb-type integral.

namespace zentrix::BOYS {

/// Builds the process-wide table once: F_0 .. F_28 on the grid. Later calls do nothing. Everything that needs a table calls
/// it itself, so tests and tools need no set-up.
void initialize_tables();

/// Prints the sizes of the tables.
void print_table_summary(std::ostream& report);

/// F_0(T) .. F_nmax(T) into values[0 .. nmax]; 0 <= nmax <= BOYS_NMAX, T >= 0. Table and sixth-order Taylor expansion up to
/// T = 50, asymptotic form beyond; the series throughout in precise mode.
void evaluate(int nmax, double t, double* values);

/// One order.
double evaluate(int n, double t);

/// F_0(T) .. F_nmax(T) by the power series and downward recursion in extended precision: the reference of both modes and the
/// source of the vector tables.
void evaluate_series(int nmax, double t, long double* values);

/// True while the table is not used.
bool precise_mode();

/// Switches the precise mode for a block and restores the previous mode on every exit.
class PRECISE_MODE_GUARD {
 public:
  explicit PRECISE_MODE_GUARD(bool precise = true);
  ~PRECISE_MODE_GUARD();
  PRECISE_MODE_GUARD(const PRECISE_MODE_GUARD&) = delete;
  PRECISE_MODE_GUARD& operator=(const PRECISE_MODE_GUARD&) = delete;

 private:
  bool previous_;
};

}  // namespace zentrix::BOYS
