// Physics of the measuring cell: how its temperature follows the target.
#pragma once

#include <cstdint>

namespace rvx::simulator {

// Cell temperature after `steps` steps of the model towards `target`, all in ADC counts. The cell
// makes one step each half second: 80 counts while it is further away than that, 2 counts nearby,
// within the limits of the converter. An odd distance ends in a swing of one count about the
// target. Costs no more than some hundred operations, however large `steps` is.
uint16_t AdvanceCell(uint16_t actual, uint16_t target, int64_t steps);

}  // namespace rvx::simulator
