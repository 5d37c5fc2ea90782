#pragma once

#include <iosfwd>
#include <string>

#include "input/input_data.hpp"

namespace zentrix::SOLVATION {

/// What of the input decides about the continuum model.
struct SOLVATION_T {
  bool active = false;  ///< %solvent, %eps or %pcm was given and none of them switched solvation off
  INPUT_PARSER::PCM_MODEL model = INPUT_PARSER::PCM_MODEL::none;
  double permittivity = 1.0;
};

/// Resolves the solvent and the model and refuses what they cannot be combined with. `correlated`: the method is MP2, UMP2
/// or PUMP2. Without %pcm the model is IEF-PCM, without %solvent and %eps the solvent is water; %eps goes before %solvent.
/// 0 on success, otherwise a code after the reason was printed.
[[nodiscard]] int resolve_solvation(const INPUT_PARSER::INPUT_DATA_T& input, bool correlated, SOLVATION_T& solvation,
                                    std::ostream& report);

/// "C-PCM", "IEF-PCM", "COSMO"; empty for no model.
std::string model_name(INPUT_PARSER::PCM_MODEL model);

}  // namespace zentrix::SOLVATION
