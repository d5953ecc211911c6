#include "results/case_list.h"

#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#include "base/binary_files.h"
#include "base/checked_math.h"
#include "base/file_system.h"
#include "base/number_text.h"

namespace tremodal {

namespace {

std::string NslPath(const RunState& s) { return s.Model.ModelPath + ".NSL"; }

// The files of a case that a reset removes, in the order they go.
constexpr const char* kCaseFileSuffixes[] = {".L", ".R", ".$", ".#", ".1", ".2", ".W"};

// Runs one step of the reset and passes over whatever failure it meets: the
// reset must never stop a run, and each step goes ahead whether or not the
// one before it worked.
void Ignoring(const std::function<void()>& step) {
    try {
        step();
    } catch (const Failure&) {
    }
}

// The record number c + 1 is a 16-bit integer as well: case 32767 has none.
i16 NslRecordNumber(i16 caseNumber) { return AddI16(caseNumber, 1); }

NslRecord ReadNslBlock(BinaryFile& file, i16 caseNumber) {
    file.SeekRecord(NslRecordNumber(caseNumber), kNslRecordLength);
    unsigned char block[kNslRecordLength];
    file.Read(block, sizeof block);
    NslRecord out;
    std::memcpy(out.Flag, block, sizeof out.Flag);
    out.Description.assign(reinterpret_cast<const char*>(block + 16), kNslDescriptionLength);
    out.Stamp.assign(reinterpret_cast<const char*>(block + 16 + kNslDescriptionLength), kNslStampLength);
    return out;
}

void WriteNslBlock(BinaryFile& file, i16 caseNumber, const NslRecord& record) {
    std::vector<unsigned char> block(record.Flag, record.Flag + sizeof record.Flag);
    PutFixedText(block, record.Description, kNslDescriptionLength);
    PutFixedText(block, record.Stamp, kNslStampLength);
    file.SeekRecord(NslRecordNumber(caseNumber), kNslRecordLength);
    file.Write(block.data(), block.size());
}

}  // namespace

i16 NslCaseNumber(const std::string& caseNo) { return RoundToI16(StrictNumber(caseNo)); }

NslRecord ReadNslRecord(RunState& s, i16 caseNumber) {
    BinaryFile file(NslPath(s));
    NslRecord record = ReadNslBlock(file, caseNumber);
    file.Close();
    return record;
}

void WriteNslRecord(RunState& s, i16 caseNumber, const NslRecord& record) {
    BinaryFile file(NslPath(s));
    WriteNslBlock(file, caseNumber, record);
    file.Close();
}

void WriteReformatHead(RunState& s, PrintFile& out, const std::string& caseText,
                       const std::string& description) {
    out.Line("REFORMAT");
    out.Line("MODEL," + s.Model.ModelName);
    out.Line("TITLE," + s.Model.ModelTitle);
    out.Line("LCASE," + caseText);
    out.Line("LDESC," + description);
    out.Item("LDATE,").Item(DateText(CurrentTime())).EndLine();
    out.Line("LTIME," + TimeText(CurrentTime()));
}

void ResetCase(RunState& s, std::string& caseNo) {
    caseNo = LTrim(caseNo);
    for (const char* suffix : kCaseFileSuffixes) {
        Ignoring([&] { DeleteFile(s.Model.ModelPath + suffix + caseNo); });
    }
    // The record is cleared, not removed: its description and stamp stay in
    // the list until the next writer of the case replaces them. The list is
    // opened (and so created) before the case text is converted; a text that
    // is no 16-bit number has no record, and the list stays as it was.
    std::unique_ptr<BinaryFile> list;
    Ignoring([&] { list = std::make_unique<BinaryFile>(NslPath(s)); });
    if (!list) return;
    Ignoring([&] {
        const i16 c = NslCaseNumber(caseNo);
        NslRecord record = ReadNslBlock(*list, c);
        record.Flag[1] = 0;
        record.Flag[2] = 0;
        record.Flag[3] = 0;
        WriteNslBlock(*list, c, record);
    });
    Ignoring([&] { list->Close(); });
}

void WriteCaseHeader(RunState& s, const std::string& caseNo) {
    const std::string number = LTrim(caseNo);
    PrintFile out(s.Model.ModelPath + ".L" + number, TextMode::Output);
    WriteReformatHead(s, out, caseNo, s.Model.LoadCaseTitle);
    out.Line("SCASE,MOTION Response Spectrum (Seismic)");
    out.Line("ACOM,");
    out.Line("ACOM, Seismic Response Spectrum Analysis");
    out.Line("ACOM,");
    out.Line("ACOM, -----------OPTIONS DATA------------------------------------\"");
    out.Line("ACOM,");

    // The options and the report go in word for word, blanks and all, so the
    // case keeps the whole record of how its results came about.
    TextInput options(s.Options.OptionsFile);
    while (!options.AtEnd()) out.Line("ACOM," + options.ReadLine());
    options.Close();

    out.Line("ACOM,");
    out.Line("ACOM,------SPECTRUM and PARTICIPATION DATA-----------------------");
    // One pass beyond the last entry: the index equal to the count reads as
    // empty text, so the section always ends in a bare "ACOM,".
    for (std::size_t i = 0; i <= s.List1.size(); ++i) {
        out.Line("ACOM," + (i < s.List1.size() ? s.List1[i] : std::string()));
    }
    out.Close();

    const i16 c = NslCaseNumber(caseNo);
    NslRecord record = ReadNslRecord(s, c);
    record.Flag[1] = 1;
    record.Flag[2] = 1;
    record.Flag[3] = 1;
    record.Description = s.Model.LoadCaseTitle;
    record.Stamp = DateTimeText(CurrentTime());
    WriteNslRecord(s, c, record);
}

}  // namespace tremodal
