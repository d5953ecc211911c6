// The options file as the writer leaves it, byte for byte: the direction
// lines put the factor as a print item and the on/off switch at the next
// print zone (columns 1, 15, 29, ...), so a factor whose print item fills a
// whole zone pushes the switch on to column 29.
#include "input/options_file.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::ReadFile;
using testing::TempDir;

std::vector<std::string> CrLfLines(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find("\r\n", at);
        if (end == std::string::npos) throw std::runtime_error("line without CR LF");
        lines.push_back(text.substr(at, end - at));
        at = end + 2;
    }
    return lines;
}

TEST(OptionsFile, DirectionSwitchesStandAtTheNextPrintZone) {
    TempDir dir;
    RunState s;
    s.Model.ModelPath = dir.File("FRAME");
    SetFreshOptions(s.Options);
    s.Options.OptionsFile = dir.File("FRAME.USM3");
    s.Options.FreqCase = "1";
    s.Options.ResultsCase = "20";
    s.Options.SpectrumFile = dir.File("FRAME.URS1");
    WriteOptionsFile(s);
    EXPECT_EQ(ReadFile(s.Options.OptionsFile), testing::kFreshOptionsFile);

    const struct {
        f32 factor;
        i16 on;
        const char* line;  // counted by hand: item, blanks to the zone, switch
    } directions[] = {
        // 14 characters from column 1 end at column 14: the line stands at
        // column 15, a zone start, and the comma moves on to column 29.
        {-1.234568e-7f, 1,
         "-1.234568E-07 "
         "              "
         " 1 "},
        {1.234568e-7f, 0,
         " 1.234568E-07 "
         "              "
         " 0 "},
        {12345678.0f, 0,
         " 1.234568E+07 "
         "              "
         " 0 "},
        // 13 characters: the comma goes to column 15.
        {-1.23457e-7f, 1,
         "-1.23457E-07 "
         " "
         " 1 "},
        {0.5f, 1,
         " 0.5 "
         "         "
         " 1 "},
        {0.002125f, 0,
         " 0.002125 "
         "    "
         " 0 "},
    };
    for (int d = 1; d <= 6; ++d) {
        s.Options.DirFactor(d) = directions[d - 1].factor;
        s.Options.DirOn(d) = directions[d - 1].on;
    }
    WriteOptionsFile(s);
    const std::vector<std::string> lines = CrLfLines(ReadFile(s.Options.OptionsFile));
    ASSERT_EQ(lines.size(), 24u);
    EXPECT_EQ(lines[9], "Dir Factors   On/Off");
    for (int d = 1; d <= 6; ++d)
        EXPECT_EQ(lines[std::size_t(9 + d)], directions[d - 1].line) << "direction " << d;
    EXPECT_EQ(lines[16], "Subsoil Shear Wave veleocity           , 400");
}

}  // namespace
}  // namespace tremodal
