#include "runcontrol/run_state.h"

#include "runcontrol/checked_math.h"

namespace tremodal {

void AllocateRunArrays(RunState& s) {
    const std::int64_t modes = s.Freq.NumModes;
    const std::int64_t dof = s.Freq.NumDof;
    const std::int64_t nodes = RoundToI32(s.Model.NumNodes);
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
