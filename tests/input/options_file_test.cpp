// The options file as the writer leaves it: the direction
// lines put the factor as a print item and the on/off switch at the next
// print zone (columns 1, 15, 29, ...), so a factor whose print item fills a
// whole zone pushes the switch on to column 29.
#include "input/options_file.h"

#include <gtest/gtest.h>

#include <string>

#include "support/model_fixture.h"

namespace tremodal {
namespace {

TEST(OptionsFile, DirectionSwitchesStandAtTheNextPrintZone) {
    testing::TempDir dir;
    RunState s;
    SetFreshOptions(s.Options);
    s.Model.ModelPath = dir.File("FRAME"), s.Options.OptionsFile = dir.File("FRAME.USM3");
    s.Options.FreqCase = "1", s.Options.ResultsCase = "20", s.Options.SpectrumFile = dir.File("FRAME.URS1");
    // The rest of the file is the fresh dialog's, which the dialog's tests
    // hold byte for byte.
    const std::string fresh = testing::kFreshOptionsFile;
    // Counted by hand: the item, blanks to the zone, the switch. 14
    // characters from column 1 end at column 14: the line stands at column
    // 15, a zone start, and the switch moves on to column 29; 13 characters
    // leave it at column 15.
    // clang-format off
    const struct { f32 factor; i16 on; const char* line; } directions[] = {
        {-1.234568e-7f, 1, "-1.234568E-07                1 "},
        {1.234568e-7f, 0, " 1.234568E-07                0 "},
        {12345678.0f, 0, " 1.234568E+07                0 "}, {-1.23457e-7f, 1, "-1.23457E-07   1 "},
        {0.5f, 1, " 0.5           1 "}, {0.002125f, 0, " 0.002125      0 "}};
    // clang-format on
    std::string expected = fresh.substr(0, fresh.find("Dir Factors   On/Off\r\n") + 22);
    for (int d = 1; d <= 6; ++d)
        s.Options.DirFactor(d) = directions[d - 1].factor, s.Options.DirOn(d) = directions[d - 1].on,
        expected += std::string(directions[d - 1].line) + "\r\n";
    expected += fresh.substr(fresh.find("Subsoil Shear Wave veleocity"));
    WriteOptionsFile(s);
    EXPECT_EQ(testing::ReadFile(s.Options.OptionsFile), expected);
}

}  // namespace
}  // namespace tremodal
