// Base shear of a translational direction under the chosen modal combination.
#pragma once

#include <string>
#include <vector>

#include "base/run_state.h"

namespace tremodal {

// Sets BaseShear(d).
void CombineBaseShear(RunState& state, i16 d);

// The combined shear from what CombineBaseShear leaves under a method: every
// method but the absolute sum (4) leaves its square.
f32 CombinedShear(f32 baseShear, i16 combMethod);

// The storey shears' levels, the distinct heights (Y) of the nodes that carry
// mass in a translation, highest first; and for each level and mode the sum
// of m phi r over the equations at and above it, for the direction whose
// excitation stands. Worked out once for a direction, combined per method.
struct StoreySums {
    std::vector<f32> Heights;
    i32 Modes = 0;
    std::vector<f64> Above;  // (level, mode): level * (Modes + 1) + mode
};
StoreySums SumStoreys(const RunState& state);

// The combined storey shear of translational direction d at each level under
// a method, while the direction's participation stands: the inertia forces
// of the equations at and above the level, mode by mode, combined as the base
// shear combines them. A mode's shear at a level is its base shear times the
// level's sum over the lowest level's, so the lowest level gives the base
// shear of the method exactly.
std::vector<f32> CombineStoreyShears(const RunState& state, i16 d, i16 method, const StoreySums& sums);

namespace detail {
// The terms of row i of the complete quadratic combination (first..last,
// arrays by mode number) and of the double sum (with damped frequencies and
// effective damping), as the combination works them out; false where a term
// would fail. Open to tests, which hold them against the formulas.
bool CqcRowTerms(const f32* omega, const f32* zeta, const f32* shear, i32 first, i32 last, i32 i, f64* terms);
bool DsmRowTerms(const f32* omega, const f32* dampedOmega, const f32* zetaEff, const f32* shear, i32 first,
                 i32 last, i32 i, f64* terms);
}  // namespace detail

}  // namespace tremodal
