#include "modal/excitation.h"

#include <cmath>

#include "base/checked_math.h"

namespace tremodal {

namespace {

constexpr f64 kPi = 3.14159265358979;

}  // namespace

// Rigid body motion of every node under a unit ground motion. Translations
// move each node along the direction; a unit rotation about an axis through
// the ground datum moves a node at arm (dx, dy, dz) by axis x arm. The major
// wave runs at (cos a, 0, sin a) in the X-Z plane, the minor wave 90 degrees
// on; the rotation axes of directions 4 and 6 are kept in the quadrant of
// positive X and Z whatever the angle.
void ExcitationAngle(const RunState& s, i16 d, f64& c, f64& sn) {
    const f64 a = s.Options.PrincipalAngle * kPi / 180.0;
    switch (d) {
        case 1:
            c = std::cos(a);
            sn = std::sin(a);
            break;
        case 3:
            c = std::cos(kPi / 2 + a);
            sn = std::sin(kPi / 2 + a);
            break;
        case 4:
            c = std::fabs(std::cos(a));
            sn = std::fabs(std::sin(a));
            break;
        case 6:
            c = std::fabs(std::cos(kPi / 2 + a));
            sn = std::fabs(std::sin(kPi / 2 + a));
            break;
        default:
            break;  // 2 and 5 keep the angle of the last pass that set one
    }
}

void FillExcitation(const RunState& s, i16 d, f64 c, f64 sn, Array1<f32>& r) {
    const i16 nodes = RoundToI16(s.Model.NumNodes);
    for (i32 n = 1; n <= nodes; ++n) {
        const i32 ex = s.Freq.NodeDof(n, 1);
        const i32 ey = s.Freq.NodeDof(n, 2);
        const i32 ez = s.Freq.NodeDof(n, 3);
        r(ex) = 0;
        r(ey) = 0;
        r(ez) = 0;
        // Arms from the rotation datum, from the single coordinates.
        const f64 dx = f64(s.Model.NodeX(n)) - s.Options.GroundX;
        const f64 dy = f64(s.Model.NodeY(n)) - s.Options.GroundY;
        const f64 dz = f64(s.Model.NodeZ(n)) - s.Options.GroundZ;
        // Where two freedoms of a node share an equation the later store
        // stands. Translations and the rotation about the vertical store x,
        // y, z; the horizontal rotations store y, z, x and then add the second
        // part of y to what the slot holds by then.
        switch (d) {
            case 1:
            case 3:
                r(ex) = StoreF32(c);
                r(ey) = 0;
                r(ez) = StoreF32(sn);
                break;
            case 2:
                r(ex) = 0;
                r(ey) = 1;
                r(ez) = 0;
                break;
            case 5:
                r(ex) = StoreF32(dz);
                r(ey) = 0;
                r(ez) = StoreF32(-dx);
                break;
            default:  // 4 and 6: axis (c, 0, s)
                r(ey) = StoreF32(-dz * c);
                r(ez) = StoreF32(dy * c);
                r(ex) = StoreF32(-dy * sn);
                r(ey) = StoreF32(f64(r(ey)) + dx * sn);
                break;
        }
    }
}

void BuildExcitation(RunState& s, i16 d) {
    if (d < 1 || d > 6) return;
    ExcitationAngle(s, d, s.CosAngle, s.SinAngle);
    FillExcitation(s, d, s.CosAngle, s.SinAngle, s.Excitation);
}

}  // namespace tremodal
