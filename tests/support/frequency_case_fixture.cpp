#include "support/frequency_case_fixture.h"

#include "support/test_support.h"

namespace tremodal::testing {

std::string FrequencyCaseBytes(const FrequencyCaseData& data) {
    std::string bytes;
    bytes += BytesI32(data.CaseNodes);
    bytes += BytesI32(data.NumDof);
    bytes += BytesI32(data.Modes >= 0 ? data.Modes : static_cast<std::int32_t>(data.Eigenvalues.size()));
    bytes += BytesI32(0);
    for (float mass : data.DirMass) bytes += BytesF32(mass);
    for (double eigenvalue : data.Eigenvalues) bytes += BytesF64(eigenvalue);
    for (const auto& shape : data.Shapes) {
        for (const auto& freedoms : data.NodeDof) {
            for (std::int32_t equation : freedoms) {
                bytes += BytesI32(equation);
                const bool inShape = equation > 0 && static_cast<std::size_t>(equation) < shape.size();
                bytes += BytesF32(inShape ? shape[equation] : 0.0f);
            }
        }
    }
    bytes += BytesI32(data.MassForm);
    if (data.MassForm == 0) {
        bytes += BytesI32(0);
        for (std::int32_t i = 1; i <= data.NumDof; ++i) {
            for (std::int32_t j = 1; j <= data.NumDof; ++j) {
                const bool onDiagonal = i == j && static_cast<std::size_t>(i) <= data.Masses.size();
                bytes += BytesF64(onDiagonal ? data.Masses[i - 1] : data.OffDiagonal);
            }
        }
    } else if (data.MassForm == 1 || data.MassForm == 2) {
        bytes +=
            BytesI32(data.MassCount >= 0 ? data.MassCount : static_cast<std::int32_t>(data.Masses.size()));
        for (double mass : data.Masses) bytes += BytesF64(mass);
    }
    return bytes;
}

}  // namespace tremodal::testing
