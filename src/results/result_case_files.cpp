#include "results/result_case_files.h"

#include <bit>
#include <cstdint>
#include <vector>

#include "base/binary_files.h"
#include "base/checked_math.h"
#include "base/file_system.h"
#include "base/number_text.h"
#include "base/text_files.h"

namespace tremodal {

namespace {

// Record of one element in the .1 file: its number three times around two
// groups of six values. This program has no element forces to give, so the
// values are all zero; the suite needs the records to list the elements.
constexpr std::size_t kForceRecordBytes = 54;
constexpr std::size_t kTextBytes = 55;

std::string CaseFile(const RunState& s, const char* suffix, const std::string& caseNo) {
    return s.Model.ModelPath + suffix + LTrim(caseNo);
}

}  // namespace

void WriteForceFiles(RunState& s, const std::string& caseNo) {
    BinaryFile count(CaseFile(s, ".W", caseNo));
    count.WriteF32(s.Model.NumElements);
    count.Close();

    // Element numbers are 16-bit in the suite's result files.
    const i16 elements = RoundToI16(s.Model.NumElements);
    // Every force is 0.0, all bits zero: only the element numbers are put in,
    // at the start of the record and of each end's six forces.
    std::vector<unsigned char> records(elements > 0 ? std::size_t(elements) * kForceRecordBytes : 0);
    for (i32 e = 1; e <= elements; ++e) {
        unsigned char* record = records.data() + std::size_t(e - 1) * kForceRecordBytes;
        const auto number = std::bit_cast<std::uint16_t>(i16(e));
        StoreLittle(record, number);
        StoreLittle(record + 2, number);
        StoreLittle(record + 4 + 6 * 4, number);
    }
    BinaryFile forces(CaseFile(s, ".1", caseNo));
    forces.Write(records.data(), records.size());
    forces.Close();
}

void WriteCaseIndexFiles(RunState& s, const std::string& caseNo) {
    const i16 elements = RoundToI16(s.Model.NumElements);
    std::vector<unsigned char> index;
    PutFixedText(index, s.Model.LoadCaseTitle, kTextBytes);
    PutFixedText(index, DateText(CurrentTime()), kTextBytes);
    PutFixedText(index, TimeText(CurrentTime()), kTextBytes);
    PutF32(index, s.Model.NumElements);
    PutF32(index, s.Model.NumNodes);
    for (int k = 0; k < 4; ++k) PutI32(index, 0);
    for (i32 i = 1; i <= elements; ++i) PutI16(index, i16(i));

    BinaryFile file(CaseFile(s, ".2", caseNo));
    file.Write(index.data(), index.size());
    file.Close();
}

void WriteResponseCount(RunState& s) {
    ResponseOptions& o = s.Options;
    PrintFile out(s.Model.FilesDir + "/response.cnt", TextMode::Output);
    out.Line(s.Model.ModelPath);
    out.Line(o.ResultsCase);
    for (int i = 1; i <= 6; ++i) out.Item(PrintItem(o.DirOn(i)));
    out.EndLine();
    out.Line(PrintItem(o.ForceSignMode));
    out.Line("0");
    out.Line(PrintItem(o.CombMethod));
    out.Line(PrintItem(o.DampingRatio));
    // casepost wants a duration of at least 0.1 s; the raised value stays in
    // the options until they are set again. The base shear has already used
    // the duration as the user gave it.
    const f32 shortest = 0.1f;
    if (o.Duration < shortest) o.Duration = shortest;
    out.Line(PrintItem(o.Duration));
    out.Close();
}

}  // namespace tremodal
