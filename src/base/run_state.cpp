#include "base/run_state.h"

#include "base/checked_math.h"

namespace tremodal {

void AllocateRunArrays(RunState& s) {
    const std::int64_t modes = s.Freq.NumModes;
    const std::int64_t dof = s.Freq.NumDof;
    const std::int64_t nodes = RoundToI32(s.Model.NumNodes);
    // The header decides what the run asks for: two arrays of singles by
    // equation and mode, four by equation, and the small ones. All of it is
    // checked against the memory at hand before any of it is taken.
    const auto Add = [](std::int64_t a, std::int64_t b) {
        std::int64_t sum = 0;
        return a < 0 || b < 0 || __builtin_add_overflow(a, b, &sum) ? -1 : sum;
    };
    const auto Mul = [](std::int64_t a, std::int64_t b) {
        std::int64_t product = 0;
        return a < 0 || b < 0 || __builtin_mul_overflow(a, b, &product) ? -1 : product;
    };
    std::int64_t bytes = Mul(Mul(Add(dof, 1), Add(modes, 1)), 2 * sizeof(f32));
    bytes = Add(bytes, Mul(Add(dof, 1), 4 * sizeof(f32)));
    bytes = Add(bytes, Mul(Add(modes, 2), 6 * sizeof(f32)));
    bytes = Add(bytes, Mul(Add(nodes, 1), 7 * (sizeof(i32) + sizeof(f32))));
    RequireMemory(bytes, "the run arrays of the frequency case");
    s.Freq.Eigenvalue.Allocate(modes);
    s.Freq.ModeShape.Allocate(dof, modes);
    s.Freq.ShapePeak.Allocate(modes);
    s.Freq.Omega.Allocate(modes + 1);
    s.ModalDamping.Allocate(modes + 1);
    s.Freq.NodeDof.Allocate(nodes, 6);
    s.MissMassNodal.Allocate(nodes, 6);
    s.MissMassDof.Allocate(dof);
    s.ModalAccel.Allocate(dof, modes);
    s.Curve.ModalSpectrum.Allocate(modes);
    s.Excitation.Allocate(dof);
    s.Participation.Allocate(modes);
    s.ResidualMass.Allocate(dof);
    s.ResidualWork.Allocate(dof);
}

}  // namespace tremodal
