#include "solvation/solvents.hpp"

#include <fmt/ostream.h>

#include <algorithm>
#include <string>
#include <vector>

#include "input/text.hpp"

namespace zentrix::SOLVATION {
namespace {

struct SOLVENT_T {
  std::vector<std::string_view> names;
  double permittivity;
};

const std::vector<SOLVENT_T>& solvents() {
  static const std::vector<SOLVENT_T> table = {
      {{"WATER", "H2O"}, 78.3553},
      {{"METHANOL", "MEOH"}, 32.613},
      {{"ETHANOL", "ETOH"}, 24.852},
      {{"ACETONE"}, 20.493},
      {{"ACETONITRILE", "MECN"}, 35.688},
      {{"DMSO"}, 46.826},
      {{"DMF"}, 37.219},
      {{"THF"}, 7.4257},
      {{"CHCL3", "CHLOROFORM"}, 4.7113},
      {{"CCL4"}, 2.228},
      {{"DICHLOROMETHANE", "DCM", "CH2CL2"}, 8.93},
      {{"TOLUENE"}, 2.3741},
      {{"BENZENE"}, 2.2706},
      {{"CYCLOHEXANE"}, 2.0165},
      {{"HEXANE", "N-HEXANE"}, 1.8819},
      {{"DIETHYLETHER", "ET2O", "ETHER"}, 4.24},
      {{"ETHYL_ACETATE", "ETOAC"}, 5.9867},
      {{"AMMONIA", "NH3"}, 22.4},
      {{"VACUUM", "NONE"}, 1.0},
  };
  return table;
}

}  // namespace

double solvent_permittivity(std::string_view name) {
  const std::string wanted = INPUT_PARSER::upper(INPUT_PARSER::trimmed(name));
  for (const SOLVENT_T& solvent : solvents()) {
    if (std::find(solvent.names.begin(), solvent.names.end(), wanted) != solvent.names.end()) return solvent.permittivity;
  }
  return -1.0;
}

void print_known_solvents(std::ostream& report) {
  fmt::print(report,
             "   Recognized solvent names (epsilon values):\n"
             "     water     ( 78.36)   methanol  ( 32.61)   ethanol     ( 24.85)\n"
             "     acetone   ( 20.49)   mecn      ( 35.69)   dmso        ( 46.83)\n"
             "     dmf       ( 37.22)   thf       (  7.43)   chcl3       (  4.71)\n"
             "     ccl4      (  2.23)   dcm       (  8.93)   toluene     (  2.37)\n"
             "     benzene   (  2.27)   cyclohexane(2.02)   hexane      (  1.88)\n"
             "     ether     (  4.24)   etoac     (  5.99)   ammonia     ( 22.40)\n"
             "   Use \"%eps <value>\" to override or set a custom permittivity.\n");
}

}  // namespace zentrix::SOLVATION
