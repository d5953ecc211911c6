// The load case list (.NSL) and the results header (.L) of a results case.
//
// The .NSL file holds one record of 86 bytes for each case number, no file
// header: case c has its record at byte c * 86 (record c + 1 counted from 1).
// A record is 16 flag bytes, a description of 50 characters and a date and
// time of 20, both blank-padded on the right. Flag(1) marks a case with a
// load file, Flag(2) and Flag(3) a results case of this program; the other
// flags belong to the suite's other programs and are written back as read.
#pragma once

#include <string>

#include "base/run_state.h"
#include "base/text_files.h"

namespace tremodal {

constexpr int kNslRecordLength = 86;
constexpr int kNslDescriptionLength = 50;
constexpr int kNslStampLength = 20;

// One record of the load case list as it stands in the file. Description and
// Stamp hold the raw bytes of their fields when read (a record beyond the end
// of the file reads as zeros); on write they are padded with blanks or cut.
struct NslRecord {
    unsigned char Flag[16] = {};
    std::string Description;
    std::string Stamp;
};

// The case number of a record: the case text converted strictly to a 16-bit
// integer (13 for text that is not a number, 6 out of range).
i16 NslCaseNumber(const std::string& caseNo);

// Reads the record of case caseNumber from ModelPath + ".NSL", creating the
// file when it is missing. 6 for case 32767, whose record number c + 1 does
// not fit 16 bits; a negative case has no record either.
NslRecord ReadNslRecord(RunState& state, i16 caseNumber);

// Writes the record of case caseNumber in place; a record past the end of the
// file extends it, and no other record is touched.
void WriteNslRecord(RunState& state, i16 caseNumber, const NslRecord& record);

// The head of a load file in the suite's REFORMAT layout, lines 1 to 7:
// REFORMAT, MODEL, TITLE, LCASE, LDESC, LDATE and LTIME. The date and the
// time are each read from the clock as their line is written.
void WriteReformatHead(RunState& state, PrintFile& out, const std::string& caseText,
                       const std::string& description);

// Deletes the case's files and clears its record; removes the leading
// blanks of caseNo.
void ResetCase(RunState& state, std::string& caseNo);

// Writes the results header with the options and the report as comments,
// and marks the case.
void WriteCaseHeader(RunState& state, const std::string& caseNo);

}  // namespace tremodal
