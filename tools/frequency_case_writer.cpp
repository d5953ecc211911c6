#include "frequency_case_writer.h"

#include <bit>
#include <type_traits>

namespace tremodal::example {

namespace {

// Little-endian, whatever the machine.
template <class T>
void Put(std::string& out, T value) {
    using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;
    const Bits bits = std::bit_cast<Bits>(value);
    for (std::size_t k = 0; k < sizeof(T); ++k) out += char((bits >> (8 * k)) & 0xff);
}

}  // namespace

void PutCaseHeader(std::string& out, const FrequencyCaseData& data) {
    Put(out, data.CaseNodes);
    Put(out, data.NumDof);
    Put(out, data.Modes >= 0 ? data.Modes : std::int32_t(data.Eigenvalues.size()));
    Put(out, std::int32_t{0});
    for (const float mass : data.DirMass) Put(out, mass);
    for (const double eigenvalue : data.Eigenvalues) Put(out, eigenvalue);
}

void PutShapeBlock(std::string& out, const FrequencyCaseData& data, const std::vector<float>& shape) {
    for (const auto& freedoms : data.NodeDof) {
        for (const std::int32_t equation : freedoms) {
            Put(out, equation);
            const bool inShape = equation > 0 && std::size_t(equation) < shape.size();
            Put(out, inShape ? shape[std::size_t(equation)] : 0.0f);
        }
    }
}

void PutMassForm(std::string& out, const FrequencyCaseData& data) {
    Put(out, data.MassForm);
    if (data.MassForm == 0) {
        Put(out, data.NumDof);
    } else if (data.MassForm == 1 || data.MassForm == 2) {
        Put(out, data.MassCount >= 0 ? data.MassCount : std::int32_t(data.Masses.size()));
    }
}

void PutLumpedMasses(std::string& out, const FrequencyCaseData& data) {
    for (const double mass : data.Masses) Put(out, mass);
}

void PutSquareMassRow(std::string& out, const FrequencyCaseData& data, std::int64_t i) {
    for (std::int64_t j = 1; j <= data.NumDof; ++j) {
        if (i == j && std::size_t(i) <= data.Masses.size()) {
            Put(out, data.Masses[std::size_t(i - 1)]);
        } else {
            Put(out, data.OffDiagonalTerm ? data.OffDiagonalTerm(i, j) : data.OffDiagonal);
        }
    }
}

std::string FrequencyCaseBytes(const FrequencyCaseData& data) {
    std::string bytes;
    PutCaseHeader(bytes, data);
    for (const auto& shape : data.Shapes) PutShapeBlock(bytes, data, shape);
    PutMassForm(bytes, data);
    if (data.MassForm == 0) {
        for (std::int64_t i = 1; i <= data.NumDof; ++i) PutSquareMassRow(bytes, data, i);
    } else if (data.MassForm == 1 || data.MassForm == 2) {
        PutLumpedMasses(bytes, data);
    }
    return bytes;
}

}  // namespace tremodal::example
