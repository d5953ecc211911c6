#include "input/node_coordinates.h"

#include <filesystem>
#include <vector>

#include "base/checked_math.h"

namespace tremodal {

namespace {
constexpr std::size_t kRecordLength = 14;
}

void ReadNodeCoordinates(RunState& state) {
    ModelContext& m = state.Model;
    // Node numbers are 16-bit in every file of the suite; a larger count is
    // an overflow. Converting before the allocation keeps an absurd count in
    // the size file from asking for gigabytes first.
    const i16 count = RoundToI16(m.NumNodes);
    const i32 upper = RoundToI32(m.NumNodes);
    m.NodeX.Allocate(upper);
    m.NodeY.Allocate(upper);
    m.NodeZ.Allocate(upper);

    // The binary open creates a missing file, as the suite's own runs have
    // always left an empty one; a run that writes nothing reads its zeros
    // without it (and still fails on whatever else stands in its place).
    const std::string path = m.ModelPath + ".XYZ";
    std::vector<unsigned char> block(kRecordLength * static_cast<std::size_t>(count > 0 ? count : 0));
    // A path that cannot be looked at is opened, to fail as a batch run fails.
    std::error_code error;
    const bool missing =
        std::filesystem::symlink_status(path, error).type() == std::filesystem::file_type::not_found;
    if (state.WriteFiles || !missing) {
        BinaryFile file(path);
        file.Read(block.data(), block.size());  // bytes past the end read as 0
        file.Close();
    }
    for (i32 n = 1; n <= count; ++n) {
        const unsigned char* record = block.data() + kRecordLength * (n - 1);
        m.NodeX(n) = GetF32(record + 2);
        m.NodeY(n) = GetF32(record + 6);
        m.NodeZ(n) = GetF32(record + 10);
    }
}

}  // namespace tremodal
